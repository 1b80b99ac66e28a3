#pragma once

#include <QFileSystemWatcher>
#include <QHostAddress>
#include <QNetworkInterface>
#include <QObject>
#include <QTimer>

namespace player {

class Settings;

/// Publishes whether there is a network to the plug-in: what the system's interfaces say, or what
/// another program writes into the file that the settings name. Lives in the main thread.
class NetworkState : public QObject
{
    Q_OBJECT

public:
    explicit NetworkState(const Settings& settings, QObject* parent = nullptr);

private:
    void watchFile();
    void watchInterfaces();
    void look();
    bool isConnected() const;

    QString m_file;
    bool m_loopbackIsEnough;
    bool m_wasConnected = true;
    QTimer m_settled;
    QFileSystemWatcher m_watcher;
};

/// Up and running, with an address that reaches beyond its own link. The loopback interface counts
/// where the service is on this machine.
bool leadsToService(QNetworkInterface::InterfaceFlags flags, const QList<QHostAddress>& addresses,
    bool loopbackIsEnough);

/// Whether connections to the host end on this machine. `mappings`: as in service.connect-to.
bool isOnThisMachine(const QString& host, const QStringList& mappings);

} // namespace player
