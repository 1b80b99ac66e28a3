#pragma once

#include "settings.h"

#include <QString>

namespace player {

/// Where the settings file is looked for: $XDG_CONFIG_HOME/tavu/player.conf, or
/// /etc/tavu/player.conf when the user has none.
QString defaultSettingsFile();

/// Where tokens and state are kept: as set, else systemd's $STATE_DIRECTORY, else
/// $XDG_STATE_HOME/tavu. Made, for its owner alone, when it is missing; empty when that fails, and
/// `problem` says why and what to do.
QString makeStateFolder(const Settings& settings, QString& problem);

/// The plug-in: as set, else the one beside the program, in the build tree or installed.
QString pluginFile(const Settings& settings);

} // namespace player
