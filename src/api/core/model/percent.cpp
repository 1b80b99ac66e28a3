#include "percent.h"

#include "utf8.h"

#include <QByteArray>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace {

/// A byte as it is written. All four units are copied, which takes one instruction.
struct Encoding
{
    char16_t chars[3];
    char16_t length; // Of those that count.
};

constexpr bool isUnreserved(unsigned byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z')
        || (byte >= 'A' && byte <= 'Z') || byte == '-' || byte == '.' || byte == '_' || byte == '~';
}

constexpr std::array<Encoding, 256> encodingTable()
{
    constexpr char16_t hex[] = u"0123456789ABCDEF";
    std::array<Encoding, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        const auto bare = static_cast<char16_t>(byte);
        table[byte] = isUnreserved(byte) ? Encoding{ { bare, 0, 0 }, 1 }
                                         : Encoding{ { u'%', hex[byte >> 4], hex[byte & 0xF] }, 3 };
    }
    return table;
}

constexpr std::array<Encoding, 256> encodings = encodingTable();

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

void CharBuffer::append(char16_t c)
{
    *room(1) = c;
    ++m_size;
}

void CharBuffer::append(const QString& text)
{
    std::copy(text.begin(), text.end(), reinterpret_cast<QChar*>(room(text.size())));
    m_size += text.size();
}

void CharBuffer::appendPercentEncoded(const QString& text)
{
    constexpr char16_t beyondAscii = 0x80;
    const int end = m_size;
    if (appendBytes(text) < beyondAscii)
        return;
    m_size = end; // It was not one byte for one character.
    appendBytes(text.toUtf8());
}

/// Where so many more characters can be written.
char16_t* CharBuffer::room(int count)
{
    if (m_size + count > m_chars.size())
        m_chars.resize(2 * m_size + count);
    return m_chars.data() + m_size;
}

/// Encodes the low byte of each element. The result has all bits of all elements.
template <class Bytes>
char16_t CharBuffer::appendBytes(const Bytes& bytes)
{
    constexpr int longest = 3;
    char16_t* out = room(longest * bytes.size() + 1);
    char16_t all = 0;
    for (const auto byte : bytes) {
        const char16_t value = unit(byte);
        all |= value;
        const Encoding& encoding = encodings[static_cast<uchar>(value)];
        std::memcpy(out, &encoding, sizeof encoding);
        out += encoding.length;
    }
    m_size = static_cast<int>(out - m_chars.constData());
    return all;
}

QString CharBuffer::text() const
{
    return QString(reinterpret_cast<const QChar*>(m_chars.constData()), m_size);
}
