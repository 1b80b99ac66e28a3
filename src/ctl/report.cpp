#include "report.h"

#include "messages.h"
#include "print.h"

namespace ctl {

namespace {

ExitCode exitCodeOf(const Answer& answer)
{
    switch (answer.code) {
    case 0:
        return NotRunning;
    case 401:
        return NoPermission;
    default:
        return Failed;
    }
}

} // namespace

QString exitCodeHelp()
{
    return QStringLiteral("Exit codes:\n"
                          "  0: done\n"
                          "  1: it failed; standard error tells why\n"
                          "  2: wrong arguments\n"
                          "  4: the player asks for a token, and this is not it\n"
                          "  6: nobody is signed in\n"
                          "  7: no player answers\n"
                          "\n"
                          "With --json, standard output is one line of JSON: what the player "
                          "answered, or problem\ndetails (title, detail, status) when the exit "
                          "code is not 0. \"login\" prints a line for\neach step.\n");
}

int fail(const Options& options, ExitCode code, const QString& text, const QVariantHash& more)
{
    if (options.json) {
        QVariantHash problem = more;
        if (!problem.contains(QStringLiteral("title")))
            problem.insert(QStringLiteral("title"), text);
        printJson(problem);
    }
    printError(text);
    return code;
}

int report(const Context& context, const Answer& answer)
{
    if (answer.problem.isEmpty())
        return Done;
    return fail(context.options, exitCodeOf(answer), answer.problem,
        answer.code < 400 ? QVariantHash() : answer.body);
}

int finish(const Context& context, const Answer& answer, const QVariant& value)
{
    const int code = report(context, answer);
    if (code == Done && context.options.json)
        printJson(value);
    return code;
}

int finishAction(const Context& context, const Answer& answer)
{
    const QVariantList rows =
        context.options.json ? QVariantList() : resultRows(context.api, answer);
    if (rows.isEmpty())
        return finish(context, answer, answer.body);
    const auto print = answer.ok() ? printLine : printError;
    print(screenText(rows));
    if (!buttonsOf(rows).isEmpty())
        print(QStringLiteral("To press a button: tavu-ctl press NUMBER"));
    return answer.ok() ? Done : Failed;
}

} // namespace ctl
