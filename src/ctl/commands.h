#pragma once

#include "apiclient.h"

#include <QStringList>

namespace ctl {

/// Exit codes of the program.
enum ExitCode : int { Done = 0, Failed = 1, Usage = 2, NotRunning = 7 };

struct Options
{
    bool json = false;
};

/// Runs one command with its arguments and prints what it gives.
int runCommand(
    ApiClient& api, const QString& command, const QStringList& arguments, const Options& options);

/// The commands with their arguments, a line each.
QString commandHelp();

} // namespace ctl
