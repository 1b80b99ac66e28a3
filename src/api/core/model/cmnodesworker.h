#pragma once

#include "cmnodes.h"
#include "cmworker.h"

/// A worker whose nodes answer its requests, on its own thread. A path without node fails with an
/// error that names it.
class TAVU_EXPORT CMNodesWorker : public CMWorker
{
    Q_OBJECT

public:
    CMNodesWorker(const QVariantHash& settings, const QString& name);
    ~CMNodesWorker() override;

    CMNodes* nodes() { return &m_nodes; }
    CMSubscribe* subscribe() { return &m_subscribe; }

    void getDataRequest(const CMGetDataRequest& request) override;
    void getRowsRequest(const CMGetRowsRequest& request) override;
    void matchRowRequest(const CMMatchRowRequest& request) override;
    void setDataRequest(const CMSetDataRequest& request) override;
    void connectChange(ChangeType type, const CMPath& path, const QObject* receiver,
        const char* slot, Qt::ConnectionType connection) override;
    void disconnectChange(
        ChangeType type, const CMPath& path, const QObject* receiver, const char* slot) override;

private:
    void deliver(const CMRequest& request);

    CMSubscribe m_subscribe;
    CMNodes m_nodes;
};
