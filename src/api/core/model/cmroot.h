#pragma once

#include "cmabstractworker.h"
#include "tavuexport.h"

#include <QHash>

#include <functional>
#include <mutex>
#include <vector>

/// The root of the host: holds the values by path, knows who serves what, and passes requests on to
/// the worker under whose prefix they lie. Every operation may be called on any thread.
class TAVU_EXPORT CMRootWorker : public CMAbstractWorker
{
    Q_OBJECT

public:
    using Service = std::function<void(const QVariant&, const CMReply<QVariant>&)>;

    CMRootWorker();
    ~CMRootWorker() override;

    // Values.
    QVariant getValue(const CMPath& path) const override;
    /// Publishes a value: those who watch it hear of it, also when it equals the one before.
    void setValue(const CMPath& path, const TavuValue& value);
    /// Publishes any record; those who watch it see it as the hash of their TavuValue.
    void setValue(const CMPath& path, const TavuHash& value);

    // Services.
    using CMAbstractWorker::invoke;
    /// Has the service at `path` called on the thread of its context. Nothing there, or a context
    /// that has died, fails the reply.
    void invoke(
        const CMPath& path, const QVariant& argument, const CMReply<QVariant>& reply) override;
    /// From now on `service` serves `path` on the thread of `context`, as long as that lives; one
    /// added before at the path is replaced. Call it on that thread.
    void addService(const CMPath& path, QObject* context, const Service& service);

    // Workers: a request goes to the one with the longest prefix of its path; of two with the same
    // prefix, to the one added first.
    /// `worker` is not owned. It is to be removed, by those who ask or while nobody asks, before it
    /// is destroyed.
    void addWorker(CMAbstractWorker* worker, const CMPath& prefix);
    /// Takes out all mounts of the worker; one that is not mounted is passed over.
    void removeWorker(CMAbstractWorker* worker);

    void ping(const CMVoidReply& reply) override;
    QString trace() const override;
    void getDataRequest(const CMGetDataRequest& request) override;
    void getRowsRequest(const CMGetRowsRequest& request) override;
    void matchRowRequest(const CMMatchRowRequest& request) override;
    void setDataRequest(const CMSetDataRequest& request) override;
    void connectChange(ChangeType type, const CMPath& path, const QObject* receiver,
        const char* slot, Qt::ConnectionType connection) override;
    void disconnectChange(
        ChangeType type, const CMPath& path, const QObject* receiver, const char* slot) override;

    /// Forgets all values, services and workers, as before the first use. For tests.
    void reset();

private:
    class Provider;
    struct Mount
    {
        CMPath prefix;
        CMAbstractWorker* worker = nullptr;
    };

    CMAbstractWorker* workerFor(const CMPath& path) const;
    void passOn(const CMRequest& request);

    CMSubscribe m_subscribe;
    mutable std::mutex m_mutex;
    // Guarded by m_mutex.
    QHash<QString, QVariant> m_values;
    QHash<QString, std::shared_ptr<Provider>> m_services;
    std::vector<Mount> m_mounts;
};

/// The root worker. It is made on first use and lives until the process ends.
TAVU_EXPORT CMRootWorker* CMRoot();
