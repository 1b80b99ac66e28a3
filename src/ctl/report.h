#pragma once

#include "apiclient.h"

#include <QStringList>

namespace ctl {

/// Exit codes of the program, for which exitCodeHelp() has the words.
enum ExitCode : int {
    Done = 0,
    Failed = 1,
    Usage = 2,
    NoPermission = 4,
    NotSignedIn = 6,
    NotRunning = 7,
};

QString exitCodeHelp();

struct Options
{
    bool json = false;
};

/// One run of a command.
struct Context
{
    ApiClient& api;
    QStringList arguments;
    Options options;

    QString rest() const { return arguments.join(QLatin1Char(' ')); }
};

/// Tells what failed: on standard error for people, and as problem details on standard output when
/// JSON is wanted. Returns `code`.
int fail(const Options& options, ExitCode code, const QString& text, const QVariantHash& more = {});
/// The same for an answer that failed; Done, and nothing is told, for one that did not.
int report(const Context& context, const Answer& answer);
/// The end of most commands: reports, and after a success prints `value` when JSON is wanted.
int finish(const Context& context, const Answer& answer, const QVariant& value);
/// As finish(); where the answer or the failure leads to a screen of the service, people see that.
int finishAction(const Context& context, const Answer& answer);

} // namespace ctl
