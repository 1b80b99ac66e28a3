#include "cmabstractworker.h"

#include "cmdispatch.h"

void CMAbstractWorker::request(const CMRequest& request)
{
    cmDispatch(request, this);
}

void CMAbstractWorker::connectValueChange(
    const CMPath& path, const QObject* receiver, const char* slot, Qt::ConnectionType connection)
{
    connectChange(ChangeType::Value, path, receiver, slot, connection);
}

void CMAbstractWorker::disconnectValueChange(
    const CMPath& path, const QObject* receiver, const char* slot)
{
    disconnectChange(ChangeType::Value, path, receiver, slot);
}

void CMAbstractWorker::connectDataChange(
    const CMPath& path, const QObject* receiver, const char* slot, Qt::ConnectionType connection)
{
    connectChange(ChangeType::Data, path, receiver, slot, connection);
}

void CMAbstractWorker::disconnectDataChange(
    const CMPath& path, const QObject* receiver, const char* slot)
{
    disconnectChange(ChangeType::Data, path, receiver, slot);
}

void CMAbstractWorker::connectRowsChange(
    const CMPath& path, const QObject* receiver, const char* slot, Qt::ConnectionType connection)
{
    connectChange(ChangeType::Rows, path, receiver, slot, connection);
}

void CMAbstractWorker::disconnectRowsChange(
    const CMPath& path, const QObject* receiver, const char* slot)
{
    disconnectChange(ChangeType::Rows, path, receiver, slot);
}

QVariant CMAbstractWorker::getValue(const CMPath&) const
{
    return QVariant();
}

void CMAbstractWorker::invoke(
    const CMPath& path, const TavuHash& argument, const CMReply<QVariant>& reply)
{
    invoke(path, argument.__variant(), reply);
}

void CMAbstractWorker::invoke(const CMPath& path, const QVariant&, const CMReply<QVariant>& reply)
{
    reply.setError(CMError(TrString(
        TrCharData(trExtractContext("CMAbstractWorker"), "Nothing serves %1."), { path.text() })));
}
