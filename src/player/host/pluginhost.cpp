#include "pluginhost.h"

#include "cmplugin.h"
#include "cmroot.h"
#include "cmworker.h"

#include <QFile>
#include <QFileInfo>

#include <dlfcn.h>

#include <utility>

namespace player {

namespace {

constexpr int patienceMs = 20000;
constexpr unsigned long lastPatienceMs = 100;

struct Loaded
{
    CMAbstractWorker* worker = nullptr;
    QString error;
};

QString lastLoaderError()
{
    const char* text = dlerror();
    return QString::fromLocal8Bit(text ? text : "unknown reason");
}

Loaded loadHere(const QString& fileName, const QVariantHash& settings)
{
    if (!QFileInfo::exists(fileName))
        return { nullptr,
            QStringLiteral("The plug-in %1 does not exist. Set player.plugin to the path of the "
                           "plug-in's library.")
                .arg(fileName) };
    void* library = dlopen(QFile::encodeName(fileName).constData(), RTLD_NOW | RTLD_LOCAL);
    if (!library)
        return { nullptr,
            QStringLiteral("%1 cannot be loaded: %2. Set player.plugin to a plug-in of this "
                           "player's version.")
                .arg(fileName, lastLoaderError()) };
    const auto create = reinterpret_cast<CMWorkerCreate*>(dlsym(library, CMWorkerCreateName));
    if (!create)
        return { nullptr,
            QStringLiteral("%1 is not a plug-in: it has no function worker_create. Set "
                           "player.plugin to a plug-in's library.")
                .arg(fileName) };
    CMAbstractWorker* worker = create(nullptr, settings);
    if (!worker)
        return { nullptr, QStringLiteral("The plug-in %1 refused to start.").arg(fileName) };
    return { worker, QString() };
}

CMPath prefixOf(CMAbstractWorker* worker)
{
    const auto* named = qobject_cast<CMWorker*>(worker);
    return named ? named->prefix() : CMPath();
}

} // namespace

PluginHost::PluginHost(QObject* parent)
    : QObject(parent)
{
    m_watchdog.setSingleShot(true);
    m_watchdog.setInterval(patienceMs);
    connect(&m_watchdog, &QTimer::timeout, this, &PluginHost::on_watchdog_timeout);
}

PluginHost::~PluginHost()
{
    if (m_worker) {
        CMRoot()->removeWorker(m_worker);
        m_worker->deleteLater();
    }
    m_thread.quit();
    // A plug-in that still hangs in its constructor is not waited for.
    if (!m_constructed && !m_thread.wait(lastPatienceMs))
        m_thread.terminate();
    m_thread.wait();
}

void PluginHost::load(const QString& fileName, const QVariantHash& settings)
{
    Q_ASSERT_X(m_fileName.isEmpty(), "PluginHost::load", "one plug-in a host");
    m_fileName = fileName;
    m_thread.setObjectName(QFileInfo(fileName).baseName());
    m_thread.start();
    m_watchdog.start();
    auto* onThread = new QObject;
    onThread->moveToThread(&m_thread);
    QMetaObject::invokeMethod(onThread, [this, onThread, fileName, settings] {
        const Loaded loaded = loadHere(fileName, settings);
        onThread->deleteLater();
        QMetaObject::invokeMethod(
            this, [this, loaded] { finish(loaded.worker, loaded.error); }, Qt::QueuedConnection);
    });
}

void PluginHost::finish(CMAbstractWorker* worker, const QString& error)
{
    m_watchdog.stop();
    m_constructed = true;
    if (!worker)
        return fail(error);
    if (m_failed)
        return worker->deleteLater();
    m_worker = worker;
    CMRoot()->addWorker(worker, prefixOf(worker));
    Q_EMIT ready();
}

void PluginHost::fail(const QString& message)
{
    if (!std::exchange(m_failed, true))
        Q_EMIT failed(message);
}

void PluginHost::on_watchdog_timeout()
{
    fail(QStringLiteral("The plug-in %1 has not finished starting within %2 s. It may be "
                        "waiting for a service of the player; see the log.")
             .arg(m_fileName)
             .arg(m_watchdog.interval() / 1000));
}

} // namespace player
