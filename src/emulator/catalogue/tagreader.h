#pragma once

#include "musicfile.h"

#include <QByteArray>

#include <optional>

namespace emulator::catalogue {

/// A cover picture. The type follows from the bytes, never from what the tag claims.
struct Picture
{
    QByteArray bytes;
    QByteArray mimeType;
};

struct TagReading
{
    Tags tags;
    QString problem; ///< for people; empty when the file can be played
};

/// Whether the library takes a file of this name: FLAC, MP3, Ogg (Vorbis, Opus, FLAC) and M4A.
bool isMusicFile(const QString& name);

/// Reads one file's tags. Blocks on the disk; may be called on any thread.
TagReading readTags(const QString& file);

/// The front cover of a file, else its first picture; nothing when it has none of a known type.
std::optional<Picture> readPicture(const QString& file);

/// The bytes as a picture when they are JPEG, PNG, GIF or WebP.
std::optional<Picture> asPicture(const QByteArray& bytes);

/// The media type of a music file by its name; "application/octet-stream" for others.
QByteArray audioMimeType(const QString& name);

} // namespace emulator::catalogue
