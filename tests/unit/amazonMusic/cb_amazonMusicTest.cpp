#include "workerFixture.h"

#include "amazonMusicReporter.h"
#include "amazonMusicSearchNode.h"
#include "cmnodes.h"
#include "cmplugin.h"
#include "cmroot.h"
#include "cmuinode.h"
#include "oauth2uidevicecode.h"
#include "playlogicinterface.h"
#include "tavuoauth2serviceinfo.h"

#include <QPointer>
#include <QRegularExpression>
#include <QThread>

extern "C" CMWorkerCreate worker_create;

namespace {

constexpr auto info = log4cplus::INFO_LOG_LEVEL;
constexpr auto trace = log4cplus::TRACE_LOG_LEVEL;

const char* const emptyPage = R"({"result": "#n", "navigationNodeDescriptions": {"n": {}}})";
const http::Headers kept{ { "Cache-Control", "max-age=3600" } };

class CbAmazonMusicTest : public WorkerFixture
{
protected:
    CMUINode* node(const CMPath& path)
    {
        return qobject_cast<CMUINode*>(worker().nodes()->find(path));
    }

    void tellLoggedIn(bool loggedIn)
    {
        ASSERT_TRUE(QMetaObject::invokeMethod(
            &worker(), "on_loggedIn_changed", Qt::DirectConnection, Q_ARG(bool, loggedIn)));
    }

    int stops() { return host.streamer().count(RecordingStreamer::Kind::Stop); }

    /// Browses the root folder, which the service lets be kept.
    void browseRoot()
    {
        const auto reply = rows(TavuAmazonMusicBrowsePath());
        service.expectRequest("GET", "/").answer(200, emptyPage, kept);
        expectValue(reply);
    }
};

// What the worker makes.

TEST_F(CbAmazonMusicTest, IsMadeByThePluginsEntry)
{
    std::unique_ptr<CMAbstractWorker> made(worker_create(nullptr, QVariantHash()));

    auto* typed = qobject_cast<CMAmazonMusicWorker*>(made.get());
    ASSERT_NE(typed, nullptr);
    EXPECT_EQ(typed->name(), QStringLiteral("AmazonMusic"));
    EXPECT_EQ(typed->prefix(), TavuAmazonMusicPrefixPath());
}

TEST_F(CbAmazonMusicTest, HandsItsSettingsToItsBase)
{
    const CMAmazonMusicWorker elsewhere(
        { { QStringLiteral("prefix"), QStringLiteral("/elsewhere/") } });
    EXPECT_EQ(elsewhere.prefix().text(), QStringLiteral("/elsewhere/"));
}

TEST_F(CbAmazonMusicTest, HasAListForTheErrorsOfStations)
{
    const auto* list = node(worker().addPrefix(QStringLiteral("stationsError")));
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(int(list->roles().containerType()), 100);
}

TEST_F(CbAmazonMusicTest, HasASearchContainerWithTheQueryAsItsOneRow)
{
    signIn();
    TavuMetaData metaData;
    metaData.setServiceID(TavuService_AmazonMusic_Id());
    TavuMediaData mediaData;
    mediaData.setMetaData(metaData);

    const auto* search = node(TavuAmazonMusicSearchPath());
    ASSERT_NE(search, nullptr);
    EXPECT_EQ(search->roles().title(), QStringLiteral("Search"));
    EXPECT_EQ(int(search->roles().containerType()), 101);
    EXPECT_TRUE(search->roles().__contains(TavuRoles::ContainerPlayable()));
    EXPECT_FALSE(search->roles().containerPlayable());
    EXPECT_EQ(search->roles().mediaData(), mediaData);

    const auto* query = qobject_cast<CMAmazonMusicSearchQueryNode*>(
        node(TavuAmazonMusicSearchPath() + QStringLiteral("/query")));
    ASSERT_NE(query, nullptr);
    EXPECT_EQ(query->roles().title(), QStringLiteral("Search Stations, Tracks, Artists or Albums"));
    EXPECT_EQ(query->roles().mediaData(), mediaData);
    EXPECT_EQ(query->worker(), &worker());

    const TavuRowsRoles answer =
        expectValue(rows(TavuAmazonMusicSearchPath(), { TavuRoles::Path() }));
    EXPECT_EQ(answer.rowsCount(), 1);
    EXPECT_EQ(answer.rows(), (QVariantList{ QVariantList{ query->path().toEncoded() } }));
}

TEST_F(CbAmazonMusicTest, HasItsPlayLogicAtItsPath)
{
    worker();
    ASSERT_NE(PlayLogicInterface::instance(TavuAmazonMusicPlayLogicPath()), nullptr);
    EXPECT_NE(node(TavuAmazonMusicPlayLogicPath()), nullptr);
}

TEST_F(CbAmazonMusicTest, MakesItsPartsInTheOrderInWhichTheyNeedEachOther)
{
    const LogCapture log;
    worker();
    const QStringList traces = log.texts(trace);
    int last = -1;
    for (const char* part : { "CMAmazonMusicWorker::CMAmazonMusicWorker(",
             "AmazonMusicConnect::AmazonMusicConnect(", "AmazonMusicBrowser::AmazonMusicBrowser(",
             "AmazonMusicRetriever::AmazonMusicRetriever(",
             "AmazonMusicReporter::AmazonMusicReporter(",
             "AmazonMusicPlayLogic::AmazonMusicPlayLogic(",
             "CMAmazonMusicSearchQueryNode::CMAmazonMusicSearchQueryNode(",
             "AmazonMusicBrowser::setSeachNode(", "CMAmazonMusicWorker::createCloseReply(",
             "serviceInfo()", "AmazonMusicConnect::setLoggedIn(" }) {
        const int place = traces.indexOf(QRegularExpression(QStringLiteral("^Enter .*\\b")
            + QRegularExpression::escape(QString::fromLatin1(part)) + QStringLiteral(".*$")));
        EXPECT_GT(place, last) << part;
        last = place;
    }
}

TEST_F(CbAmazonMusicTest, PlaysWhatItsPlayLogicIsTold)
{
    signIn();
    TavuResource resource;
    resource.setUri(service.url(QStringLiteral("/station#p")).toString());
    TavuList<TavuResource> resources;
    resources.append(resource);
    TavuMediaData mediaData;
    mediaData.setResources(resources);
    TavuRoles row;
    row.setAudioType(TavuRolesAudioType::Station);
    row.setMediaData(mediaData);
    TavuPlayLogicPlayArgs args;
    args.setMediaRoles(row);
    const auto reply = PlayLogicInterface::instance(TavuAmazonMusicPlayLogicPath())->play(args);
    service.expectRequest("GET", "/station")
        .answer(200, R"({"playables": {"p": {"naturalTrackPointer": {"chunk": "/chunk"}}}})");
    service.expectRequest("GET", "/chunk")
        .answer(409, R"({"result": "#e", "generalErrorReports": {"e": {"brief": "Full"}}})");

    // The message stands in the worker's list of station errors.
    const TavuActionReply action(expectError(reply).actionReply());
    EXPECT_EQ(action.result().path(), worker().addPrefix(QStringLiteral("stationsError")));
    EXPECT_EQ(
        titles(expectValue(rows(action.result().path()))), QStringList{ QStringLiteral("Full") });
}

TEST_F(CbAmazonMusicTest, ClosesAScreenByItsCloseAction)
{
    expectCloseReply(activate(TavuAmazonMusicBrowseCloseActionPath(), QVariant()));
}

TEST_F(CbAmazonMusicTest, TakesReporterAndLoginAlongAtItsEnd)
{
    const QPointer<AmazonMusicReporter> reporter = worker().findChild<AmazonMusicReporter*>();
    const QPointer<OAuth2UiDeviceCode> login = worker().findChild<OAuth2UiDeviceCode*>();
    ASSERT_FALSE(reporter.isNull());
    ASSERT_FALSE(login.isNull());
    destroyWorker();

    EXPECT_TRUE(reporter.isNull());
    EXPECT_TRUE(login.isNull());
    EXPECT_EQ(PlayLogicInterface::instance(TavuAmazonMusicPlayLogicPath()), nullptr);
}

TEST_F(CbAmazonMusicTest, MayEndWhileItsAnswersAreUnderWay)
{
    signIn();
    const auto reply = rows(TavuAmazonMusicBrowsePath());
    const auto request = service.expectRequest("GET", "/");
    const auto post = activate(TavuAmazonMusicBrowsePostActionPath().addParam(QStringLiteral("url"),
                                   service.url(QStringLiteral("/buy")).toString()),
        true);
    const auto postRequest = service.expectRequest("POST", "/buy");
    destroyWorker();
    request.answer(200, emptyPage);
    postRequest.answer(200);

    expectPending(post);
    EXPECT_TRUE(expectFinished(reply));
}

// The registration with the host's login.

TEST_F(CbAmazonMusicTest, RegistersTheServiceWithTheHostsLogin)
{
    const auto set = [](const CMPath& path, const char* value) {
        CMRoot()->setValue(path, TavuValue::fromString(QString::fromLatin1(value)));
    };
    set(TavuAmazonMusicAuthorizationServiceUrlPath(), "https://auth.example/");
    set(TavuAmazonMusicClientIdPath(), "id");
    set(TavuAmazonMusicClientSecretPath(), "secret");
    set(TavuAmazonMusicTokenServiceUrlPath(), "https://token.example/");
    set(TavuAmazonMusicScope(), "music::all");
    set(TavuAmazonMusicDeviceCodeUrlPath(), "https://code.example/");
    const LogCapture log;
    worker();

    TavuOAuth2ServiceInfo expected;
    expected.setServiceName(TavuAmazonMusicName());
    expected.setDisplayName(QStringLiteral("Amazon Music"));
    expected.setAuthorizationUrl(QStringLiteral("https://auth.example/"));
    expected.setClientId(QStringLiteral("id"));
    expected.setClientSecret(QStringLiteral("secret"));
    expected.setTokenUrl(QStringLiteral("https://token.example/"));
    expected.setScope(QStringLiteral("music::all"));
    expected.setScopeData(QVariantHash());
    expected.setUsePkce(true);
    expected.setAuthMethod(static_cast<TavuOAuth2AuthMethod::Enum>(1));
    expected.setDeviceCodeUrl(QStringLiteral("https://code.example/"));
    expected.setDeviceCodeGrantType(QStringLiteral("device_code"));
    ASSERT_EQ(host.registeredServices().size(), 1);
    EXPECT_EQ(host.registeredServices().first(), expected);
    EXPECT_FALSE(log.mentions(QStringLiteral("secret")));
}

TEST_F(CbAmazonMusicTest, RegistersMissingSettingsAsEmptyTexts)
{
    worker();
    ASSERT_EQ(host.registeredServices().size(), 1);
    const TavuOAuth2ServiceInfo registered = host.registeredServices().first();
    EXPECT_TRUE(registered.__contains(TavuOAuth2ServiceInfo::ClientId()));
    EXPECT_TRUE(registered.clientId().isEmpty());
    EXPECT_TRUE(registered.deviceCodeUrl().isEmpty());
}

TEST_F(CbAmazonMusicTest, RegistersTheServiceWhenItsNodesAreThere)
{
    int registrations = 0;
    QObject context;
    CMRoot()->addService(
        TavuOAuth2AddServicePath(), &context, [&](const QVariant&, const CMReply<QVariant>& reply) {
            ++registrations;
            auto* playLogic =
                dynamic_cast<CMNode*>(PlayLogicInterface::instance(TavuAmazonMusicPlayLogicPath()));
            ASSERT_NE(playLogic, nullptr);
            for (const CMPath& path :
                { TavuAmazonMusicPrefixPath() + QStringLiteral("stationsError"),
                    TavuAmazonMusicPrePlayPath(), TavuAmazonMusicSearchPath(),
                    TavuAmazonMusicSearchPath() + QStringLiteral("/query"),
                    TavuAmazonMusicBrowsePostActionPath(), TavuAmazonMusicBrowseRatingPath(),
                    TavuAmazonMusicBrowseCloseActionPath() })
                EXPECT_NE(playLogic->nodes()->find(path), nullptr) << path.text().toStdString();
            reply.setValue(QVariant());
        });
    worker();
    EXPECT_EQ(registrations, 1);
}

TEST_F(CbAmazonMusicTest, WaitsUntilTheHostHasAnsweredTheRegistration)
{
    CMReply<QVariant> registration;
    QObject context;
    CMRoot()->addService(TavuOAuth2AddServicePath(), &context,
        [&](const QVariant&, const CMReply<QVariant>& reply) { registration = reply; });
    std::atomic<CMAmazonMusicWorker*> made{ nullptr };
    const std::unique_ptr<QThread> thread(
        QThread::create([&] { made = new CMAmazonMusicWorker(QVariantHash()); }));
    thread->start();
    EXPECT_TRUE(waitUntil([&] { return !!registration; }));
    settle();
    EXPECT_EQ(made, nullptr);

    // An error is an answer too.
    registration.setError(CMError(TrString("no")));
    EXPECT_TRUE(waitUntil([&] { return made != nullptr; }));
    thread->wait();
    delete made.load();
}

// Where rows requests go.

TEST_F(CbAmazonMusicTest, ShowsTheLoginScreensForEveryPathWhileSignedOut)
{
    auto* login = worker().findChild<OAuth2UiDeviceCode*>();
    for (const CMPath& path : { TavuAmazonMusicSearchPath(), TavuAmazonMusicBrowsePath(),
             worker().addPrefix(QStringLiteral("stationsError")) }) {
        const QStringList roles{ TavuRoles::Title(), TavuRoles::Type() };
        const CMGetRowsRequest asked(path, 0, 9, roles);
        login->getRowsRequest(asked);
        const TavuRowsRoles screen = expectValue(asked.reply());

        const TavuRowsRoles answer = expectValue(rows(path, roles));
        EXPECT_FALSE(answer.rows().isEmpty());
        EXPECT_EQ(answer.rows(), screen.rows());
    }
    service.expectNoRequest();
}

TEST_F(CbAmazonMusicTest, BrowsesWhatLiesUnderTheBrowsePath)
{
    signIn();
    const CMPath paths[] = { TavuAmazonMusicBrowsePath(),
        TavuAmazonMusicBrowsePath()
            .appendSubpath(QStringLiteral("deeper"))
            .addParam(QStringLiteral("url"), QStringLiteral("https://elsewhere.test/")) };
    for (const CMPath& path : paths) {
        const auto reply = rows(path);
        service.expectRequest("GET", "/").answer(200, emptyPage);
        EXPECT_EQ(expectValue(reply).rowsCount(), 0);
    }
}

TEST_F(CbAmazonMusicTest, OffersTheSearchInTheRootFolder)
{
    signIn();
    const auto reply = rows(TavuAmazonMusicBrowsePath());
    service.expectRequest("GET", "/").answer(200, emptyPage);
    EXPECT_EQ(expectValue(reply).roles().search().path(), TavuAmazonMusicSearchPath());
}

TEST_F(CbAmazonMusicTest, AnswersOtherPathsFromItsNodes)
{
    signIn();
    EXPECT_EQ(titles(expectValue(rows(TavuAmazonMusicSearchPath()))),
        QStringList{ QStringLiteral("Search Stations, Tracks, Artists or Albums") });
    EXPECT_EQ(
        expectValue(rows(worker().addPrefix(QStringLiteral("stationsError")))).rowsCount(), 0);
    // A name that only begins like the browse path.
    expectError(rows(TavuAmazonMusicBrowsePath() + QStringLiteral("r")));
}

TEST_F(CbAmazonMusicTest, AnswersFromItsOwnThreadWhoeverAsks)
{
    signIn();
    const LogCapture log;
    const CMGetRowsRequest request(
        TavuAmazonMusicSearchPath().addParam(QStringLiteral("a"), QStringLiteral("b")), 2, 7,
        { TavuRoles::Title(), TavuRoles::Path() });
    const std::unique_ptr<QThread> thread(
        QThread::create([&] { worker().getRowsRequest(request); }));
    thread->start();
    thread->wait();
    EXPECT_FALSE(request.reply().isFinished());

    EXPECT_EQ(expectValue(request.reply()).rowsCount(), 1);
    EXPECT_EQ(log.count(trace,
                  QStringLiteral("Enter virtual void CMAmazonMusicWorker::getRowsRequest("
                                 "const CMGetRowsRequest&): path: /AmazonMusic/search?a=b, "
                                 "from: 2, to: 7, roles: title, path")),
        1);
}

// Signing in and out.

TEST_F(CbAmazonMusicTest, FollowsTheLogin)
{
    worker();
    host.setToken(QStringLiteral("T1"));
    host.setLoggedIn(true);
    settle();
    EXPECT_TRUE(waitUntil([&] { return worker().findChild<OAuth2UiDeviceCode*>()->loggedIn(); }));
    browseRoot();

    const LogCapture log;
    host.setLoggedIn(false);
    EXPECT_TRUE(waitUntil([&] { return stops() == 1; }));
    EXPECT_EQ(log.texts(info),
        QStringList{
            QStringLiteral("Enter void CMAmazonMusicWorker::on_loggedIn_changed(bool): 0") });
}

TEST_F(CbAmazonMusicTest, HoldsRequestsForAUserWhoHasSignedInBefore)
{
    host.setLoggedIn(true);
    const auto reply = rows(TavuAmazonMusicBrowsePath());
    expectPending(reply);
    host.setToken(QStringLiteral("T1"));
    service.expectRequest("GET", "/").answer(200, emptyPage);
    expectValue(reply);
}

TEST_F(CbAmazonMusicTest, StopsPlaybackOnceWhenTheUserSignsOut)
{
    signIn();
    const LogCapture log;
    const auto clears = [&] {
        return log.count(trace, QStringLiteral("Enter void AmazonMusicConnect::clearCache()"));
    };
    tellLoggedIn(false);
    EXPECT_EQ(stops(), 1);
    EXPECT_EQ(clears(), 1);
    tellLoggedIn(false);
    EXPECT_EQ(stops(), 1);
    EXPECT_EQ(clears(), 1);
    tellLoggedIn(true);
    EXPECT_EQ(stops(), 1);
    EXPECT_EQ(clears(), 2);
}

TEST_F(CbAmazonMusicTest, ForgetsKeptAnswersWhenTheLoginChanges)
{
    signIn();
    browseRoot();
    tellLoggedIn(false);
    tellLoggedIn(true);
    // Asked for again, so it was not kept.
    browseRoot();
}

TEST_F(CbAmazonMusicTest, KeepsAnswersWhenTheLoginStaysAsItIs)
{
    signIn();
    browseRoot();
    tellLoggedIn(true);
    expectValue(rows(TavuAmazonMusicBrowsePath()));
    service.expectNoRequest();
}

TEST_F(CbAmazonMusicTest, ClosesTheSessionWhenTheUserSignsOut)
{
    signIn();
    tellLoggedIn(false);
    // The login screens have not heard of it, so that the browser is asked.
    expectError(rows(TavuAmazonMusicBrowsePath()),
        QStringLiteral("Account credentials are not correct. Please log in again."));
    service.expectNoRequest();

    tellLoggedIn(true);
    browseRoot();
}

} // namespace
