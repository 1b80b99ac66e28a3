#include "httpmessage.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <algorithm>

namespace http {

namespace {

bool sameName(const QByteArray& a, const QByteArray& b)
{
    return a.size() == b.size() && qstrnicmp(a.constData(), b.constData(), uint(a.size())) == 0;
}

} // namespace

void Headers::append(const QByteArray& name, const QByteArray& value)
{
    m_fields += qMakePair(name, value);
}

void Headers::set(const QByteArray& name, const QByteArray& value)
{
    remove(name);
    append(name, value);
}

void Headers::remove(const QByteArray& name)
{
    const auto gone = [&](const Field& field) { return sameName(field.first, name); };
    m_fields.erase(std::remove_if(m_fields.begin(), m_fields.end(), gone), m_fields.end());
}

bool Headers::contains(const QByteArray& name) const
{
    const auto wanted = [&](const Field& field) { return sameName(field.first, name); };
    return std::any_of(m_fields.begin(), m_fields.end(), wanted);
}

QByteArray Headers::value(const QByteArray& name) const
{
    for (const Field& field : m_fields)
        if (sameName(field.first, name))
            return field.second;
    return {};
}

QList<QByteArray> Headers::values(const QByteArray& name) const
{
    QList<QByteArray> found;
    for (const Field& field : m_fields)
        if (sameName(field.first, name))
            found += field.second;
    return found;
}

bool Request::hasQuery(const QString& name) const
{
    const auto wanted = [&](const QPair<QString, QString>& item) { return item.first == name; };
    return std::any_of(query.begin(), query.end(), wanted);
}

QString Request::queryValue(const QString& name) const
{
    for (const auto& item : query)
        if (item.first == name)
            return item.second;
    return {};
}

namespace {

Response typed(int status, const QByteArray& type, const QByteArray& body)
{
    return { status, { { "Content-Type", type } }, body };
}

} // namespace

Response Response::text(int status, const QByteArray& body)
{
    return typed(status, "text/plain; charset=utf-8", body);
}

Response Response::html(int status, const QByteArray& body)
{
    return typed(status, "text/html; charset=utf-8", body);
}

Response Response::json(int status, const QByteArray& body)
{
    return typed(status, "application/json", body);
}

Response Response::json(int status, const QJsonObject& body)
{
    return json(status, QJsonDocument(body).toJson(QJsonDocument::Compact));
}

Response Response::redirect(int status, const QByteArray& location)
{
    return { status, { { "Location", location } }, {} };
}

QByteArray reasonPhrase(int status)
{
    static const QHash<int, QByteArray> phrases{
        { 100, "Continue" },
        { 101, "Switching Protocols" },
        { 200, "OK" },
        { 201, "Created" },
        { 202, "Accepted" },
        { 204, "No Content" },
        { 206, "Partial Content" },
        { 300, "Multiple Choices" },
        { 301, "Moved Permanently" },
        { 302, "Found" },
        { 303, "See Other" },
        { 304, "Not Modified" },
        { 307, "Temporary Redirect" },
        { 308, "Permanent Redirect" },
        { 400, "Bad Request" },
        { 401, "Unauthorized" },
        { 403, "Forbidden" },
        { 404, "Not Found" },
        { 405, "Method Not Allowed" },
        { 406, "Not Acceptable" },
        { 408, "Request Timeout" },
        { 409, "Conflict" },
        { 410, "Gone" },
        { 411, "Length Required" },
        { 412, "Precondition Failed" },
        { 413, "Content Too Large" },
        { 414, "URI Too Long" },
        { 415, "Unsupported Media Type" },
        { 416, "Range Not Satisfiable" },
        { 417, "Expectation Failed" },
        { 421, "Misdirected Request" },
        { 422, "Unprocessable Content" },
        { 429, "Too Many Requests" },
        { 431, "Request Header Fields Too Large" },
        { 500, "Internal Server Error" },
        { 501, "Not Implemented" },
        { 502, "Bad Gateway" },
        { 503, "Service Unavailable" },
        { 504, "Gateway Timeout" },
        { 505, "HTTP Version Not Supported" },
    };
    return phrases.value(status);
}

namespace {

/// The present time as an HTTP date, made anew once a second.
QByteArray dateField()
{
    thread_local qint64 second = 0;
    thread_local QByteArray text;
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    if (now != second) {
        second = now;
        text = httpDate(QDateTime::fromSecsSinceEpoch(now, Qt::UTC));
    }
    return text;
}

} // namespace

QByteArray httpDate(const QDateTime& time)
{
    return QLocale::c()
        .toString(time.toUTC(), QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'"))
        .toLatin1();
}

namespace {

/// A field that would begin further lines is left out: values may stem from elsewhere.
bool breaksLine(const QByteArray& text)
{
    return text.contains('\r') || text.contains('\n') || text.contains('\0');
}

} // namespace

QByteArray serializeHead(int status, const Headers& headers)
{
    QByteArray head;
    head.reserve(512);
    head += "HTTP/1.1 " + QByteArray::number(status) + ' ' + reasonPhrase(status) + "\r\n";
    if (!headers.contains("Date"))
        head += "Date: " + dateField() + "\r\n";
    for (const auto& field : headers.fields())
        if (!breaksLine(field.first) && !breaksLine(field.second))
            head += field.first + ": " + field.second + "\r\n";
    return head += "\r\n";
}

QByteArray serialize(const Response& response)
{
    Headers headers = response.headers;
    headers.set("Content-Length", QByteArray::number(response.body.size()));
    return serializeHead(response.status, headers) + response.body;
}

} // namespace http
