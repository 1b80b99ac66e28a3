#pragma once

#include "clientview.h"
#include "cmchain.h"
#include "httpresponder.h"

#include <QObject>
#include <QTimer>

#include <functional>

namespace control {

/// Answers a client when a reply of the player has finished, or when it has taken too long. Lives
/// as long as that takes.
class PendingAnswer : public QObject
{
    Q_OBJECT

public:
    struct Terms
    {
        int deadlineMs = 0;
        int failureStatus = 502; ///< of the answer when the reply fails
    };
    /// Makes the answer from the reply's value.
    using Success = std::function<http::Response(const QVariant& value)>;

    /// `view` must outlive the owner's children. At the deadline the reply is cancelled and the
    /// client gets 504.
    static void start(QObject* owner, const ClientView& view, const CMReply<QVariant>& reply,
        const http::Responder& responder, const Terms& terms, Success success);

private:
    PendingAnswer(QObject* owner, const ClientView& view, CMReply<QVariant> reply,
        http::Responder responder, const Terms& terms, Success success);

    void finished();
    void expire();
    http::Response failure(const CMError& error) const;

    const ClientView& m_view;
    CMReply<QVariant> m_reply;
    http::Responder m_responder;
    Terms m_terms;
    Success m_success;
    QTimer m_deadline;
    CMContext m_context;
};

} // namespace control
