#pragma once

#include <QString>
#include <QVarLengthArray>

/// `text` with everything but RFC 3986's unreserved characters percent-encoded as UTF-8: for values
/// of which nothing may be taken for a separator.
QString percentEncoded(const QString& text);

/// What was encoded, to the letter; a "%" without two hex digits behind it stays.
QString percentDecoded(const QByteArray& encoded);

/// Where a text is put together before it is allocated, once, at its length.
class CharBuffer
{
public:
    void append(char16_t c);
    void append(const QString& text);
    void appendPercentEncoded(const QString& text);
    QString text() const;

private:
    char16_t* room(int count);
    template <class Bytes>
    char16_t appendBytes(const Bytes& bytes);

    QVarLengthArray<char16_t, 512> m_chars{ 512 };
    int m_size = 0; // Of what was appended.
};
