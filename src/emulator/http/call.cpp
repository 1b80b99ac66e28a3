#include "call.h"

#include "tavujson.h"

namespace emulator {

QString encodedPath(const http::Request& request)
{
    return QString::fromLatin1(request.target).section(QLatin1Char('?'), 0, 0);
}

QString encodedQuery(const http::Request& request)
{
    const int mark = request.target.indexOf('?');
    return mark < 0 ? QString() : QString::fromLatin1(request.target.mid(mark + 1));
}

QString hostOf(const http::Request& request)
{
    const QString authority = QString::fromLatin1(request.authority);
    const int colon = authority.lastIndexOf(QLatin1Char(':'));
    return colon > authority.lastIndexOf(QLatin1Char(']')) ? authority.left(colon) : authority;
}

bool isLocal(const http::Request& request)
{
    return request.peer.isLoopback();
}

faults::Answer document(const QByteArray& json)
{
    return { http::Response::json(200, json), QString(), {} };
}

faults::Answer problem(int status, const QString& text)
{
    const QByteArray body = TavuJson::toJson(QVariantHash{ { QStringLiteral("error"), text } });
    return { http::Response::json(status, body), QString(), {} };
}

} // namespace emulator
