#include "headerblock.h"

#include <algorithm>

namespace httpclient {

HeaderBlock::Verdict HeaderBlock::take(const char* line, int size)
{
    m_bytes += size;
    if (m_bytes > maxBytes)
        return Verdict::TooLong;
    const QByteArray text = QByteArray(line, size).trimmed();
    if (qstrncmp(line, "HTTP/", qMin(size, 5)) == 0 && size >= 5) {
        begin();
        return Verdict::Fine;
    }
    if (text.isEmpty() || m_ended) {
        m_ended = true;
        return Verdict::Fine;
    }
    return takeField(QByteArray::fromRawData(line, size));
}

void HeaderBlock::begin()
{
    m_ended = false;
    m_encoded = false;
    m_contentLength = -1;
    m_headers = HttpClientHeaders();
}

HeaderBlock::Verdict HeaderBlock::takeField(const QByteArray& line)
{
    const int colon = line.indexOf(':');
    const QByteArray name = line.mid(0, colon);
    // A folded line or a name with a space is read in two ways by two readers.
    if (colon <= 0 || name.contains(' ') || name.contains('\t') || line.contains('\0'))
        return Verdict::Malformed;
    const QByteArray value = line.mid(colon + 1).trimmed();
    m_headers.append(name, value);
    if (name.compare("transfer-encoding", Qt::CaseInsensitive) == 0) {
        m_encoded = true;
        return m_contentLength < 0 ? Verdict::Fine : Verdict::Malformed;
    }
    if (name.compare("content-length", Qt::CaseInsensitive) == 0)
        return takeLength(value);
    return Verdict::Fine;
}

HeaderBlock::Verdict HeaderBlock::takeLength(const QByteArray& value)
{
    const bool digits =
        std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; });
    bool fits = false;
    const qint64 length = value.toLongLong(&fits);
    const bool contradicts = m_contentLength >= 0 && m_contentLength != length;
    if (!digits || !fits || contradicts || m_encoded)
        return Verdict::Malformed;
    m_contentLength = length;
    return Verdict::Fine;
}

} // namespace httpclient
