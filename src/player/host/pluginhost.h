#pragma once

#include <QObject>
#include <QThread>
#include <QTimer>
#include <QVariant>

class CMAbstractWorker;

namespace player {

/// Loads a plug-in by its path and runs it on a thread of its own. The plug-in's constructor runs
/// there too, since its objects stay where they are made; it may wait for services of the main
/// thread, so nothing here blocks. Lives in the main thread. A plug-in is never unloaded.
class PluginHost : public QObject
{
    Q_OBJECT

public:
    explicit PluginHost(QObject* parent = nullptr);
    /// Ends the plug-in and its thread.
    ~PluginHost() override;

    /// Starts loading; exactly one of ready() and failed() follows. Once per object. A plug-in that
    /// is there only after the host has lost patience is ended at once.
    void load(const QString& fileName, const QVariantHash& settings);
    /// Null before ready() and after a failure.
    CMAbstractWorker* worker() const { return m_worker; }

    /// How long a plug-in may take to construct itself, in milliseconds.
    void setPatience(int ms) { m_watchdog.setInterval(ms); }

Q_SIGNALS:
    void ready();
    /// `message` says which plug-in failed, why, and what to do.
    void failed(const QString& message);

private:
    void finish(CMAbstractWorker* worker, const QString& error);
    void fail(const QString& message);
    void on_watchdog_timeout();

    QThread m_thread;
    QTimer m_watchdog;
    QString m_fileName;
    CMAbstractWorker* m_worker = nullptr;
    bool m_constructed = false; // The plug-in, or there is none.
    bool m_failed = false; // And that was told.
};

} // namespace player
