#include "amazonMusicBrowser.h"

#include "amazonMusicConnect.h"
#include "amazonMusicLog.h"
#include "amazonMusicParser.h"
#include "cmglobal.h"
#include "tavupaths.h"
#include "trstring.h"

namespace {

constexpr int ok = 200;
constexpr int forbidden = 403;
constexpr int conflict = 409; // The service sends an error report.

TavuUrl urlParam(const CMPath& path, const QString& name)
{
    AMAZON_MUSIC_ENTER();
    return TavuUrl::fromEncoded(path.param(name).toUtf8());
}

TavuRoles searchEntry(const CMNode& searchNode)
{
    AMAZON_MUSIC_ENTER();
    TavuRoles entry;
    entry.setTitle(TrString(TrCharData(trExtractContext("AmazonMusicBrowser"),
                                "Search Stations, Tracks, Artists or Albums"))
                       .toString());
    entry.setPath(searchNode.path());
    entry.setType(TavuRolesType::Folder);
    entry.setContainerType(TavuRolesContainerType::Search);
    return entry;
}

TrString failureMessage(int code)
{
    AMAZON_MUSIC_ENTER();
    constexpr TrContext context = trExtractContext("AmazonMusicBrowser");
    if (code == forbidden)
        return TrString(
            TrCharData(context, "Account credentials are not correct. Please log in again."));
    return TrString(TrCharData(context, "Unable to browse in to the folder."));
}

} // namespace

AmazonMusicBrowser::AmazonMusicBrowser(AmazonMusicConnect* connect, AmazonMusicParser* parser)
    : m_connect(connect)
    , m_parser(parser)
{
    AMAZON_MUSIC_ENTER();
}

AmazonMusicBrowser::~AmazonMusicBrowser()
{
    AMAZON_MUSIC_ENTER();
}

void AmazonMusicBrowser::setSeachNode(const CMNode* node)
{
    AMAZON_MUSIC_ENTER();
    m_searchNode = node;
}

void AmazonMusicBrowser::browse(const CMGetRowsRequest& request)
{
    AMAZON_MUSIC_ENTER();
    LOG4CPLUS_DEBUG(logger(), Q_FUNC_INFO << ": path: " << request.path());
    const TavuUrl url = pageUrl(request.path());
    LOG4CPLUS_DEBUG(logger(), "browsing to url: " << url);
    m_connect->sendBrowseRequest(url).onSuccess(
        [self = QPointer<AmazonMusicBrowser>(this), request](const HttpClient::Result& result) {
            if (self)
                self->browseFinished(result, request);
        });
}

TavuUrl AmazonMusicBrowser::pageUrl(const CMPath& path) const
{
    AMAZON_MUSIC_ENTER();
    const QString absolute = QStringLiteral("url");
    const QString relative = QStringLiteral("suburl");
    TavuUrl url = m_connect->getBaseUrl();
    if (path.hasParam(absolute))
        url = urlParam(path, absolute);
    if (path.hasParam(relative)) {
        const TavuUrl subUrl = urlParam(path, relative);
        url.setPath(subUrl.path());
        url.setQueryItems(subUrl.queryItems());
    }
    return url;
}

void AmazonMusicBrowser::browseFinished(
    const HttpClient::Result& result, const CMGetRowsRequest& request)
{
    AMAZON_MUSIC_ENTER_WITH("Status: " << result.error << " code: " << result.code);
    if (result.code != ok && result.code != conflict)
        return sendFailure(result, request);
    if (result.code == conflict || request.path().hasParam(QStringLiteral("error")))
        return sendErrorReport(result, request);
    sendPage(result, request);
}

void AmazonMusicBrowser::sendFailure(
    const HttpClient::Result& result, const CMGetRowsRequest& request)
{
    AMAZON_MUSIC_ENTER();
    LOG4CPLUS_ERROR(logger(), "Browse request failed, error: " << result.code);
    request.reply().setError(CMError(failureMessage(result.code)));
}

void AmazonMusicBrowser::sendErrorReport(
    const HttpClient::Result& result, const CMGetRowsRequest& request)
{
    AMAZON_MUSIC_ENTER();
    const QString id = request.path().param(QStringLiteral("error"));
    const QList<TavuRoles> rows =
        m_parser->createErrorReportScreen(m_parser->parseGeneralErrorReport(result.data, id));
    TavuRoles parent;
    parent.setContainerType(TavuRolesContainerType::List);
    sendBrowseReply(parent, rows, rows.count(), request);
}

void AmazonMusicBrowser::sendPage(const HttpClient::Result& result, const CMGetRowsRequest& request)
{
    AMAZON_MUSIC_ENTER();
    auto page = m_parser->parseBrowseResponse(result.data, result.url);
    // The list alone holds the items, so that one that has become a row leaves its place in the
    // heap to the next row: it is in the processor's cache.
    QVariantList items = page.itemsInst();
    page.__remove(TavuAmazonMusicNavigationNodeDescription::ItemsInst());
    int total = items.count();
    QList<TavuRoles> rows;
    for (QVariant& item : items) {
        rows.append(createRow(TavuAmazonMusicItemDescription(item.toHash()), result.url));
        item.clear();
    }
    if (!page.nextPage().isEmpty()) {
        rows.append(createSeeMoreRow(page, result.url));
        ++total;
    }
    sendBrowseReply(folder(result.url), rows, total, request);
}

TavuRoles AmazonMusicBrowser::folder(const TavuUrl& pageUrl) const
{
    AMAZON_MUSIC_ENTER();
    TavuRoles folder;
    if (!m_searchNode.isNull() && pageUrl.path() == QLatin1String("/"))
        folder.setSearch(searchEntry(*m_searchNode));
    return folder;
}

void AmazonMusicBrowser::sendBrowseReply(const TavuRoles& parent, const QList<TavuRoles>& rows,
    int total, const CMGetRowsRequest& request)
{
    AMAZON_MUSIC_ENTER_WITH("Number of rows: " << rows.count() << " all rows: " << total);
    const int end = rows.count() > request.to() ? request.to() + 1 : rows.count();
    QVariantList slice;
    for (int index = request.from(); index < end; ++index) {
        if (index < 0 || index >= rows.count())
            break;
        slice.append(QVariant(CMGlobal::itemRolesToList(request.roles(), rows.at(index))));
    }
    TavuRowsRoles answer;
    answer.setRoles(parent);
    answer.setRowsCount(total);
    answer.setRows(slice);
    answer.setRowsVersion(qMax(request.rowsVersion(), 0));
    request.reply().setValue(answer);
}
