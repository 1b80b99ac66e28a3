#include "requestbody.h"

#include "problem.h"
#include "tavujson.h"

#include <cmath>

namespace control {

namespace {

const double exactDoubles = 9007199254740992.0; // 2^53

/// Whole numbers that were written with a point or an exponent count as well.
std::optional<qint64> wholeNumber(const QVariant& value)
{
    if (value.type() == QVariant::LongLong)
        return value.toLongLong();
    if (value.type() != QVariant::Double)
        return std::nullopt;
    const double number = value.toDouble();
    if (std::trunc(number) != number || std::abs(number) > exactDoubles)
        return std::nullopt;
    return static_cast<qint64>(number);
}

} // namespace

std::optional<RequestBody> RequestBody::parse(const QByteArray& body)
{
    RequestBody parsed;
    if (body.isEmpty())
        return parsed;
    const QVariant document = TavuJson::parse(body);
    if (document.type() != QVariant::Hash)
        return std::nullopt;
    parsed.m_members = document.toHash();
    return parsed;
}

QVariant RequestBody::value(const char* name) const
{
    return m_members.value(QString::fromLatin1(name));
}

bool RequestBody::has(const char* name) const
{
    return m_members.contains(QString::fromLatin1(name));
}

std::optional<QString> RequestBody::text(const char* name) const
{
    const QVariant member = value(name);
    return member.type() == QVariant::String ? std::optional(member.toString()) : std::nullopt;
}

std::optional<qint64> RequestBody::integer(const char* name, qint64 least, qint64 most) const
{
    const std::optional<qint64> number = wholeNumber(value(name));
    return number && *number >= least && *number <= most ? number : std::nullopt;
}

std::optional<bool> RequestBody::flag(const char* name) const
{
    const QVariant member = value(name);
    return member.type() == QVariant::Bool ? std::optional(member.toBool()) : std::nullopt;
}

http::Handler withBody(std::function<void(const RequestBody&, const http::Responder&)> handler)
{
    return [handler = std::move(handler)](
               const http::Request& request, const http::Responder& responder) {
        if (const std::optional<RequestBody> body = RequestBody::parse(request.body))
            handler(*body, responder);
        else
            responder.send(problem(400, {}, QStringLiteral("The body is not a JSON object.")));
    };
}

} // namespace control
