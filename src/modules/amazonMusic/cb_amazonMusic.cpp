#include "cb_amazonMusic.h"

#include "amazonMusicBrowser.h"
#include "amazonMusicConnect.h"
#include "amazonMusicDialog.h"
#include "amazonMusicLog.h"
#include "amazonMusicParser.h"
#include "amazonMusicPlayLogic.h"
#include "amazonMusicReporter.h"
#include "amazonMusicRetriever.h"
#include "amazonMusicSearchNode.h"
#include "amazonMusicSettings.h"
#include "amazonMusicTimes.h"
#include "cmactivatenode.h"
#include "cmlistrowsnode.h"
#include "cmplugin.h"
#include "cmroot.h"
#include "oauth2uidevicecode.h"
#include "tavuconnect.h"
#include "tavuoauth2serviceinfo.h"
#include "tavupaths.h"

#include <QObject>
#include <QPointer>

#include <limits>
#include <type_traits>

namespace {

constexpr unsigned long withoutLimit = std::numeric_limits<unsigned long>::max();
constexpr TrContext constructorContext =
    trExtractContext("CMAmazonMusicWorker::CMAmazonMusicWorker(const QVariantHash&)");

TavuMediaData serviceMediaData()
{
    AMAZON_MUSIC_ENTER();
    TavuMetaData metaData;
    metaData.setServiceID(TavuService_AmazonMusic_Id());
    TavuMediaData mediaData;
    mediaData.setMetaData(metaData);
    return mediaData;
}

TavuOAuth2ServiceInfo serviceInfo()
{
    AMAZON_MUSIC_ENTER();
    const auto setting = [](const CMPath& path) { return amazonMusicSetting(path).string(); };
    TavuOAuth2ServiceInfo info;
    info.setServiceName(TavuAmazonMusicName());
    info.setDisplayName(QStringLiteral("Amazon Music"));
    info.setAuthorizationUrl(setting(TavuAmazonMusicAuthorizationServiceUrlPath()));
    info.setClientId(setting(TavuAmazonMusicClientIdPath()));
    info.setClientSecret(setting(TavuAmazonMusicClientSecretPath()));
    info.setTokenUrl(setting(TavuAmazonMusicTokenServiceUrlPath()));
    info.setScope(setting(TavuAmazonMusicScope()));
    info.setScopeData(QVariant(QVariantHash()));
    info.setUsePkce(true);
    info.setAuthMethod(TavuOAuth2AuthMethod::RequestBody);
    info.setDeviceCodeUrl(setting(TavuAmazonMusicDeviceCodeUrlPath()));
    info.setDeviceCodeGrantType(QStringLiteral("device_code"));
    return info;
}

TavuUrl urlParam(const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    return TavuUrl::fromEncoded(request.path().param(QStringLiteral("url")).toUtf8());
}

TavuActionReply newActionReply()
{
    AMAZON_MUSIC_ENTER();
    TavuActionReply reply;
    reply.setXclass(QStringLiteral("TavuActionReply"));
    return reply;
}

/// For objects that are meant to stay when their worker has gone: what they are doing may still
/// call back. One place knows them all, so that a leak checker can tell them from forgotten ones.
void keep(QObject* object)
{
    AMAZON_MUSIC_ENTER();
    static auto* kept = new QObjectList;
    kept->append(object);
}

} // namespace

CMAmazonMusicWorker::CMAmazonMusicWorker(const QVariantHash& settings)
    : CMNodesWorker(settings, QStringLiteral("AmazonMusic"))
{
    AMAZON_MUSIC_ENTER();
    createObjects();
    createSearch();
    createActions();
    registerService();
    createLogin();
}

CMAmazonMusicWorker::~CMAmazonMusicWorker()
{
    AMAZON_MUSIC_ENTER();
}

void CMAmazonMusicWorker::createObjects()
{
    AMAZON_MUSIC_ENTER();
    m_connect = new AmazonMusicConnect;
    m_parser = new AmazonMusicParser;
    m_browser = new AmazonMusicBrowser(m_connect, m_parser);
    m_stationsErrorNode =
        CMListRowsNode::create(nodes(), addPrefix(QStringLiteral("stationsError")));
    m_stationsErrorNode->setContainerType(TavuRolesContainerType::List);
    m_retriever = new AmazonMusicRetriever(m_connect, m_parser, m_stationsErrorNode);
    for (QObject* lasting : QObjectList{ m_connect, m_browser, m_retriever })
        keep(lasting);
    m_reporter = new AmazonMusicReporter(this, m_connect);
    m_playLogic = new AmazonMusicPlayLogic(
        nodes(), TavuAmazonMusicPlayLogicPath(), m_connect, m_retriever, m_reporter);
}

void CMAmazonMusicWorker::createSearch()
{
    AMAZON_MUSIC_ENTER();
    m_searchNode = CMListRowsNode::create(nodes(), TavuAmazonMusicSearchPath());
    m_searchNode->setContainerType(TavuRolesContainerType::Search);
    m_searchNode->setTitle(TrCharData(constructorContext, "Search"));
    m_searchNode->setPlayable(false);
    m_searchNode->setMediaData(serviceMediaData());

    m_searchQueryNode = CMAmazonMusicSearchQueryNode::create(
        this, nodes(), TavuAmazonMusicSearchPath() + QStringLiteral("/query"));
    m_searchQueryNode->setTitle(
        TrCharData(constructorContext, "Search Stations, Tracks, Artists or Albums"));
    m_searchQueryNode->setMediaData(serviceMediaData());
    m_searchNode->rowsAppend(m_searchQueryNode->path());

    m_browser->setSeachNode(m_searchNode);
}

void CMAmazonMusicWorker::createActions()
{
    AMAZON_MUSIC_ENTER();
    CMActivateNode::create(nodes(), TavuAmazonMusicBrowsePostActionPath(), this,
        SLOT(on_browsePostAction_activated(CMSetDataRequest)), Qt::QueuedConnection);
    CMActivateNode::create(nodes(), TavuAmazonMusicBrowseRatingPath(), this,
        SLOT(on_browseRating_activated(CMSetDataRequest)), Qt::QueuedConnection)
        ->setActivateRole(TavuRoles::LikeIt());
    CMActivateNode::create(
        nodes(), TavuAmazonMusicBrowseCloseActionPath(), nullptr, nullptr, Qt::QueuedConnection)
        ->setReplyValue(createCloseReply());
}

void CMAmazonMusicWorker::registerService()
{
    AMAZON_MUSIC_ENTER();
    const auto reply = CMReply<QVariant>::create();
    CMRoot()->invoke(TavuOAuth2AddServicePath(), serviceInfo(), reply);
    reply.waitForFinished(withoutLimit);
}

void CMAmazonMusicWorker::createLogin()
{
    AMAZON_MUSIC_ENTER();
    m_deviceCodeUi = new OAuth2UiDeviceCode(
        this, nodes(), subscribe(), TavuAmazonMusicName(), TavuAmazonMusicBrowsePath());
    tavuConnect(m_deviceCodeUi, SIGNAL(loginStateChanged(bool)), this,
        SLOT(on_loggedIn_changed(bool)), Qt::AutoConnection);
    m_loggedIn = m_deviceCodeUi->loggedIn();
    m_connect->setLoggedIn(m_loggedIn);
}

void CMAmazonMusicWorker::getRowsRequest(const CMGetRowsRequest& request)
{
    AMAZON_MUSIC_ENTER_WITH(request);
    QMetaObject::invokeMethod(
        this, "on_getRows_invoke", Qt::QueuedConnection, Q_ARG(CMGetRowsRequest, request));
}

void CMAmazonMusicWorker::on_getRows_invoke(const CMGetRowsRequest& request)
{
    AMAZON_MUSIC_ENTER();
    if (!m_deviceCodeUi->loggedIn())
        m_deviceCodeUi->getRowsRequest(request);
    else if (request.path().startsWith(TavuAmazonMusicBrowsePath()))
        m_browser->browse(request);
    else
        CMNodesWorker::getRowsRequest(request);
}

void CMAmazonMusicWorker::on_loggedIn_changed(bool value)
{
    LOG4CPLUS_INFO(logger(), "Enter " << Q_FUNC_INFO << ": " << value);
    if (value == m_loggedIn)
        return;
    m_loggedIn = value;
    if (!value) {
        // Before the session closes, so that the report of the stop still goes out.
        if (PlayLogicInterface* playLogic = PlayLogicInterface::instance(m_playLogic->path()))
            playLogic->stop(TavuPlayLogicStopReason::Service);
    }
    m_connect->clearCache();
    m_connect->setLoggedIn(m_loggedIn);
}

TavuActionReply CMAmazonMusicWorker::createCloseReply() const
{
    AMAZON_MUSIC_ENTER();
    TavuEvent event;
    event.setRowsType(TavuEventRowsType::Close);
    TavuList<TavuEvent> events;
    events.append(event);
    TavuActionReply reply = newActionReply();
    reply.setEvents(events);
    return reply;
}

void CMAmazonMusicWorker::on_browsePostAction_activated(const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    LOG4CPLUS_INFO(logger(), "Request: " << request.path());
    m_connect->sendPost(urlParam(request))
        .onSuccess([self = QPointer<CMAmazonMusicWorker>(this), request](
                       const HttpClient::Result& result) {
            if (self)
                self->postActionFinished(result, request);
        });
}

void CMAmazonMusicWorker::postActionFinished(
    const HttpClient::Result& result, const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    LOG4CPLUS_INFO(logger(),
        "Post action " << result.url << " reply code: " << result.code
                       << " status: " << result.error);
    LOG4CPLUS_TRACE(logger(), "Response: " << result.data);
    m_connect->clearCache();
    request.reply().setValue(createCloseReply().__variant());
}

void CMAmazonMusicWorker::on_browseRating_activated(const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER_WITH("value: " << tavuvariant::toText(request.value()));
    const bool up = tavuvariant::toBool(request.value());
    const auto rating = up ? TavuAmazonMusicThumbRating::Up : TavuAmazonMusicThumbRating::Down;
    m_reporter->userRating(urlParam(request), rating, 0)
        .addWatcher(
            [self = QPointer<CMAmazonMusicWorker>(this), request](const CMVoidReply& reply) {
                if (reply.error().isSet())
                    return request.reply().setError(reply.error());
                reply.waitForFinished(withoutLimit);
                const auto response = CMReply<AmazonMusicReporter::Response>(reply).value();
                if (self)
                    self->showRatingMessage(response.ratingResponse.message(), request);
            });
}

void CMAmazonMusicWorker::showRatingMessage(const QString& message, const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    // Destroys itself at its end.
    auto* dialog = new AmazonMusicDialog(nodes(), amazonMusicTimes::ratingDialog);
    TavuRoles row;
    row.setType(TavuRolesType::Message);
    row.setTitle(message);
    dialog->addRow(row);

    TavuRoles screen;
    screen.setPath(dialog->path());
    TavuActionReply reply = newActionReply();
    reply.setResult(screen);
    request.reply().setValue(reply.__variant());
}

extern "C" Q_DECL_EXPORT CMAbstractWorker* worker_create(void*, const QVariantHash& settings)
{
    AMAZON_MUSIC_ENTER();
    return new CMAmazonMusicWorker(settings);
}
static_assert(std::is_same_v<decltype(worker_create), CMWorkerCreate>);
