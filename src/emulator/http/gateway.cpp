#include "gateway.h"

#include "../faults/replacement.h"
#include "describe.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTimer>

namespace emulator {

namespace {

const QString tokenField = QStringLiteral("token");
const QString goodToken = QStringLiteral("good");

faults::Target targetOf(const http::Request& request, const QString& kind)
{
    return { QString::fromLatin1(request.method), encodedPath(request), encodedQuery(request),
        hostOf(request), kind, request.secure };
}

LedgerEntry entryOf(const http::Request& request, const QString& kind)
{
    LedgerEntry entry;
    entry.atMs = QDateTime::currentMSecsSinceEpoch();
    entry.kind = kind;
    entry.method = QString::fromLatin1(request.method);
    entry.path = encodedPath(request);
    entry.query = redactQuery(encodedQuery(request));
    entry.host = hostOf(request);
    entry.secure = request.secure;
    entry.details = describeRequest(request, kind);
    return entry;
}

// What the server makes of a file and a range; it decides for itself when it sends.
int statusOf(const faults::Answer& answer, const http::Request& request)
{
    if (!answer.isFile())
        return answer.response.status;
    const QByteArray range = request.headers.value("range");
    if (!answer.info.ranges || !range.startsWith("bytes=") || range.contains(','))
        return 200;
    const qint64 first = range.mid(6).split('-').first().toLongLong();
    return first < QFileInfo(answer.file).size() ? 206 : 416;
}

faults::Answer unauthorized()
{
    faults::Answer answer = problem(401, QStringLiteral("invalid_token"));
    answer.response.headers.append("WWW-Authenticate", R"(Bearer error="invalid_token")");
    return answer;
}

} // namespace

Gateway::Gateway(
    Ledger& ledger, faults::Dial& dial, CheckToken checkToken, MomentOf momentOf, QObject* parent)
    : QObject(parent)
    , m_ledger(ledger)
    , m_dial(dial)
    , m_checkToken(std::move(checkToken))
    , m_momentOf(std::move(momentOf))
{
    m_router.setRefusal([this](const http::Request& request, int status, const QByteArray&) {
        return refusal(request, status);
    });
}

void Gateway::setAnnotate(Annotate annotate)
{
    m_annotate = std::move(annotate);
}

void Gateway::add(const QByteArray& method, const QString& pattern, const QString& kind,
    Access access, Handle handle)
{
    const Route route{ kind, access, std::move(handle) };
    m_router.add(method, pattern,
        [this, route](const http::Request& request, const http::Responder& responder) {
            if (route.access == Access::Local)
                serveLocal(route, request, responder);
            else
                serve(route, request, responder);
        });
}

void Gateway::addRaw(const QByteArray& method, const QString& pattern, http::Handler handler)
{
    m_router.add(method, pattern, std::move(handler));
}

void Gateway::handle(const http::Request& request, const http::Responder& responder)
{
    m_router.handle(request, responder);
}

http::Response Gateway::refusal(const http::Request& request, int status)
{
    LedgerEntry entry = entryOf(request, QStringLiteral("other"));
    entry.status = status;
    m_ledger.add(entry);
    return problem(status, QStringLiteral("there is no such document")).response;
}

void Gateway::serveLocal(
    const Route& route, const http::Request& request, const http::Responder& responder)
{
    if (!isLocal(request)) {
        responder.send(problem(403, QStringLiteral("only for this machine")).response);
        return;
    }
    Call call{ request, {}, std::nullopt, {} };
    faults::deliver(responder, route.handle(call), std::nullopt);
}

Gateway::CallPointer Gateway::admit(const Route& route, const http::Request& request)
{
    auto call = std::make_shared<Call>();
    call->request = request;
    call->moment = m_momentOf(request);
    call->hit = m_dial.take(targetOf(request, route.kind));
    call->entry = entryOf(request, route.kind);
    if (m_annotate)
        m_annotate(request, call->entry.details);
    if (route.access == Access::Token)
        call->entry.details.insert(
            tokenField, m_checkToken(request.headers.value("authorization")));
    if (call->hit) {
        call->entry.fault = call->hit->name;
        call->entry.effect = call->hit->effect.kind;
    }
    call->entry.serial = m_ledger.add(call->entry);
    return call;
}

void Gateway::serve(
    const Route& route, const http::Request& request, const http::Responder& responder)
{
    const CallPointer call = admit(route, request);
    const int delayMs = call->hit ? call->hit->effect.delayMs : 0;
    if (delayMs == 0)
        return answer(route, call, responder);
    QTimer::singleShot(delayMs, Qt::PreciseTimer, this,
        [this, route, call, responder] { answer(route, call, responder); });
}

void Gateway::answer(const Route& route, const CallPointer& call, const http::Responder& responder)
{
    const auto effect = call->hit ? std::optional<faults::Effect>(call->hit->effect) : std::nullopt;
    if (effect && effect->stage() == faults::Stage::Raw)
        return faults::deliver(responder, {}, effect);
    const faults::Answer answer = answerOf(route, *call);
    m_ledger.answered(call->entry.serial, statusOf(answer, call->request));
    faults::deliver(responder, answer, effect);
}

faults::Answer Gateway::answerOf(const Route& route, Call& call)
{
    if (call.hit && call.hit->effect.stage() == faults::Stage::Replace)
        return { faults::replacement(
                     call.hit->effect, call.moment.serviceBase, call.request.target),
            QString(), {} };
    if (route.access == Access::Token
        && call.entry.details.value(tokenField).toString() != goodToken)
        return unauthorized();
    return route.handle(call);
}

} // namespace emulator
