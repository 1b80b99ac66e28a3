#pragma once

#include "cmpath.h"
#include "cmsubscribe.h"
#include "tavuexport.h"

#include <QHash>

class CMNode;

/// The nodes of one worker by their paths. Used on the worker's thread only. Owns its nodes:
/// those still in it when it is destroyed are destroyed with it.
class TAVU_EXPORT CMNodes
{
public:
    explicit CMNodes(CMSubscribe* subscribe);
    ~CMNodes();
    Q_DISABLE_COPY_MOVE(CMNodes)

    void add(CMNode* node);
    /// Takes out this very node; another one at the same path stays. A node that is not in it is
    /// passed over.
    void remove(CMNode* node);
    /// The node at the path, whose parameters do not count; of several the one added last; null
    /// when there is none.
    CMNode* find(const CMPath& path) const;
    int size() const { return m_nodes.size(); }

    /// Where changes of the nodes are announced; not owned.
    CMSubscribe* subscribe() const { return m_subscribe; }

private:
    CMSubscribe* m_subscribe;
    QMultiHash<QString, CMNode*> m_nodes;
};
