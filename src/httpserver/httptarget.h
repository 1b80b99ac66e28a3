#pragma once

#include "httpmessage.h"

namespace http {

/// Takes the target of `request` apart into authority, path, segments and query. Returns false for
/// a target that is malformed: broken escapes, NUL, text that is not UTF-8, no leading slash.
bool splitTarget(Request& request);

/// The value of a hexadecimal digit; -1 for any other character.
int hexValue(char c);

} // namespace http
