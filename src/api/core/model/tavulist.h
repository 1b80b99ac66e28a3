#pragma once

#include <QVariant>

/// A list of records as it stands in a hash: a QVariantList whose elements are hashes. `T` is the
/// record each element is read as.
template <class T>
class TavuList : public QVariantList
{
public:
    TavuList() = default;
    TavuList(const QVariantList& list) // NOLINT(google-explicit-constructor): a view of the list
        : QVariantList(list)
    {
    }

    using QVariantList::append;
    void append(const T& record) { QVariantList::append(record.__variant()); }

    /// The element at `index`, which must lie in the list, read as a record.
    T record(int index) const { return T(at(index).toHash()); }
};
