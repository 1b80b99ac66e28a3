#pragma once

#include "artworkstore.h"
#include "httplimits.h"
#include "playerfacade.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace control {

/// Limits of a server for people's devices: the paths of rows carry whole URLs, encoded twice.
inline http::Limits controlLimits()
{
    http::Limits limits;
    limits.requestLineBytes = 32 * 1024;
    return limits;
}

struct Options
{
    /// Folder or resource folder of the web page.
    QString webRoot = QStringLiteral(":/web");
    /// Names under which clients may address the player, besides "localhost" and the address that
    /// they reach it at. Without ports.
    QStringList hosts;
    /// What clients that are not on this machine have to present. Empty: they are refused.
    QByteArray token;
    ArtworkFetch fetchArtwork;
    /// How long a client waits for the player, in milliseconds. The player answers by itself within
    /// its own deadline, in its own words; this only frees the client should that ever fail.
    int deadlineMs = PlayerFacade::answerDeadlineMs + 3000;
    /// How many clients may listen to events.
    int eventClients = 1024;
    http::Limits limits = controlLimits();
};

} // namespace control
