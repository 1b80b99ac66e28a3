#pragma once

#include "httpserver.h"

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace control {

/// Who may ask what. Looks at the head alone, so that nothing of a refused body is read.
///
/// A page of another site can make the user's browser send requests here: so the Host has to be one
/// of ours (else 421: a name of theirs may point at our address), state changes have to come from
/// our own page or from no page at all (else 403) and as JSON, which other sites' forms cannot send
/// (else 415). Clients that are not on this machine need the token (else 401).
class AccessPolicy
{
public:
    AccessPolicy(const QStringList& hosts, QByteArray token);

    /// The refusal, or nothing.
    std::optional<http::Response> judge(const http::Request& head) const;

private:
    bool hostIsOurs(const http::Request& head) const;
    bool mayPass(const http::Request& head) const;

    QStringList m_hosts;
    QByteArray m_token;
};

} // namespace control
