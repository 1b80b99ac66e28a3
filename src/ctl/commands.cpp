#include "commands.h"

#include "browse.h"
#include "messages.h"
#include "print.h"
#include "tavuenums.h"

#include <QElapsedTimer>
#include <QThread>

#include <functional>
#include <vector>

namespace ctl {

namespace {

struct Context
{
    ApiClient& api;
    QStringList arguments;
    Options options;

    QString rest() const { return arguments.join(QLatin1Char(' ')); }
};

using Run = std::function<int(Context&)>;

constexpr unsigned long pollMs = 250;
// The player gives up on a stream sooner.
constexpr qint64 soundAtMostMs = 60000;

struct Command
{
    QString name;
    QString arguments; // As shown in the help.
    int argumentsAtLeast;
    QString help;
    Run run;
};

int report(const Answer& answer)
{
    if (answer.problem.isEmpty())
        return Done;
    printError(answer.problem);
    return answer.code == 0 ? NotRunning : Failed;
}

int finish(const Context& context, const Answer& answer, const QVariant& value)
{
    const int code = report(answer);
    if (code == Done && context.options.json)
        printJson(value);
    return code;
}

/// As finish(); where the answer or the failure leads to a screen of the service, shows that.
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

int list(Context& context)
{
    Browse browse(context.api);
    QVariantHash row;
    const Answer walked = browse.walk(context.rest(), row);
    if (const int code = report(walked))
        return code;
    Screen screen;
    const Answer answer = browse.screen(row.value(QStringLiteral("path")).toString(), screen);
    if (context.options.json || !answer.ok())
        return finish(context, answer, screen.rows);
    for (int index = 0; index < screen.rows.size(); ++index)
        printLine(rowLine(index + 1, screen.rows.at(index).toHash()));
    return Done;
}

int search(Context& context)
{
    const Answer found =
        context.api.post(QStringLiteral("/search"), { { QStringLiteral("text"), context.rest() } });
    if (const int code = report(found))
        return code;
    Screen screen;
    const Answer answer =
        Browse(context.api).screen(found.body.value(QStringLiteral("path")).toString(), screen);
    if (context.options.json || !answer.ok())
        return finish(context, answer, screen.rows);
    for (int index = 0; index < screen.rows.size(); ++index)
        printLine(rowLine(index + 1, screen.rows.at(index).toHash()));
    if (screen.rows.isEmpty())
        printLine(QStringLiteral("Nothing found for \"%1\".").arg(context.rest()));
    return Done;
}

/// A play command is answered when the player has a stream to open; whether it sounds shows later.
int waitForSound(Context& context)
{
    QElapsedTimer waited;
    waited.start();
    while (!waited.hasExpired(soundAtMostMs)) {
        const Answer answer = context.api.get(QStringLiteral("/state"));
        if (const int code = report(answer))
            return code;
        const QVariantHash player = answer.body.value(QStringLiteral("player")).toHash();
        const QVariantHash error = player.value(QStringLiteral("error")).toHash();
        if (!error.isEmpty()) {
            printError(words(error.value(QStringLiteral("title")).toString(),
                error.value(QStringLiteral("detail")).toString()));
            return Failed;
        }
        if (player.value(QStringLiteral("state")).toInt() == TavuPlayLogicState::Playing)
            return Done;
        QThread::msleep(pollMs);
    }
    printError(QStringLiteral("The player has not begun to play. See \"tavu-ctl messages\"."));
    return Failed;
}

int play(Context& context)
{
    QVariantHash row;
    const Answer walked = Browse(context.api).walk(context.rest(), row);
    if (const int code = report(walked))
        return code;
    const Answer answer = context.api.post(
        QStringLiteral("/play"), { { QStringLiteral("ref"), row.value(QStringLiteral("ref")) } });
    const int code = finishAction(context, answer);
    return code == Done ? waitForSound(context) : code;
}

int activate(const Context& context, const QVariantHash& row)
{
    return finishAction(context,
        context.api.post(QStringLiteral("/rows/activate"),
            { { QStringLiteral("ref"), row.value(QStringLiteral("ref")) } }));
}

int open(Context& context)
{
    QVariantHash row;
    const Answer walked = Browse(context.api).walk(context.rest(), row);
    if (const int code = report(walked))
        return code;
    return activate(context, row);
}

int status(Context& context)
{
    const Answer answer = context.api.get(QStringLiteral("/state"));
    if (context.options.json || !answer.ok())
        return finish(context, answer, answer.body);
    printLine(statusText(answer.body.value(QStringLiteral("player")).toHash()));
    const QVariantHash login = answer.body.value(QStringLiteral("login")).toHash();
    if (login.value(QStringLiteral("state")) != QLatin1String("loggedIn"))
        printLine(QStringLiteral("Not signed in. Run \"tavu-ctl login\"."));
    return Done;
}

void printCode(const QVariantHash& login)
{
    printLine(QStringLiteral("Open %1 on any device and enter the code %2")
                  .arg(login.value(QStringLiteral("verificationUri")).toString(),
                      login.value(QStringLiteral("userCode")).toString()));
    const QString complete = login.value(QStringLiteral("verificationUriComplete")).toString();
    if (!complete.isEmpty())
        printLine(QStringLiteral("or open %1").arg(complete));
}

/// Shows each code once and waits until the user is signed in or the login has failed.
int login(Context& context)
{
    Answer answer = context.api.post(QStringLiteral("/login/start"));
    QVariant shownCode;
    while (answer.ok()) {
        answer = context.api.get(QStringLiteral("/login"));
        const QVariant state = answer.body.value(QStringLiteral("state"));
        const QVariant code = answer.body.value(QStringLiteral("userCode"));
        if (state == QLatin1String("loggedIn"))
            break;
        if (state == QLatin1String("failed")) {
            printError(answer.body.value(QStringLiteral("message")).toString());
            return Failed;
        }
        if (code.isValid() && code != shownCode && !context.options.json) {
            printCode(answer.body);
            shownCode = code;
        }
        QThread::msleep(pollMs);
    }
    if (answer.ok() && !context.options.json)
        printLine(QStringLiteral("Signed in."));
    return finish(context, answer, answer.body);
}

Run post(const char* path)
{
    return [target = QString::fromLatin1(path)](
               Context& context) { return finishAction(context, context.api.post(target)); };
}

/// Posts one number under a name. Numbers are checked by the player, which knows the bounds.
Run postNumber(const char* path, const char* name, qint64 factor = 1)
{
    return [target = QString::fromLatin1(path), key = QString::fromLatin1(name), factor](
               Context& context) {
        bool ok = false;
        const double number = context.arguments.first().toDouble(&ok);
        if (!ok) {
            printError(QStringLiteral("\"%1\" is not a number.").arg(context.arguments.first()));
            return static_cast<int>(Usage);
        }
        const auto value = static_cast<qint64>(number * static_cast<double>(factor));
        const Answer answer = context.api.post(target, { { key, value } });
        return finish(context, answer, answer.body);
    };
}

int messages(Context& context)
{
    QVariantList list;
    const Answer answer = readMessages(context.api, list);
    if (context.options.json || !answer.ok())
        return finish(context, answer, list);
    for (const QVariant& message : qAsConst(list))
        printLine(messageText(message.toHash()));
    return Done;
}

/// The buttons of the latest message that has any.
QVariantList latestButtons(const QVariantList& messages)
{
    for (auto message = messages.crbegin(); message != messages.crend(); ++message) {
        const QVariantList buttons =
            buttonsOf(message->toHash().value(QStringLiteral("rows")).toList());
        if (!buttons.isEmpty())
            return buttons;
    }
    return {};
}

int press(Context& context)
{
    QVariantList list;
    const Answer answer = readMessages(context.api, list);
    if (const int code = report(answer))
        return code;
    const QVariantHash button = pickRow(latestButtons(list), context.rest());
    if (button.isEmpty()) {
        printError(QStringLiteral("There is no button \"%1\".").arg(context.rest()));
        return Failed;
    }
    const QString link = button.value(QStringLiteral("link")).toString();
    if (link.isEmpty())
        return activate(context, button);
    printLine(link);
    return Done;
}

const std::vector<Command>& commands()
{
    const auto command = [](const char* name, const char* arguments, int atLeast, const char* help,
                             Run run) {
        return Command{ QString::fromLatin1(name), QString::fromLatin1(arguments), atLeast,
            QString::fromLatin1(help), std::move(run) };
    };
    constexpr qint64 msPerSecond = 1000;
    static const std::vector<Command> all{
        command("login", "", 0, "sign in with a code and wait for it", login),
        command("logout", "", 0, "sign out", post("/logout")),
        command("ls", "[ROW/ROW/...]", 0, "show a screen; a row is its number or its title", list),
        command("search", "TEXT", 1, "search the service", search),
        command("play", "ROW/ROW/...", 1, "play a row", play),
        command("open", "ROW/ROW/...", 1, "press an action row", open),
        command("pause", "", 0, "pause, or go on", post("/player/pause")),
        command("resume", "", 0, "go on when paused", post("/player/resume")),
        command("next", "", 0, "next track", post("/player/next")),
        command("prev", "", 0, "previous track, or restart this one", post("/player/previous")),
        command("stop", "", 0, "stop", post("/player/stop")),
        command("seek", "SECONDS", 1, "go to a position",
            postNumber("/player/seek", "position", msPerSecond)),
        command("volume", "0..100", 1, "set the volume", postNumber("/player/volume", "volume")),
        command("mode", "0..5", 1,
            "normal, shuffle, repeat one, shuffle + repeat one, repeat all, shuffle + repeat all",
            postNumber("/player/mode", "mode")),
        command("like", "", 0, "thumb up", post("/player/like")),
        command("dislike", "", 0, "thumb down", post("/player/dislike")),
        command("status", "", 0, "what plays", status),
        command("messages", "", 0, "the last messages, with their buttons", messages),
        command("press", "BUTTON", 1, "press a button of the latest message, by number or title",
            press),
    };
    return all;
}

} // namespace

int runCommand(
    ApiClient& api, const QString& command, const QStringList& arguments, const Options& options)
{
    for (const Command& candidate : commands()) {
        if (candidate.name != command)
            continue;
        if (arguments.size() < candidate.argumentsAtLeast) {
            printError(QStringLiteral("Usage: tavu-ctl %1 %2").arg(command, candidate.arguments));
            return Usage;
        }
        Context context{ api, arguments, options };
        return candidate.run(context);
    }
    printError(QStringLiteral("There is no command \"%1\". Run \"tavu-ctl --help\".").arg(command));
    return Usage;
}

QString commandHelp()
{
    QString help;
    for (const Command& command : commands())
        help += QStringLiteral("  %1 %2\n")
                    .arg((command.name + QLatin1Char(' ') + command.arguments).leftJustified(24),
                        command.help);
    return help;
}

} // namespace ctl
