#pragma once

#include "tavuexport.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <iosfwd>

/// Qt's texts in log lines, as UTF-8.
TAVU_EXPORT std::ostream& operator<<(std::ostream& out, const QString& text);
TAVU_EXPORT std::ostream& operator<<(std::ostream& out, const QByteArray& utf8);
TAVU_EXPORT std::ostream& operator<<(std::ostream& out, const QStringList& texts);
