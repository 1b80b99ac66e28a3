#pragma once

#include "authority.h"

#include <QByteArray>
#include <QString>

namespace emulator::oauth2 {

/// The page where the user types the code that the player shows, and allows or denies the login.
/// Works on a phone and without scripts. A form counts only with the mark that its own page carried
/// and that belongs to the visitor's cookie, so that no other site can answer for the user.
class ApprovalPage
{
public:
    explicit ApprovalPage(const QByteArray& secret);

    static QByteArray cookieName();
    /// A fresh cookie value.
    static QByteArray newVisitor();
    /// The visitor in a request's Cookie field; empty without one.
    static QByteArray visitorOf(const QByteArray& cookieField);

    /// The form; `userCode` is filled in, `asking` shown when it is known, `problem` said above it.
    QByteArray form(const QByteArray& visitor, const QString& userCode,
        const std::optional<Authority::Asking>& asking, const QString& problem) const;
    /// What follows a decision.
    static QByteArray done(bool approved);

    bool isGenuine(const QByteArray& visitor, const Form& form) const;

    /// The Content-Security-Policy under which the pages work.
    static QByteArray policy();

private:
    QString mark(const QByteArray& visitor) const;

    QByteArray m_secret;
};

} // namespace emulator::oauth2
