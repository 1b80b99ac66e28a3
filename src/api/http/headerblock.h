#pragma once

#include "httpclient.h"

#include <QByteArray>

namespace httpclient {

/// The head of an answer, read line by line as it arrives. Interim answers (1xx) and trailers are
/// passed over. Refuses what two readers could frame differently.
class HeaderBlock
{
public:
    enum class Verdict { Fine, TooLong, Malformed };

    /// One line with its end, as received.
    Verdict take(const char* line, int size);

    const HttpClientHeaders& headers() const { return m_headers; }
    /// The body's length as announced; -1 when it is not.
    qint64 contentLength() const { return m_contentLength; }

    /// Bytes of all lines of one answer, interim answers and trailers included.
    static constexpr int maxBytes = 256 * 1024;

private:
    Verdict takeField(const QByteArray& line);
    Verdict takeLength(const QByteArray& value);
    void begin();

    int m_bytes = 0;
    bool m_ended = false;
    bool m_encoded = false;
    qint64 m_contentLength = -1;
    HttpClientHeaders m_headers;
};

} // namespace httpclient
