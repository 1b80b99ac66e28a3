#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace emulator {

/// A certificate with its key, both PEM.
struct Identity
{
    QByteArray certificate;
    QByteArray key;

    bool isEmpty() const { return certificate.isEmpty() || key.isEmpty(); }
};

/// A new certificate authority of our own, good for a year. Empty when it cannot be made.
Identity makeAuthority();

/// When a server certificate is good, in seconds from now.
struct Validity
{
    long from = -3600;
    long to = 365L * 24 * 3600;
};

/// A server certificate for host names and IP addresses, signed by the authority. Empty when it
/// cannot be made.
Identity makeServerIdentity(
    const Identity& authority, const QStringList& names, const Validity& validity = {});

/// Whether the certificate is one and stays good for at least a day.
bool isUsable(const Identity& identity);

} // namespace emulator
