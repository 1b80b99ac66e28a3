#include "playroutes.h"

#include "browseroutes.h"
#include "problem.h"
#include "requestbody.h"

#include <limits>

namespace control {

namespace {

using Command = PlayerFacade::Command;
using Act = void (*)(const ApiContext&, const RequestBody&, const http::Responder&);

void answerAction(
    const ApiContext& api, const http::Responder& responder, const CMReply<QVariant>& reply)
{
    api.answer(responder, reply, 409,
        [&api](const QVariant& value) { return json(api.view.actionReply(value)); });
}

void play(const ApiContext& api, const RequestBody& body, const http::Responder& responder)
{
    const std::optional<QString> ref = body.text("ref");
    if (!ref)
        return responder.send(problem(400, {}, QStringLiteral("\"ref\" is missing.")));
    const std::optional<QVariantHash> row = api.rows.recall(*ref);
    if (!row)
        return responder.send(unknownRow());
    answerAction(api, responder, api.player.play(*row));
}

template <Command command>
void run(const ApiContext& api, const RequestBody&, const http::Responder& responder)
{
    answerAction(api, responder, api.player.command(command));
}

void seek(const ApiContext& api, const RequestBody& body, const http::Responder& responder)
{
    const auto position = body.integer("position", 0, std::numeric_limits<qint64>::max());
    if (!position)
        return responder.send(problem(
            400, {}, QStringLiteral("\"position\" is a number of milliseconds, 0 or more.")));
    answerAction(api, responder, api.player.seek(*position));
}

void setMode(const ApiContext& api, const RequestBody& body, const http::Responder& responder)
{
    const auto mode = body.integer("mode", 0, 5);
    if (!mode)
        return responder.send(problem(400, {}, QStringLiteral("\"mode\" is a number, 0 to 5.")));
    api.player.setPlayMode(int(*mode));
    responder.send(json({}));
}

/// Sets both or, when either is wrong, none.
void setVolume(const ApiContext& api, const RequestBody& body, const http::Responder& responder)
{
    const auto volume = body.integer("volume", 0, 100);
    const auto mute = body.flag("mute");
    const bool wrong = (body.has("volume") && !volume) || (body.has("mute") && !mute);
    if (wrong || (!volume && !mute))
        return responder.send(problem(400, {},
            QStringLiteral("\"volume\" is a number, 0 to 100; \"mute\" is true or false.")));
    if (volume)
        api.player.setVolume(int(*volume));
    if (mute)
        api.player.setMuted(*mute);
    responder.send(json({}));
}

void sendQueue(const ApiContext& api, const http::Responder& responder)
{
    responder.send(json(api.view.queue(api.player.queue())));
}

void setSleep(const ApiContext& api, const RequestBody& body, const http::Responder& responder)
{
    constexpr int minutesAtMost = 1440;
    constexpr int msPerMinute = 60000;
    const auto minutes = body.integer("minutes", 0, minutesAtMost);
    const auto finishTrack = body.flag("finishTrack");
    if (!minutes || (body.has("finishTrack") && !finishTrack))
        return responder.send(problem(400, {},
            QStringLiteral("\"minutes\" is a number, 0 to 1440; \"finishTrack\" is true or "
                           "false.")));
    api.player.setSleep(int(*minutes) * msPerMinute, finishTrack.value_or(false));
    responder.send(json({}));
}

void sendOutputs(const ApiContext& api, const http::Responder& responder)
{
    responder.send(json({ { QStringLiteral("outputs"), api.player.outputs() } }));
}

void selectOutput(const ApiContext& api, const RequestBody& body, const http::Responder& responder)
{
    const std::optional<QString> id = body.text("id");
    if (!id)
        return responder.send(problem(400, {}, QStringLiteral("\"id\" is missing.")));
    if (!api.player.selectOutput(*id))
        return responder.send(problem(404, QStringLiteral("This output is not there.")));
    sendOutputs(api, responder);
}

} // namespace

void addPlayRoutes(http::Router& router, const ApiContext& api)
{
    const auto post = [&](const char* path, Act act) {
        router.add("POST", QStringLiteral("/api/v1/") + QLatin1String(path),
            withBody([&api, act](const RequestBody& body, const http::Responder& responder) {
                act(api, body, responder);
            }));
    };
    post("play", play);
    post("player/pause", run<Command::TogglePause>);
    post("player/resume", run<Command::Resume>);
    post("player/next", run<Command::Next>);
    post("player/previous", run<Command::Previous>);
    post("player/stop", run<Command::Stop>);
    post("player/like", run<Command::Like>);
    post("player/dislike", run<Command::Dislike>);
    post("player/seek", seek);
    post("player/mode", setMode);
    post("player/volume", setVolume);
    post("player/sleep", setSleep);
    router.add("GET", QStringLiteral("/api/v1/queue"),
        [&api](
            const http::Request&, const http::Responder& responder) { sendQueue(api, responder); });
    router.add("GET", QStringLiteral("/api/v1/outputs"),
        [&api](const http::Request&, const http::Responder& responder) {
            sendOutputs(api, responder);
        });
    post("outputs", selectOutput);
}

} // namespace control
