#include "tavuurl.h"

#include "tavulog.h"

#include <ostream>

namespace {

QString strictlyEncoded(const QString& text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

} // namespace

TavuUrl::TavuUrl(const QString& encoded)
    : TavuUrl(fromEncoded(encoded.toUtf8()))
{
}

TavuUrl TavuUrl::fromEncoded(const QByteArray& encoded)
{
    TavuUrl url;
    url.m_url = QUrl::fromEncoded(encoded, QUrl::TolerantMode);
    return url;
}

QByteArray TavuUrl::toEncoded() const
{
    return m_url.toEncoded();
}

QString TavuUrl::toString() const
{
    return QString::fromUtf8(toEncoded());
}

void TavuUrl::setPath(const QString& encoded)
{
    m_url.setPath(encoded, QUrl::TolerantMode);
}

QString TavuUrl::fragment() const
{
    return m_url.fragment(QUrl::FullyDecoded);
}

void TavuUrl::setFragment(const QString& decoded)
{
    m_url.setFragment(decoded.isNull() ? QString() : strictlyEncoded(decoded));
}

TavuUrl::QueryItems TavuUrl::queryItems() const
{
    QueryItems items;
    const QString query = m_url.query(QUrl::FullyEncoded);
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
    m_url.setQuery(query.isEmpty() ? QString() : query.join(QLatin1Char('&')));
}

void TavuUrl::addQueryItem(const QString& name, const QString& value)
{
    QueryItems items = queryItems();
    items.append({ strictlyEncoded(name), QLatin1String("") + strictlyEncoded(value) });
    setQueryItems(items);
}

TavuUrl TavuUrl::resolved(const TavuUrl& relative) const
{
    TavuUrl url;
    url.m_url = m_url.resolved(relative.m_url);
    return url;
}

std::ostream& operator<<(std::ostream& out, const TavuUrl& url)
{
    return out << url.toEncoded();
}
