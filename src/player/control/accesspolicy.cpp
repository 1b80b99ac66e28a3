#include "accesspolicy.h"

#include "problem.h"

#include <QHostInfo>

#include <algorithm>

namespace control {

AccessPolicy::AccessPolicy(const QStringList& hosts, QByteArray token)
    : m_token(std::move(token))
{
    const QString machine = QHostInfo::localHostName().toLower();
    m_hosts =
        QStringList{ QStringLiteral("localhost"), machine, machine + QStringLiteral(".local") };
    for (const QString& host : hosts)
        m_hosts += host.toLower();
    m_hosts.removeAll(QString());
}

namespace {

/// The host of "host", "host:port" or "[address]:port", in lower case; empty when it is malformed.
QString hostOf(const QByteArray& authority)
{
    const QString text = QString::fromLatin1(authority).toLower();
    const int end = text.startsWith(QLatin1Char('[')) ? text.indexOf(QLatin1Char(']')) + 1
                                                      : text.indexOf(QLatin1Char(':'));
    const QString host = end < 0 ? text : text.left(end);
    const QString port = end < 0 ? QString() : text.mid(end);
    bool isNumber = port.isEmpty();
    if (port.startsWith(QLatin1Char(':')))
        port.midRef(1).toUShort(&isNumber);
    if (!isNumber)
        return {};
    return host.startsWith(QLatin1Char('[')) ? host.mid(1, host.size() - 2) : host;
}

bool isLoopback(const QHostAddress& address)
{
    bool isV4 = false;
    const QHostAddress v4(address.toIPv4Address(&isV4));
    return isV4 ? v4.isLoopback() : address.isLoopback();
}

bool isOurAddress(const QString& host, const http::Request& head)
{
    const QHostAddress address(host);
    // Qt reads "1" and "0x7f.1" as addresses, too; nobody addresses us that way.
    if (address.isNull() || address.toString() != host)
        return false;
    return isLoopback(address)
        || address.isEqual(head.localAddress, QHostAddress::TolerantConversion);
}

bool isApi(const http::Request& head)
{
    return head.segments.value(0) == QLatin1String("api");
}

bool isOurOrigin(const http::Request& head)
{
    const QList<QByteArray> origins = head.headers.values("Origin");
    if (origins.isEmpty())
        return true;
    const QByteArray origin = origins.first().toLower();
    const QByteArray authority = head.authority.toLower();
    return origins.size() == 1
        && (origin == "http://" + authority || origin == "https://" + authority);
}

/// Browsers tell of requests by other pages what no page can change; programs tell nothing.
bool isOfAnotherSite(const http::Request& head)
{
    const QList<QByteArray> sites = head.headers.values("Sec-Fetch-Site");
    return std::any_of(sites.begin(), sites.end(), [](const QByteArray& site) {
        const QByteArray name = site.trimmed().toLower();
        return name != "same-origin" && name != "none";
    });
}

bool isJson(const http::Request& head)
{
    const QByteArray type = head.headers.value("Content-Type").toLower();
    return type.left(type.indexOf(';') < 0 ? type.size() : type.indexOf(';')).trimmed()
        == "application/json";
}

/// Takes the same time wherever the two differ.
bool isSame(const QByteArray& given, const QByteArray& token)
{
    if (given.size() != token.size())
        return false;
    int difference = 0;
    for (int i = 0; i < token.size(); ++i)
        difference |= given[i] ^ token[i];
    return difference == 0;
}

/// In a header, or for what a browser fetches by itself in the address.
QByteArray presentedToken(const http::Request& head)
{
    const QByteArray field = head.headers.value("Authorization");
    if (field.left(7).toLower() == "bearer ")
        return field.mid(7).trimmed();
    const bool reads = head.method == "GET" || head.method == "HEAD";
    return reads ? head.queryValue(QStringLiteral("token")).toUtf8() : QByteArray();
}

} // namespace

bool AccessPolicy::hostIsOurs(const http::Request& head) const
{
    if (head.headers.values("Host").size() != 1)
        return false;
    const QString host = hostOf(head.authority);
    return m_hosts.contains(host) || isOurAddress(host, head);
}

bool AccessPolicy::mayPass(const http::Request& head) const
{
    return isLoopback(head.peer) || (!m_token.isEmpty() && isSame(presentedToken(head), m_token));
}

std::optional<http::Response> AccessPolicy::judge(const http::Request& head) const
{
    if (!hostIsOurs(head))
        return problem(421, {},
            QStringLiteral("The player is not known under this name. Add it to control.hosts in "
                           "the player's settings, or use the player's address."));
    // The page itself holds no secret; it asks for the code and sends it along.
    if (isApi(head) && !mayPass(head)) {
        http::Response refusal = problem(401, {},
            QStringLiteral("An access code is needed to steer this player from another device."));
        refusal.headers.set("WWW-Authenticate", "Bearer");
        return refusal;
    }
    // Reading, too, makes the player ask the service.
    const bool foreign =
        (isApi(head) && isOfAnotherSite(head)) || (head.method == "POST" && !isOurOrigin(head));
    if (foreign)
        return problem(
            403, {}, QStringLiteral("Only the player's own page may steer it from a browser."));
    if (head.method != "POST")
        return std::nullopt;
    if (!isJson(head))
        return problem(415, {}, QStringLiteral("Send application/json."));
    return std::nullopt;
}

} // namespace control
