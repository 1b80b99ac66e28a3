#include "cachecontrol.h"

#include <QDateTime>
#include <QLocale>

namespace httpclient {

namespace {

constexpr qint64 longestSeconds = 365LL * 24 * 3600;

qint64 seconds(QByteArray text)
{
    if (text.size() >= 2 && text.startsWith('"') && text.endsWith('"'))
        text = text.mid(1, text.size() - 2);
    bool isNumber = false;
    const qint64 number = text.toLongLong(&isNumber);
    return isNumber ? qBound(qint64(0), number, longestSeconds) : 0;
}

QDateTime httpDate(const QByteArray& text)
{
    return QLocale::c().toDateTime(
        QString::fromLatin1(text), QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'"));
}

/// From the answer's own dates, so that this machine's clock does not count.
qint64 secondsByExpires(const HttpClientHeaders& headers)
{
    if (!headers.contains("expires"))
        return 0; // Reading a date is the dearest part of storing an answer.
    const QDateTime expires = httpDate(headers.value("expires"));
    const QDateTime date = httpDate(headers.value("date"));
    return expires.isValid() && date.isValid() ? qMax(qint64(0), date.secsTo(expires)) : 0;
}

} // namespace

CacheControl CacheControl::of(const HttpClientHeaders& headers)
{
    CacheControl control;
    for (const QByteArray& directive : members(combined(headers, "cache-control"))) {
        const int equals = directive.indexOf('=');
        const QByteArray name = directive.mid(0, equals).trimmed().toLower();
        if (name == "no-store")
            control.noStore = true;
        else if (name == "no-cache")
            control.noCache = true;
        else if (name == "max-age") // Of several the shortest.
            control.maxAge = qMin(control.maxAge.value_or(longestSeconds),
                equals < 0 ? 0 : seconds(directive.mid(equals + 1).trimmed()));
    }
    return control;
}

qint64 freshMs(const HttpClientHeaders& headers)
{
    const CacheControl control = CacheControl::of(headers);
    if (control.noCache)
        return 0;
    const qint64 lifetime = control.maxAge ? *control.maxAge : secondsByExpires(headers);
    return qMax(qint64(0), lifetime - seconds(headers.value("age"))) * 1000;
}

QByteArray combined(const HttpClientHeaders& headers, const QByteArray& name)
{
    QByteArray list;
    for (const HttpClientHeaders::Field& field : headers.fields()) {
        if (field.first.compare(name, Qt::CaseInsensitive) != 0)
            continue;
        if (!list.isEmpty())
            list += ", ";
        list += field.second;
    }
    return list;
}

QList<QByteArray> members(const QByteArray& list)
{
    QList<QByteArray> members;
    QByteArray member;
    bool quoted = false;
    const auto take = [&] {
        if (!member.trimmed().isEmpty())
            members.append(member.trimmed());
        member.clear();
    };
    for (const char c : list) {
        if (c == '"')
            quoted = !quoted;
        if (c == ',' && !quoted)
            take();
        else
            member += c;
    }
    take();
    return members;
}

} // namespace httpclient
