#include "tavujson.h"

#include "tavuvariant.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

// Written here rather than by QJsonDocument, which takes every number for a double and so changes
// whole numbers beyond 2^53.

namespace {

void write(QByteArray& out, const QVariant& value);

void writeEscaped(QByteArray& out, char character)
{
    switch (character) {
    case '"':
        out += "\\\"";
        break;
    case '\\':
        out += "\\\\";
        break;
    case '\n':
        out += "\\n";
        break;
    case '\r':
        out += "\\r";
        break;
    case '\t':
        out += "\\t";
        break;
    default:
        out += "\\u00" + QByteArray::number(character, 16).rightJustified(2, '0');
    }
}

void writeText(QByteArray& out, const QString& text)
{
    constexpr unsigned char firstPrintable = 0x20;
    out += '"';
    for (const char character : text.toUtf8()) {
        const bool plain = static_cast<unsigned char>(character) >= firstPrintable
            && character != '"' && character != '\\';
        if (plain)
            out += character;
        else
            writeEscaped(out, character);
    }
    out += '"';
}

void writeDouble(QByteArray& out, double number)
{
    // From here on the short form would look like a whole number, and lose its type.
    constexpr double wholeLooking = 1e15;
    if (!std::isfinite(number))
        out += "null";
    else
        out += QByteArray::number(
            number, std::fabs(number) >= wholeLooking ? 'e' : 'g', QLocale::FloatingPointShortest);
}

void writeList(QByteArray& out, const QVariantList& list)
{
    out += '[';
    for (int index = 0; index < list.size(); ++index) {
        if (index > 0)
            out += ',';
        write(out, list.at(index));
    }
    out += ']';
}

void writeHash(QByteArray& out, const QVariantHash& hash)
{
    QStringList keys = hash.keys();
    std::sort(keys.begin(), keys.end());
    out += '{';
    for (int index = 0; index < keys.size(); ++index) {
        if (index > 0)
            out += ',';
        writeText(out, keys.at(index));
        out += ':';
        write(out, hash.value(keys.at(index)));
    }
    out += '}';
}

void write(QByteArray& out, const QVariant& value)
{
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::QVariantHash:
    case QMetaType::QVariantMap:
        return writeHash(out, tavuvariant::toHash(value));
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return writeList(out, value.toList());
    case QMetaType::Bool:
        out += value.toBool() ? "true" : "false";
        return;
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::Long:
    case QMetaType::LongLong:
        out += QByteArray::number(value.toLongLong());
        return;
    case QMetaType::UInt:
    case QMetaType::UShort:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        out += QByteArray::number(value.toULongLong());
        return;
    case QMetaType::Float:
    case QMetaType::Double:
        return writeDouble(out, value.toDouble());
    case QMetaType::QString:
    case QMetaType::QByteArray:
        return writeText(out, value.toString());
    default:
        out += "null";
    }
}

} // namespace

QByteArray TavuJson::toJson(const QVariant& value)
{
    QByteArray out;
    write(out, value);
    return out;
}
