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
    /// numbers double, null an invalid QVariant. A byte order mark in front is passed over. Text
    /// that is not valid JSON, is not valid UTF-8, or nests deeper than 1,024 levels gives an
    /// invalid QVariant. Safe on every thread.
    static QVariant parse(const QByteArray& text);

    /// Compact JSON, keys in ascending order. What JSON cannot say (NaN, an unknown type) is null.
    static QByteArray toJson(const QVariant& value);
};
