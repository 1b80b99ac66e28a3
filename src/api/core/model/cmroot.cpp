#include "cmroot.h"

#include "tavuconnect.h"

#include <QThread>

#include <algorithm>

/// A service and the way to its thread. Its context says goodbye from its destructor, and calls
/// from other threads are posted under the same lock, so that nothing is posted to a dead object.
class CMRootWorker::Provider
{
public:
    Provider(QObject* context, Service service)
        : m_context(context)
        , m_thread(context->thread())
        , m_service(std::move(service))
    {
    }

    void call(const QVariant& argument, const CMReply<QVariant>& reply)
    {
        if (QThread::currentThread() == m_thread)
            return callHere(argument, reply);
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (!m_context)
            return refuse(reply);
        QMetaObject::invokeMethod(
            m_context, [service = m_service, argument, reply] { service(argument, reply); },
            Qt::QueuedConnection);
    }

    void dismiss()
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_context = nullptr;
    }

private:
    void callHere(const QVariant& argument, const CMReply<QVariant>& reply)
    {
        // On its own thread the context cannot die in between, and the service may invoke again.
        if (m_context)
            m_service(argument, reply);
        else
            refuse(reply);
    }

    static void refuse(const CMReply<QVariant>& reply)
    {
        reply.setError(CMError(
            TrString(TrCharData(trExtractContext("CMRootWorker"), "The service has ended."))));
    }

    std::mutex m_mutex;
    QObject* m_context; // Written under m_mutex, on its own thread.
    QThread* m_thread;
    Service m_service;
};

CMRootWorker::CMRootWorker()
{
    tavuRegisterMetaTypes();
}

CMRootWorker::~CMRootWorker() = default;

QVariant CMRootWorker::getValue(const CMPath& path) const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_values.value(path.text());
}

void CMRootWorker::setValue(const CMPath& path, const TavuValue& value)
{
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_values.insert(path.text(), value.__variant());
    }
    m_subscribe.notifyValue(path, value);
}

void CMRootWorker::setValue(const CMPath& path, const TavuHash& value)
{
    setValue(path, TavuValue(value));
}

void CMRootWorker::invoke(
    const CMPath& path, const QVariant& argument, const CMReply<QVariant>& reply)
{
    Q_ASSERT_X(!!reply.data(), "CMRootWorker::invoke", "the reply needs data");
    std::shared_ptr<Provider> provider;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        provider = m_services.value(path.text());
    }
    if (provider)
        provider->call(argument, reply);
    else
        CMAbstractWorker::invoke(path, argument, reply);
}

void CMRootWorker::addService(const CMPath& path, QObject* context, const Service& service)
{
    const auto provider = std::make_shared<Provider>(context, service);
    connect(
        context, &QObject::destroyed, context, [provider] { provider->dismiss(); },
        Qt::DirectConnection);
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_services.insert(path.text(), provider);
}

void CMRootWorker::addWorker(CMAbstractWorker* worker, const CMPath& prefix)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_mounts.push_back({ prefix, worker });
    std::stable_sort(m_mounts.begin(), m_mounts.end(), [](const Mount& a, const Mount& b) {
        return a.prefix.text().size() > b.prefix.text().size();
    });
}

void CMRootWorker::removeWorker(CMAbstractWorker* worker)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto isWorker = [worker](const Mount& mount) { return mount.worker == worker; };
    m_mounts.erase(std::remove_if(m_mounts.begin(), m_mounts.end(), isWorker), m_mounts.end());
}

CMAbstractWorker* CMRootWorker::workerFor(const CMPath& path) const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto mount = std::find_if(m_mounts.begin(), m_mounts.end(),
        [&](const Mount& candidate) { return path.startsWith(candidate.prefix); });
    return mount != m_mounts.end() ? mount->worker : nullptr;
}

void CMRootWorker::passOn(const CMRequest& request)
{
    if (CMAbstractWorker* worker = workerFor(request.path()))
        return worker->request(request);
    request.voidReply().setError(
        CMError(TrString(TrCharData(trExtractContext("CMRootWorker"), "No service answers for %1."),
            { request.path().text() })));
}

void CMRootWorker::ping(const CMVoidReply& reply)
{
    reply.finish();
}

QString CMRootWorker::trace() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return QStringLiteral("root: %1 values, %2 services, %3 workers")
        .arg(m_values.size())
        .arg(m_services.size())
        .arg(m_mounts.size());
}

void CMRootWorker::getDataRequest(const CMGetDataRequest& request)
{
    passOn(request);
}

void CMRootWorker::getRowsRequest(const CMGetRowsRequest& request)
{
    passOn(request);
}

void CMRootWorker::matchRowRequest(const CMMatchRowRequest& request)
{
    passOn(request);
}

void CMRootWorker::setDataRequest(const CMSetDataRequest& request)
{
    passOn(request);
}

void CMRootWorker::connectChange(ChangeType type, const CMPath& path, const QObject* receiver,
    const char* slot, Qt::ConnectionType connection)
{
    CMAbstractWorker* worker = type == ChangeType::Value ? nullptr : workerFor(path);
    if (worker)
        worker->connectChange(type, path, receiver, slot, connection);
    else
        m_subscribe.connectChange(type, path, receiver, slot, connection);
}

void CMRootWorker::disconnectChange(
    ChangeType type, const CMPath& path, const QObject* receiver, const char* slot)
{
    CMAbstractWorker* worker = type == ChangeType::Value ? nullptr : workerFor(path);
    if (worker)
        worker->disconnectChange(type, path, receiver, slot);
    else
        m_subscribe.disconnectChange(type, path, receiver, slot);
}

void CMRootWorker::reset()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_values.clear();
    m_services.clear();
    m_mounts.clear();
}

CMRootWorker* CMRoot()
{
    // Never destroyed: plug-ins may reach for it while the process ends.
    static auto* root = new CMRootWorker;
    return root;
}
