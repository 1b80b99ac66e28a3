#include "cmquerynode.h"

CMQueryNode::CMQueryNode(const CMPath& path)
    : CMUINode(path)
{
    changeRoles([](TavuRoles& roles) { roles.setType(TavuRolesType::Folder); });
}

void CMQueryNode::setDataRequest(const CMSetDataRequest& request)
{
    if (!queryRequest(request))
        refuse(request);
}

QVariant CMQueryNode::getRoleData(const QString& role, const QMap<QString, QString>& params) const
{
    return CMUINode::getRoleData(role, params);
}
