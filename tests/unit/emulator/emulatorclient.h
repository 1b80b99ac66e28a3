#pragma once

#include "emulator/main/emulatorthread.h"

#include <QByteArray>
#include <QList>
#include <QNetworkReply>
#include <QTemporaryDir>
#include <QVariantHash>

#include <memory>

/// What came back for one request.
struct Reply
{
    int status = 0; ///< 0: no answer came
    QByteArray body;
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    QList<QNetworkReply::RawHeaderPair> headers;

    QByteArray header(const QByteArray& name) const;
    QVariantHash json() const;
};

/// A running emulator with a folder of its own, and a client that waits for each answer. The client
/// follows no redirects.
class EmulatorClient
{
public:
    EmulatorClient();

    /// Change these before start().
    emulator::Settings settings;
    QString musicFolder() const;

    /// Starts the emulator on what is in the music folder; returns what went wrong.
    QString start();
    emulator::Emulator& emulator() { return m_thread->emulator(); }
    void run(const std::function<void()>& function) { m_thread->run(function); }
    /// Ends the emulator and starts another with the same folders.
    QString restart();

    using Headers = QList<QPair<QByteArray, QByteArray>>;

    /// Requests by HTTP with a good token, unless the headers bring another "authorization".
    Reply get(const QString& pathOrUrl, const Headers& headers = {});
    Reply post(const QString& pathOrUrl, const QByteArray& body, const Headers& headers = {});
    Reply remove(const QString& path);
    /// The page or document as JSON; fails the test unless the status is 200.
    QVariantHash document(const QString& path);

    QByteArray bearer();
    QString url(const QString& path);
    int timeoutMs = 10000;

private:
    Reply send(const QByteArray& method, const QString& pathOrUrl, const QByteArray& body,
        const Headers& headers);

    QTemporaryDir m_folder;
    std::unique_ptr<emulator::EmulatorThread> m_thread;
    QByteArray m_bearer;
};
