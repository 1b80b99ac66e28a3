#include "browseroutes.h"

#include "problem.h"
#include "requestbody.h"

#include <limits>

namespace control {

namespace {

const int rowsByDefault = 50;
const int rowsAtMost = 500;

/// A query item as a row number; nothing for one that is none.
std::optional<int> rowNumber(const http::Request& request, const QString& name, int byDefault)
{
    if (!request.hasQuery(name))
        return byDefault;
    bool isNumber = false;
    const int number = request.queryValue(name).toInt(&isNumber);
    return isNumber && number >= 0 ? std::optional(number) : std::nullopt;
}

int windowEnd(int from, int rows)
{
    return from > std::numeric_limits<int>::max() - rows ? std::numeric_limits<int>::max()
                                                         : from + rows - 1;
}

void sendRows(const ApiContext& api, const http::Request& request, const http::Responder& responder)
{
    const std::optional<int> from = rowNumber(request, QStringLiteral("from"), 0);
    const std::optional<int> to =
        rowNumber(request, QStringLiteral("to"), windowEnd(from.value_or(0), rowsByDefault));
    if (!from || !to || *to < *from) {
        responder.send(problem(400, {},
            QStringLiteral("\"from\" and \"to\" are row numbers, counted from 0, in order.")));
        return;
    }
    const int last = qMin(*to, windowEnd(*from, rowsAtMost));
    const auto reply = api.player.rows(request.queryValue(QStringLiteral("path")), *from, last);
    api.answer(responder, reply, 502,
        [&api](const QVariant& value) { return json(api.view.page(value.toHash())); });
}

PendingAnswer::Success actionReply(const ApiContext& api)
{
    return [&api](const QVariant& value) { return json(api.view.actionReply(value)); };
}

void activate(const ApiContext& api, const RequestBody& body, const http::Responder& responder)
{
    const std::optional<QString> ref = body.text("ref");
    const std::optional<QString> path = body.text("path");
    if (ref) {
        const std::optional<QVariantHash> row = api.rows.recall(*ref);
        if (!row)
            return responder.send(unknownRow());
        const auto reply = api.player.activateRow(*row, body.value("value"));
        return api.answer(responder, reply, 409, actionReply(api));
    }
    if (!path || path->isEmpty() || (body.has("role") && !body.text("role")))
        return responder.send(problem(400, {}, QStringLiteral("\"ref\" or \"path\" is missing.")));
    const auto reply =
        api.player.activatePath(*path, body.text("role").value_or(QString()), body.value("value"));
    api.answer(responder, reply, 409, actionReply(api));
}

void search(const ApiContext& api, const RequestBody& body, const http::Responder& responder)
{
    const std::optional<QString> text = body.text("text");
    if (!text || text->trimmed().isEmpty() || (body.has("path") && !body.text("path")))
        return responder.send(problem(400, {}, QStringLiteral("\"text\" is missing or empty.")));
    const auto reply = api.player.search(*text, body.text("path").value_or(QString()));
    api.answer(responder, reply, 502, [](const QVariant& value) {
        return json({ { QStringLiteral("path"), value.toString() } });
    });
}

} // namespace

http::Response unknownRow()
{
    return problem(404, QStringLiteral("This row is no longer known."),
        QStringLiteral("Load its list again."));
}

void addBrowseRoutes(http::Router& router, const ApiContext& api)
{
    router.add("GET", QStringLiteral("/api/v1/rows"),
        [&api](const http::Request& request, const http::Responder& responder) {
            sendRows(api, request, responder);
        });
    router.add("POST", QStringLiteral("/api/v1/rows/activate"),
        withBody([&api](const RequestBody& body, const http::Responder& responder) {
            activate(api, body, responder);
        }));
    router.add("POST", QStringLiteral("/api/v1/search"),
        withBody([&api](const RequestBody& body, const http::Responder& responder) {
            search(api, body, responder);
        }));
}

} // namespace control
