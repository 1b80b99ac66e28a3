#pragma once

#include "httpclient.h"
#include "tavuurl.h"

#include <QByteArray>

struct sockaddr;

/// Which targets are asked, by the client and by the player's streams, and what they are told.
namespace httpclient {

/// The URL in the form that goes to the transfer: encoded, without fragment. Empty when the target
/// is refused: no host, a scheme other than http and https, user information, a host that different
/// readers of the URL would read differently, or more than 32 KiB.
QByteArray target(const TavuUrl& url);

/// `reference` seen from `base`, both encoded; empty when that names no place that can be asked.
QByteArray resolvedLocation(const QByteArray& base, const QByteArray& reference);

/// Whether a redirect between these leaves the protection that the first has. Such a one is not
/// followed.
bool downgrades(const TavuUrl& from, const TavuUrl& to);

/// Whether "authorization" may go to the host. Without a domain suffix every host may have it.
bool mayAuthorize(const HttpClientConfig& config, const QString& host);

/// Whether scheme, host and port of both are the same.
bool sameOrigin(const TavuUrl& a, const TavuUrl& b);

/// Whether this machine and its link stay out of reach: they do when the service is a public one,
/// so that no redirect of it can make the player ask its own network neighbourhood.
bool refusesLocalAddresses(const HttpClientConfig& config);
bool isLocalAddress(const sockaddr* address);

/// Whether the field can be sent: its name is a token, its value holds no control characters.
bool isSendable(const HttpClientHeaders::Field& field);

} // namespace httpclient
