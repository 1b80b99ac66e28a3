#pragma once

#include "cmpath.h"

#include <QString>

namespace player {

/// What the player knows of the service that its plug-in brings. The places are a convention: below
/// the prefix of its worker a plug-in has its first screen at "browse", its play logic at
/// "playLogic" and, if it can be searched, its search screen at "search"; it may collect reports of
/// its service at "stationsError".
struct Service
{
    QString name; ///< For people.
    QString account; ///< Under which it signs in; empty when it needs no sign-in.
    CMPath prefix; ///< Empty before the plug-in is ready.

    bool isReady() const { return !prefix.isEmpty(); }
    bool needsLogin() const { return !account.isEmpty() || !isReady(); }
    CMPath root() const { return prefix.appendSubpath(QStringLiteral("browse")); }
    CMPath searchScreen() const { return prefix.appendSubpath(QStringLiteral("search")); }
    CMPath reports() const { return prefix.appendSubpath(QStringLiteral("stationsError")); }
    CMPath playLogic() const { return prefix.appendSubpath(QStringLiteral("playLogic")); }
};

} // namespace player
