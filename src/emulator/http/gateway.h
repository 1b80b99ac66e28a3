#pragma once

#include "call.h"
#include "httprouter.h"

#include <QObject>

#include <functional>
#include <memory>

namespace emulator {

/// Takes every request to its handler, and on the way keeps the ledger, lets the fault dial act and
/// checks tokens. Lives in the server's thread.
class Gateway : public QObject
{
    Q_OBJECT

public:
    using Handle = std::function<faults::Answer(Call&)>;
    /// What a caller must show: an access token, nothing, or that it stands on this machine.
    enum class Access { Token, Open, Local };
    /// Says what the bearer field of a request is worth: "good", "missing", "expired", ...
    using CheckToken = std::function<QString(const QByteArray& authorization)>;
    /// Fills in what an answer needs to know of its moment.
    using MomentOf = std::function<documents::Moment(const http::Request&)>;

    /// Adds to the ledger's details what only the service knows of a request.
    using Annotate = std::function<void(const http::Request&, QVariantHash& details)>;

    Gateway(Ledger& ledger, faults::Dial& dial, CheckToken checkToken, MomentOf momentOf,
        QObject* parent = nullptr);

    void setAnnotate(Annotate annotate);

    /// Requests of local access are neither logged nor struck by faults.
    void add(const QByteArray& method, const QString& pattern, const QString& kind, Access access,
        Handle handle);
    /// For answers that do not come at once.
    void addRaw(const QByteArray& method, const QString& pattern, http::Handler handler);

    void handle(const http::Request& request, const http::Responder& responder);

private:
    struct Route
    {
        QString kind;
        Access access;
        Handle handle;
    };
    using CallPointer = std::shared_ptr<Call>;

    void serve(const Route& route, const http::Request& request, const http::Responder& responder);
    void serveLocal(
        const Route& route, const http::Request& request, const http::Responder& responder);
    CallPointer admit(const Route& route, const http::Request& request);
    void answer(const Route& route, const CallPointer& call, const http::Responder& responder);
    faults::Answer answerOf(const Route& route, Call& call);
    http::Response refusal(const http::Request& request, int status);

    Ledger& m_ledger;
    faults::Dial& m_dial;
    CheckToken m_checkToken;
    MomentOf m_momentOf;
    Annotate m_annotate;
    http::Router m_router;
};

} // namespace emulator
