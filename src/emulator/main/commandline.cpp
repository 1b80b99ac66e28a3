#include "commandline.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <limits>

namespace emulator {

namespace {

constexpr int usageError = 2;

QString text(const char* ascii)
{
    return QString::fromUtf8(ascii);
}

QString defaultStateFolder()
{
    const QString base = qEnvironmentVariable("XDG_STATE_HOME");
    return (base.isEmpty() ? QDir::homePath() + text("/.local/state") : base)
        + text("/amazon-music-emulator");
}

struct OptionText
{
    const char* name;
    const char* meaning;
    const char* value; ///< what it takes; null: nothing
};

const OptionText options[]{
    { "state", "Keep state in <folder> (default: the user's state folder).", "folder" },
    { "samples", "Make the sample albums in <folder>.", "folder" },
    { "listen", "Listen on <address> (default 127.0.0.1).", "address" },
    { "http-port", "Listen for HTTP on <port>; 0 takes a free one (default).", "port" },
    { "tls-port", "Listen for HTTPS on <port>; 0 takes a free one (default).", "port" },
    { "host", "Be known as <name>; repeatable, the first is the service's own.", "name" },
    { "ca-file", "Write the certificate authority to <file>.", "file" },
    { "ready-file", "Write the ready line to <file> too.", "file" },
    { "media-tls", "Serve sound and pictures by HTTPS.", nullptr },
    { "hostile-ports",
        "Open ports where TLS or the connection goes wrong; the ready line names them.", nullptr },
    { "no-login", "Take every request, with and without a token.", nullptr },
    { "seed", "Play stations in the orders of <number>.", "number" },
    { "page-size", "Put <n> items on a page (default 50).", "n" },
    { "station-length", "End stations after <n> tracks (default: never).", "n" },
    { "key-headers-every", "Protect each <n>-th track of an album; 0: none (default 4).", "n" },
    { "unrated-every", "Offer no rating for each <n>-th track; 0: all can (default 5).", "n" },
    { "expires-after", "Let stream addresses expire after <seconds> (default 3600).", "seconds" },
    { "client-id", "Know the client <id> (default tavu-player).", "id" },
    { "client-secret", "Its secret (default emulator-secret); empty: a public client.", "secret" },
    { "poll-interval", "Ask clients to poll every <seconds> (default 5).", "seconds" },
    { "code-lifetime", "Let login codes expire after <seconds> (default 600).", "seconds" },
    { "token-lifetime", "Let access tokens expire after <seconds> (default 3600).", "seconds" },
    { "device-grant", "Take the device grant as short, urn or both (default).", "form" },
    { "strict-refresh", "Let refresh tokens work once, even when the answer was lost.", nullptr },
    { "auto-approve", "Approve every login by itself.", nullptr },
    { "fault",
        "Inject a fault, for example \"path=/albums/* effect=status status=503 times=2\", "
        "or as JSON; repeatable. GET /emulator/effects tells the effects.",
        "rule" },
};

class Reader
{
public:
    explicit Reader(const QCommandLineParser& parser)
        : m_parser(parser)
    {
    }

    const QString& problem() const { return m_problem; }

    QString value(const char* name) const { return m_parser.value(QLatin1String(name)); }
    bool isSet(const char* name) const { return m_parser.isSet(QLatin1String(name)); }

    template <typename T>
    void number(const char* name, T& target, qint64 min, qint64 max)
    {
        if (!isSet(name))
            return;
        bool valid = false;
        const qint64 given = value(name).toLongLong(&valid);
        if (valid && given >= min && given <= max)
            target = static_cast<T>(given);
        else
            complain(text("--%1 takes a number from %2 to %3, not \"%4\".")
                         .arg(QLatin1String(name))
                         .arg(min)
                         .arg(max)
                         .arg(value(name)));
    }

    void complain(const QString& problem)
    {
        if (m_problem.isEmpty())
            m_problem = problem;
    }

private:
    const QCommandLineParser& m_parser;
    QString m_problem;
};

constexpr qint64 maxInt = std::numeric_limits<int>::max();

void readPlaces(Reader& reader, const QCommandLineParser& parser, Settings& settings)
{
    const QStringList folders = parser.positionalArguments();
    if (folders.size() > 1)
        reader.complain(
            text("One music folder at a time, please: \"%1\" is one too many.").arg(folders.at(1)));
    const QFileInfo folder(folders.value(0));
    if (!folders.isEmpty() && !folder.isDir())
        reader.complain(
            text(folder.exists() ? "\"%1\" is not a folder. %2" : "There is no folder \"%1\". %2")
                .arg(folders.first(),
                    text("Give the folder that holds your music, or none for the "
                         "sample albums.")));
    else if (!folders.isEmpty() && !(folder.isReadable() && folder.isExecutable()))
        reader.complain(
            text("The folder \"%1\" may not be read. Check its permissions, or give another.")
                .arg(folders.first()));
    settings.musicFolder = folders.value(0);
    settings.stateFolder = reader.isSet("state") ? reader.value("state") : defaultStateFolder();
    settings.samplesFolder = reader.value("samples");
    settings.caFile = reader.value("ca-file");
}

bool isHostName(const QString& text)
{
    static const QRegularExpression name(
        QStringLiteral("^[A-Za-z0-9]([A-Za-z0-9.-]*[A-Za-z0-9])?$"));
    return name.match(text).hasMatch();
}

void readNetwork(Reader& reader, const QCommandLineParser& parser, Settings& settings)
{
    if (reader.isSet("listen") && !settings.address.setAddress(reader.value("listen")))
        reader.complain(
            text("--listen takes an IP address, not \"%1\".").arg(reader.value("listen")));
    reader.number("http-port", settings.httpPort, 0, 65535);
    reader.number("tls-port", settings.tlsPort, 0, 65535);
    if (reader.isSet("host"))
        settings.hosts = parser.values(text("host"));
    for (const QString& host : qAsConst(settings.hosts)) {
        if (!isHostName(host))
            reader.complain(text("--host takes a host name, not \"%1\".").arg(host));
    }
    settings.mediaOverTls = reader.isSet("media-tls");
    settings.tokenNeeded = !reader.isSet("no-login");
    settings.hostilePorts = reader.isSet("hostile-ports");
}

void readDocuments(Reader& reader, Settings& settings)
{
    reader.number("seed", settings.seed, 0, std::numeric_limits<qint64>::max());
    reader.number("page-size", settings.documents.pageSize, 1, 10000);
    reader.number("station-length", settings.documents.stationLength, 0, maxInt);
    reader.number("key-headers-every", settings.documents.keyHeadersEvery, 0, maxInt);
    reader.number("unrated-every", settings.documents.unratedEvery, 0, maxInt);
    qint64 seconds = settings.documents.expiresAfterMs / 1000;
    reader.number("expires-after", seconds, 0, maxInt);
    settings.documents.expiresAfterMs = seconds * 1000;
}

void readLogin(Reader& reader, Settings& settings)
{
    oauth2::Rules& rules = settings.oauth2;
    if (reader.isSet("client-id"))
        rules.clientId = reader.value("client-id");
    if (reader.isSet("client-secret"))
        rules.clientSecret = reader.value("client-secret");
    reader.number("poll-interval", rules.pollIntervalS, 0, maxInt);
    reader.number("code-lifetime", rules.codeLifetimeS, 0, maxInt);
    reader.number("token-lifetime", rules.tokenLifetimeS, 0, maxInt);
    rules.refreshGrace = !reader.isSet("strict-refresh");
    rules.autoApprove = reader.isSet("auto-approve");
    const QString form = reader.value("device-grant");
    if (form == text("short"))
        rules.deviceGrants.removeLast();
    else if (form == text("urn"))
        rules.deviceGrants.removeFirst();
    else if (reader.isSet("device-grant") && form != text("both"))
        reader.complain(text("--device-grant takes short, urn or both, not \"%1\".").arg(form));
}

void readFaults(Reader& reader, const QCommandLineParser& parser, Settings& settings)
{
    for (const QString& rule : parser.values(text("fault"))) {
        const faults::ParsedRule parsed = faults::parseRule(rule);
        if (parsed.rule)
            settings.faults.push_back(*parsed.rule);
        else
            reader.complain(text("--fault \"%1\": %2").arg(rule, parsed.problem));
    }
}

void describeOptions(QCommandLineParser& parser)
{
    parser.setApplicationDescription(
        text("A local stand-in for the Amazon Music service. Serves a folder of FLAC, MP3, Ogg, "
             "Opus and M4A files, or sample albums that it makes. Prints one line of JSON when it "
             "is ready."));
    parser.addPositionalArgument(
        text("folder"), text("The folder that holds the music."), text("[folder]"));
    for (const OptionText& option : options) {
        parser.addOption({ QLatin1String(option.name), text(option.meaning),
            option.value ? QLatin1String(option.value) : QString() });
    }
}

QString withFullStop(const QString& sentence)
{
    return sentence.endsWith(QLatin1Char('.')) ? sentence : sentence + QLatin1Char('.');
}

CommandLine saying(const QString& said, int exitCode)
{
    return { std::nullopt, QString(), said, exitCode };
}

} // namespace

CommandLine parseCommandLine(const QStringList& arguments)
{
    QCommandLineParser parser;
    describeOptions(parser);
    const QCommandLineOption help({ text("h"), text("help") }, text("Show this help."));
    parser.addOption(help);
    const QCommandLineOption version = parser.addVersionOption();
    if (!parser.parse(arguments))
        return saying(withFullStop(parser.errorText()) + text(" Try --help."), usageError);
    if (parser.isSet(help))
        return saying(parser.helpText(), 0);
    if (parser.isSet(version))
        return saying(text("amazon-music-emulator " TAVU_VERSION), 0);
    CommandLine line;
    Settings settings;
    Reader reader(parser);
    readPlaces(reader, parser, settings);
    readNetwork(reader, parser, settings);
    readDocuments(reader, settings);
    readLogin(reader, settings);
    readFaults(reader, parser, settings);
    if (!reader.problem().isEmpty())
        return saying(reader.problem(), usageError);
    line.settings = settings;
    line.readyFile = reader.value("ready-file");
    return line;
}

} // namespace emulator
