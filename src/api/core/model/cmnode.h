#pragma once

#include "cmpath.h"
#include "cmrequest.h"
#include "cmvaluenode.h"
#include "tavuexport.h"

#include <QMap>

class CMNodes;

/// A place in the node tree. It has a path and belongs to one CMNodes, which owns it. Everything
/// here runs on the worker's thread. A request that a class does not serve fails with an error that
/// says so.
class TAVU_EXPORT CMNode : public CMValueNode
{
    Q_OBJECT

public:
    explicit CMNode(const CMPath& path);
    ~CMNode() override;

    const CMPath& path() const { return m_path; }
    /// Puts the node into a collection, out of the one it was in before; null takes it out.
    void setNodes(CMNodes* nodes);
    CMNodes* nodes() const { return m_nodes; }

    void deleteLater() override;

    // Requests: each answers the request's reply, now or later.
    virtual void request(const CMRequest& request);
    virtual void getDataRequest(const CMGetDataRequest& request);
    virtual void getRowsRequest(const CMGetRowsRequest& request);
    virtual void matchRowRequest(const CMMatchRowRequest& request);
    virtual void setDataRequest(const CMSetDataRequest& request);

    // Somebody begins or ends to watch a path of this node.
    virtual void valuePathAdd(const CMPath& path);
    virtual void valuePathRemove(const CMPath& path);
    virtual void dataPathAdd(const CMPath& path);
    virtual void dataPathRemove(const CMPath& path);
    virtual void rowsPathAdd(const CMPath& path);
    virtual void rowsPathRemove(const CMPath& path);

protected:
    void notifyData();
    void notifyRows();
    void refuse(const CMRequest& request);

private:
    CMPath m_path;
    CMNodes* m_nodes = nullptr;
};
