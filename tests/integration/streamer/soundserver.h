#pragma once

#include "httpserver.h"

#include <QHash>
#include <QVector>

#include <functional>

/// A loopback server of sound files that does to its answers what a test wants.
class SoundServer
{
public:
    struct Asked
    {
        QString path;
        QByteArray range; ///< Empty without one.
        http::Headers headers;
        quint16 peerPort = 0; ///< Tells connections apart.
        QByteArray method;
    };

    /// How a file is handed out.
    struct Manner
    {
        QByteArray requiredHeader; ///< "name: value", else 403.
        QByteArray contentType = "application/octet-stream";
        bool ranges = true;
        bool chunked = false; ///< Without a length, and deaf to ranges.
        http::Shaping shaping; ///< Of the first `shapedAnswers` answers.
        int shapedAnswers = 1000000;
    };

    SoundServer();

    /// Serves `file` at `path`.
    void add(const QString& path, const QByteArray& file);
    void add(const QString& path, const QByteArray& file, const Manner& manner);
    void setHandler(const QString& path, http::Handler handler);
    /// A plain answer without a body of note.
    void setStatus(const QString& path, int status);

    QString url(const QString& path) const;
    const QVector<Asked>& asked() const { return m_asked; }
    int askedFor(const QString& path) const;
    QVector<Asked> requests(const QString& path) const;
    quint16 port() const { return m_port; }
    http::Server& server() { return m_server; }

private:
    void handle(const http::Request& request, const http::Responder& responder);

    http::Server m_server;
    quint16 m_port = 0;
    QHash<QString, http::Handler> m_handlers;
    QVector<Asked> m_asked;
};
