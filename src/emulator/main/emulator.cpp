#include "emulator.h"

#include "../http/certificates.h"
#include "../http/controlservice.h"
#include "../http/gateway.h"
#include "../http/hostileports.h"
#include "../http/loginservice.h"
#include "../http/musicservice.h"
#include "../samples/samplealbums.h"
#include "httpserver.h"
#include "savefile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QNetworkInterface>
#include <QRandomGenerator>
#include <QTimer>

namespace emulator {

namespace {

constexpr int readyAtLatestMs = 2000;
constexpr qint64 progressEveryMs = 1000;
constexpr size_t problemsTold = 10;
constexpr int portInUse = 2;

QString text(const char* ascii)
{
    return QString::fromUtf8(ascii);
}

QByteArray readAll(const QString& file)
{
    QFile in(file);
    return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
}

QString literal(const QHostAddress& address)
{
    return address.protocol() == QAbstractSocket::IPv6Protocol
        ? QLatin1Char('[') + address.toString() + QLatin1Char(']')
        : address.toString();
}

// The address by which others reach a server that listens on this one.
QHostAddress reachable(const QHostAddress& address)
{
    if (address != QHostAddress(QHostAddress::AnyIPv4) && address != QHostAddress(QHostAddress::Any)
        && address != QHostAddress(QHostAddress::AnyIPv6))
        return address;
    for (const QHostAddress& own : QNetworkInterface::allAddresses()) {
        if (!own.isLoopback() && own.protocol() == QAbstractSocket::IPv4Protocol)
            return own;
    }
    return QHostAddress(QHostAddress::LocalHost);
}

QString baseOf(bool secure, const QString& host, quint16 port)
{
    return text(secure ? "https://%1:%2" : "http://%1:%2").arg(host).arg(port);
}

// The authority outlives the run, so that a restarted emulator is still trusted.
Identity keptAuthority(const QString& certificateFile, const QString& keyFile, QString* error)
{
    Identity kept{ readAll(certificateFile), readAll(keyFile) };
    if (!kept.isEmpty() && isUsable(kept))
        return kept;
    kept = makeAuthority();
    if (files::replaceFile(keyFile, kept.key, files::privateFile, error))
        files::replaceFile(certificateFile, kept.certificate, files::publicFile, error);
    return kept;
}

http::Limits limits()
{
    http::Limits limits;
    limits.writeTimeoutMs = 0; // a paused player may leave its stream alone for hours
    limits.bodyBytes = 1024LL * 1024;
    return limits;
}

} // namespace

struct Emulator::Services
{
    Services(Emulator& emulator, const QByteArray& secret)
        : music(
            *emulator.m_library, emulator.m_settings.documents, secret, emulator.m_settings.seed)
        , login(*emulator.m_authority, secret,
              [&emulator] {
                  return baseOf(false, literal(reachable(emulator.m_settings.address)),
                             emulator.m_httpPort)
                      + text("/activate");
              })
        , control(emulator.m_ledger, emulator.m_dial, *emulator.m_authority, *emulator.m_library)
        , gateway(
              emulator.m_ledger, emulator.m_dial,
              [&emulator](
                  const QByteArray& authorization) { return checkToken(emulator, authorization); },
              [&emulator](const http::Request& request) { return momentOf(emulator, request); })
    {
        music.addRoutes(gateway);
        login.addRoutes(gateway);
        control.addRoutes(gateway);
        gateway.setAnnotate([this](const http::Request& request, QVariantHash& details) {
            music.annotate(request, details);
        });
    }

    static QString checkToken(const Emulator& emulator, const QByteArray& authorization)
    {
        if (!emulator.m_settings.tokenNeeded)
            return text("good");
        switch (
            emulator.m_authority->checkBearer(authorization, QDateTime::currentMSecsSinceEpoch())) {
        case oauth2::TokenState::Good:
            return text("good");
        case oauth2::TokenState::Missing:
            return text("missing");
        case oauth2::TokenState::Unknown:
            return text("unknown");
        case oauth2::TokenState::Expired:
            return text("expired");
        case oauth2::TokenState::Revoked:
            return text("revoked");
        }
        return {};
    }

    static documents::Moment momentOf(const Emulator& emulator, const http::Request& request)
    {
        const bool mediaTls = emulator.m_settings.mediaOverTls;
        documents::Moment moment;
        moment.nowMs = QDateTime::currentMSecsSinceEpoch();
        moment.serviceBase =
            text(request.secure ? "https://" : "http://") + QString::fromLatin1(request.authority);
        moment.mediaBase = baseOf(mediaTls, literal(request.localAddress),
            mediaTls ? emulator.m_tlsPort : emulator.m_httpPort);
        return moment;
    }

    MusicService music;
    LoginService login;
    ControlService control;
    Gateway gateway;
};

Emulator::Emulator(const Settings& settings, QObject* parent)
    : QObject(parent)
    , m_settings(settings)
{
    if (m_settings.seed == 0)
        m_settings.seed = QRandomGenerator::system()->generate();
    if (m_settings.samplesFolder.isEmpty())
        m_settings.samplesFolder = statePath("samples");
    for (const faults::Rule& rule : m_settings.faults)
        m_dial.add(rule);
}

Emulator::~Emulator() = default;

QString Emulator::statePath(const char* name) const
{
    return m_settings.stateFolder + QLatin1Char('/') + QLatin1String(name);
}

QString Emulator::caFile() const
{
    return m_settings.caFile.isEmpty() ? statePath("ca.pem") : m_settings.caFile;
}

QString Emulator::musicFolder() const
{
    return m_settings.musicFolder.isEmpty() ? m_settings.samplesFolder : m_settings.musicFolder;
}

documents::Rules& Emulator::documentRules()
{
    return m_services->music.rules();
}

std::optional<Emulator::Failure> Emulator::start()
{
    // Ports before samples: a port that is taken shows at once, samples take their time.
    for (const auto step : { &Emulator::makeFolders, &Emulator::makeServices, &Emulator::listen,
             &Emulator::makeSamples }) {
        if (auto failure = (this->*step)())
            return failure;
    }
    connect(m_library.get(), &catalogue::Library::catalogueChanged, this, &Emulator::tellProgress);
    connect(m_library.get(), &catalogue::Library::scanned, this, &Emulator::tellScanned);
    connect(m_library.get(), &catalogue::Library::stateNotSaved, this, &Emulator::notice);
    QTimer::singleShot(readyAtLatestMs, this, &Emulator::becomeReady);
    m_library->scan();
    return std::nullopt;
}

std::optional<Emulator::Failure> Emulator::makeFolders()
{
    if (!QDir().mkpath(m_settings.stateFolder))
        return Failure{ text("The state folder %1 cannot be made. Choose another one with --state.")
                            .arg(m_settings.stateFolder),
            1 };
    return std::nullopt;
}

std::optional<Emulator::Failure> Emulator::makeSamples()
{
    if (!m_settings.musicFolder.isEmpty() || QDir(m_settings.samplesFolder).exists())
        return std::nullopt;
    Q_EMIT notice(text("Making sample albums in %1 ...").arg(m_settings.samplesFolder));
    const QString problem = samples::makeSampleAlbums(m_settings.samplesFolder);
    if (problem.isEmpty())
        return std::nullopt;
    return Failure{
        text("The sample albums cannot be made: %1. Free some space, or give another folder for "
             "them with --samples, or one that holds music.")
            .arg(problem),
        1
    };
}

QByteArray Emulator::secret(QString* error) const
{
    const QString file = statePath("secret");
    QByteArray secret = readAll(file);
    if (secret.size() == 64)
        return secret;
    secret.clear();
    while (secret.size() < 64)
        secret += QByteArray::number(QRandomGenerator::system()->generate64(), 16);
    secret.truncate(64);
    files::replaceFile(file, secret, files::privateFile, error);
    return secret;
}

Emulator::Failure Emulator::stateRefused(const QString& error) const
{
    return { text("State cannot be kept: %1. Free some space in %2, or choose another folder with "
                  "--state.")
                 .arg(error, m_settings.stateFolder),
        1 };
}

std::optional<Emulator::Failure> Emulator::makeServices()
{
    QString error;
    const QByteArray key = secret(&error);
    if (!error.isEmpty())
        return stateRefused(error);
    m_library = std::make_unique<catalogue::Library>(musicFolder(), statePath("scan"));
    m_authority = std::make_unique<oauth2::Authority>(m_settings.oauth2, key,
        statePath("logins.json"), [this](const QString& problem) { Q_EMIT notice(problem); });
    m_services = std::make_unique<Services>(*this, key);
    m_server = std::make_unique<http::Server>();
    m_server->setLimits(limits());
    m_server->setHandler([this](const http::Request& request, const http::Responder& responder) {
        m_services->gateway.handle(request, responder);
    });
    return std::nullopt;
}

Emulator::Failure Emulator::portRefused(quint16 port) const
{
    const QString why = m_server->errorString();
    const QString address = m_settings.address.toString();
    if (port == 0)
        return { text("No port of %1 can be used: %2. --listen takes an address of this machine.")
                     .arg(address, why),
            portInUse };
    return { text("Port %1 of %2 cannot be used: %3. Is another emulator running? \"ss -ltnp\" "
                  "tells who holds it; port 0 takes a free one.")
                 .arg(QString::number(port), address, why),
        portInUse };
}

std::optional<Emulator::Failure> Emulator::listen()
{
    m_httpPort = m_server->listen(m_settings.address, m_settings.httpPort);
    if (m_httpPort == 0)
        return portRefused(m_settings.httpPort);
    return listenTls();
}

std::optional<Emulator::Failure> Emulator::listenTls()
{
    QString error;
    const Identity authority = keptAuthority(caFile(), statePath("ca-key.pem"), &error);
    if (!error.isEmpty() && !m_settings.caFile.isEmpty())
        return Failure{ text("The certificate authority cannot be kept: %1. Choose another file "
                             "with --ca-file.")
                            .arg(error),
            1 };
    if (!error.isEmpty())
        return stateRefused(error);
    QStringList names = m_settings.hosts;
    names += { text("localhost"), text("127.0.0.1"), text("::1") };
    const QHostAddress own = reachable(m_settings.address);
    if (!own.isLoopback())
        names += own.toString();
    const Identity identity = makeServerIdentity(authority, names);
    if (identity.isEmpty())
        return Failure{ text("No certificate can be made for the names %1. Give other ones with "
                             "--host.")
                            .arg(names.join(QLatin1String(", "))),
            1 };
    m_tlsPort = m_server->listen(m_settings.address, m_settings.tlsPort,
        http::tlsConfiguration(identity.certificate, identity.key));
    if (m_tlsPort == 0)
        return portRefused(m_settings.tlsPort);
    if (!m_settings.hostilePorts)
        return std::nullopt;
    m_hostilePorts = std::make_unique<HostilePorts>();
    const QString problem =
        m_hostilePorts->open(*m_server, m_settings.address, authority, m_settings.hosts.first());
    return problem.isEmpty() ? std::nullopt : std::optional<Failure>({ problem, 1 });
}

std::map<QString, quint16> Emulator::hostilePorts() const
{
    return m_hostilePorts ? m_hostilePorts->ports() : std::map<QString, quint16>();
}

QVariantHash Emulator::description() const
{
    const QString address = literal(reachable(m_settings.address));
    const QString plain = baseOf(false, address, m_httpPort);
    const QString service = text("https://") + m_settings.hosts.first();
    QVariantHash hostile;
    for (const auto& port : hostilePorts())
        hostile.insert(port.first, port.second);
    return { { text("ready"), true }, { text("address"), reachable(m_settings.address).toString() },
        { text("httpPort"), m_httpPort }, { text("tlsPort"), m_tlsPort },
        { text("http"), plain + text("/") },
        { text("https"), baseOf(true, address, m_tlsPort) + text("/") },
        { text("caFile"), QDir::current().absoluteFilePath(caFile()) },
        { text("hosts"), m_settings.hosts },
        { text("domainSuffix"), text(".") + m_settings.hosts.first() },
        { text("baseUrl"), service + text("/") },
        { text("deviceCodeUrl"), service + text("/oauth2/device") },
        { text("tokenUrl"), service + text("/oauth2/token") },
        { text("authorizationUrl"), service + text("/activate") },
        { text("verificationUri"), plain + text("/activate") },
        { text("clientId"), m_settings.oauth2.clientId },
        { text("control"), plain + text("/emulator/") }, { text("hostilePorts"), hostile },
        { text("music"), m_library->root() } };
}

void Emulator::becomeReady()
{
    if (m_ready)
        return;
    m_ready = true;
    Q_EMIT ready();
}

void Emulator::tellProgress()
{
    becomeReady();
    const catalogue::ScanStatus status = m_library->status();
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    if (status.phase != catalogue::ScanStatus::Phase::Reading || now - m_toldMs < progressEveryMs)
        return;
    m_toldMs = now;
    Q_EMIT notice(text("Reading the music: %1 of %2 files").arg(status.read).arg(status.toRead));
}

void Emulator::tellScanned()
{
    const auto catalogue = m_library->catalogue();
    const catalogue::ScanStatus status = m_library->status();
    if (catalogue->tracks.empty())
        Q_EMIT notice(text("There is no music in %1. Put FLAC, MP3, Ogg, Opus or M4A files there, "
                           "or start without a folder for the sample albums.")
                          .arg(m_library->root()));
    else
        Q_EMIT notice(text("Serving %1 tracks on %2 albums from %3")
                          .arg(catalogue->tracks.size())
                          .arg(catalogue->albums.size())
                          .arg(m_library->root()));
    for (size_t i = 0; i < status.problems.size() && i < problemsTold; ++i)
        Q_EMIT notice(
            text("Left out: %1: %2").arg(status.problems[i].first, status.problems[i].second));
    if (status.problems.size() > problemsTold)
        Q_EMIT notice(text("%1 more were left out; %2emulator/status lists them all")
                          .arg(status.problems.size() - problemsTold)
                          .arg(description().value(text("http")).toString()));
}

} // namespace emulator
