#pragma once

#include "httpclient.h"

#include <QByteArray>

#include <functional>
#include <list>
#include <optional>

namespace httpclient {

/// A private cache in memory (RFC 9111). An answer is given back only to a request with the same
/// URL, the same "authorization" and the same fields that its "vary" names. Time is counted on a
/// monotonic clock. The answers used longest ago make way for new ones.
class HttpCache
{
public:
    /// Monotonic milliseconds.
    using Clock = std::function<qint64()>;

    struct Answer
    {
        HttpClientHeaders headers;
        QByteArray data;
        /// Whether it may be given without asking the server; otherwise it is good for a check.
        bool fresh = false;
    };

    explicit HttpCache(Clock clock);

    /// Bytes of bodies and fields together.
    void setCapacity(qint64 bytes);
    void clear();
    qint64 size() const { return m_size; }
    /// Changes with each clear(): what was asked for under another one is not to be stored.
    int generation() const { return m_generation; }

    /// `url` is without fragment; `request` are the fields that are about to be sent.
    std::optional<Answer> find(const QByteArray& url, const HttpClientHeaders& request);
    /// Keeps a 200 answer to a GET if it may be kept.
    void store(const QByteArray& url, const HttpClientHeaders& request,
        const HttpClientHeaders& headers, const QByteArray& data);
    /// Forgets all answers of the URL: something was changed there.
    void invalidate(const QByteArray& url);

private:
    struct Entry
    {
        QByteArray url;
        HttpClientHeaders request;
        HttpClientHeaders headers;
        QByteArray data;
        qint64 freshUntil;
        qint64 size() const;
        bool answers(const QByteArray& otherUrl, const HttpClientHeaders& otherRequest) const;
    };
    using Entries = std::list<Entry>;

    Entries::iterator match(const QByteArray& url, const HttpClientHeaders& request);
    void remove(Entries::iterator entry);
    void makeRoom();
    qint64 freshUntil(const HttpClientHeaders& headers) const;
    Answer answer(const Entry& entry) const;

    Clock m_clock;
    qint64 m_capacity = 0;
    qint64 m_size = 0;
    int m_generation = 0;
    Entries m_entries; // Used last first.
};

/// The kept answer after the server has answered 304 with `headers` to a check of it.
HttpClientHeaders refreshed(HttpClientHeaders kept, const HttpClientHeaders& headers);

/// The fields that ask the server whether `headers` still hold; empty when it gave no validator.
HttpClientHeaders checkFields(const HttpClientHeaders& headers);

} // namespace httpclient
