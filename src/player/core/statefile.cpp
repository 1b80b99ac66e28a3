#include "statefile.h"

#include "savefile.h"
#include "tavujson.h"
#include "tavupaths.h"

#include <QFile>

#include <functional>

namespace player {

namespace {

constexpr int stateVersion = 1;
constexpr qint64 longestFile = qint64{ 256 } * 1024;

QString trackUrl()
{
    return QStringLiteral("trackUrl");
}

/// Where the path of an absolute URL begins.
int pathStart(const QString& url)
{
    const int authority = url.indexOf(QLatin1String("://"));
    const int path = authority < 0 ? -1 : url.indexOf(QLatin1Char('/'), authority + 3);
    return path < 0 ? url.size() : path;
}

bool isAbsolute(const QString& url)
{
    return url.startsWith(QLatin1String("https://"), Qt::CaseInsensitive)
        || url.startsWith(QLatin1String("http://"), Qt::CaseInsensitive);
}

CMPath withParams(const CMPath& path, const std::function<QString(const QString&)>& change)
{
    CMPath changed = path.withoutParams();
    const QMap<QString, QString> params = path.params();
    for (auto param = params.cbegin(); param != params.cend(); ++param)
        changed = changed.addParam(param.key(), change(param.value()));
    return changed;
}

RowSource withPaths(RowSource source, const std::function<QString(const QString&)>& change)
{
    source.setPage(withParams(source.page(), change));
    if (!source.firstPage().isEmpty())
        source.setFirstPage(withParams(source.firstPage(), change));
    return source;
}

bool isPlausible(const KeptState& state)
{
    return state.version() == stateVersion && state.playMode() >= 0 && state.playMode() <= 5
        && state.volume() >= 0 && state.volume() <= 100 && state.position() >= 0;
}

} // namespace

StateFile::StateFile(const QString& fileName)
    : m_fileName(fileName)
{
}

std::optional<KeptState> StateFile::load(QString* complaint) const
{
    QFile file(m_fileName);
    if (!file.exists())
        return std::nullopt;
    if (file.open(QIODevice::ReadOnly)) {
        const KeptState state(TavuJson::parse(file.read(longestFile)).toHash());
        if (isPlausible(state))
            return state;
        file.close();
    }
    const QString aside = files::setFileAside(m_fileName);
    *complaint = aside.isEmpty()
        ? QStringLiteral("What the player had kept in %1 cannot be read; it starts afresh. Remove "
                         "the file.")
              .arg(m_fileName)
        : QStringLiteral("What the player had kept was damaged; it starts afresh. The damaged file "
                         "is now %1.")
              .arg(aside);
    return std::nullopt;
}

bool StateFile::save(const KeptState& state, QString* error) const
{
    KeptState versioned = state;
    versioned.setVersion(stateVersion);
    return files::replaceFile(
        m_fileName, TavuJson::toJson(versioned.__variant()) + '\n', files::privateFile, error);
}

KeptTrack keptTrack(const TavuRoles& track)
{
    const QString url = track.path().param(trackUrl());
    KeptTrack kept;
    if (url.isEmpty())
        return kept;
    const TavuMetaData meta = track.mediaData().metaData();
    kept.setTitle(track.title());
    kept.setArtist(meta.artist());
    kept.setAlbum(meta.album());
    kept.setDuration(track.mediaData().firstResource().duration());
    kept.setDocument(url.mid(pathStart(url)));
    kept.setPlayLogicPath(meta.playLogicPath());
    return kept;
}

TavuRoles playableRow(const KeptTrack& track, const QString& origin)
{
    TavuRoles row;
    if (track.document().isEmpty())
        return row;
    TavuMetaData meta;
    meta.setArtist(track.artist());
    meta.setAlbum(track.album());
    meta.setTrack(track.title());
    meta.setPlayLogicPath(track.playLogicPath());
    TavuResource resource;
    resource.setDuration(track.duration());
    TavuList<TavuResource> resources;
    resources.append(resource);
    TavuMediaData media;
    media.setMetaData(meta);
    media.setResources(resources);
    row.setTitle(track.title());
    row.setMediaData(media);
    row.setPath(TavuAmazonMusicPrefixPath().addParam(
        trackUrl(), origin.left(pathStart(origin)) + track.document()));
    return row;
}

RowSource keptSource(const RowSource& source)
{
    if (source.page().isEmpty())
        return RowSource();
    return withPaths(source,
        [](const QString& text) { return isAbsolute(text) ? text.mid(pathStart(text)) : text; });
}

RowSource sourceAt(const RowSource& kept, const QString& origin)
{
    if (kept.page().isEmpty())
        return RowSource();
    const QString host = origin.left(pathStart(origin));
    return withPaths(kept, [host](const QString& text) {
        return text.startsWith(QLatin1Char('/')) ? host + text : text;
    });
}

} // namespace player
