#pragma once

#include "../documents/rules.h"
#include "../faults/rule.h"
#include "../oauth2/authority.h"

#include <QHostAddress>
#include <QString>
#include <QStringList>

#include <vector>

namespace emulator {

/// Everything that can be chosen when an emulator is started.
struct Settings
{
    QString musicFolder; ///< empty: the sample albums
    QString stateFolder; ///< made when missing; keeps scan, certificates, logins and samples
    QString samplesFolder; ///< where the sample albums are made; empty: in the state folder
    QHostAddress address{ QHostAddress::LocalHost };
    quint16 httpPort = 0; ///< 0: a free one
    quint16 tlsPort = 0;
    /// Names that the certificate is good for; the first is the service's own.
    QStringList hosts{ QStringLiteral("music.localhost"), QStringLiteral("eu.music.localhost"),
        QStringLiteral("na.music.localhost"), QStringLiteral("foreign.example.localhost") };
    QString caFile; ///< where the authority's certificate is written; empty: in the state folder
    bool mediaOverTls = false; ///< sound and pictures by HTTPS
    bool tokenNeeded = true;
    bool hostilePorts = false; ///< open ports behind which TLS or the connection goes wrong
    quint64 seed = 0; ///< of the stations' orders; 0: a new one each time
    documents::Rules documents;
    oauth2::Rules oauth2;
    std::vector<faults::Rule> faults;
};

} // namespace emulator
