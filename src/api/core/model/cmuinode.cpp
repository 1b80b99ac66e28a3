#include "cmuinode.h"

#include "cmglobal.h"

void CMUINode::setTitle(const TrString& title)
{
    m_title = title;
    m_hasTitle = true;
    notifyData();
}

void CMUINode::setMediaData(const TavuMediaData& mediaData)
{
    changeRoles([&](TavuRoles& roles) { roles.setMediaData(mediaData); });
}

void CMUINode::setDisabled(bool disabled)
{
    changeRoles([&](TavuRoles& roles) { roles.setDisabled(disabled); });
}

QVariant CMUINode::getRoleData(const QString& role, const QMap<QString, QString>&) const
{
    return roles().__value(role);
}

TavuRoles CMUINode::roles() const
{
    TavuRoles roles(m_roles);
    roles.setPath(path());
    if (m_hasTitle)
        roles.setTitle(m_title.toString());
    return roles;
}

void CMUINode::getDataRequest(const CMGetDataRequest& request)
{
    const QMap<QString, QString> params = request.path().params();
    QVariantList values;
    for (const QString& role : request.roles())
        values.append(getRoleData(role, params));
    request.reply().setValue(values);
}
