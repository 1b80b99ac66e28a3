#pragma once

#include "httpserver.h"

#include <QHash>
#include <QList>
#include <QVariantHash>

#include <functional>

/// An authorization server on loopback that says what a test has it say.
class AuthorizationServer
{
public:
    using Form = QHash<QString, QString>;

    struct Call
    {
        Form form;
        http::Headers headers;
        http::Responder responder;
    };
    using Script = std::function<void(const Call&)>;

    AuthorizationServer();

    QString deviceUrl() const { return url("/device"); }
    QString tokenUrl() const { return url("/token"); }

    /// What the next calls get; by default a code, and "authorization_pending".
    Script device;
    Script token;

    const QList<Call>& deviceCalls() const { return m_deviceCalls; }
    const QList<Call>& tokenCalls() const { return m_tokenCalls; }
    int polls() const { return m_tokenCalls.size(); }

    // Scripts.
    static Script json(int status, const QVariantHash& body);
    static Script error(const char* code, int status = 400);
    static Script tokens(const char* access, const char* refresh, int lifetimeS = 3600);
    static Script bytes(int status, const QByteArray& body);
    /// Cuts the connection without an answer.
    static Script lost();
    /// Never answers.
    static Script silent();

    /// A usable answer to a device request.
    static QVariantHash code();

private:
    QString url(const char* path) const;
    void handle(const http::Request& request, const http::Responder& responder);

    http::Server m_server;
    quint16 m_port;
    QList<Call> m_deviceCalls;
    QList<Call> m_tokenCalls;
};
