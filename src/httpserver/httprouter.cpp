#include "httprouter.h"

#include <algorithm>
#include <optional>

namespace http {

namespace {

QStringList splitPattern(const QString& pattern)
{
    Q_ASSERT_X(pattern.startsWith(QLatin1Char('/')), "Router", "pattern without a leading slash");
    return pattern.size() == 1 ? QStringList() : pattern.mid(1).split(QLatin1Char('/'));
}

bool isPlaceholder(const QString& segment)
{
    return segment.startsWith(QLatin1Char('{')) && segment.endsWith(QLatin1Char('}'));
}

bool isRest(const QString& segment)
{
    return isPlaceholder(segment) && segment.endsWith(QLatin1String("*}"));
}

QString nameOf(const QString& segment)
{
    return segment.mid(1, segment.size() - (isRest(segment) ? 3 : 2));
}

using Parameters = QHash<QString, QString>;

/// The placeholders' values, or nothing when the path does not match.
std::optional<Parameters> match(const QStringList& pattern, const QStringList& path)
{
    Parameters parameters;
    for (int i = 0; i < pattern.size(); ++i) {
        if (isRest(pattern[i])) {
            parameters.insert(nameOf(pattern[i]), path.mid(i).join(QLatin1Char('/')));
            return parameters;
        }
        if (i >= path.size())
            return std::nullopt;
        if (isPlaceholder(pattern[i]) && !path[i].isEmpty())
            parameters.insert(nameOf(pattern[i]), path[i]);
        else if (pattern[i] != path[i])
            return std::nullopt;
    }
    return pattern.size() == path.size() ? std::optional<Parameters>(parameters) : std::nullopt;
}

int weight(const QString& segment)
{
    if (isRest(segment))
        return 1;
    return isPlaceholder(segment) ? 2 : 3;
}

/// Whether the first pattern says more about a path that both match.
bool isMoreSpecific(const QStringList& a, const QStringList& b)
{
    return std::lexicographical_compare(b.begin(), b.end(), a.begin(), a.end(),
        [](const QString& x, const QString& y) { return weight(x) < weight(y); });
}

bool takes(const QByteArray& routeMethod, const QByteArray& method)
{
    return routeMethod == method || (routeMethod == "GET" && method == "HEAD");
}

} // namespace

void Router::add(const QByteArray& method, const QString& pattern, Handler handler)
{
    m_entries += Entry{ { method, pattern }, splitPattern(pattern), std::move(handler) };
}

void Router::setRefusal(Refusal refusal)
{
    m_refusal = std::move(refusal);
}

QVector<Router::Route> Router::routes() const
{
    QVector<Route> routes;
    for (const Entry& entry : m_entries)
        routes += entry.route;
    return routes;
}

namespace {

Response plainRefusal(const Request&, int status, const QByteArray&)
{
    return Response::text(status, QByteArray::number(status) + ' ' + reasonPhrase(status) + '\n');
}

QByteArray allowField(QList<QByteArray> methods)
{
    if (methods.contains("GET"))
        methods += "HEAD";
    std::sort(methods.begin(), methods.end());
    methods.erase(std::unique(methods.begin(), methods.end()), methods.end());
    return methods.join(", ");
}

} // namespace

void Router::handle(const Request& request, const Responder& responder) const
{
    const Entry* best = nullptr;
    Parameters parameters;
    QList<QByteArray> methods;
    for (const Entry& entry : m_entries) {
        const std::optional<Parameters> found = match(entry.segments, request.segments);
        if (!found)
            continue;
        methods += entry.route.method;
        if (!takes(entry.route.method, request.method)
            || (best && !isMoreSpecific(entry.segments, best->segments)))
            continue;
        best = &entry;
        parameters = *found;
    }
    if (best) {
        Request routed = request;
        routed.parameters = parameters;
        best->handler(routed, responder);
        return;
    }
    refuse(request, responder, methods);
}

void Router::refuse(
    const Request& request, const Responder& responder, const QList<QByteArray>& methods) const
{
    const int status = methods.isEmpty() ? 404 : 405;
    const QByteArray allow = allowField(methods);
    Response response = (m_refusal ? m_refusal : plainRefusal)(request, status, allow);
    if (status == 405)
        response.headers.set("Allow", allow);
    responder.send(response);
}

} // namespace http
