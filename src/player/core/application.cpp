#include "application.h"

#include "cmroot.h"
#include "cmvalueitem.h"
#include "cmworker.h"
#include "controlserver.h"
#include "controltoken.h"
#include "gststreamer.h"
#include "httpclient.h"
#include "mpris.h"
#include "networkstate.h"
#include "oauth2service.h"
#include "openfiles.h"
#include "pictureclient.h"
#include "player.h"
#include "pluginhost.h"
#include "redactor.h"
#include "renewingstreamer.h"
#include "settingsvalues.h"
#include "statekeeper.h"
#include "streameraudio.h"
#include "tavupaths.h"
#include "urlpolicy.h"
#include "webpage.h"

#include <QFile>
#include <QHostAddress>

namespace player {

namespace {

StreamerOptions streamerOptions(const Settings& settings)
{
    const HttpClientConfig shared = HttpClientConfig::shared();
    StreamerOptions options;
    options.http.caFile = shared.caFile;
    options.http.connectTo = shared.connectTo;
    options.http.refusesLocalAddresses = httpclient::refusesLocalAddresses(shared);
    options.output = settings.text("player.output");
    return options;
}

/// Tells the log of every access token, so that none stands in it.
class TokenGuard : public QObject
{
    Q_OBJECT

public:
    explicit TokenGuard(const OAuth2Service& oauth2)
    {
        connect(&oauth2, &OAuth2Service::registered, this, &TokenGuard::watch);
    }

public Q_SLOTS:
    void on_token_changed(const TavuValue& value) { addSecret(value.string().toStdString()); }

private:
    void watch(const QString& service)
    {
        const CMPath path = TavuOAuth2ServicePath().appendSubpath(service).appendSubpath(
            TavuOAuth2AccessTokenSubPath());
        new CMValueItem(this, path, this, SLOT(on_token_changed(TavuValue)), Qt::AutoConnection);
    }
};

QString lockFile(const QString& stateFolder)
{
    return stateFolder + QLatin1String("/lock");
}

/// The name of a plug-in's worker is all that a plug-in without sign-in tells of itself.
Service serviceOf(const CMAbstractWorker* worker, const OAuth2Service& oauth2)
{
    const auto* named = qobject_cast<const CMWorker*>(worker);
    Service service;
    service.prefix = named ? named->prefix() : CMPath();
    service.name = named ? named->name() : QString();
    if (!oauth2.registrations().isEmpty()) {
        service.account = oauth2.registrations().first().name;
        service.name = oauth2.registrations().first().displayName;
    }
    return service;
}

} // namespace

// In the order in which they are made; what comes later may use what came before.
struct Application::Parts
{
    Parts(const Settings& settings, const QString& stateFolder)
        : network(settings)
        , oauth2(stateFolder)
        , tokenGuard(oauth2)
        , gstreamer(streamerOptions(settings))
        , streamer(&gstreamer)
        , audio(&gstreamer)
        , player(&audio)
    {
        Streamer::setInstance(&streamer);
        player.setBeforeResume([this](const auto& done) { streamer.renewIfExpired(done); });
        player.setStartAt(
            [this](const TavuRoles& track, qint64 position) { streamer.startAt(track, position); });
        player.setAwaitsNext([this] { return streamer.awaitsNext(); });
        connect(&streamer, &RenewingStreamer::nextMediaChanged, &player, &Player::setNextTrack);
    }

    NetworkState network;
    OAuth2Service oauth2;
    TokenGuard tokenGuard;
    GstStreamer gstreamer;
    RenewingStreamer streamer;
    StreamerAudio audio;
    Player player;
    PictureClient pictures;
    std::unique_ptr<control::ControlServer> control;
    std::unique_ptr<Mpris> mpris;
    PluginHost plugin;
    std::unique_ptr<StateKeeper> keeper; // First to end, while all is as it was.
};

Application::Application(const Settings& settings, const QString& stateFolder,
    const QString& pluginFile, QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_stateFolder(stateFolder)
    , m_pluginFile(pluginFile)
    , m_lock(lockFile(stateFolder))
{
}

Application::~Application() = default;

void Application::start()
{
    if (!lockState() || !publish())
        return;
    makeParts();
    if (!listen())
        return;
    if (m_settings.boolean("player.mpris"))
        m_parts->mpris = std::make_unique<Mpris>(&m_parts->player, m_settings.text("player.name"),
            Mpris::busNamed(m_settings.text("player.mpris-bus")));
    loadPlugin();
}

void Application::giveUp(ExitCode code, const QString& message)
{
    Q_EMIT failed(code, message);
}

bool Application::lockState()
{
    m_lock.setStaleLockTime(0);
    // An orderly end takes the lock away.
    m_endedUnexpectedly = QFile::exists(lockFile(m_stateFolder));
    if (m_lock.tryLock())
        return true;
    if (m_lock.error() == QLockFile::LockFailedError)
        giveUp(Failed,
            QStringLiteral("Another player uses the state folder %1. Stop it, or give this one a "
                           "folder of its own with player.state-folder.")
                .arg(m_stateFolder));
    else
        giveUp(NoPermission,
            QStringLiteral("The state folder %1 cannot be written. Free some space there, or set "
                           "player.state-folder to a folder that can be written.")
                .arg(m_stateFolder));
    return false;
}

bool Application::publish()
{
    const QString problem = publishSettings(m_settings);
    if (problem.isEmpty())
        return true;
    giveUp(NotConfigured, problem);
    return false;
}

void Application::makeParts()
{
    m_parts = std::make_unique<Parts>(m_settings, m_stateFolder);
    m_parts->audio.setVolume(qBound(0, m_settings.number("player.volume"), 100));
    m_parts->keeper = std::make_unique<StateKeeper>(&m_parts->player,
        m_stateFolder + QLatin1String("/state.json"), m_settings.text("service.base-url"));
    m_parts->keeper->restore();
    if (m_endedUnexpectedly)
        m_parts->player.addMessage(QStringLiteral("info"),
            QStringLiteral("The player ended unexpectedly"),
            QStringLiteral("It has been started again. If it ends whenever something certain is "
                           "played, please choose something else."),
            QStringLiteral("player"));
    connect(&m_parts->gstreamer, &GstStreamer::outputLost, this, [this](const CMError& lost) {
        m_parts->player.addMessage(
            QStringLiteral("error"), lost.title(), lost.message(), QStringLiteral("output"));
    });
}

QString Application::makeToken()
{
    const QString configured = m_settings.text("control.token-file");
    ControlToken token(
        configured.isEmpty() ? m_stateFolder + QLatin1String("/control-token") : configured);
    if (!token.problem().isEmpty())
        giveUp(NoPermission, token.problem());
    return token.text();
}

bool Application::listen()
{
    const QHostAddress address(m_settings.text("control.address"));
    if (!address.isLoopback()) {
        m_token = makeToken();
        if (m_token.isEmpty())
            return false;
        addLastingSecret(m_token.toStdString());
    }
    initWebPage();
    control::Options options;
    // Clients must leave descriptors for the sound, and one of them places for the others.
    options.limits.connections = qMin(options.limits.connections, openFilesAtMost() / 2);
    if (!address.isLoopback())
        options.limits.connectionsPerAddress = qMin(256, options.limits.connections / 2);
    options.hosts = m_settings.list("control.hosts");
    options.token = m_token.toLatin1();
    options.fetchArtwork = [this](const QString& url, const auto& done) {
        m_parts->pictures.fetch(url, done);
    };
    m_parts->control = std::make_unique<control::ControlServer>(m_parts->player, options);
    const auto wanted = static_cast<quint16>(m_settings.number("control.port"));
    m_port = m_parts->control->listen(address, wanted);
    if (m_port != 0)
        return true;
    giveUp(BadArguments,
        QStringLiteral("Port %1 of %2 cannot be used (%3). Another program may hold it; \"ss -ltnp "
                       "'sport = :%1'\" shows which. Choose another with control.port.")
            .arg(wanted)
            .arg(address.toString(), m_parts->control->errorString()));
    return false;
}

void Application::loadPlugin()
{
    connect(&m_parts->plugin, &PluginHost::ready, this, &Application::on_plugin_ready);
    connect(&m_parts->plugin, &PluginHost::failed, this,
        [this](const QString& message) { giveUp(Failed, message); });
    m_parts->plugin.load(m_pluginFile, pluginSettings(m_settings));
}

void Application::on_plugin_ready()
{
    m_parts->keeper->begin();
    m_parts->player.followService(serviceOf(m_parts->plugin.worker(), m_parts->oauth2));
    if (m_settings.boolean("player.resume") && m_parts->keeper->wasPlaying())
        m_parts->player.command(PlayerFacade::Command::Resume);
    Q_EMIT ready();
}

QString Application::address() const
{
    const QHostAddress address(m_settings.text("control.address"));
    const bool any = address == QHostAddress(QHostAddress::AnyIPv4)
        || address == QHostAddress(QHostAddress::AnyIPv6)
        || address == QHostAddress(QHostAddress::Any);
    QString host = any ? QStringLiteral("localhost") : address.toString();
    if (host.contains(QLatin1Char(':')))
        host = QLatin1Char('[') + host + QLatin1Char(']');
    return QStringLiteral("http://%1:%2/").arg(host).arg(m_port);
}

QString Application::token() const
{
    return m_token;
}

PlayerFacade& Application::player()
{
    return m_parts->player;
}

} // namespace player

#include "application.moc"
