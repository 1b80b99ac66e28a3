#pragma once

#include <QString>

namespace MimeTypes::Audio {

/// Audio whose format the streamer is to detect.
inline QString unknown()
{
    return QStringLiteral("audio/unknown");
}

} // namespace MimeTypes::Audio
