#pragma once

#include <QString>

/// `text` with everything but RFC 3986's unreserved characters percent-encoded as UTF-8: for values
/// of which nothing may be taken for a separator.
QString percentEncoded(const QString& text);

/// The same, at the end of `text`.
void appendPercentEncoded(QString* text, const QString& part);
