#include "cmlistrowsnode.h"

#include "cmglobal.h"
#include "cmnodes.h"

namespace {

constexpr int rowsAtMost = 12000;

} // namespace

CMListRowsNode* CMListRowsNode::create(CMNodes* nodes, const CMPath& path)
{
    auto* node = new CMListRowsNode(path);
    node->setNodes(nodes);
    return node;
}

CMListRowsNode::CMListRowsNode(const CMPath& path)
    : CMContainerNode(path)
{
}

void CMListRowsNode::rowsAppend(const CMPath& path)
{
    TavuRoles row;
    row.setPath(path);
    rowsAppend(row);
}

void CMListRowsNode::rowsAppend(const TavuRoles& row)
{
    if (m_rows.size() == rowsAtMost)
        m_rows.removeFirst();
    m_rows.append(row);
    rowsChanged();
}

void CMListRowsNode::rowsClear()
{
    m_rows.clear();
    rowsChanged();
}

void CMListRowsNode::setRowsRoles(const TavuRowsRoles& roles)
{
    m_rowsRoles = roles;
    rowsChanged();
}

void CMListRowsNode::rowsChanged()
{
    ++m_version;
    notifyRows();
}

TavuRoles CMListRowsNode::row(int index) const
{
    const TavuRoles& row = m_rows.at(index);
    const bool showsNode = row.__hash().size() == 1 && row.__contains(TavuRoles::Path());
    if (!showsNode || !nodes())
        return row;
    const auto* node = qobject_cast<CMUINode*>(nodes()->find(row.path()));
    return node ? node->roles() : row;
}

TavuRoles CMListRowsNode::containerRoles() const
{
    TavuRoles container = roles();
    const TavuRoles beside = m_rowsRoles.roles();
    for (auto role = beside.__hash().begin(); role != beside.__hash().end(); ++role)
        container.__set(role.key(), role.value());
    return container;
}

void CMListRowsNode::getRowsRequest(const CMGetRowsRequest& request)
{
    QVariantList rows;
    const auto [begin, end] = CMGlobal::rowsRange(request.from(), request.to(), m_rows.size());
    for (int index = begin; index < end; ++index)
        rows.append(QVariant(CMGlobal::itemRolesToList(request.roles(), row(index))));
    TavuRowsRoles answer(m_rowsRoles);
    answer.setRoles(containerRoles());
    answer.setRows(rows);
    answer.setRowsCount(m_rows.size());
    answer.setRowsVersion(m_version);
    request.reply().setValue(answer);
}

void CMListRowsNode::matchRowRequest(const CMMatchRowRequest& request)
{
    for (int index = 0; index < m_rows.size(); ++index) {
        if (m_rows.at(index).path() == request.row())
            return request.reply().setValue(index);
    }
    request.reply().setValue(-1);
}
