#include "pendinganswer.h"

#include "playerfacade.h"
#include "problem.h"

namespace control {

void PendingAnswer::start(QObject* owner, const ClientView& view, const CMReply<QVariant>& reply,
    const http::Responder& responder, const Terms& terms, Success success)
{
    new PendingAnswer(owner, view, reply, responder, terms, std::move(success));
}

PendingAnswer::PendingAnswer(QObject* owner, const ClientView& view, CMReply<QVariant> reply,
    http::Responder responder, const Terms& terms, Success success)
    : QObject(owner)
    , m_view(view)
    , m_reply(std::move(reply))
    , m_responder(std::move(responder))
    , m_terms(terms)
    , m_success(std::move(success))
{
    connect(&m_deadline, &QTimer::timeout, this, &PendingAnswer::expire);
    m_deadline.setSingleShot(true);
    m_deadline.start(terms.deadlineMs);
    // The watcher may be destroyed on another thread; so it owns nothing.
    cmchain::whenFinished(m_reply, m_context, [this](const CMReply<QVariant>&) { finished(); });
}

void PendingAnswer::finished()
{
    m_deadline.stop();
    const CMError error = m_reply.error();
    m_responder.send(error.isSet() ? failure(error) : m_success(m_reply.value()));
    deleteLater();
}

void PendingAnswer::expire()
{
    m_responder.send(problem(504, QStringLiteral("No answer"),
        QStringLiteral("The service has not answered in time. Please try again.")));
    m_reply.cancel();
}

/// The words are the player's or the service's own.
http::Response PendingAnswer::failure(const CMError& error) const
{
    if (error.name() == CMVoidReply::ErrorCancel().name())
        return problem(409, QStringLiteral("Cancelled"),
            QStringLiteral("Something else has taken the place of this request."));
    if (error.name() == PlayerFacade::noAnswerName())
        return problem(504, QStringLiteral("No answer"), error.message());
    QVariantHash more;
    if (!error.actionReply().isEmpty())
        more.insert(QStringLiteral("actionReply"), m_view.actionReply(error.actionReply()));
    return problem(m_terms.failureStatus, error.title(), error.message(), more);
}

} // namespace control
