#pragma once

#include <QString>

/// `text` with everything but RFC 3986's unreserved characters percent-encoded as UTF-8: for values
/// of which nothing may be taken for a separator.
QString percentEncoded(const QString& text);

/// What was encoded, to the letter; a "%" without two hex digits behind it stays.
QString percentDecoded(const QByteArray& encoded);

/// As percentEncoded(), at the end of `text`.
void appendPercentEncoded(QString* text, const QString& part);
