#include "tavuurl.h"

#include "percent.h"
#include "tavulog.h"
#include "urltext.h"

#include <QUrl>

#include <ostream>

// A URL is kept as its text. Most texts are plain, that is, written as they are to be written, and
// reading and resolving them is a matter of cutting. QUrl mends what is not plain.

using urltext::isThere;
using urltext::split;
using urltext::text;
using urltext::View;
using urltext::view;

namespace {

struct Authority
{
    View userInfo;
    View host;
    View port;
};

Authority splitAuthority(View rest)
{
    Authority parts;
    const std::size_t at = rest.rfind(u'@');
    if (at != View::npos) {
        parts.userInfo = rest.substr(0, at);
        rest.remove_prefix(at + 1);
    }
    const std::size_t colon = rest.rfind(u':');
    if (colon != View::npos && rest.find(u']', colon) == View::npos)
        parts.port = rest.substr(colon + 1);
    parts.host = rest.substr(0, isThere(parts.port) ? colon : View::npos);
    if (parts.host.substr(0, 1) == u"[")
        parts.host = parts.host.substr(1, parts.host.size() - 2);
    return parts;
}

} // namespace

TavuUrl::TavuUrl(const QString& encoded)
{
    if (!takeText(encoded))
        take(QUrl(encoded, QUrl::TolerantMode));
}

TavuUrl TavuUrl::fromEncoded(const QByteArray& encoded)
{
    // All of it: a QByteArray would be read up to its first zero only, and what has one is no URL.
    return TavuUrl(QString::fromStdString(encoded.toStdString()));
}

void TavuUrl::take(const QUrl& url)
{
    const bool plain = takeText(QString::fromLatin1(url.toEncoded()));
    // Spelling a host can take it apart: "https://\uFEFF.s" loses its first name.
    if (!plain && !QUrl(m_encoded).isValid())
        takeText(QString());
    m_broken = m_encoded.isEmpty() && !url.isEmpty();
}

/// Whether it is spelled as this class writes it.
bool TavuUrl::takeText(const QString& encoded)
{
    bool plain = false;
    m_encoded = encoded;
    m_parts = split(view(m_encoded), &plain);
    return plain;
}

/// What is no URL any more does not become one by another part.
template <class Change>
void TavuUrl::change(Change&& change)
{
    if (m_broken)
        return;
    QUrl url = QUrl::fromEncoded(m_encoded.toLatin1());
    change(url);
    take(url);
}

QString TavuUrl::scheme() const
{
    return text(m_parts.scheme);
}

void TavuUrl::setScheme(const QString& scheme)
{
    change([&](QUrl& url) { url.setScheme(scheme); });
}

QString TavuUrl::host() const
{
    return text(splitAuthority(m_parts.authority).host);
}

void TavuUrl::setHost(const QString& host)
{
    change([&](QUrl& url) { url.setHost(host); });
}

int TavuUrl::port() const
{
    const QString port = text(splitAuthority(m_parts.authority).port);
    return port.isEmpty() ? -1 : port.toInt();
}

void TavuUrl::setPort(int port)
{
    change([&](QUrl& url) { url.setPort(port); });
}

bool TavuUrl::hasUserInfo() const
{
    return !splitAuthority(m_parts.authority).userInfo.empty();
}

QString TavuUrl::path() const
{
    return text(m_parts.path);
}

void TavuUrl::setPath(const QString& encoded)
{
    change([&](QUrl& url) { url.setPath(encoded, QUrl::TolerantMode); });
}

QString TavuUrl::fragment() const
{
    const View fragment = m_parts.fragment;
    return isThere(fragment) ? percentDecoded(text(fragment).toLatin1()) : QString();
}

void TavuUrl::setFragment(const QString& decoded)
{
    if (m_broken)
        return;
    const QString rest = urltext::beforeFragment({ view(m_encoded), m_parts });
    takeText(decoded.isNull() ? rest : rest + QLatin1Char('#') + percentEncoded(decoded));
}

TavuUrl::QueryItems TavuUrl::queryItems() const
{
    QueryItems items;
    const QString query = text(m_parts.query);
    for (const QString& item : query.split(QLatin1Char('&'), Qt::SkipEmptyParts)) {
        const int equals = item.indexOf(QLatin1Char('='));
        if (equals < 0)
            items.append({ item, QString() });
        else
            items.append({ item.left(equals), QLatin1String("") + item.mid(equals + 1) });
    }
    return items;
}

void TavuUrl::setQueryItems(const QueryItems& items)
{
    QStringList query;
    for (const auto& [name, value] : items)
        query.append(value.isNull() ? name : name + QLatin1Char('=') + value);
    change([&](QUrl& url) {
        url.setQuery(query.isEmpty() ? QString() : query.join(QLatin1Char('&')));
    });
}

void TavuUrl::addQueryItem(const QString& name, const QString& value)
{
    QueryItems items = queryItems();
    items.append({ percentEncoded(name), QLatin1String("") + percentEncoded(value) });
    setQueryItems(items);
}

TavuUrl TavuUrl::resolved(const TavuUrl& relative) const
{
    if (!isValid() || relative.m_broken)
        return relative;
    TavuUrl url;
    url.takeText(urltext::resolved(
        { view(m_encoded), m_parts }, { view(relative.m_encoded), relative.m_parts }));
    return url;
}

QString TavuUrl::resolvedText(const QString& relative) const
{
    bool plain = false;
    const urltext::Url reference{ view(relative), split(view(relative), &plain) };
    if (isValid() && plain)
        return urltext::resolved({ view(m_encoded), m_parts }, reference);
    return resolved(TavuUrl(relative)).toString();
}

std::ostream& operator<<(std::ostream& out, const TavuUrl& url)
{
    return out << url.toEncoded();
}
