#include "rowmemory.h"

#include "tavujson.h"

#include <QCryptographicHash>

namespace control {

RowMemory::RowMemory(int bytesAtMost)
    : m_rows(bytesAtMost)
{
}

QString RowMemory::remember(const QVariantHash& row)
{
    const QByteArray json = TavuJson::toJson(row);
    const QByteArray digest = QCryptographicHash::hash(json, QCryptographicHash::Sha1);
    QString ref = QString::fromLatin1(digest.left(12).toHex());
    if (!m_rows.object(ref))
        m_rows.insert(ref, new QByteArray(json), json.size());
    return ref;
}

std::optional<QVariantHash> RowMemory::recall(const QString& ref)
{
    const QByteArray* json = m_rows.object(ref);
    return json ? std::optional(TavuJson::parse(*json).toHash()) : std::nullopt;
}

} // namespace control
