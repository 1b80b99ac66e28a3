#pragma once

#include <QByteArray>

/// A page of the service with so many rows, three tracks to each album, as long and as deep as the
/// service makes them: about 1.2 kB a row.
QByteArray servicePage(int items);
