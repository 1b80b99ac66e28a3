#include "problem.h"

#include "tavujson.h"

namespace control {

static http::Response document(int status, const QByteArray& type, const QVariantHash& body)
{
    return { status,
        { { "Content-Type", type }, { "Cache-Control", "no-store" },
            { "X-Content-Type-Options", "nosniff" } },
        TavuJson::toJson(body) };
}

http::Response json(const QVariantHash& body, int status)
{
    return document(status, "application/json", body);
}

http::Response problem(
    int status, const QString& title, const QString& detail, const QVariantHash& more)
{
    QVariantHash body = more;
    body.insert(QStringLiteral("type"), QStringLiteral("about:blank"));
    body.insert(QStringLiteral("status"), status);
    body.insert(QStringLiteral("title"),
        title.isEmpty() ? QString::fromLatin1(http::reasonPhrase(status)) : title);
    body.insert(QStringLiteral("detail"), detail);
    return document(status, "application/problem+json", body);
}

} // namespace control
