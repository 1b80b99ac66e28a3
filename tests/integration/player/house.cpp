#include "house.h"

#include "cmroot.h"
#include "printers.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

namespace {

constexpr int patienceMs = 30000;

emulator::Settings emulatorSettings(const House::Tune& tune)
{
    static const QTemporaryDir state;
    static int count = 0;
    emulator::Settings settings;
    settings.stateFolder = state.filePath(QString::number(++count));
    settings.samplesFolder = QStringLiteral(SAMPLES_FOLDER);
    settings.seed = 1;
    settings.oauth2.pollIntervalS = 1;
    if (tune)
        tune(settings);
    return settings;
}

QString text(const QVariantHash& hash, const char* key)
{
    return hash.value(QString::fromLatin1(key)).toString();
}

} // namespace

House::House(const Tune& tune)
    : m_emulator(emulatorSettings(tune))
    , m_output(QStringLiteral("audioconvert ! fakesink sync=false"))
{
    const QString problem = m_emulator.start();
    EXPECT_EQ(problem, QString());
    QFile secret(file("secret"));
    EXPECT_TRUE(secret.open(QIODevice::WriteOnly));
    secret.write("emulator-secret");
    secret.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
}

House::~House()
{
    stopPlayer();
    CMRoot()->reset();
}

QString House::file(const char* name) const
{
    return m_folder.filePath(QString::fromLatin1(name));
}

QString House::samplesFolder() const
{
    return QStringLiteral(SAMPLES_FOLDER);
}

void House::start()
{
    const QVariantHash service = m_emulator.emulator().description();
    QString mappings;
    for (const QString& host : service.value(QStringLiteral("hosts")).toStringList())
        mappings += QStringLiteral("%1:443:127.0.0.1:%2 ").arg(host, text(service, "tlsPort"));
    player::Settings settings;
    const auto set = [&](const QString& name, const QString& value) {
        EXPECT_TRUE(settings.apply(name + QLatin1Char('=') + value))
            << settings.error().toStdString();
    };
    set(QStringLiteral("service.base-url"), text(service, "baseUrl"));
    set(QStringLiteral("service.device-code-url"), text(service, "deviceCodeUrl"));
    set(QStringLiteral("service.token-url"), text(service, "tokenUrl"));
    set(QStringLiteral("service.authorization-url"), text(service, "authorizationUrl"));
    set(QStringLiteral("service.client-id"), text(service, "clientId"));
    set(QStringLiteral("service.client-secret-file"), file("secret"));
    set(QStringLiteral("service.domain-suffix"), text(service, "domainSuffix"));
    set(QStringLiteral("service.ca-file"), text(service, "caFile"));
    set(QStringLiteral("service.connect-to"), mappings);
    set(QStringLiteral("player.output"), m_output);
    set(QStringLiteral("player.mpris"), QStringLiteral("false"));
    set(QStringLiteral("control.port"), QStringLiteral("0"));
    for (const QString& assignment : m_assignments)
        EXPECT_TRUE(settings.apply(assignment)) << settings.error().toStdString();

    m_application = std::make_unique<player::Application>(
        settings, m_folder.path(), QStringLiteral(PLUGIN_FILE));
    bool ready = false;
    QString failure;
    QObject::connect(m_application.get(), &player::Application::ready, m_application.get(),
        [&ready] { ready = true; });
    QObject::connect(m_application.get(), &player::Application::failed, m_application.get(),
        [&failure](int, const QString& message) { failure = message; });
    m_application->start();
    EXPECT_TRUE(waitUntil([&] { return ready || !failure.isEmpty(); }, patienceMs));
    EXPECT_EQ(failure, QString());
}

void House::stopPlayer()
{
    m_application.reset();
    settle();
}

void House::startSignedIn()
{
    start();
    signIn();
}

void House::signIn()
{
    player().startLogin();
    EXPECT_TRUE(
        waitUntil([this] { return text(player().login(), "state") == QLatin1String("waiting"); },
            patienceMs));
    const QString code = text(player().login(), "userCode");
    m_emulator.run([this, code] {
        EXPECT_TRUE(service().authority().decide(code, true, QDateTime::currentMSecsSinceEpoch()));
    });
    EXPECT_TRUE(
        waitUntil([this] { return text(player().login(), "state") == QLatin1String("loggedIn"); },
            patienceMs));
    // The plug-in hears of it on its own thread.
    EXPECT_TRUE(waitUntil(
        [this] {
            const CMReply<QVariant> reply = player().rows(QString(), 0, 0);
            waitUntil([&] { return reply.isFinished(); }, patienceMs);
            return !reply.error().isSet()
                && text(reply.value()
                            .toHash()
                            .value(QStringLiteral("rows"))
                            .toList()
                            .value(0)
                            .toHash(),
                       "type")
                == QLatin1String("1");
        },
        patienceMs));
}

void House::fault(const QByteArray& rule)
{
    const auto parsed = emulator::faults::parseRule(QString::fromLatin1(rule));
    EXPECT_EQ(parsed.problem, QString());
    if (parsed.rule)
        service().dial().add(*parsed.rule);
}

void House::liftFaults()
{
    service().dial().clear();
}

QVariantHash House::screen(const QString& path, int from, int to)
{
    return valueOf(player().rows(path, from, to)).toHash();
}

QVariantList House::rows(const QString& path)
{
    return screen(path).value(QStringLiteral("rows")).toList();
}

QVariantHash House::row(const QString& steps)
{
    QVariantHash row;
    for (const QString& step : steps.split(QLatin1Char('/'))) {
        const QVariantList list = rows(text(row, "path"));
        row.clear();
        for (const QVariant& candidate : list) {
            if (text(candidate.toHash(), "title").startsWith(step)) {
                row = candidate.toHash();
                break;
            }
        }
        EXPECT_FALSE(row.isEmpty()) << "no row " << step.toStdString();
    }
    return row;
}

void House::play(const QString& steps)
{
    valueOf(player().play(row(steps)));
}

void House::command(PlayerFacade::Command command)
{
    valueOf(player().command(command));
}

bool House::waitForState(int wanted)
{
    return waitUntil([&] { return state() == wanted; }, patienceMs);
}

bool House::waitForTitle(const QString& wanted)
{
    return waitUntil([&] { return title() == wanted; }, patienceMs);
}

QStringList House::reports()
{
    emulator::Ledger::Filter filter;
    filter.kinds = QStringList{ QStringLiteral("report") };
    QStringList lines;
    for (const auto& entry : service().ledger().entries(filter)) {
        const QVariantHash report = entry.details.value(QStringLiteral("report")).toHash();
        if (text(report, "reason") == QLatin1String("BUFFER_UNDERFLOW"))
            continue;
        lines.append(text(report, "event") + QLatin1Char(' ') + text(report, "reason")
            + QLatin1Char(' ') + text(report, "trackPosition"));
    }
    return lines;
}

QStringList House::reportsWithoutPositions()
{
    QStringList lines = reports();
    for (QString& line : lines)
        line = line.section(QLatin1Char(' '), 0, 1);
    return lines;
}

int House::requests(const char* kind)
{
    emulator::Ledger::Filter filter;
    filter.kinds = QStringList{ QString::fromLatin1(kind) };
    return static_cast<int>(service().ledger().entries(filter).size());
}

QList<int> House::audioRefusals()
{
    constexpr int firstRefusal = 400;
    emulator::Ledger::Filter filter;
    filter.kinds = QStringList{ QStringLiteral("audio") };
    QList<int> refusals;
    for (const auto& entry : service().ledger().entries(filter)) {
        // A head is asked for the connection's sake, be the answer what it may.
        if (entry.method != QLatin1String("HEAD") && entry.status >= firstRefusal)
            refusals.append(entry.status);
    }
    return refusals;
}

QStringList House::messageTexts()
{
    QStringList texts;
    for (const QVariant& message : player().messages())
        texts.append(
            text(message.toHash(), "title") + QLatin1String(": ") + text(message.toHash(), "text"));
    return texts;
}

QVariant valueOf(const CMReply<QVariant>& reply)
{
    EXPECT_TRUE(waitUntil([&] { return reply.isFinished(); }, patienceMs * 2));
    EXPECT_FALSE(reply.error().isSet()) << reply.error().message().toStdString();
    return reply.value();
}

QString errorOf(const CMReply<QVariant>& reply)
{
    EXPECT_TRUE(waitUntil([&] { return reply.isFinished(); }, patienceMs * 2));
    EXPECT_TRUE(reply.error().isSet());
    return reply.error().message();
}
