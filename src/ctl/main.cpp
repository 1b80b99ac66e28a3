#include "commands.h"
#include "print.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

namespace {

QString fromEnvironment(const char* name, const char* otherwise)
{
    return qEnvironmentVariable(name, QString::fromLatin1(otherwise));
}

} // namespace

int main(int argc, char** argv)
{
    const log4cplus::Initializer log;
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tavu-ctl"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVU_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Steers a running tavu-player.\n\nCommands:\n") + ctl::commandHelp());
    const QCommandLineOption help(
        { QStringLiteral("h"), QStringLiteral("help") }, QStringLiteral("Show this help."));
    parser.addOption(help);
    parser.addVersionOption();
    const QCommandLineOption url(QStringLiteral("url"), QStringLiteral("The player's address."),
        QStringLiteral("url"), fromEnvironment("TAVU_URL", "http://127.0.0.1:6680"));
    const QCommandLineOption token(QStringLiteral("token"),
        QStringLiteral("The player's token, when it asks for one."), QStringLiteral("token"),
        fromEnvironment("TAVU_TOKEN", ""));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print JSON."));
    parser.addOptions({ url, token, json });
    parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("What to do."));
    if (!parser.parse(QCoreApplication::arguments())) {
        ctl::printError(parser.errorText());
        return ctl::Usage;
    }
    if (parser.isSet(help))
        parser.showHelp(ctl::Done);
    if (parser.isSet(QStringLiteral("version")))
        parser.showVersion();
    QStringList arguments = parser.positionalArguments();
    if (arguments.isEmpty()) {
        ctl::printLine(parser.helpText());
        return ctl::Usage;
    }
    QString base = parser.value(url);
    while (base.endsWith(QLatin1Char('/')))
        base.chop(1);
    ctl::ApiClient api(base, parser.value(token));
    const QString command = arguments.takeFirst();
    return ctl::runCommand(api, command, arguments, { parser.isSet(json) });
}
