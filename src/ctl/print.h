#pragma once

#include <QString>
#include <QVariant>

namespace ctl {

void printLine(const QString& line);
void printError(const QString& line);
void printJson(const QVariant& value);

/// "1:02:03" or "4:05".
QString clockTime(qint64 ms);
/// "1. > Title" with a mark for what the row is.
QString rowLine(int number, const QVariantHash& row);
/// The player's state in a few lines.
QString statusText(const QVariantHash& player);
/// What has played, what plays and what follows, a line each.
QString queueText(const QVariantHash& queue);

} // namespace ctl
