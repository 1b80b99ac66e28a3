#pragma once

#include "tavuexport.h"

#include <QStringList>
#include <QVariant>

/// Reading what came from outside: a value of the wrong type reads as the empty value of the asked
/// type, and a number out of range saturates. Nothing here fails.
namespace tavuvariant {

TAVU_EXPORT qint64 toI64(const QVariant& value);
TAVU_EXPORT qint32 toI32(const QVariant& value);
TAVU_EXPORT double toDouble(const QVariant& value);
/// Numbers and texts read as QVariant::toBool() does; lists and hashes are false.
TAVU_EXPORT bool toBool(const QVariant& value);
/// Texts, numbers and booleans; lists and hashes read as the empty text.
TAVU_EXPORT QString toText(const QVariant& value);
/// A text per element, so that positions are kept; what is no list reads as the empty list.
TAVU_EXPORT QStringList toTexts(const QVariant& value);
TAVU_EXPORT QVariantList toList(const QVariant& value);
TAVU_EXPORT QVariantHash toHash(const QVariant& value);
/// The hash inside, to be changed in place; null when the value holds none.
TAVU_EXPORT QVariantHash* heldHash(QVariant* value);

} // namespace tavuvariant
