#pragma once

#include "tavuexport.h"
#include "tavuhash.h"

#include <QMap>
#include <QMetaType>
#include <QPair>
#include <QString>
#include <QVarLengthArray>

#include <iosfwd>

/// The path of a node, with optional named parameters: "/AmazonMusic/browse?url=https%3A%2F%2F…".
/// Nodes are found by the text alone; parameters travel with a request to the node. A value; every
/// operation gives a new path.
class TAVU_EXPORT CMPath
{
public:
    CMPath() = default;
    /// A path without parameters. `text` is taken as it is, "?" and "%" included.
    explicit CMPath(const QString& text)
        : m_text(text)
    {
    }

    /// Reads what toEncoded() wrote. Of parameters of the same name the last one counts.
    static CMPath fromEncoded(const QString& encoded);
    /// The text, then "?name=value&…". Names and values are percent-encoded over their whole length
    /// (only RFC 3986's unreserved characters stay), so that any text, a URL with parameters of its
    /// own included, comes back unchanged.
    QString toEncoded() const;

    const QString& text() const { return m_text; }
    bool isEmpty() const { return m_text.isEmpty() && m_params.isEmpty(); }

    /// The same parameters behind a longer text.
    CMPath operator+(const QString& suffix) const;
    /// As operator+, with exactly one "/" between the two.
    CMPath appendSubpath(const QString& subpath) const;

    /// A parameter of the same name is replaced.
    CMPath addParam(const QString& name, const QString& value) const;
    bool hasParam(const QString& name) const;
    /// The value; empty when there is no such parameter.
    QString param(const QString& name) const;
    QMap<QString, QString> params() const;
    CMPath withoutParams() const { return CMPath(m_text); }

    /// Whether the text of `prefix` is this text or a run of whole components at its start;
    /// parameters do not count. `rest`, unless null, receives what follows, without the separator.
    bool startsWith(const CMPath& prefix, QString* rest = nullptr) const;

    friend bool operator==(const CMPath& a, const CMPath& b)
    {
        return a.m_text == b.m_text && a.m_params == b.m_params;
    }
    friend bool operator!=(const CMPath& a, const CMPath& b) { return !(a == b); }

private:
    QString m_text;
    QVarLengthArray<QPair<QString, QString>, 1> m_params; // Most paths have one at most.
};

/// The encoded path.
TAVU_EXPORT std::ostream& operator<<(std::ostream& out, const CMPath& path);

/// A path stands in a record as its encoded text.
template <>
struct TavuField<CMPath>
{
    static CMPath read(const QVariant& value)
    {
        return CMPath::fromEncoded(tavuvariant::toText(value));
    }
    static QVariant write(const CMPath& value) { return value.toEncoded(); }
};

Q_DECLARE_METATYPE(CMPath)
