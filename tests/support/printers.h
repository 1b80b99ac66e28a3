#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>

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

inline void PrintTo(const QStringList& texts, std::ostream* out)
{
    *out << '[' << texts.join(QStringLiteral(", ")).toStdString() << ']';
}

inline void PrintTo(const QVariant& value, std::ostream* out)
{
    *out << (value.isValid() ? value.typeName() : "invalid") << ' '
         << value.toString().toStdString();
}
