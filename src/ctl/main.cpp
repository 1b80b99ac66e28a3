#include "commands.h"
#include "print.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRegularExpression>
#include <QUrl>
#include <QUrlQuery>

#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

namespace {

QString fromEnvironment(const char* name, const char* otherwise)
{
    return qEnvironmentVariable(name, QString::fromLatin1(otherwise));
}

struct CommandLine
{
    QCommandLineOption help{ { QStringLiteral("h"), QStringLiteral("help") },
        QStringLiteral("Show this help.") };
    QCommandLineOption url{ QStringLiteral("url"),
        QStringLiteral("The player's address (default: $TAVU_URL, else http://127.0.0.1:6680)."),
        QStringLiteral("url"), fromEnvironment("TAVU_URL", "http://127.0.0.1:6680") };
    QCommandLineOption token{ QStringLiteral("token"),
        QStringLiteral("The player's token, when it asks for one (default: $TAVU_TOKEN)."),
        QStringLiteral("token"), fromEnvironment("TAVU_TOKEN", "") };
    QCommandLineOption json{ QStringLiteral("json"), QStringLiteral("Print JSON.") };
    QCommandLineParser parser;

    /// Returns an empty text, or what is wrong with the arguments.
    QString parse(const QStringList& arguments)
    {
        parser.setApplicationDescription(
            QStringLiteral("Steers a running tavu-player.\n\nCommands:\n") + ctl::commandHelp()
            + QLatin1Char('\n') + ctl::exitCodeHelp());
        parser.addOption(help);
        parser.addVersionOption();
        parser.addOptions({ url, token, json });
        parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("What to do."));
        if (parser.parse(arguments))
            return QString();
        static const QRegularExpression negative(QStringLiteral("^-[0-9.]+$"));
        const int number = arguments.indexOf(negative);
        return (number < 0 ? parser.errorText()
                           : QStringLiteral("\"%1\" is less than 0.").arg(arguments.at(number)))
            + QLatin1String(" Run \"tavu-ctl --help\".");
    }
};

/// Where the player is, and the token to show there.
struct Place
{
    QString base;
    QString token;
};

/// An address as the player prints it, also with its token. An empty base for one that is none.
Place placeOf(const QString& text, const QString& token)
{
    QUrl url(text, QUrl::StrictMode);
    const bool isHttp =
        url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    if (!url.isValid() || !isHttp || url.host().isEmpty())
        return {};
    const QString ofUrl = QUrlQuery(url).queryItemValue(QStringLiteral("token"));
    url.setQuery(QString());
    url.setFragment(QString());
    return { url.toString(QUrl::StripTrailingSlash | QUrl::FullyEncoded),
        token.isEmpty() ? ofUrl : token };
}

} // namespace

int main(int argc, char** argv)
{
    const log4cplus::Initializer log;
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tavu-ctl"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVU_VERSION));

    CommandLine line;
    const QString problem = line.parse(QCoreApplication::arguments());
    const ctl::Options options{ line.parser.isSet(line.json) };
    if (!problem.isEmpty())
        return ctl::fail(options, ctl::Usage, problem);
    if (line.parser.isSet(line.help))
        line.parser.showHelp(ctl::Done);
    if (line.parser.isSet(QStringLiteral("version")))
        line.parser.showVersion();
    QStringList arguments = line.parser.positionalArguments();
    if (arguments.isEmpty())
        return ctl::fail(
            options, ctl::Usage, QStringLiteral("A command is missing. Run \"tavu-ctl --help\"."));
    const QString url = line.parser.value(line.url);
    const Place place = placeOf(url, line.parser.value(line.token));
    if (place.base.isEmpty())
        return ctl::fail(options, ctl::Usage,
            QStringLiteral("The player's address must be one such as http://127.0.0.1:6680, not "
                           "\"%1\". See --url.")
                .arg(url));
    ctl::ApiClient api(place.base, place.token);
    const QString command = arguments.takeFirst();
    return ctl::runCommand(api, command, arguments, options);
}
