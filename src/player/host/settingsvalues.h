#pragma once

#include "settings.h"

#include <QString>
#include <QVariant>

namespace player {

/// Publishes what the settings say of the service as values of the root worker, and sets up what
/// all HTTP clients share. Returns an empty text, or what is missing and what to do.
QString publishSettings(const Settings& settings);

/// What `player.plugin-settings` tells the plug-in.
QVariantHash pluginSettings(const Settings& settings);

} // namespace player
