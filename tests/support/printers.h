#pragma once

#include <QByteArray>
#include <QString>

#include <ostream>

// How GoogleTest shows Qt's texts; without these it shows them as lists of characters.

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << '"' << bytes.toStdString() << '"';
}
