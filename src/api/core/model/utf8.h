#pragma once

#include <QString>

#include <cstdint>
#include <cstring>
#include <string_view>

/// Whether each byte is a character of its own. Eight at a time: each value of a page is asked.
inline bool isAscii(std::string_view bytes)
{
    constexpr std::uint64_t highBits = 0x8080808080808080;
    std::uint64_t all = 0;
    const auto see = [&](std::size_t place) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + place, sizeof word);
        all |= word;
    };
    if (bytes.size() >= sizeof all) {
        for (std::size_t place = 0; place + sizeof all < bytes.size(); place += sizeof all)
            see(place);
        see(bytes.size() - sizeof all);
    } else {
        for (const char byte : bytes)
            all |= static_cast<unsigned char>(byte);
    }
    return (all & highBits) == 0;
}

/// What the bytes say, to the letter. QString::fromUtf8() takes a U+FEFF at the start for a byte
/// order mark and drops it, which is right for files and wrong for values.
inline QString textOfUtf8(std::string_view utf8)
{
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    const int size = static_cast<int>(utf8.size());
    if (isAscii(utf8))
        return QString::fromLatin1(utf8.data(), size); // In half the time.
    const QString text = QString::fromUtf8(utf8.data(), size);
    return utf8.substr(0, mark.size()) == mark ? QChar(QChar::ByteOrderMark) + text : text;
}
