#include "playlistreader.h"

#include <QDir>
#include <QFileInfo>
#include <QTextCodec>
#include <QUrl>

namespace emulator::catalogue {

namespace {

const QLatin1String titleTag("#PLAYLIST:");

QString decode(const QByteArray& text)
{
    QTextCodec::ConverterState state;
    QTextCodec* utf8 = QTextCodec::codecForName("UTF-8");
    const QString decoded = utf8->toUnicode(text.constData(), text.size(), &state);
    return state.invalidChars > 0 || state.remainingChars > 0 ? QString::fromLatin1(text) : decoded;
}

QString localPath(const QString& line)
{
    if (line.startsWith(QLatin1String("file://")))
        return QUrl(line).toLocalFile();
    if (line.contains(QLatin1String("://")))
        return {};
    return QString(line).replace(QLatin1Char('\\'), QLatin1Char('/'));
}

QString belowRoot(const QString& entry, const QString& folder, const QString& root)
{
    const QString joined = QDir::isAbsolutePath(entry)
        ? QDir(root).relativeFilePath(QDir::cleanPath(entry))
        : QDir::cleanPath(folder + QLatin1Char('/') + entry);
    return joined.startsWith(QLatin1String("../")) ? QString() : joined;
}

} // namespace

bool isPlaylistFile(const QString& name)
{
    const QString suffix = QFileInfo(name).suffix().toLower();
    return suffix == QLatin1String("m3u") || suffix == QLatin1String("m3u8");
}

PlaylistFile parsePlaylist(const QString& path, const QByteArray& text, const QString& root)
{
    PlaylistFile playlist;
    playlist.path = path;
    playlist.title = QFileInfo(path).completeBaseName();
    const QString folder = QFileInfo(path).path();
    for (const QString& raw : decode(text).split(QLatin1Char('\n'))) {
        const QString line = raw.trimmed();
        if (line.startsWith(titleTag))
            playlist.title = line.mid(titleTag.size()).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        const QString local = localPath(line);
        const QString entry = local.isEmpty() ? QString() : belowRoot(local, folder, root);
        if (!entry.isEmpty())
            playlist.entries += entry;
    }
    return playlist;
}

} // namespace emulator::catalogue
