#pragma once

#include "httpclient.h"

#include <QByteArray>

#include <optional>

namespace httpclient {

/// What the "cache-control" fields of a message say, as far as a private cache heeds it (RFC 9111,
/// section 5.2).
struct CacheControl
{
    bool noStore = false;
    bool noCache = false;
    /// Seconds. One that cannot be read counts as 0.
    std::optional<qint64> maxAge;

    static CacheControl of(const HttpClientHeaders& headers);
};

/// For how many milliseconds an answer that has just arrived needs no check: its lifetime less the
/// age that it brings. 0 when nothing says so; nothing is guessed.
qint64 freshMs(const HttpClientHeaders& headers);

/// All values of the fields of one name, as one comma-separated list.
QByteArray combined(const HttpClientHeaders& headers, const QByteArray& name);

/// The members of a comma-separated list, trimmed; a comma within quotes does not divide.
QList<QByteArray> members(const QByteArray& list);

} // namespace httpclient
