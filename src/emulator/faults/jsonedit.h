#pragma once

#include <QByteArray>
#include <QVariant>

namespace emulator::faults {

/// The document with values set and taken out. Paths begin with "/" and name keys, or "*" for every
/// key or element; what a set path names is made where it is missing, except under "*". An entry of
/// `remove` that is not a path is a key that goes wherever it stands.
QVariant edited(const QVariant& json, const QVariantHash& set, const QVariantList& remove);

/// The document with a value of another type wherever a record or a text should be: objects below
/// the collections' records become lists, lists become texts, texts numbers, numbers texts.
QVariant withWrongTypes(const QVariant& json);

/// The document with the first item of its page `count` times.
QVariant withItems(const QVariant& json, int count);

/// The document as text with every number written as `number`, which need not be one; what the key
/// `spare` holds stays.
QByteArray withNumbers(const QVariant& json, const QByteArray& number, const QString& spare);

} // namespace emulator::faults
