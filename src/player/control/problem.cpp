#include "problem.h"

#include "tavujson.h"

#include <log4cplus/loggingmacros.h>

#include <QUuid>

namespace control {

namespace {

log4cplus::Logger& logger()
{
    static log4cplus::Logger logger = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("Control"));
    return logger;
}

http::Response document(int status, const QByteArray& type, const QVariantHash& body)
{
    return { status,
        { { "Content-Type", type }, { "Cache-Control", "no-store" },
            { "X-Content-Type-Options", "nosniff" } },
        TavuJson::toJson(body) };
}

} // namespace

http::Response json(const QVariantHash& body, int status)
{
    return document(status, "application/json", body);
}

namespace {

/// Under this name the log has the same failure, so that what a user reads out can be found there.
QString instanceOf(int status, const QString& title)
{
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    LOG4CPLUS_INFO(logger(),
        "Request " << id.toStdString() << " ends with " << status << ": " << title.toStdString());
    return QStringLiteral("urn:uuid:") + id;
}

} // namespace

http::Response problem(
    int status, const QString& title, const QString& detail, const QVariantHash& more)
{
    QVariantHash body = more;
    body.insert(QStringLiteral("type"), QStringLiteral("about:blank"));
    const QString headline =
        title.isEmpty() ? QString::fromLatin1(http::reasonPhrase(status)) : title;
    body.insert(QStringLiteral("status"), status);
    body.insert(QStringLiteral("title"), headline);
    body.insert(QStringLiteral("instance"), instanceOf(status, headline));
    body.insert(QStringLiteral("detail"), detail);
    return document(status, "application/problem+json", body);
}

} // namespace control
