#pragma once

#include "../catalogue/catalogue.h"

#include <QByteArray>
#include <QString>

namespace emulator::documents {

/// Makes and checks the addresses of sound: signed, so that they expire, and for some tracks with
/// header fields that must come with the request.
class MediaUrls
{
public:
    /// Addresses made with the same secret stay good over restarts.
    explicit MediaUrls(const QByteArray& secret);

    /// Path and query of a track's sound, good until `expiresMs` (since the epoch); then it is
    /// answered with the status.
    QString audio(
        const catalogue::Track& track, qint64 expiresMs, int expiredStatus, bool keyHeaders) const;

    enum class Check { Good, Forged, Expired };
    /// The texts are the address's query values of these names.
    Check check(catalogue::Id track, const QString& expires, const QString& then,
        const QString& keyed, const QString& signature, qint64 nowMs) const;

    /// The fields that a request for the sound of a protected track must carry.
    static QString keyIdName();
    static QString keyName();
    QString keyId(catalogue::Id track) const;
    QString key(catalogue::Id track) const;

private:
    QString sign(const QString& text) const;

    QByteArray m_secret;
};

} // namespace emulator::documents
