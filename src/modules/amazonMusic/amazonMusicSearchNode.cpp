#include "amazonMusicSearchNode.h"

#include "amazonMusicLog.h"
#include "tavupaths.h"
#include "tavuurl.h"
#include "tavuvalue.h"

namespace {

QString queryText(const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    const QString param = QStringLiteral("query");
    if (request.path().hasParam(param))
        return request.path().param(param);
    return TavuValue(TavuHash(request.value().toHash())).string();
}

QString searchUrl(const QString& text)
{
    AMAZON_MUSIC_ENTER();
    TavuUrl url;
    url.setPath(QStringLiteral("/search/"));
    url.addQueryItem(QStringLiteral("keywords"), text);
    return QString::fromUtf8(url.toEncoded().constData());
}

} // namespace

CMAmazonMusicSearchQueryNode* CMAmazonMusicSearchQueryNode::create(
    CMAmazonMusicWorker* worker, CMNodes* nodes, const CMPath& path)
{
    AMAZON_MUSIC_ENTER();
    auto* node = new CMAmazonMusicSearchQueryNode(worker, path);
    node->setNodes(nodes);
    return node;
}

CMAmazonMusicSearchQueryNode::CMAmazonMusicSearchQueryNode(
    CMAmazonMusicWorker* worker, const CMPath& path)
    : CMQueryNode(path)
    , m_worker(worker)
{
    AMAZON_MUSIC_ENTER();
}

CMAmazonMusicSearchQueryNode::~CMAmazonMusicSearchQueryNode()
{
    AMAZON_MUSIC_ENTER();
}

CMAmazonMusicWorker* CMAmazonMusicSearchQueryNode::worker() const
{
    AMAZON_MUSIC_ENTER();
    return m_worker;
}

bool CMAmazonMusicSearchQueryNode::queryRequest(const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    const QString text = queryText(request);
    LOG4CPLUS_DEBUG(logger(), "queryRequest: value = " << text);
    const CMPath results =
        TavuAmazonMusicBrowsePath().addParam(QStringLiteral("suburl"), searchUrl(text));
    request.reply().setValue(QVariant(results.toEncoded()));
    return true;
}

void CMAmazonMusicSearchQueryNode::searchMore(const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    queryRequest(request);
}
