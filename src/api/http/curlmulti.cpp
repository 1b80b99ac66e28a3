#include "curlmulti.h"

#include "curltransfer.h"

#include <QSocketNotifier>

namespace httpclient {

namespace {

// Kept connections at the most; more than the service's hosts ever need at once.
constexpr long maxConnections = 16;

CURLM* makeMulti()
{
    static const CURLcode global = curl_global_init(CURL_GLOBAL_DEFAULT);
    Q_ASSERT_X(global == CURLE_OK, "CurlMulti", "curl_global_init");
    CURLM* multi = curl_multi_init();
    Q_ASSERT_X(multi, "CurlMulti", "curl_multi_init");
    return multi;
}

void later(std::unique_ptr<QSocketNotifier> notifier)
{
    // It may be the one whose signal runs now.
    if (!notifier)
        return;
    notifier->setEnabled(false);
    notifier.release()->deleteLater();
}

} // namespace

CurlMulti::CurlMulti(QObject* parent)
    : QObject(parent)
    , m_multi(makeMulti())
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] { act(CURL_SOCKET_TIMEOUT, 0); });
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETFUNCTION, &CurlMulti::onSocket);
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERFUNCTION, &CurlMulti::onTimer);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_MAXCONNECTS, maxConnections);
}

CurlMulti::~CurlMulti()
{
    curl_multi_cleanup(m_multi);
}

void CurlMulti::add(CurlTransfer* transfer)
{
    curl_multi_add_handle(m_multi, transfer->easy());
}

void CurlMulti::remove(CurlTransfer* transfer)
{
    curl_multi_remove_handle(m_multi, transfer->easy());
}

int CurlMulti::onSocket(CURL*, curl_socket_t socket, int what, void* self, void*)
{
    static_cast<CurlMulti*>(self)->watch(socket, what);
    return 0;
}

int CurlMulti::onTimer(CURLM*, long ms, void* self)
{
    QTimer& timer = static_cast<CurlMulti*>(self)->m_timer;
    if (ms < 0)
        timer.stop();
    else
        timer.start(int(qMin(ms, 3600L * 1000)));
    return 0;
}

void CurlMulti::watch(curl_socket_t socket, int what)
{
    if (what == CURL_POLL_REMOVE)
        return forget(socket);
    std::shared_ptr<Watch>& watch = m_watches[socket];
    if (!watch) {
        watch = std::make_shared<Watch>();
        watch->read = notifier(socket, QSocketNotifier::Read, CURL_CSELECT_IN);
        watch->write = notifier(socket, QSocketNotifier::Write, CURL_CSELECT_OUT);
    }
    watch->read->setEnabled((what & CURL_POLL_IN) != 0);
    watch->write->setEnabled((what & CURL_POLL_OUT) != 0);
}

std::unique_ptr<QSocketNotifier> CurlMulti::notifier(curl_socket_t socket, int type, int event)
{
    auto made = std::make_unique<QSocketNotifier>(socket, QSocketNotifier::Type(type));
    made->setEnabled(false);
    connect(made.get(), &QSocketNotifier::activated, this,
        [this, socket, event] { act(socket, event); });
    return made;
}

void CurlMulti::forget(curl_socket_t socket)
{
    const std::shared_ptr<Watch> watch = m_watches.take(socket);
    if (!watch)
        return;
    later(std::move(watch->read));
    later(std::move(watch->write));
}

void CurlMulti::act(curl_socket_t socket, int event)
{
    int running = 0;
    curl_multi_socket_action(m_multi, socket, event, &running);
    reportDone();
}

void CurlMulti::reportDone()
{
    int left = 0;
    while (CURLMsg* message = curl_multi_info_read(m_multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        // The message dies with the removal.
        CURL* const easy = message->easy_handle;
        const CURLcode code = message->data.result;
        char* transfer = nullptr;
        curl_easy_getinfo(easy, CURLINFO_PRIVATE, &transfer);
        curl_multi_remove_handle(m_multi, easy);
        reinterpret_cast<CurlTransfer*>(transfer)->done(code);
    }
}

} // namespace httpclient
