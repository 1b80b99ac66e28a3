#pragma once

#include "report.h"

namespace ctl {

/// Runs one command with its arguments and prints what it gives. Returns the program's exit code.
int runCommand(
    ApiClient& api, const QString& name, const QStringList& arguments, const Options& options);

/// The commands with their arguments, a line each.
QString commandHelp();

} // namespace ctl
