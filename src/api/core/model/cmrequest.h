#pragma once

#include "cmpath.h"
#include "cmreply.h"
#include "tavurowsroles.h"

#include <QMetaType>
#include <QStringList>
#include <QVariant>

#include <memory>

/// What a request asks for.
enum class CMRequestType { GetRows, SetData, GetData, MatchRow };

struct CMRequestData
{
    CMRequestType type = CMRequestType::GetData;
    CMPath path;
    CMVoidReply reply;
    // Rows requests.
    int from = 0;
    int to = 0;
    QStringList roles;
    int rowsVersion = 0;
    // Set-data and match-row requests.
    QVariant value;
};

/// A shared handle to one request and the reply that is its answer. A value of any request class
/// can be sliced to this and read back with the class's constructor. Reading a request without data
/// is a fault of the caller.
class TAVU_EXPORT CMRequest
{
public:
    CMRequest() = default;

    bool isNull() const { return !m_d; }
    CMRequestType type() const { return d().type; }
    const CMPath& path() const { return d().path; }
    /// The answer, whatever its type.
    const CMVoidReply& voidReply() const { return d().reply; }

protected:
    explicit CMRequest(CMRequestData data)
        : m_d(std::make_shared<const CMRequestData>(std::move(data)))
    {
    }

    const CMRequestData& d() const
    {
        Q_ASSERT_X(m_d, "CMRequest", "m_d");
        return *m_d;
    }
    void expect(CMRequestType type) const { Q_ASSERT_X(d().type == type, "CMRequest", "d()"); }

private:
    std::shared_ptr<const CMRequestData> m_d;
};

/// Asks a container for the rows `from` to `to`, both inclusive and counted from 0, each as the
/// values of `roles`.
class TAVU_EXPORT CMGetRowsRequest : public CMRequest
{
public:
    CMGetRowsRequest() = default;
    CMGetRowsRequest(
        const CMPath& path, int from, int to, const QStringList& roles, int rowsVersion = 0);
    explicit CMGetRowsRequest(const CMRequest& request);

    int from() const { return d().from; }
    int to() const { return d().to; }
    const QStringList& roles() const { return d().roles; }
    /// The version of the rows that the asker has, as an answer gave it; 0 for none.
    int rowsVersion() const { return d().rowsVersion; }
    CMReply<TavuRowsRoles> reply() const { return CMReply<TavuRowsRoles>(voidReply()); }
};

/// Sets data on a node: activates it, answers its query, or gives it a command.
class TAVU_EXPORT CMSetDataRequest : public CMRequest
{
public:
    CMSetDataRequest() = default;
    CMSetDataRequest(const CMPath& path, const QVariant& value);
    /// A request that completes `reply`.
    CMSetDataRequest(const CMPath& path, const QVariant& value, const CMReply<QVariant>& reply);
    explicit CMSetDataRequest(const CMRequest& request);

    const QVariant& value() const { return d().value; }
    CMReply<QVariant> reply() const { return CMReply<QVariant>(voidReply()); }
};

/// Asks a node for the values of `roles`; the answer is a list of them, in that order.
class TAVU_EXPORT CMGetDataRequest : public CMRequest
{
public:
    CMGetDataRequest() = default;
    CMGetDataRequest(const CMPath& path, const QStringList& roles);
    explicit CMGetDataRequest(const CMRequest& request);

    const QStringList& roles() const { return d().roles; }
    CMReply<QVariant> reply() const { return CMReply<QVariant>(voidReply()); }
};

/// Asks a container for the index of its first row with the path `row`; the answer is -1 when it
/// has none.
class TAVU_EXPORT CMMatchRowRequest : public CMRequest
{
public:
    CMMatchRowRequest() = default;
    CMMatchRowRequest(const CMPath& path, const CMPath& row);
    explicit CMMatchRowRequest(const CMRequest& request);

    CMPath row() const { return CMPath::fromEncoded(d().value.toString()); }
    CMReply<QVariant> reply() const { return CMReply<QVariant>(voidReply()); }
};

/// "path: …, from: …, to: …, roles: …".
TAVU_EXPORT std::ostream& operator<<(std::ostream& out, const CMGetRowsRequest& request);

Q_DECLARE_METATYPE(CMRequest)
Q_DECLARE_METATYPE(CMGetRowsRequest)
Q_DECLARE_METATYPE(CMSetDataRequest)
Q_DECLARE_METATYPE(CMGetDataRequest)
Q_DECLARE_METATYPE(CMMatchRowRequest)
