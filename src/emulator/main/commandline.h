#pragma once

#include "settings.h"

#include <optional>

namespace emulator {

/// What the command line asks for: settings, or a text to say and an exit code.
struct CommandLine
{
    std::optional<Settings> settings;
    QString readyFile; ///< where the ready line is written besides the standard output
    QString text; ///< help, version, or what is wrong
    int exitCode = 0;
};

/// Reads the arguments; the first is the program's name. Needs no application object.
CommandLine parseCommandLine(const QStringList& arguments);

} // namespace emulator
