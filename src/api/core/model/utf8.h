#pragma once

#include <QString>

#include <string_view>

/// What the bytes say, to the letter. QString::fromUtf8() takes a U+FEFF at the start for a byte
/// order mark and drops it, which is right for files and wrong for values.
inline QString textOfUtf8(std::string_view utf8)
{
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    const QString text = QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
    return utf8.substr(0, mark.size()) == mark ? QChar(QChar::ByteOrderMark) + text : text;
}
