#pragma once

#include "cmcontainernode.h"
#include "tavurowsroles.h"

#include <QList>

/// A container whose rows are given one by one. Of more than 12,000 it keeps the last ones: a list
/// that only ever grows, of what went wrong for example, must not take the memory.
class TAVU_EXPORT CMListRowsNode : public CMContainerNode
{
    Q_OBJECT

public:
    /// Makes a node and puts it into `nodes`, which owns it.
    static CMListRowsNode* create(CMNodes* nodes, const CMPath& path);

    /// A row that shows the node at `path` as that node is when the rows are asked for.
    void rowsAppend(const CMPath& path);
    void rowsAppend(const TavuRoles& row);
    void rowsClear();
    int rowsSize() const { return m_rows.size(); }
    /// What the answers carry beside the rows themselves; roles in it stand beside the node's own.
    void setRowsRoles(const TavuRowsRoles& roles);

    /// Answers the rows from `from` to `to` that there are, and the count of all.
    void getRowsRequest(const CMGetRowsRequest& request) override;
    /// Answers the index of the first row with the path, or -1.
    void matchRowRequest(const CMMatchRowRequest& request) override;

private:
    explicit CMListRowsNode(const CMPath& path);

    TavuRoles row(int index) const;
    TavuRoles containerRoles() const;
    void rowsChanged();

    QList<TavuRoles> m_rows; // A row that shows a node holds its path and nothing else.
    TavuRowsRoles m_rowsRoles;
    int m_version = 0;
};
