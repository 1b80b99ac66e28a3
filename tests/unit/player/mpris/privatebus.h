#pragma once

#include <QDBusConnection>
#include <QProcess>

/// A D-Bus session bus of the test's own.
class PrivateBus
{
public:
    PrivateBus();
    ~PrivateBus();
    Q_DISABLE_COPY_MOVE(PrivateBus)

    const QString& address() const { return m_address; }
    /// A connection of its own, each time.
    QDBusConnection connect();
    /// Ends the bus under its clients.
    void kill();

private:
    QProcess m_daemon;
    QString m_address;
    QStringList m_connections;
};
