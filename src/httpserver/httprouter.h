#pragma once

#include "httpresponder.h"

#include <QVector>

#include <functional>

namespace http {

/// Finds the handler of a method and a path.
///
/// A pattern is a path of literal components and placeholders: "/artwork/{id}" matches one
/// non-empty component, "/files/{rest*}" the rest, possibly empty, decoded and joined by "/" (use
/// Request::segments where "%2F" must not divide). Literal components win over placeholders,
/// whatever the order of adding. GET handlers also take HEAD.
class Router
{
public:
    struct Route
    {
        QByteArray method;
        QString pattern;
    };

    /// Makes the answers 404 and 405; `allow` is the value of the Allow field, which the router
    /// adds.
    using Refusal = std::function<Response(const Request&, int status, const QByteArray& allow)>;

    void add(const QByteArray& method, const QString& pattern, Handler handler);
    void setRefusal(Refusal refusal);

    void handle(const Request& request, const Responder& responder) const;
    /// In the order of adding.
    QVector<Route> routes() const;

private:
    struct Entry
    {
        Route route;
        QStringList segments;
        Handler handler;
    };

    void refuse(
        const Request& request, const Responder& responder, const QList<QByteArray>& methods) const;

    Refusal m_refusal;
    QVector<Entry> m_entries;
};

} // namespace http
