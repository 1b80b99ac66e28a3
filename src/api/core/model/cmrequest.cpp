#include "cmrequest.h"

#include "tavulog.h"

#include <ostream>

namespace {

CMRequestData requestData(CMRequestType type, const CMPath& path, const CMVoidReply& reply)
{
    CMRequestData data;
    data.type = type;
    data.path = path;
    data.reply = reply;
    return data;
}

CMRequestData rowsData(
    const CMPath& path, int from, int to, const QStringList& roles, int rowsVersion)
{
    CMRequestData data =
        requestData(CMRequestType::GetRows, path, CMReply<TavuRowsRoles>::create());
    data.from = from;
    data.to = to;
    data.roles = roles;
    data.rowsVersion = rowsVersion;
    return data;
}

CMRequestData valueData(
    CMRequestType type, const CMPath& path, const QVariant& value, const CMReply<QVariant>& reply)
{
    CMRequestData data = requestData(type, path, reply);
    data.value = value;
    return data;
}

CMRequestData rolesData(const CMPath& path, const QStringList& roles)
{
    CMRequestData data = requestData(CMRequestType::GetData, path, CMReply<QVariant>::create());
    data.roles = roles;
    return data;
}

} // namespace

CMGetRowsRequest::CMGetRowsRequest(
    const CMPath& path, int from, int to, const QStringList& roles, int rowsVersion)
    : CMRequest(rowsData(path, from, to, roles, rowsVersion))
{
}

CMGetRowsRequest::CMGetRowsRequest(const CMRequest& request)
    : CMRequest(request)
{
    expect(CMRequestType::GetRows);
}

CMSetDataRequest::CMSetDataRequest(const CMPath& path, const QVariant& value)
    : CMSetDataRequest(path, value, CMReply<QVariant>::create())
{
}

CMSetDataRequest::CMSetDataRequest(
    const CMPath& path, const QVariant& value, const CMReply<QVariant>& reply)
    : CMRequest(valueData(CMRequestType::SetData, path, value, reply))
{
}

CMSetDataRequest::CMSetDataRequest(const CMRequest& request)
    : CMRequest(request)
{
    expect(CMRequestType::SetData);
}

CMGetDataRequest::CMGetDataRequest(const CMPath& path, const QStringList& roles)
    : CMRequest(rolesData(path, roles))
{
}

CMGetDataRequest::CMGetDataRequest(const CMRequest& request)
    : CMRequest(request)
{
    expect(CMRequestType::GetData);
}

CMMatchRowRequest::CMMatchRowRequest(const CMPath& path, const CMPath& row)
    : CMRequest(
        valueData(CMRequestType::MatchRow, path, row.toEncoded(), CMReply<QVariant>::create()))
{
}

CMMatchRowRequest::CMMatchRowRequest(const CMRequest& request)
    : CMRequest(request)
{
    expect(CMRequestType::MatchRow);
}

std::ostream& operator<<(std::ostream& out, const CMGetRowsRequest& request)
{
    return out << "path: " << request.path() << ", from: " << request.from()
               << ", to: " << request.to() << ", roles: " << request.roles();
}
