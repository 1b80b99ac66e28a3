#include "percent.h"

#include "utf8.h"

#include <QByteArray>

#include <algorithm>
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
    QString encoded;
    appendPercentEncoded(&encoded, text);
    return encoded;
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

void appendPercentEncoded(QString* text, const QString& part)
{
    constexpr char hex[] = "0123456789ABCDEF";
    const QByteArray utf8 = part.toUtf8();
    const auto isPlain = [](char byte) { return unreserved[static_cast<uchar>(byte)]; };
    const auto plain = static_cast<int>(std::count_if(utf8.begin(), utf8.end(), isPlain));
    const int end = text->size();
    text->resize(end + plain + 3 * (utf8.size() - plain));
    QChar* out = text->data() + end;
    for (const char byte : utf8) {
        if (isPlain(byte)) {
            *out++ = QLatin1Char(byte);
            continue;
        }
        *out++ = QLatin1Char('%');
        *out++ = QLatin1Char(hex[static_cast<uchar>(byte) >> 4]);
        *out++ = QLatin1Char(hex[static_cast<uchar>(byte) & 0xF]);
    }
}
