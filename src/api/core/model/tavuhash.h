#pragma once

#include "tavuexport.h"
#include "tavulist.h"
#include "tavuvariant.h"

#include <QMetaType>
#include <QString>
#include <QVariant>

#include <iosfwd>
#include <type_traits>
#include <utility>

/// A string-keyed record: the base of every value record of the host. A record is a value; copies
/// share their data until one of them is written. It keeps keys that its class does not know. A
/// field that was never set and one that was set to an empty value differ: `__contains` tells.
class TAVU_EXPORT TavuHash
{
public:
    TavuHash() = default;
    TavuHash(QVariantHash hash) // NOLINT(google-explicit-constructor): a view of the hash
        : m_hash(std::move(hash))
    {
    }

    bool __contains(const QString& key) const { return m_hash.contains(key); }
    const QVariantHash& __hash() const { return m_hash; }
    QVariant __variant() const { return m_hash; }
    QVariant __value(const QString& key) const { return m_hash.value(key); }
    /// As __value(), without a copy: good until the record changes.
    const QVariant& __field(const QString& key) const;
    /// As __field(); null when the field is not set.
    const QVariant* __find(const QString& key) const;
    void __set(const QString& key, QVariant value);
    /// Changes a field that is a record by `change(Record*)`, without a copy of it; `change` must
    /// not touch this record. A field that is not set, or no hash, is an empty record to begin
    /// with.
    template <class Record, class Change>
    void __edit(const QString& key, Change&& change);
    /// As __edit(), of a record that stands anywhere.
    template <class Record, class Change>
    static void __editField(QVariant* field, Change&& change);
    void __remove(const QString& key) { m_hash.remove(key); }

    void clear() { m_hash.clear(); }
    bool isEmpty() const { return m_hash.isEmpty(); }

    /// The record as compact JSON, keys in ascending order.
    QString toJsonString() const;

    friend bool operator==(const TavuHash& a, const TavuHash& b) { return a.m_hash == b.m_hash; }
    friend bool operator!=(const TavuHash& a, const TavuHash& b) { return !(a == b); }

protected:
    QVariantHash m_hash;
};

TAVU_EXPORT std::ostream& operator<<(std::ostream& out, const TavuHash& record);

template <class Record, class Change>
void TavuHash::__edit(const QString& key, Change&& change)
{
    __editField<Record>(&m_hash[key], std::forward<Change>(change));
}

template <class Record, class Change>
void TavuHash::__editField(QVariant* field, Change&& change)
{
    if (!tavuvariant::heldHash(field))
        *field = tavuvariant::toHash(*field);
    QVariantHash& hash = *tavuvariant::heldHash(field);
    Record record;
    record.m_hash.swap(hash);
    change(&record);
    record.m_hash.swap(hash);
}

/// How a field of type `T` stands in a hash. Records and enumerations are covered here; other types
/// by the specialisations below.
template <class T, class = void>
struct TavuField
{
    static T read(const QVariant& value) { return T(tavuvariant::toHash(value)); }
    static QVariant write(const T& value) { return value.__variant(); }
};

template <class T>
struct TavuField<T, std::enable_if_t<std::is_enum_v<T>>>
{
    static T read(const QVariant& value) { return static_cast<T>(tavuvariant::toI32(value)); }
    static QVariant write(T value) { return static_cast<int>(value); }
};

template <class T>
struct TavuField<TavuList<T>>
{
    static TavuList<T> read(const QVariant& value) { return tavuvariant::toList(value); }
    static QVariant write(const TavuList<T>& value) { return QVariantList(value); }
};

#define TAVU_FIELD_TYPE(Type, reader)                                                              \
    template <>                                                                                    \
    struct TavuField<Type>                                                                         \
    {                                                                                              \
        static Type read(const QVariant& value) { return reader; }                                 \
        static QVariant write(const Type& value) { return value; }                                 \
    };

TAVU_FIELD_TYPE(QVariant, value)
TAVU_FIELD_TYPE(QString, tavuvariant::toText(value))
TAVU_FIELD_TYPE(QStringList, tavuvariant::toTexts(value))
TAVU_FIELD_TYPE(QVariantList, tavuvariant::toList(value))
TAVU_FIELD_TYPE(QVariantHash, tavuvariant::toHash(value))
TAVU_FIELD_TYPE(bool, tavuvariant::toBool(value))
TAVU_FIELD_TYPE(qint32, tavuvariant::toI32(value))
TAVU_FIELD_TYPE(qint64, tavuvariant::toI64(value))
TAVU_FIELD_TYPE(double, tavuvariant::toDouble(value))

#undef TAVU_FIELD_TYPE

/// Opens the public face of a record class.
#define TAVU_RECORD(Class)                                                                         \
public:                                                                                            \
    Class() = default;                                                                             \
    Class(QVariantHash hash) /* NOLINT(google-explicit-constructor) */                             \
        : TavuHash(std::move(hash))                                                                \
    {                                                                                              \
    }                                                                                              \
    Class(TavuHash hash) /* NOLINT(google-explicit-constructor) */                                 \
        : TavuHash(std::move(hash))                                                                \
    {                                                                                              \
    }

/// One field: `getter()`, `setName(value)` and the static `Name()`, which gives its key. The key is
/// the getter's name.
#define TAVU_FIELD(Type, getter, Name)                                                             \
    static QString Name()                                                                          \
    {                                                                                              \
        return QStringLiteral(#getter);                                                            \
    }                                                                                              \
    Type getter() const                                                                            \
    {                                                                                              \
        return TavuField<Type>::read(__field(Name()));                                             \
    }                                                                                              \
    void set##Name(const Type& value)                                                              \
    {                                                                                              \
        __set(Name(), TavuField<Type>::write(value));                                              \
    }

Q_DECLARE_METATYPE(TavuHash)
