#pragma once

#include "cmnode.h"
#include "cmrequest.h"
#include "httpclient.h"
#include "tavuamazonmusic.h"
#include "tavuroles.h"
#include "tavuurl.h"

#include <QList>
#include <QObject>
#include <QPointer>

class AmazonMusicConnect;
class AmazonMusicParser;

/// Answers rows requests from the service's pages: a request is one fetch of one page, and nothing
/// is kept between requests. Requests may overlap; each is answered when its own page has come.
/// Everything runs on the thread that made the object.
class AmazonMusicBrowser : public QObject
{
    Q_OBJECT

public:
    /// Neither is owned; both must live as long as this object.
    AmazonMusicBrowser(AmazonMusicConnect* connect, AmazonMusicParser* parser);
    ~AmazonMusicBrowser() override;

    /// The container that the root folder offers as its search; null for none. Not owned.
    void setSeachNode(const CMNode* node);

    /// Fetches the page that the request's path names and returns at once. The reply then gets the
    /// rows asked for or an error.
    void browse(const CMGetRowsRequest& request);

    TavuRoles createRow(const TavuAmazonMusicItemDescription& item, const TavuUrl& pageUrl) const;
    TavuRoles createSeeMoreRow(
        const TavuAmazonMusicNavigationNodeDescription& page, const TavuUrl& pageUrl) const;
    TavuMediaData createMediaData(
        const QString& artist, const QString& album, const TavuUrl& ratingUrl) const;

private:
    void browseFinished(const HttpClient::Result& result, const CMGetRowsRequest& request);
    void sendErrorReport(const HttpClient::Result& result, const CMGetRowsRequest& request);
    void sendPage(const HttpClient::Result& result, const CMGetRowsRequest& request);
    void sendFailure(const HttpClient::Result& result, const CMGetRowsRequest& request);
    void sendBrowseReply(const TavuRoles& parent, const QList<TavuRoles>& rows, int total,
        const CMGetRowsRequest& request);
    TavuUrl pageUrl(const CMPath& path) const;
    TavuRoles folder(const TavuUrl& pageUrl) const;

    // The kinds of row; `row` has what all of them have.
    void fillFolder(TavuRoles* row, const TavuAmazonMusicItemDescription& item,
        const TavuAmazonMusicPlayable& playable, const TavuUrl& pageUrl) const;
    void fillPlayable(TavuRoles* row, const TavuAmazonMusicItemDescription& item,
        const TavuAmazonMusicPlayable& playable, const TavuUrl& pageUrl) const;
    void fillTrack(TavuRoles* row, const TavuAmazonMusicItemDescription& item,
        const TavuAmazonMusicTrackDefinition& definition) const;
    TavuMediaData playableMediaData(const TavuAmazonMusicItemDescription& item,
        const QString& album, const TavuUrl& ratingUrl) const;

    AmazonMusicConnect* m_connect; // Not owned.
    AmazonMusicParser* m_parser; // Not owned.
    QPointer<const CMNode> m_searchNode; // Owned by the node tree, which may go first.
};
