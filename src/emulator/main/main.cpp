#include "commandline.h"
#include "emulator.h"
#include "savefile.h"
#include "tavujson.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int signalSockets[2];

void onSignal(int)
{
    const char mark = 1;
    static_cast<void>(write(signalSockets[0], &mark, 1) == 1);
}

// A signal handler may hardly do anything; so it wakes the event loop, which ends the program.
void quitOnSignals(QCoreApplication& application)
{
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalSockets) != 0)
        return;
    auto* notifier = new QSocketNotifier(signalSockets[1], QSocketNotifier::Read, &application);
    QObject::connect(
        notifier, &QSocketNotifier::activated, &application, [] { QCoreApplication::quit(); });
    std::signal(SIGINT, onSignal);
    std::signal(SIGTERM, onSignal);
    // A write that fails is for the one who writes to tell.
    for (const int writing : { SIGPIPE, SIGXFSZ })
        std::signal(writing, SIG_IGN);
}

void say(const QString& text)
{
    std::fputs(qUtf8Printable(text + QLatin1Char('\n')), stderr);
}

/// Whoever waits for the ready file would wait for ever: without it the program ends.
void tellReady(const emulator::Emulator& emulator, const QString& readyFile)
{
    const QByteArray line = TavuJson::toJson(emulator.description()) + '\n';
    QString error;
    if (!readyFile.isEmpty() && !files::replaceFile(readyFile, line, files::publicFile, &error)) {
        say(QStringLiteral("The ready line cannot be written to %1. Choose another file with "
                           "--ready-file.")
                .arg(error));
        QCoreApplication::exit(1);
        return;
    }
    std::fputs(line.constData(), stdout);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const emulator::CommandLine line = emulator::parseCommandLine(QCoreApplication::arguments());
    if (!line.settings) {
        std::fputs(
            qUtf8Printable(line.text + QLatin1Char('\n')), line.exitCode == 0 ? stdout : stderr);
        return line.exitCode;
    }
    quitOnSignals(application);
    emulator::Emulator emulator(*line.settings);
    QObject::connect(&emulator, &emulator::Emulator::notice, &application, say);
    QObject::connect(&emulator, &emulator::Emulator::ready, &application,
        [&] { tellReady(emulator, line.readyFile); });
    if (const auto failure = emulator.start()) {
        say(failure->text);
        return failure->exitCode;
    }
    return QCoreApplication::exec();
}
