#pragma once

#include "cmrequest.h"
#include "cmsubscribe.h"
#include "tavuexport.h"

#include <QObject>
#include <QVariant>

/// Answers requests for the paths under its prefix. Every operation may be called on any thread,
/// returns at once, and answers through the request's reply.
class TAVU_EXPORT CMAbstractWorker : public QObject
{
    Q_OBJECT

public:
    using ChangeType = CMSubscribe::ChangeType;

    using QObject::QObject;

    /// Sends the request to the operation for its type.
    virtual void request(const CMRequest& request);
    /// Answers whether the worker's thread still turns: finishes the reply from it.
    virtual void ping(const CMVoidReply& reply) = 0;
    /// One line that says what the worker is and holds, for support.
    virtual QString trace() const = 0;
    virtual void getDataRequest(const CMGetDataRequest& request) = 0;
    virtual void getRowsRequest(const CMGetRowsRequest& request) = 0;
    virtual void matchRowRequest(const CMMatchRowRequest& request) = 0;
    virtual void setDataRequest(const CMSetDataRequest& request) = 0;

    /// Has `slot` (a signature prefixed with the digit 1) of `receiver` called on each change of
    /// `path`, until it is disconnected or destroyed.
    virtual void connectValueChange(const CMPath& path, const QObject* receiver, const char* slot,
        Qt::ConnectionType connection);
    virtual void disconnectValueChange(
        const CMPath& path, const QObject* receiver, const char* slot);
    virtual void connectDataChange(const CMPath& path, const QObject* receiver, const char* slot,
        Qt::ConnectionType connection);
    virtual void disconnectDataChange(
        const CMPath& path, const QObject* receiver, const char* slot);
    virtual void connectRowsChange(const CMPath& path, const QObject* receiver, const char* slot,
        Qt::ConnectionType connection);
    virtual void disconnectRowsChange(
        const CMPath& path, const QObject* receiver, const char* slot);
    virtual void connectChange(ChangeType type, const CMPath& path, const QObject* receiver,
        const char* slot, Qt::ConnectionType connection) = 0;
    virtual void disconnectChange(
        ChangeType type, const CMPath& path, const QObject* receiver, const char* slot) = 0;

    /// The value published at `path`; an invalid variant when there is none.
    virtual QVariant getValue(const CMPath& path) const;
    /// Calls into whoever serves `path`; the outcome arrives through `reply`, which must have data.
    void invoke(const CMPath& path, const TavuHash& argument, const CMReply<QVariant>& reply);
    virtual void invoke(
        const CMPath& path, const QVariant& argument, const CMReply<QVariant>& reply);
};
