#include "cmcontainernode.h"

CMContainerNode::CMContainerNode(const CMPath& path)
    : CMUINode(path)
{
    changeRoles([](TavuRoles& roles) { roles.setType(TavuRolesType::Folder); });
}

void CMContainerNode::setContainerType(TavuRolesContainerType::Enum type)
{
    changeRoles([&](TavuRoles& roles) { roles.setContainerType(type); });
}

void CMContainerNode::setPlayable(bool playable)
{
    changeRoles([&](TavuRoles& roles) { roles.setContainerPlayable(playable); });
}
