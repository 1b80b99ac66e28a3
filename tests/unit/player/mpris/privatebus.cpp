#include "privatebus.h"

#include "watchdog.h"

#include <gtest/gtest.h>

PrivateBus::PrivateBus()
{
    m_daemon.start(QStringLiteral("dbus-daemon"),
        { QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
            QStringLiteral("--print-address=1") });
    EXPECT_TRUE(waitUntil([&] { return m_daemon.canReadLine(); })) << "no dbus-daemon";
    m_address = QString::fromLatin1(m_daemon.readLine()).trimmed();
}

PrivateBus::~PrivateBus()
{
    for (const QString& name : m_connections)
        QDBusConnection::disconnectFromBus(name);
    kill();
}

QDBusConnection PrivateBus::connect()
{
    static int number = 0;
    const QString name = QStringLiteral("test-%1").arg(++number);
    m_connections.append(name);
    return QDBusConnection::connectToBus(m_address, name);
}

void PrivateBus::kill()
{
    if (m_daemon.state() == QProcess::NotRunning)
        return;
    m_daemon.kill();
    m_daemon.waitForFinished();
}
