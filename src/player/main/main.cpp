#include "application.h"
#include "folders.h"
#include "heap.h"
#include "logsetup.h"
#include "quitsignals.h"
#include "servicemanager.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <log4cplus/initializer.h>
#include <openssl/crypto.h>

using namespace player;

namespace {

void say(FILE* where, const QString& line)
{
    QTextStream out(where);
    out.setCodec("UTF-8");
    out << line << '\n';
}

struct CommandLine
{
    QCommandLineOption help{ { QStringLiteral("h"), QStringLiteral("help") },
        QStringLiteral("Show this help.") };
    QCommandLineOption config{ QStringLiteral("config"),
        QStringLiteral("Read the settings from <file> (default: %1).").arg(defaultSettingsFile()),
        QStringLiteral("file") };
    QCommandLineOption option{ { QStringLiteral("o"), QStringLiteral("option") },
        QStringLiteral("Set one setting, for example control.port=8080; repeatable."),
        QStringLiteral("section.name=value") };
    QCommandLineOption print{ QStringLiteral("print-config"),
        QStringLiteral("Print the settings as they are in force, as a settings file.") };
    QCommandLineOption verbose{ QStringLiteral("verbose"),
        QStringLiteral("Log more; the same as -o log.level=debug.") };
    QCommandLineParser parser;

    /// False, and `problem` said, when the arguments cannot be understood.
    bool parse(QString& problem)
    {
        parser.setApplicationDescription(
            QStringLiteral("A headless network audio player with a page to steer it by."));
        parser.addOption(help);
        parser.addVersionOption();
        parser.addOptions({ config, option, print, verbose });
        const bool ok = parser.parse(QCoreApplication::arguments());
        problem = ok ? QString() : parser.errorText();
        if (ok && !parser.positionalArguments().isEmpty())
            problem = QStringLiteral("\"%1\" is one argument too many.")
                          .arg(parser.positionalArguments().first());
        return problem.isEmpty();
    }

    bool readSettings(Settings& settings) const
    {
        const bool named = parser.isSet(config);
        if (!settings.load(named ? parser.value(config) : defaultSettingsFile(), named))
            return false;
        if (parser.isSet(verbose) && !settings.apply(QStringLiteral("log.level=debug")))
            return false;
        for (const QString& assignment : parser.values(option)) {
            if (!settings.apply(assignment))
                return false;
        }
        return true;
    }
};

int runPlayer(QCoreApplication& application, const Settings& settings)
{
    QString problem;
    const QString stateFolder = makeStateFolder(settings, problem);
    if (stateFolder.isEmpty()) {
        say(stderr, QLatin1String("tavu-player: ") + problem);
        return NoPermission;
    }
    QuitSignals quitSignals;
    Application player(settings, stateFolder, pluginFile(settings));
    QObject::connect(&quitSignals, &QuitSignals::quitRequested, &application, [] {
        tellServiceManager("STOPPING=1");
        QCoreApplication::quit();
    });
    QObject::connect(
        &player, &Application::failed, &application,
        [](int exitCode, const QString& message) {
            say(stderr, QLatin1String("tavu-player: ") + message);
            QCoreApplication::exit(exitCode);
        },
        // Queued: exit() means nothing before the event loop runs.
        Qt::QueuedConnection);
    QObject::connect(&player, &Application::ready, &application, [&player] {
        say(stdout, QStringLiteral("tavu-player is ready: %1").arg(player.address()));
        if (!player.token().isEmpty())
            say(stdout,
                QStringLiteral("From elsewhere: %1?token=%2")
                    .arg(player.address(), player.token()));
        tellServiceManager("READY=1");
    });
    const HeapTrimmer trimmer;
    player.start();
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    setUpHeap();
    // A thread may still be ending when the process does; what the library cleaned up then would be
    // freed by both.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
    const log4cplus::Initializer log;
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tavu-player"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVU_VERSION));

    CommandLine commandLine;
    QString problem;
    Settings settings;
    if (!commandLine.parse(problem)) {
        say(stderr, QLatin1String("tavu-player: ") + problem + QLatin1String(" Try --help."));
        return BadArguments;
    }
    if (commandLine.parser.isSet(commandLine.help))
        commandLine.parser.showHelp(Quit);
    if (commandLine.parser.isSet(QStringLiteral("version")))
        commandLine.parser.showVersion();
    if (!commandLine.readSettings(settings)) {
        say(stderr, QLatin1String("tavu-player: ") + settings.error());
        return BadArguments;
    }
    if (commandLine.parser.isSet(commandLine.print)) {
        say(stdout, settings.toFile());
        return Quit;
    }
    problem = setUpLog(settings.text("log.level"), settings.text("log.file"));
    if (!problem.isEmpty()) {
        say(stderr, QLatin1String("tavu-player: ") + problem);
        return BadArguments;
    }
    return runPlayer(application, settings);
}
