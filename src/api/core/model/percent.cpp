#include "percent.h"

#include <QByteArray>

#include <algorithm>
#include <array>

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

} // namespace

QString percentEncoded(const QString& text)
{
    QString encoded;
    appendPercentEncoded(&encoded, text);
    return encoded;
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
