#include "tavuhash.h"

#include "tavujson.h"

#include <ostream>
#include <utility>

const QVariant& TavuHash::__field(const QString& key) const
{
    static const QVariant none;
    const QVariant* field = __find(key);
    return field ? *field : none;
}

const QVariant* TavuHash::__find(const QString& key) const
{
    const auto field = m_hash.constFind(key);
    return field != m_hash.constEnd() ? &*field : nullptr;
}

void TavuHash::__set(const QString& key, QVariant value)
{
    m_hash[key] = std::move(value);
}

QString TavuHash::toJsonString() const
{
    return QString::fromUtf8(TavuJson::toJson(m_hash));
}

std::ostream& operator<<(std::ostream& out, const TavuHash& record)
{
    return out << TavuJson::toJson(record.__variant()).constData();
}
