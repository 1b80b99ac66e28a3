#pragma once

#include <QByteArray>

namespace http {

/// Takes the body of a request out of the bytes that follow its head (RFC 9112, section 6). Strict:
/// lines end in CRLF, a chunk's size is hexadecimal digits and nothing else, and what frames the
/// data has limits of its own. Chunk extensions and trailers are passed over.
class BodyReader
{
public:
    enum class State { NeedMore, Complete, Refused };

    /// No body, or one of a known length.
    void beginLength(quint64 length, qint64 limit);
    void beginChunked(qint64 limit);

    /// Sets `consumed` to the bytes used up: all of them while more is needed.
    State feed(const char* data, int size, int* consumed);

    const QByteArray& body() const { return m_body; }
    /// 400 or 413, once refused.
    int status() const { return m_status; }

private:
    enum class Phase {
        Data,
        FirstDigit,
        Digits,
        Extension,
        SizeEnd,
        DataCr,
        DataLf,
        TrailerStart,
        Trailer,
        TrailerEnd,
        LastLf,
        Done
    };

    int takeData(const char* data, int size);
    /// Takes one byte of framing; false when it may not stand there.
    bool takeFraming(char c);
    bool takeDigit(char c);
    bool endSize();
    bool expect(char c, char expected, Phase next);
    bool refuse(int status);

    Phase m_phase = Phase::Done;
    bool m_chunked = false;
    quint64 m_left = 0; ///< of the body, or of the present chunk
    quint64 m_limit = 0;
    int m_framing = 0; ///< bytes of the present size line or of the trailers
    int m_status = 0;
    QByteArray m_body;
};

} // namespace http
