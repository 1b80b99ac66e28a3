#pragma once

#include <QByteArray>

namespace player {

/// A URL taken apart by the parser that the transfers use themselves.
struct UrlParts
{
    QByteArray scheme;
    QByteArray host;
    QByteArray port; ///< The default one when none is named.
    QByteArray path;

    /// Parts are empty when `url` is not an absolute http or https URL with a host.
    static UrlParts of(const QByteArray& url);

    bool isValid() const { return !host.isEmpty(); }
    bool sameOrigin(const UrlParts& other) const;
    /// Without user, query and fragment, which may hold secrets.
    QByteArray forLog() const;
};

} // namespace player
