#include "httpbodyreader.h"

#include "httptarget.h"

namespace http {

/// A size line with its extensions has to fit, and so do all trailers together.
static const int maximumFraming = 16 * 1024;

void BodyReader::beginLength(quint64 length, qint64 limit)
{
    *this = BodyReader();
    m_limit = quint64(limit);
    m_left = length;
    m_phase = length == 0 ? Phase::Done : Phase::Data;
    if (length > m_limit)
        refuse(413);
}

void BodyReader::beginChunked(qint64 limit)
{
    *this = BodyReader();
    m_limit = quint64(limit);
    m_chunked = true;
    m_phase = Phase::FirstDigit;
}

bool BodyReader::refuse(int status)
{
    m_status = status;
    return false;
}

BodyReader::State BodyReader::feed(const char* data, int size, int* consumed)
{
    *consumed = 0;
    while (m_status == 0 && m_phase != Phase::Done && *consumed < size) {
        if (m_phase == Phase::Data)
            *consumed += takeData(data + *consumed, size - *consumed);
        else if (takeFraming(data[*consumed]))
            ++*consumed;
        else if (m_status == 0)
            m_status = 400;
    }
    if (m_status != 0)
        return State::Refused;
    return m_phase == Phase::Done ? State::Complete : State::NeedMore;
}

int BodyReader::takeData(const char* data, int size)
{
    const int taken = int(qMin(quint64(size), m_left));
    m_body.append(data, taken);
    m_left -= quint64(taken);
    if (m_left == 0)
        m_phase = m_chunked ? Phase::DataCr : Phase::Done;
    return taken;
}

bool BodyReader::expect(char c, char expected, Phase next)
{
    m_phase = next;
    return c == expected;
}

/// Whether a byte may stand in an extension or a trailer, which end at a CR.
static bool isText(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return (byte >= 0x20 && byte != 0x7f) || c == '\t';
}

bool BodyReader::takeFraming(char c)
{
    if (++m_framing > maximumFraming)
        return false;
    switch (m_phase) {
    case Phase::FirstDigit:
        m_phase = Phase::Digits;
        return takeDigit(c);
    case Phase::Digits:
        if (c == '\r' || c == ';')
            return expect(c, c, c == ';' ? Phase::Extension : Phase::SizeEnd);
        return takeDigit(c);
    case Phase::Extension:
        return isText(c) || expect(c, '\r', Phase::SizeEnd);
    case Phase::SizeEnd:
        return c == '\n' && endSize();
    case Phase::DataCr:
        return expect(c, '\r', Phase::DataLf);
    case Phase::DataLf:
        return expect(c, '\n', Phase::FirstDigit);
    case Phase::TrailerStart:
        if (c == '\r')
            return expect(c, '\r', Phase::LastLf);
        m_phase = Phase::Trailer;
        return isText(c);
    case Phase::Trailer:
        return isText(c) || expect(c, '\r', Phase::TrailerEnd);
    case Phase::TrailerEnd:
        return expect(c, '\n', Phase::TrailerStart);
    case Phase::LastLf:
        return expect(c, '\n', Phase::Done);
    case Phase::Data:
    case Phase::Done:
        break;
    }
    return false;
}

bool BodyReader::takeDigit(char c)
{
    const int digit = hexValue(c);
    if (digit < 0)
        return false;
    m_left = m_left * 16 + quint64(digit);
    return m_left + quint64(m_body.size()) <= m_limit || refuse(413);
}

bool BodyReader::endSize()
{
    m_phase = m_left > 0 ? Phase::Data : Phase::TrailerStart;
    m_framing = 0;
    return true;
}

} // namespace http
