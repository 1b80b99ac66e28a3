#include "cmnodesworker.h"

#include "cmnode.h"

namespace {

void addPath(CMNode* node, CMSubscribe::ChangeType type, const CMPath& path)
{
    switch (type) {
    case CMSubscribe::ChangeType::Value:
        return node->valuePathAdd(path);
    case CMSubscribe::ChangeType::Data:
        return node->dataPathAdd(path);
    case CMSubscribe::ChangeType::Rows:
        return node->rowsPathAdd(path);
    }
}

void removePath(CMNode* node, CMSubscribe::ChangeType type, const CMPath& path)
{
    switch (type) {
    case CMSubscribe::ChangeType::Value:
        return node->valuePathRemove(path);
    case CMSubscribe::ChangeType::Data:
        return node->dataPathRemove(path);
    case CMSubscribe::ChangeType::Rows:
        return node->rowsPathRemove(path);
    }
}

} // namespace

CMNodesWorker::CMNodesWorker(const QVariantHash& settings, const QString& name)
    : CMWorker(settings, name)
    , m_nodes(&m_subscribe)
{
}

CMNodesWorker::~CMNodesWorker()
{
    // Objects parented to a worker use its nodes until they die; QObject would delete them last.
    while (!children().isEmpty())
        delete children().first();
}

void CMNodesWorker::getDataRequest(const CMGetDataRequest& request)
{
    deliver(request);
}

void CMNodesWorker::getRowsRequest(const CMGetRowsRequest& request)
{
    deliver(request);
}

void CMNodesWorker::matchRowRequest(const CMMatchRowRequest& request)
{
    deliver(request);
}

void CMNodesWorker::setDataRequest(const CMSetDataRequest& request)
{
    deliver(request);
}

void CMNodesWorker::connectChange(ChangeType type, const CMPath& path, const QObject* receiver,
    const char* slot, Qt::ConnectionType connection)
{
    m_subscribe.connectChange(type, path, receiver, slot, connection);
    onOwnThread([this, type, path] {
        if (CMNode* node = m_nodes.find(path))
            addPath(node, type, path);
    });
}

void CMNodesWorker::disconnectChange(
    ChangeType type, const CMPath& path, const QObject* receiver, const char* slot)
{
    m_subscribe.disconnectChange(type, path, receiver, slot);
    onOwnThread([this, type, path] {
        if (CMNode* node = m_nodes.find(path))
            removePath(node, type, path);
    });
}

void CMNodesWorker::deliver(const CMRequest& request)
{
    onOwnThread([this, request] {
        if (CMNode* node = m_nodes.find(request.path()))
            return node->request(request);
        request.voidReply().setError(CMError(
            TrString(TrCharData(trExtractContext("CMNodesWorker"), "There is nothing at %1."),
                { request.path().text() })));
    });
}
