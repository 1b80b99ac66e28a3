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
/// The player's state in two or three lines.
QString statusText(const QVariantHash& player);

} // namespace ctl
