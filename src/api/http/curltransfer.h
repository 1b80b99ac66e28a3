#pragma once

#include "curlhandles.h"
#include "curlsockets.h"
#include "headerblock.h"
#include "httpclient.h"

#include <curl/curl.h>

#include <functional>
#include <memory>

namespace httpclient {

/// What is sent in one go. A value.
struct Attempt
{
    /// From target().
    QByteArray url;
    bool post = false;
    QByteArray body;
    HttpClientHeaders headers;
    int readSizeLimit = 0;
    /// How often a kept connection that died before the first byte may be made up for.
    int resends = 0;
    /// Not on a kept connection.
    bool fresh = false;
};

/// What became of it. Headers and data are empty unless the answer came whole.
struct Outcome
{
    HttpClientStatus status = HttpClientStatus::Ok;
    int code = 0;
    QByteArray data;
    HttpClientHeaders headers;
    QString reason;
    /// Resends that it took.
    int resends = 0;
    /// Nothing was sent: the kept connection had been closed by the server.
    bool unsent = false;
};

/// One request on the wire and its answer. Run it with CurlMulti::add(); to end it early take it
/// out with CurlMulti::remove() first.
class CurlTransfer
{
public:
    using Done = std::function<void(const Outcome&)>;

    /// `config`, `handles` and `sockets` must outlive the transfer, and `sockets` its connection.
    /// `done` is called once.
    CurlTransfer(const Attempt& attempt, const HttpClientConfig& config, CurlHandles& handles,
        CurlSockets& sockets, Done done);
    ~CurlTransfer();
    Q_DISABLE_COPY_MOVE(CurlTransfer)

    CURL* easy() const { return m_easy; }
    /// For CurlMulti: the transfer has ended. The transfer may be destroyed from within.
    void done(CURLcode code);

private:
    static size_t onHeader(char* data, size_t size, size_t count, void* self);
    static size_t onBody(char* data, size_t size, size_t count, void* self);
    static int onRequest(void* self, char*, char*, int, int localPort);
    static curl_socket_t onOpenSocket(void* self, curlsocktype, curl_sockaddr* address);

    template <class T>
    void set(CURLoption option, T value);
    void setUpTarget();
    void setUpRequest();
    void setUpSecurity();
    void setUpCallbacks();
    int allowRequest(int localPort);
    bool isReused() const;
    bool takeHeader(const char* line, int size);
    bool takeBody(const char* data, int size);
    bool refuse(HttpClientStatus status, const QString& reason);
    Outcome outcome(CURLcode code) const;
    QString reasonFor(CURLcode code) const;

    // Constant once set up; the library keeps pointers into them.
    const Attempt m_attempt;
    const HttpClientConfig& m_config;
    CurlHandles& m_handles;
    CurlSockets& m_sockets;
    CURL* const m_easy;
    curl_slist* m_fields = nullptr;
    curl_slist* m_connectTo = nullptr;

    Done m_done;
    HeaderBlock m_head;
    QByteArray m_data;
    int m_requests = 0;
    bool m_unsent = false;
    HttpClientStatus m_refusal = HttpClientStatus::Ok;
    QString m_refusalReason;
    char m_errorText[CURL_ERROR_SIZE] = {};
};

} // namespace httpclient
