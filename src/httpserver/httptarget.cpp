#include "httptarget.h"

#include <QTextCodec>

#include <optional>

namespace http {

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

namespace {

std::optional<QByteArray> unescape(const QByteArray& text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            bytes += text[i];
            continue;
        }
        if (i + 2 >= text.size())
            return std::nullopt;
        const int high = hexValue(text[i + 1]);
        const int low = hexValue(text[i + 2]);
        if (high < 0 || low < 0 || (high == 0 && low == 0))
            return std::nullopt;
        bytes += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return bytes;
}

/// Strict: what is not UTF-8 is refused, since a lenient reading opens a second spelling of a path.
std::optional<QString> decode(const QByteArray& text)
{
    const std::optional<QByteArray> bytes = unescape(text);
    if (!bytes)
        return std::nullopt;
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    static const QTextCodec* const utf8 = QTextCodec::codecForName("UTF-8");
    const QString decoded = utf8->toUnicode(bytes->constData(), bytes->size(), &state);
    if (state.invalidChars > 0 || state.remainingChars > 0)
        return std::nullopt;
    return decoded;
}

/// The text before the first `separator`; the whole text without one.
QByteArray before(char separator, const QByteArray& text)
{
    const int position = text.indexOf(separator);
    return position < 0 ? text : text.left(position);
}

bool splitPath(const QByteArray& path, Request& request)
{
    if (!path.startsWith('/'))
        return false;
    if (path.size() > 1) {
        for (const QByteArray& part : path.mid(1).split('/')) {
            const std::optional<QString> segment = decode(part);
            if (!segment)
                return false;
            request.segments += *segment;
        }
    }
    request.path = QLatin1Char('/') + request.segments.join(QLatin1Char('/'));
    return true;
}

bool splitQuery(const QByteArray& query, Request& request)
{
    for (const QByteArray& item : query.split('&')) {
        if (item.isEmpty())
            continue;
        const int equals = item.indexOf('=');
        const std::optional<QString> name = decode(before('=', item));
        const std::optional<QString> value = equals < 0 ? QString() : decode(item.mid(equals + 1));
        if (!name || !value)
            return false;
        request.query += qMakePair(*name, *value);
    }
    return true;
}

/// Leaves the origin form of an absolute-form target and notes its authority.
QByteArray originForm(const QByteArray& target, Request& request)
{
    const QByteArray lower = target.left(8).toLower();
    int host = 0;
    if (lower.startsWith("http://"))
        host = 7;
    else if (lower.startsWith("https://"))
        host = 8;
    else
        return target;
    int end = host;
    while (end < target.size() && target[end] != '/' && target[end] != '?')
        ++end;
    request.authority = target.mid(host, end - host);
    const QByteArray rest = target.mid(end);
    return rest.startsWith('/') ? rest : '/' + rest;
}

} // namespace

bool splitTarget(Request& request)
{
    request.authority = request.headers.value("Host");
    const bool noPath =
        request.method == "CONNECT" || (request.method == "OPTIONS" && request.target == "*");
    if (noPath) {
        request.path = QString::fromLatin1(request.target);
        return true;
    }
    const QByteArray target = originForm(request.target, request);
    if (target.contains('#'))
        return false;
    const int question = target.indexOf('?');
    return splitPath(before('?', target), request)
        && (question < 0 || splitQuery(target.mid(question + 1), request));
}

} // namespace http
