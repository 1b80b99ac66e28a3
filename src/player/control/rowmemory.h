#pragma once

#include <QByteArray>
#include <QCache>
#include <QString>
#include <QVariant>

#include <optional>

namespace control {

/// The rows that clients have been given, so that they can name a whole row by a short text. Equal
/// rows have the same name. Forgets the rows that were used longest ago beyond 6 MiB.
class RowMemory
{
public:
    explicit RowMemory(int bytesAtMost = 6 * 1024 * 1024);

    QString remember(const QVariantHash& row);
    std::optional<QVariantHash> recall(const QString& ref);

private:
    /// As JSON, which takes a fraction of the room.
    QCache<QString, QByteArray> m_rows;
};

} // namespace control
