// The rows that the browser makes of the service's items.

#include "amazonMusicBrowser.h"

#include "amazonMusicLog.h"
#include "tavupaths.h"

#include <QStringBuilder>

#include <array>

namespace {

// Shorter tracks, in milliseconds, do not show how long they are.
constexpr qint64 shownDuration = 1000;
constexpr qint64 dayMs = qint64(24) * 60 * 60 * 1000;

QString urlParam()
{
    AMAZON_MUSIC_ENTER();
    return QStringLiteral("url");
}

QString selfUrlParam()
{
    AMAZON_MUSIC_ENTER();
    return QStringLiteral("selfUrl");
}

/// `text`, relative to `pageUrl`, as the "url" parameter of a path.
CMPath browsePath(const TavuUrl& pageUrl, const QString& text)
{
    AMAZON_MUSIC_ENTER();
    return TavuAmazonMusicBrowsePath().addParam(urlParam(), pageUrl.resolvedText(text));
}

/// Hours, minutes and seconds, as Qt::TextDate writes them, which takes ten times as long.
std::array<char, 8> clockTime(int seconds)
{
    AMAZON_MUSIC_ENTER();
    const auto digit = [](int number) { return static_cast<char>('0' + number % 10); };
    const int minutes = seconds / 60;
    const int hours = minutes / 60;
    return { digit(hours / 10), digit(hours), ':', digit(minutes % 60 / 10), digit(minutes % 60),
        ':', digit(seconds % 60 / 10), digit(seconds % 60) };
}

QString titleWithDuration(const QString& title, qint64 duration)
{
    AMAZON_MUSIC_ENTER();
    if (duration <= shownDuration)
        return title;
    // A clock starts anew each day.
    const std::array<char, 8> time = clockTime(static_cast<int>(duration % dayMs / 1000));
    return title % QLatin1String(" (") % QLatin1String(time.data(), static_cast<int>(time.size()))
        % QLatin1Char(')');
}

TavuMediaData folderMediaData()
{
    AMAZON_MUSIC_ENTER();
    TavuMetaData metaData;
    metaData.setPlayLogicPath(TavuAmazonMusicPlayLogicPath());
    metaData.setServiceID(TavuService_AmazonMusic_Id());
    TavuMediaData mediaData;
    mediaData.setMetaData(metaData);
    return mediaData;
}

/// A track that cannot be played: opening the row shows why.
void fillRefusedTrack(TavuRoles* row, const QString& error, const TavuUrl& pageUrl)
{
    AMAZON_MUSIC_ENTER();
    row->setType(TavuRolesType::Folder);
    row->setIcon(QStringLiteral("skin:iconMusic"));
    row->setPath(TavuAmazonMusicBrowsePath()
                     .addParam(urlParam(), pageUrl.toString())
                     .addParam(QStringLiteral("error"), error));
}

} // namespace

TavuRoles AmazonMusicBrowser::createRow(
    const TavuAmazonMusicItemDescription& item, const TavuUrl& pageUrl) const
{
    AMAZON_MUSIC_ENTER();
    TavuRoles row;
    row.setTitle(item.itemLabel());
    row.setIcon(item.image().uri());
    row.setDoNotTrack(true);
    const TavuAmazonMusicPlayable playable = item.playableInst();
    if (!item.summaryInst().isEmpty())
        fillFolder(&row, item, playable, pageUrl);
    else if (!playable.isEmpty())
        fillPlayable(&row, item, playable, pageUrl);
    return row;
}

void AmazonMusicBrowser::fillFolder(TavuRoles* row, const TavuAmazonMusicItemDescription& item,
    const TavuAmazonMusicPlayable& playable, const TavuUrl& pageUrl) const
{
    AMAZON_MUSIC_ENTER();
    row->setType(TavuRolesType::Folder);
    row->setAudioType(TavuRolesAudioType::None);
    const QString description = item.summaryInst().description();
    if (description.isEmpty())
        LOG4CPLUS_WARN(
            logger(), "Browsable node \"" << item.itemLabel() << "\" without summary description");
    CMPath path = browsePath(pageUrl, description);
    if (playable.isEmpty()) {
        row->setMediaData(folderMediaData());
    } else {
        path = path.addParam(selfUrlParam(), playable.selfDataUrl());
        row->setMediaData(playableMediaData(item, QString(), TavuUrl()));
        row->setContainerType(TavuRolesContainerType::Album);
        row->setAudioType(TavuRolesAudioType::Tracks);
        row->setContainerPlayable(true);
    }
    row->setPath(path);
}

void AmazonMusicBrowser::fillPlayable(TavuRoles* row, const TavuAmazonMusicItemDescription& item,
    const TavuAmazonMusicPlayable& playable, const TavuUrl& pageUrl) const
{
    AMAZON_MUSIC_ENTER();
    const TavuAmazonMusicTrackDefinition definition = playable.trackDefinitionInst();
    row->setType(TavuRolesType::Playable);
    row->setPath(TavuAmazonMusicPrefixPath().addParam(selfUrlParam(), playable.selfDataUrl()));
    if (definition.isEmpty()) {
        row->setAudioType(TavuRolesAudioType::Station);
        row->setMediaData(playableMediaData(item, QString(), TavuUrl()));
    } else if (definition.errorInst().isEmpty()) {
        fillTrack(row, item, definition);
    } else {
        fillRefusedTrack(row, definition.error(), pageUrl);
    }
}

void AmazonMusicBrowser::fillTrack(TavuRoles* row, const TavuAmazonMusicItemDescription& item,
    const TavuAmazonMusicTrackDefinition& definition) const
{
    AMAZON_MUSIC_ENTER();
    row->setAudioType(TavuRolesAudioType::Tracks);
    row->setTitle(titleWithDuration(row->title(), definition.duration()));
    row->setMediaData(
        playableMediaData(item, definition.album().name(), TavuUrl(definition.trackRatingUrl())));
}

TavuMediaData AmazonMusicBrowser::playableMediaData(const TavuAmazonMusicItemDescription& item,
    const QString& album, const TavuUrl& ratingUrl) const
{
    AMAZON_MUSIC_ENTER();
    TavuResource resource;
    resource.setUri(item.playableUrl());
    TavuList<TavuResource> resources;
    resources.append(resource);
    TavuMediaData mediaData = createMediaData(item.artist().name(), album, ratingUrl);
    mediaData.setResources(resources);
    return mediaData;
}

TavuRoles AmazonMusicBrowser::createSeeMoreRow(
    const TavuAmazonMusicNavigationNodeDescription& page, const TavuUrl& pageUrl) const
{
    AMAZON_MUSIC_ENTER();
    TavuRoles row;
    row.setTitle(QStringLiteral("See more results"));
    row.setType(TavuRolesType::Folder);
    row.setPath(browsePath(pageUrl, page.nextPage()));
    return row;
}

TavuMediaData AmazonMusicBrowser::createMediaData(
    const QString& artist, const QString& album, const TavuUrl& ratingUrl) const
{
    AMAZON_MUSIC_ENTER();
    TavuMetaData metaData;
    metaData.setArtist(artist);
    if (!album.isEmpty())
        metaData.setAlbum(album);
    metaData.setServiceID(TavuService_AmazonMusic_Id());
    metaData.setPlayLogicPath(TavuAmazonMusicPlayLogicPath());
    if (ratingUrl.isValid())
        metaData.setLikeItPath(
            TavuAmazonMusicBrowseRatingPath().addParam(urlParam(), ratingUrl.toString()));
    TavuMediaData mediaData;
    mediaData.setMetaData(metaData);
    return mediaData;
}
