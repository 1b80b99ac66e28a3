#include "commands.h"

#include "browse.h"
#include "messages.h"
#include "print.h"
#include "tavuenums.h"

#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

namespace ctl {

namespace {

using Run = std::function<int(Context&)>;

constexpr unsigned long pollMs = 250;
// The player gives up on a stream sooner.
constexpr qint64 soundAtMostMs = 60000;

struct Command
{
    QString name;
    QString arguments; // As shown in the help.
    int argumentsAtLeast;
    int argumentsAtMost;
    QString help;
    Run run;
};

/// Without a login the service shows nothing but its sign-in.
int needLogin(const Context& context)
{
    const Answer answer = context.api.get(QStringLiteral("/login"));
    if (const int code = report(context, answer))
        return code;
    if (answer.body.value(QStringLiteral("state")) == QLatin1String("loggedIn"))
        return Done;
    return fail(context.options, NotSignedIn,
        QStringLiteral("Nobody is signed in. Run \"tavu-ctl login\"."));
}

/// The row at the end of the arguments; empty for none.
int walk(Context& context, QVariantHash& row)
{
    if (const int code = needLogin(context))
        return code;
    return report(context, Browse(context.api).walk(context.rest(), row));
}

int printRows(const Context& context, const Answer& answer, const Screen& screen)
{
    if (context.options.json || !answer.ok())
        return finish(context, answer, screen.rows);
    for (int index = 0; index < screen.rows.size(); ++index)
        printLine(rowLine(index + 1, screen.rows.at(index).toHash()));
    return Done;
}

int list(Context& context)
{
    QVariantHash row;
    if (const int code = walk(context, row))
        return code;
    Screen screen;
    const Answer answer =
        Browse(context.api).screen(row.value(QStringLiteral("path")).toString(), screen);
    return printRows(context, answer, screen);
}

int search(Context& context)
{
    if (const int code = needLogin(context))
        return code;
    Browse browse(context.api);
    QVariantHash found;
    const Answer searched = browse.search(context.rest(), found);
    if (const int code = report(context, searched))
        return code;
    Screen screen;
    const Answer answer = browse.screen(found.value(QStringLiteral("path")).toString(), screen);
    const int code = printRows(context, answer, screen);
    if (code != Done || context.options.json)
        return code;
    if (screen.rows.isEmpty())
        printLine(QStringLiteral("Nothing found for \"%1\".").arg(context.rest()));
    else
        printLine(QStringLiteral("To play one: tavu-ctl play \"?%1/NUMBER\"")
                      .arg(asStep(context.rest())));
    return Done;
}

/// A play command is answered when the player has a stream to open; whether it sounds shows later.
int waitForSound(Context& context)
{
    QElapsedTimer waited;
    waited.start();
    while (!waited.hasExpired(soundAtMostMs)) {
        const Answer answer = context.api.get(QStringLiteral("/state"));
        if (const int code = report(context, answer))
            return code;
        const QVariantHash player = answer.body.value(QStringLiteral("player")).toHash();
        const QVariantHash error = player.value(QStringLiteral("error")).toHash();
        if (!error.isEmpty())
            return fail(context.options, Failed,
                words(error.value(QStringLiteral("title")).toString(),
                    error.value(QStringLiteral("detail")).toString()),
                error);
        if (player.value(QStringLiteral("state")).toInt() == TavuPlayLogicState::Playing)
            return finish(context, answer, player);
        QThread::msleep(pollMs);
    }
    return fail(context.options, Failed,
        QStringLiteral("The player has not begun to play. See \"tavu-ctl messages\"."));
}

int play(Context& context)
{
    QVariantHash row;
    if (const int code = walk(context, row))
        return code;
    const Answer answer = context.api.post(
        QStringLiteral("/play"), { { QStringLiteral("ref"), row.value(QStringLiteral("ref")) } });
    // What is printed after a success is what then plays.
    const bool saysMore = !answer.ok() || !context.options.json;
    const int code = saysMore ? finishAction(context, answer) : static_cast<int>(Done);
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
    if (const int code = walk(context, row))
        return code;
    const int type = row.value(QStringLiteral("type")).toInt();
    if (type == TavuRolesType::Folder || type == TavuRolesType::Playable)
        return fail(context.options, Failed,
            QStringLiteral("\"%1\" is no button. To see or hear it: tavu-ctl %2 \"%3\"")
                .arg(row.value(QStringLiteral("title")).toString(),
                    type == TavuRolesType::Folder ? QStringLiteral("ls") : QStringLiteral("play"),
                    context.rest()));
    return activate(context, row);
}

int status(Context& context)
{
    const Answer answer = context.api.get(QStringLiteral("/state"));
    if (context.options.json || !answer.ok())
        return finish(context, answer, answer.body);
    printLine(statusText(answer.body.value(QStringLiteral("player")).toHash()));
    const QVariantHash login = answer.body.value(QStringLiteral("login")).toHash();
    const QString trouble = login.value(QStringLiteral("message")).toString();
    if (!trouble.isEmpty())
        printLine(trouble);
    if (login.value(QStringLiteral("state")) != QLatin1String("loggedIn"))
        printLine(QStringLiteral("Nobody is signed in. Run \"tavu-ctl login\"."));
    return Done;
}

/// "30", "30 finish", or "off".
int sleep(Context& context)
{
    const QString first = context.arguments.first();
    const QString second = context.arguments.value(1);
    bool isNumber = false;
    const int minutes = first == QLatin1String("off") ? 0 : first.toInt(&isNumber);
    const bool finishes = second == QLatin1String("finish");
    const bool isRight = (isNumber && minutes > 0 && (finishes || second.isEmpty()))
        || (first == QLatin1String("off") && second.isEmpty());
    if (!isRight)
        return fail(context.options, Usage,
            QStringLiteral("The sleep timer takes a number of minutes, with \"finish\" to let the "
                           "track end, or \"off\"."));
    const Answer answer = context.api.post(QStringLiteral("/player/sleep"),
        { { QStringLiteral("minutes"), minutes }, { QStringLiteral("finishTrack"), finishes } });
    return finish(context, answer, answer.body);
}

int queue(Context& context)
{
    const Answer answer = context.api.get(QStringLiteral("/queue"));
    if (context.options.json || !answer.ok())
        return finish(context, answer, answer.body);
    printLine(queueText(answer.body));
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

/// Shows each step once, and for people only the code and the end.
void printLogin(const Context& context, const QVariantHash& login, QVariantHash& shown)
{
    QVariantHash step = login;
    step.remove(QStringLiteral("expiresIn")); // It counts down.
    if (step == std::exchange(shown, step))
        return;
    const QVariant state = login.value(QStringLiteral("state"));
    if (context.options.json)
        printJson(login);
    else if (login.contains(QStringLiteral("userCode")))
        printCode(login);
    else if (state == QLatin1String("loggedIn"))
        printLine(QStringLiteral("Signed in."));
}

/// Waits until the user is signed in or the login has failed.
int login(Context& context)
{
    Answer answer = context.api.post(QStringLiteral("/login/start"));
    QVariantHash shown;
    while (answer.ok()) {
        answer = context.api.get(QStringLiteral("/login"));
        const QVariant state = answer.body.value(QStringLiteral("state"));
        if (state == QLatin1String("failed"))
            return fail(context.options, Failed,
                answer.body.value(QStringLiteral("message")).toString(), answer.body);
        if (answer.ok())
            printLogin(context, answer.body, shown);
        if (state == QLatin1String("loggedIn"))
            return Done;
        QThread::msleep(pollMs);
    }
    return report(context, answer);
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
        constexpr double most = 1e12; // What every conversion below can hold.
        bool ok = false;
        const double number = context.arguments.first().toDouble(&ok);
        if (!ok || !(std::abs(number) <= most))
            return fail(context.options, Usage,
                QStringLiteral("\"%1\" is not a number that \"%2\" takes.")
                    .arg(context.arguments.first(), key));
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
    if (const int code = report(context, answer))
        return code;
    const QVariantList buttons = latestButtons(list);
    const QVariantHash button = pickRow(buttons, context.rest());
    if (button.isEmpty())
        return fail(context.options, Failed,
            buttons.isEmpty()
                ? QStringLiteral("No message has a button.")
                : QStringLiteral("There is no button \"%1\". See \"tavu-ctl messages\".")
                      .arg(context.rest()));
    const QString link = button.value(QStringLiteral("link")).toString();
    if (link.isEmpty())
        return activate(context, button);
    if (context.options.json)
        printJson(QVariantHash{ { QStringLiteral("link"), link } });
    else
        printLine(link);
    return Done;
}

const std::vector<Command>& commands()
{
    const auto command = [](const char* name, const char* arguments, int atLeast, int atMost,
                             const char* help, Run run) {
        return Command{ QString::fromLatin1(name), QString::fromLatin1(arguments), atLeast, atMost,
            QString::fromLatin1(help), std::move(run) };
    };
    constexpr qint64 msPerSecond = 1000;
    constexpr int words = std::numeric_limits<int>::max(); // Of one text, quoted or not.
    static const std::vector<Command> all{
        command("login", "", 0, 0, "sign in with a code and wait for it", login),
        command("logout", "", 0, 0, "sign out", post("/logout")),
        command("ls", "[ROW/ROW/...]", 0, words,
            "show a screen; a row is its number or title (\\/ for a / in it), or ?TEXT for a "
            "search",
            list),
        command("search", "TEXT", 1, words, "search the service", search),
        command("play", "ROW/ROW/...", 1, words, "play a row", play),
        command("open", "ROW/ROW/...", 1, words, "press an action row", open),
        command("pause", "", 0, 0, "pause, or go on", post("/player/pause")),
        command("resume", "", 0, 0, "go on when paused", post("/player/resume")),
        command("next", "", 0, 0, "next track", post("/player/next")),
        command("prev", "", 0, 0, "previous track, or restart this one", post("/player/previous")),
        command("stop", "", 0, 0, "stop", post("/player/stop")),
        command("seek", "SECONDS", 1, 1, "go to a position",
            postNumber("/player/seek", "position", msPerSecond)),
        command("volume", "0..100", 1, 1, "set the volume", postNumber("/player/volume", "volume")),
        command("mode", "0..5", 1, 1,
            "normal, shuffle, repeat one, shuffle + repeat one, repeat all, shuffle + repeat all",
            postNumber("/player/mode", "mode")),
        command("sleep", "MINUTES [finish]", 1, 2,
            "fade and pause then, or when the track then ends; \"off\" calls it off", sleep),
        command("like", "", 0, 0, "thumb up", post("/player/like")),
        command("dislike", "", 0, 0, "thumb down", post("/player/dislike")),
        command("status", "", 0, 0, "what plays", status),
        command("queue", "", 0, 0, "what has played, what plays and what follows", queue),
        command("messages", "", 0, 0, "the last messages, with their buttons", messages),
        command("press", "BUTTON", 1, words,
            "press a button of the latest message, by number or title", press),
    };
    return all;
}

} // namespace

int runCommand(
    ApiClient& api, const QString& name, const QStringList& arguments, const Options& options)
{
    const auto& all = commands();
    const auto command = std::find_if(
        all.begin(), all.end(), [&name](const Command& each) { return each.name == name; });
    if (command == all.end())
        return fail(options, Usage,
            QStringLiteral("There is no command \"%1\". Run \"tavu-ctl --help\".").arg(name));
    Context context{ api, arguments, options };
    const bool tooFew = arguments.size() < command->argumentsAtLeast
        || (command->argumentsAtLeast > 0 && context.rest().trimmed().isEmpty());
    if (tooFew || arguments.size() > command->argumentsAtMost)
        return fail(options, Usage,
            QStringLiteral("Usage: tavu-ctl %1 %2").arg(name, command->arguments).trimmed());
    return command->run(context);
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
