#include "percent.h"

#include "utf8.h"

#include <QByteArray>

#include <array>
#include <string>

namespace {

constexpr std::array<bool, 256> unreservedTable()
{
    std::array<bool, 256> table{};
    for (const char c : { '-', '.', '_', '~' })
        table[static_cast<unsigned char>(c)] = true;
    for (unsigned char c = '0'; c <= '9'; ++c)
        table[c] = true;
    for (unsigned char c = 'a'; c <= 'z'; ++c)
        table[c] = true;
    for (unsigned char c = 'A'; c <= 'Z'; ++c)
        table[c] = true;
    return table;
}

constexpr std::array<bool, 256> unreserved = unreservedTable();

char16_t* writeByte(char16_t* out, uchar byte)
{
    constexpr char16_t hex[] = u"0123456789ABCDEF";
    if (unreserved[byte]) {
        *out++ = byte;
        return out;
    }
    *out++ = u'%';
    *out++ = hex[byte >> 4];
    *out++ = hex[byte & 0xF];
    return out;
}

/// The value of an element of a text or of its bytes.
char16_t unit(QChar c)
{
    return c.unicode();
}

char16_t unit(char byte)
{
    return static_cast<uchar>(byte);
}

/// -1 for what is none.
int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

QString percentEncoded(const QString& text)
{
    CharBuffer encoded;
    encoded.appendPercentEncoded(text);
    return encoded.text();
}

QString percentDecoded(const QByteArray& encoded)
{
    std::string utf8;
    utf8.reserve(static_cast<std::size_t>(encoded.size()));
    for (int index = 0; index < encoded.size(); ++index) {
        const bool whole = encoded.at(index) == '%' && index + 2 < encoded.size();
        const int high = whole ? hexDigit(encoded.at(index + 1)) : -1;
        const int low = whole ? hexDigit(encoded.at(index + 2)) : -1;
        const bool isByte = high >= 0 && low >= 0;
        utf8 += isByte ? static_cast<char>(high * 16 + low) : encoded.at(index);
        index += isByte ? 2 : 0;
    }
    return textOfUtf8(utf8);
}

void CharBuffer::append(const QString& text)
{
    const auto* const chars = reinterpret_cast<const char16_t*>(text.utf16());
    m_chars.append(chars, text.size());
}

void CharBuffer::appendPercentEncoded(const QString& text)
{
    constexpr char16_t beyondAscii = 0x80;
    const int end = m_chars.size();
    if (appendBytes(text) < beyondAscii)
        return;
    m_chars.resize(end); // It was not one byte for one character.
    appendBytes(text.toUtf8());
}

/// Encodes the low byte of each element. The result has all bits of all elements.
template <class Bytes>
char16_t CharBuffer::appendBytes(const Bytes& bytes)
{
    const int end = m_chars.size();
    m_chars.resize(end + 3 * bytes.size());
    char16_t* out = m_chars.data() + end;
    char16_t all = 0;
    for (const auto byte : bytes) {
        all |= unit(byte);
        out = writeByte(out, static_cast<uchar>(unit(byte)));
    }
    m_chars.resize(static_cast<int>(out - m_chars.constData()));
    return all;
}

QString CharBuffer::text() const
{
    return QString(reinterpret_cast<const QChar*>(m_chars.constData()), m_chars.size());
}
