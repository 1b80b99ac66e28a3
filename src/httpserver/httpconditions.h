#pragma once

#include "httpresponder.h"

#include <optional>

namespace http {

/// Which part of a representation a request is to get.
struct Selection
{
    int status = 200; ///< 200, 206, 304 or 416
    qint64 offset = 0;
    qint64 length = 0;
};

/// Judges the conditional and range fields of a GET or HEAD for a representation of `size` bytes.
Selection select(const Headers& request, const ContentInfo& info, qint64 size);

} // namespace http
