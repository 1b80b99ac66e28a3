#include "quitsignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace player {

namespace {

int writingEnd = -1;

extern "C" void onQuitSignal(int)
{
    // Only what is safe in a signal handler: the event loop does the rest.
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(writingEnd, &byte, 1);
}

} // namespace

QuitSignals::QuitSignals(QObject* parent)
    : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, m_ends) != 0)
        return;
    writingEnd = m_ends[0];
    m_notifier = new QSocketNotifier(m_ends[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        [[maybe_unused]] const auto size = ::read(m_ends[1], &byte, 1);
        Q_EMIT quitRequested();
    });
    struct sigaction action = {};
    action.sa_handler = onQuitSignal;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
    // A write that fails is for the one who writes to tell; music plays on without it.
    for (const int writing : { SIGPIPE, SIGXFSZ })
        ::signal(writing, SIG_IGN);
}

QuitSignals::~QuitSignals()
{
    ::signal(SIGINT, SIG_DFL);
    ::signal(SIGTERM, SIG_DFL);
    for (const int end : m_ends) {
        if (end >= 0)
            ::close(end);
    }
}

} // namespace player
