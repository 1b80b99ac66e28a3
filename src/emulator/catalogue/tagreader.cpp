#include "tagreader.h"

#include <attachedpictureframe.h>
#include <flacfile.h>
#include <flacpicture.h>
#include <id3v2tag.h>
#include <mp4file.h>
#include <mp4tag.h>
#include <mpegfile.h>
#include <oggflacfile.h>
#include <opusfile.h>
#include <tpropertymap.h>
#include <vorbisfile.h>
#include <xiphcomment.h>

#include <QFile>
#include <QFileInfo>

#include <memory>

namespace emulator::catalogue {

namespace {

using AudioFile = std::unique_ptr<TagLib::File>;

QString suffixOf(const QString& name)
{
    return QFileInfo(name).suffix().toLower();
}

bool isOgg(const QString& suffix)
{
    return suffix == QLatin1String("ogg") || suffix == QLatin1String("oga")
        || suffix == QLatin1String("opus");
}

// The suffix of an Ogg file does not tell its codec; the first page does.
AudioFile openOgg(const QByteArray& name)
{
    QFile file(QFile::decodeName(name));
    const QByteArray head = file.open(QIODevice::ReadOnly) ? file.read(64) : QByteArray();
    if (head.contains("OpusHead"))
        return std::make_unique<TagLib::Ogg::Opus::File>(name.constData());
    if (head.contains("\x7f"
                      "FLAC"))
        return std::make_unique<TagLib::Ogg::FLAC::File>(name.constData());
    return std::make_unique<TagLib::Ogg::Vorbis::File>(name.constData());
}

AudioFile openAudio(const QString& file)
{
    const QByteArray name = QFile::encodeName(file);
    const QString suffix = suffixOf(file);
    if (isOgg(suffix))
        return openOgg(name);
    if (suffix == QLatin1String("flac"))
        return std::make_unique<TagLib::FLAC::File>(name.constData());
    if (suffix == QLatin1String("mp3"))
        return std::make_unique<TagLib::MPEG::File>(name.constData());
    return std::make_unique<TagLib::MP4::File>(name.constData());
}

QString toQString(const TagLib::String& text)
{
    return QString::fromUtf8(text.toCString(true)).simplified();
}

QString first(const TagLib::PropertyMap& properties, const char* key)
{
    const auto found = properties.find(key);
    return found == properties.end() || found->second.isEmpty() ? QString()
                                                                : toQString(found->second.front());
}

// "3", "3/12" and "2004-05-06" all begin with the number that is meant.
int leadingNumber(const QString& text)
{
    int digits = 0;
    while (digits < text.size() && digits < 9 && text.at(digits) >= QLatin1Char('0')
        && text.at(digits) <= QLatin1Char('9'))
        ++digits;
    return text.left(digits).toInt();
}

QByteArray toByteArray(const TagLib::ByteVector& bytes)
{
    return QByteArray(bytes.data(), static_cast<int>(bytes.size()));
}

QByteArray choose(const TagLib::List<TagLib::FLAC::Picture*>& pictures)
{
    QByteArray chosen;
    for (const TagLib::FLAC::Picture* picture : pictures) {
        if (chosen.isEmpty() || picture->type() == TagLib::FLAC::Picture::FrontCover)
            chosen = toByteArray(picture->data());
    }
    return chosen;
}

QByteArray pictureOf(TagLib::MPEG::File& file)
{
    QByteArray chosen;
    if (!file.hasID3v2Tag())
        return chosen;
    for (const TagLib::ID3v2::Frame* frame : file.ID3v2Tag()->frameList("APIC")) {
        const auto* picture = dynamic_cast<const TagLib::ID3v2::AttachedPictureFrame*>(frame);
        if (picture
            && (chosen.isEmpty()
                || picture->type() == TagLib::ID3v2::AttachedPictureFrame::FrontCover))
            chosen = toByteArray(picture->picture());
    }
    return chosen;
}

QByteArray pictureOf(TagLib::MP4::File& file)
{
    if (file.tag() == nullptr || !file.tag()->contains("covr"))
        return {};
    const TagLib::MP4::CoverArtList covers = file.tag()->item("covr").toCoverArtList();
    return covers.isEmpty() ? QByteArray() : toByteArray(covers.front().data());
}

QByteArray pictureBytes(TagLib::File& file)
{
    if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file))
        return choose(flac->pictureList());
    if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file))
        return pictureOf(*mpeg);
    if (auto* mp4 = dynamic_cast<TagLib::MP4::File*>(&file))
        return pictureOf(*mp4);
    if (auto* comment = dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag()))
        return choose(comment->pictureList());
    return {};
}

Tags tagsOf(TagLib::File& file)
{
    const TagLib::PropertyMap properties = file.properties();
    Tags tags;
    tags.title = first(properties, "TITLE");
    tags.artist = first(properties, "ARTIST");
    tags.albumArtist = first(properties, "ALBUMARTIST");
    tags.album = first(properties, "ALBUM");
    tags.genre = first(properties, "GENRE");
    tags.number = leadingNumber(first(properties, "TRACKNUMBER"));
    tags.disc = leadingNumber(first(properties, "DISCNUMBER"));
    tags.year = leadingNumber(first(properties, "DATE"));
    tags.durationMs = file.audioProperties()->lengthInMilliseconds();
    tags.picture = asPicture(pictureBytes(file)).has_value();
    return tags;
}

} // namespace

bool isMusicFile(const QString& name)
{
    const QString suffix = suffixOf(name);
    return isOgg(suffix) || suffix == QLatin1String("flac") || suffix == QLatin1String("mp3")
        || suffix == QLatin1String("m4a");
}

TagReading readTags(const QString& file)
{
    if (!QFileInfo(file).isReadable())
        return { {}, QStringLiteral("it may not be read; check its permissions") };
    const AudioFile audio = openAudio(file);
    if (!audio->isValid())
        return { {}, QStringLiteral("it is not a whole %1 file").arg(suffixOf(file).toUpper()) };
    if (!audio->audioProperties() || audio->audioProperties()->lengthInMilliseconds() <= 0)
        return { {}, QStringLiteral("it holds no audio") };
    return { tagsOf(*audio), QString() };
}

std::optional<Picture> readPicture(const QString& file)
{
    const AudioFile audio = openAudio(file);
    return audio->isValid() ? asPicture(pictureBytes(*audio)) : std::nullopt;
}

std::optional<Picture> asPicture(const QByteArray& bytes)
{
    if (bytes.startsWith("\xff\xd8\xff"))
        return Picture{ bytes, "image/jpeg" };
    if (bytes.startsWith("\x89PNG\r\n"))
        return Picture{ bytes, "image/png" };
    if (bytes.startsWith("GIF8"))
        return Picture{ bytes, "image/gif" };
    if (bytes.startsWith("RIFF") && bytes.mid(8, 4) == "WEBP")
        return Picture{ bytes, "image/webp" };
    return std::nullopt;
}

QByteArray audioMimeType(const QString& name)
{
    const QString suffix = suffixOf(name);
    if (isOgg(suffix))
        return "audio/ogg";
    if (suffix == QLatin1String("flac"))
        return "audio/flac";
    if (suffix == QLatin1String("mp3"))
        return "audio/mpeg";
    if (suffix == QLatin1String("m4a"))
        return "audio/mp4";
    return "application/octet-stream";
}

} // namespace emulator::catalogue
