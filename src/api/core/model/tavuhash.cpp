#include "tavuhash.h"

#include "tavujson.h"

#include <ostream>

QString TavuHash::toJsonString() const
{
    return QString::fromUtf8(TavuJson::toJson(m_hash));
}

std::ostream& operator<<(std::ostream& out, const TavuHash& record)
{
    return out << TavuJson::toJson(record.__variant()).constData();
}
