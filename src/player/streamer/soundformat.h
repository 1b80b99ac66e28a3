#pragma once

#include <QString>

namespace player {

/// What is known of an item's sound, as it came and as it was decoded. Numbers are 0, and texts
/// empty, while they are not known.
struct SoundFormat
{
    QString codec; ///< Such as "FLAC".
    QString container; ///< Such as "Ogg"; empty where there is none.
    bool lossless = false;
    int sampleRate = 0; ///< Hertz.
    int channels = 0;
    int bitDepth = 0; ///< Of lossless sound; other sound has none.
    int bitRate = 0; ///< Bits a second; of sound that is not lossless.
    QString decoder; ///< The decoder's name; empty for sound that needs none.
};

/// Rate, channels and bits of uncompressed sound.
struct RawFormat
{
    int sampleRate = 0;
    int channels = 0;
    int bitDepth = 0;
};

/// The way that the sound of an item takes.
struct SoundPath
{
    SoundFormat format;
    bool encrypted = false; ///< It was fetched with keys of its own.
    bool renewed = false; ///< It plays from an address that replaced one that had expired.
    RawFormat output; ///< What the output is given.
    QString outputElement; ///< What stands at its end, for people.
};

} // namespace player
