#include "cmactivatenode.h"

#include "tavuconnect.h"

#include <QMetaMethod>

CMActivateNode* CMActivateNode::create(CMNodes* nodes, const CMPath& path, QObject* receiver,
    const char* slot, Qt::ConnectionType type)
{
    auto* node = new CMActivateNode(path);
    if (receiver) {
        tavuConnect(node, SIGNAL(activated(CMSetDataRequest)), receiver, slot, type);
        node->m_hasReceiver = true;
    }
    node->setNodes(nodes);
    return node;
}

CMActivateNode::CMActivateNode(const CMPath& path)
    : CMUINode(path)
{
    changeRoles([](TavuRoles& roles) { roles.setType(TavuRolesType::Action); });
}

void CMActivateNode::setDataRequest(const CMSetDataRequest& request)
{
    if (isSignalConnected(QMetaMethod::fromSignal(&CMActivateNode::activated)))
        Q_EMIT activated(unwrapped(request));
    else if (m_hasReceiver)
        refuse(request);
    else
        request.reply().setValue(m_replyValue.__variant());
}

CMSetDataRequest CMActivateNode::unwrapped(const CMSetDataRequest& request) const
{
    const QVariantHash value = tavuvariant::toHash(request.value());
    if (m_activateRole.isEmpty() || !value.contains(m_activateRole))
        return request;
    return CMSetDataRequest(request.path(), value.value(m_activateRole), request.reply());
}
