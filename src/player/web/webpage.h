#pragma once

/// Makes the page readable under ":/web", starting at ":/web/index.html". Call it before the first
/// look-up: the files sit in a static library, which nobody registers by itself. A second call does
/// nothing.
void initWebPage();
