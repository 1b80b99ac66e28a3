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
    /// beyond 64 bits, another number beyond the range of double. Also left to the reader: "-0" is
    /// 0, a fraction is the double that comes nearest (0 when it is too small for one), and any
    /// other character a text may name is kept, zero and those without a meaning included. Safe on
    /// every thread.
    static QVariant parse(const QByteArray& text);

    /// Compact JSON in UTF-8, keys in ascending order, numbers so that they read back as
    /// themselves. What JSON cannot say (NaN, an unknown type) is null.
    static QByteArray toJson(const QVariant& value);
};
