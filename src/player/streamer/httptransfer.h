#pragma once

#include "httpoptions.h"

#include <QByteArray>
#include <QList>

#include <curl/curl.h>

#include <memory>

namespace player {

class TransferLoop;

/// One request in the loop's thread. Destroying it ends it, and its connection when it is not
/// through.
class HttpTransfer
{
public:
    enum class Method { Get, Head };

    struct Head
    {
        int status = 0;
        qint64 length = -1; ///< Of the body; -1 when it is not told.
        qint64 rangeStart = -1;
        qint64 rangeTotal = -1; ///< Of the whole resource; -1 when it is not told.
        bool acceptsRanges = false;
        QByteArray entityTag; ///< Empty unless it is a strong one.
        QByteArray mediaType; ///< Lower case, without parameters.
        QByteArray location; ///< As it was sent.
    };

    /// Follows a transfer, in the loop's thread.
    class Receiver
    {
    public:
        virtual ~Receiver() = default;
        /// False ends the transfer.
        virtual bool headArrived(const Head& head) = 0;
        /// False holds the transfer until unpause(); the bytes come again then.
        virtual bool dataArrived(const char* bytes, std::size_t size) = 0;
        /// May destroy the transfer.
        virtual void transferFinished(CURLcode code) = 0;
    };

    /// Fetches `url` from the byte `offset` on. It has begun when the constructor returns.
    HttpTransfer(TransferLoop& loop, Receiver& receiver, const HttpOptions& options, Method method,
        const QByteArray& url, const QList<QByteArray>& headers, qint64 offset);
    ~HttpTransfer();
    Q_DISABLE_COPY_MOVE(HttpTransfer)

    void unpause();
    /// Whether the request could be sent.
    bool hasConnected() const;
    const Head& head() const { return m_head; }
    /// Whether a connection was refused since it led to this machine or its link.
    bool metLocalAddress() const { return m_metLocalAddress; }
    /// curl's own word for what went wrong.
    QByteArray errorText() const;

    CURL* handle() const { return m_handle.get(); }
    void finish(CURLcode code) { m_receiver.transferFinished(code); }
    static HttpTransfer& of(CURL* handle);

private:
    using Handle = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
    using List = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

    void setOptions(const HttpOptions& options);
    void setSecurity(const HttpOptions& options);
    bool takeHeaderLine(const QByteArray& line);
    void takeField(const QByteArray& name, const QByteArray& value);
    static curl_socket_t onOpenSocket(void* self, curlsocktype type, curl_sockaddr* address);
    static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t onData(char* bytes, std::size_t size, std::size_t count, void* self);

    TransferLoop& m_loop;
    Receiver& m_receiver;
    Handle m_handle;
    List m_headers;
    List m_connectTo;
    Head m_head;
    bool m_metLocalAddress = false;
    char m_errorText[CURL_ERROR_SIZE] = {};
};

} // namespace player
