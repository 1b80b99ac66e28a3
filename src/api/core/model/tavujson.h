#pragma once

#include "tavuexport.h"

#include <QByteArray>
#include <QVariant>

/// JSON as RFC 8259 defines it, in UTF-8.
class TAVU_EXPORT TavuJson
{
public:
    /// The document in `text`: objects become QVariantHash at every level (the last of equal keys
    /// wins), arrays QVariantList, whole numbers qlonglong (qulonglong beyond its range), other
    /// numbers double, null an invalid QVariant. One byte order mark in front is passed over. Text
    /// that is not valid JSON or not valid UTF-8 gives an invalid QVariant, and so does what RFC
    /// 8259 leaves to the reader: more than 1,023 levels, half a surrogate pair, a whole number
    /// beyond 64 bits, another number beyond the range of double. Safe on every thread.
    static QVariant parse(const QByteArray& text);

    /// Compact JSON in UTF-8, keys in ascending order, whole numbers exact. What JSON cannot say
    /// (NaN, an unknown type) is null; whole numbers beyond 2^53 are rounded, as most readers
    /// would.
    static QByteArray toJson(const QVariant& value);
};
