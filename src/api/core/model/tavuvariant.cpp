#include "tavuvariant.h"

#include <cmath>
#include <limits>

namespace tavuvariant {

namespace {

qint64 saturated(double number)
{
    constexpr double lowest = -9223372036854775808.0;
    constexpr double beyond = 9223372036854775808.0;
    if (std::isnan(number))
        return 0;
    if (number < lowest)
        return std::numeric_limits<qint64>::min();
    if (number >= beyond)
        return std::numeric_limits<qint64>::max();
    return static_cast<qint64>(number);
}

/// The value of a variant that is known to hold a `T`: no conversion, no second look.
template <class T>
const T& held(const QVariant& value)
{
    return *static_cast<const T*>(value.constData());
}

/// QVariant looks long for a conversion from nothing, and many fields of a record are not set.
bool isUnset(const QVariant& value)
{
    return value.userType() == QMetaType::UnknownType;
}

bool isContainer(const QVariant& value)
{
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::QVariantHash:
    case QMetaType::QVariantMap:
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return true;
    default:
        return false;
    }
}

} // namespace

qint64 toI64(const QVariant& value)
{
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::Double:
    case QMetaType::Float:
        return saturated(value.toDouble());
    case QMetaType::ULongLong: {
        constexpr auto largest = static_cast<quint64>(std::numeric_limits<qint64>::max());
        return static_cast<qint64>(qMin(value.toULongLong(), largest));
    }
    default:
        return value.toLongLong();
    }
}

qint32 toI32(const QVariant& value)
{
    return static_cast<qint32>(qBound<qint64>(
        std::numeric_limits<qint32>::min(), toI64(value), std::numeric_limits<qint32>::max()));
}

double toDouble(const QVariant& value)
{
    return value.toDouble();
}

bool toBool(const QVariant& value)
{
    return !isContainer(value) && value.toBool();
}

QString toText(const QVariant& value)
{
    if (value.userType() == QMetaType::QString)
        return held<QString>(value);
    return isUnset(value) || isContainer(value) ? QString() : value.toString();
}

QStringList toTexts(const QVariant& value)
{
    if (value.type() == QVariant::StringList)
        return value.toStringList();
    QStringList texts;
    const QVariantList list = toList(value);
    texts.reserve(list.size());
    for (const QVariant& element : list)
        texts.append(toText(element));
    return texts;
}

QVariantList toList(const QVariant& value)
{
    // QVariant turns a lone text into a list of one; a text is no list here.
    if (value.userType() == QMetaType::QVariantList)
        return held<QVariantList>(value);
    return isContainer(value) ? value.toList() : QVariantList();
}

QVariantHash toHash(const QVariant& value)
{
    if (value.userType() == QMetaType::QVariantHash)
        return held<QVariantHash>(value);
    return isUnset(value) ? QVariantHash() : value.toHash();
}

QVariantHash* heldHash(QVariant* value)
{
    if (value->userType() != QMetaType::QVariantHash)
        return nullptr;
    return static_cast<QVariantHash*>(value->data());
}

} // namespace tavuvariant
