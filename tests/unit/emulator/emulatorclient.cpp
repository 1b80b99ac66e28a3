#include "emulatorclient.h"

#include "tavujson.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QNetworkAccessManager>

QByteArray Reply::header(const QByteArray& name) const
{
    for (const auto& field : headers) {
        if (field.first.compare(name, Qt::CaseInsensitive) == 0)
            return field.second;
    }
    return {};
}

QVariantHash Reply::json() const
{
    return TavuJson::parse(body).toHash();
}

EmulatorClient::EmulatorClient()
{
    settings.musicFolder = musicFolder();
    settings.stateFolder = m_folder.filePath(QStringLiteral("state"));
    settings.seed = 1;
    QDir().mkpath(musicFolder());
}

QString EmulatorClient::musicFolder() const
{
    return m_folder.filePath(QStringLiteral("music"));
}

QString EmulatorClient::start()
{
    m_thread = std::make_unique<emulator::EmulatorThread>(settings);
    return m_thread->start();
}

QString EmulatorClient::restart()
{
    m_thread.reset();
    return start();
}

QByteArray EmulatorClient::bearer()
{
    if (m_bearer.isEmpty()) {
        run([this] {
            m_bearer = "Bearer "
                + emulator()
                      .authority()
                      .grantDirectly(QDateTime::currentMSecsSinceEpoch())
                      .json.value(QStringLiteral("access_token"))
                      .toByteArray();
        });
    }
    return m_bearer;
}

QString EmulatorClient::url(const QString& path)
{
    return path.startsWith(QLatin1String("http"))
        ? path
        : QStringLiteral("http://127.0.0.1:%1%2").arg(emulator().httpPort()).arg(path);
}

Reply EmulatorClient::send(const QByteArray& method, const QString& pathOrUrl,
    const QByteArray& body, const Headers& headers)
{
    QNetworkAccessManager manager;
    QNetworkRequest request(QUrl(url(pathOrUrl)));
    request.setRawHeader("authorization", bearer());
    if (!body.isEmpty())
        request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/json"));
    for (const auto& header : headers)
        request.setRawHeader(header.first, header.second);
    const std::unique_ptr<QNetworkReply> reply(manager.sendCustomRequest(request, method, body));
    const bool finished = waitUntil([&reply] { return reply->isFinished(); }, timeoutMs);
    Reply result;
    result.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    result.body = reply->readAll();
    result.error = finished ? reply->error() : QNetworkReply::TimeoutError;
    result.headers = reply->rawHeaderPairs();
    return result;
}

Reply EmulatorClient::get(const QString& pathOrUrl, const Headers& headers)
{
    return send("GET", pathOrUrl, {}, headers);
}

Reply EmulatorClient::post(const QString& pathOrUrl, const QByteArray& body, const Headers& headers)
{
    return send("POST", pathOrUrl, body, headers);
}

Reply EmulatorClient::remove(const QString& path)
{
    return send("DELETE", path, {}, {});
}

QVariantHash EmulatorClient::document(const QString& path)
{
    const Reply reply = get(path);
    EXPECT_EQ(reply.status, 200) << path.toStdString();
    return reply.json();
}
