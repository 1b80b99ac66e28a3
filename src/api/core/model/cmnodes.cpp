#include "cmnodes.h"

#include "cmnode.h"

#include <utility>

CMNodes::CMNodes(CMSubscribe* subscribe)
    : m_subscribe(subscribe)
{
}

CMNodes::~CMNodes()
{
    const auto nodes = std::exchange(m_nodes, {});
    for (CMNode* node : nodes)
        delete node;
}

void CMNodes::add(CMNode* node)
{
    m_nodes.insert(node->path().text(), node);
}

void CMNodes::remove(CMNode* node)
{
    m_nodes.remove(node->path().text(), node);
}

CMNode* CMNodes::find(const CMPath& path) const
{
    return m_nodes.value(path.text());
}
