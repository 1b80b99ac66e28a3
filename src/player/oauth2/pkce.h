#pragma once

#include <QString>

/// Proof Key for Code Exchange (RFC 7636).
namespace player::pkce {

/// A fresh secret of 43 characters, 256 random bits.
QString makeVerifier();

/// What the authorization request tells of it, by the method "S256".
QString challengeOf(const QString& verifier);

} // namespace player::pkce
