#include "scanstate.h"

#include "savefile.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QFile>

namespace emulator::catalogue {

namespace {

// Raise it whenever the layout or the meaning of what is kept changes.
const QByteArray magic = "TAVU-SCAN-1\n";
constexpr auto streamVersion = QDataStream::Qt_5_15;
constexpr int digestSize = 20;

QByteArray digest(const QByteArray& payload)
{
    return QCryptographicHash::hash(payload, QCryptographicHash::Sha1);
}

QDataStream& operator<<(QDataStream& out, const MusicFile& file)
{
    const Tags& tags = file.tags;
    return out << file.path << file.size << file.modifiedMs << file.problem << tags.title
               << tags.artist << tags.albumArtist << tags.album << tags.genre << tags.number
               << tags.disc << tags.year << tags.durationMs << tags.picture;
}

QDataStream& operator>>(QDataStream& in, MusicFile& file)
{
    Tags& tags = file.tags;
    return in >> file.path >> file.size >> file.modifiedMs >> file.problem >> tags.title
        >> tags.artist >> tags.albumArtist >> tags.album >> tags.genre >> tags.number >> tags.disc
        >> tags.year >> tags.durationMs >> tags.picture;
}

QDataStream& operator<<(QDataStream& out, const PlaylistFile& playlist)
{
    return out << playlist.path << playlist.title << playlist.entries;
}

QDataStream& operator>>(QDataStream& in, PlaylistFile& playlist)
{
    return in >> playlist.path >> playlist.title >> playlist.entries;
}

template <typename T>
void write(QDataStream& out, const std::vector<T>& list)
{
    out << static_cast<quint32>(list.size());
    for (const T& entry : list)
        out << entry;
}

template <typename T>
void read(QDataStream& in, std::vector<T>& list)
{
    quint32 size = 0;
    in >> size;
    while (size-- > 0 && in.status() == QDataStream::Ok) {
        list.emplace_back();
        in >> list.back();
    }
}

} // namespace

std::optional<ScanResult> loadScan(const QString& stateFile, const QString& root)
{
    QFile file(stateFile);
    if (!file.open(QIODevice::ReadOnly) || file.read(magic.size()) != magic)
        return std::nullopt;
    const QByteArray expected = file.read(digestSize);
    const QByteArray payload = file.readAll();
    if (digest(payload) != expected)
        return std::nullopt;
    QDataStream in(payload);
    in.setVersion(streamVersion);
    QString savedRoot;
    ScanResult scan;
    in >> savedRoot >> scan.folderPictures;
    read(in, scan.files);
    read(in, scan.playlists);
    if (in.status() != QDataStream::Ok || savedRoot != root)
        return std::nullopt;
    return scan;
}

QString saveScan(const QString& stateFile, const QString& root, const ScanResult& scan)
{
    QByteArray payload;
    QDataStream out(&payload, QIODevice::WriteOnly);
    out.setVersion(streamVersion);
    out << root << scan.folderPictures;
    write(out, scan.files);
    write(out, scan.playlists);
    QString error;
    const QByteArray state = magic + digest(payload) + payload;
    if (!files::replaceFile(stateFile, state, files::publicFile, &error))
        return QStringLiteral("cannot write %1").arg(error);
    return QString();
}

} // namespace emulator::catalogue
