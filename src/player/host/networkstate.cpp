#include "networkstate.h"

#include "cmroot.h"
#include "networkchanges.h"
#include "settings.h"
#include "tavupaths.h"
#include "tavuurl.h"

#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <log4cplus/loggingmacros.h>

#include <unistd.h>

#include <algorithm>

namespace player {

namespace {

// Interfaces change in several steps; only where that ends counts.
constexpr int settleMs = 300;

log4cplus::Logger& logger()
{
    static log4cplus::Logger instance = log4cplus::Logger::getInstance("player.host");
    return instance;
}

QList<QHostAddress> addressesOf(const QNetworkInterface& interface)
{
    QList<QHostAddress> addresses;
    for (const QNetworkAddressEntry& entry : interface.addressEntries())
        addresses.append(entry.ip());
    return addresses;
}

bool isThisMachine(const QString& host)
{
    return host == QLatin1String("localhost") || host.endsWith(QLatin1String(".localhost"))
        || QHostAddress(host).isLoopback();
}

} // namespace

bool leadsToService(QNetworkInterface::InterfaceFlags flags, const QList<QHostAddress>& addresses,
    bool loopbackIsEnough)
{
    if (!flags.testFlag(QNetworkInterface::IsUp) || !flags.testFlag(QNetworkInterface::IsRunning))
        return false;
    if (flags.testFlag(QNetworkInterface::IsLoopBack))
        return loopbackIsEnough;
    return std::any_of(addresses.begin(), addresses.end(),
        [](const QHostAddress& address) { return !address.isLinkLocal(); });
}

bool isOnThisMachine(const QString& host, const QStringList& mappings)
{
    // host:port:address:port; an address of version 6 stands in brackets.
    const QString prefix = host + QLatin1Char(':');
    for (const QString& mapping : mappings) {
        if (!mapping.startsWith(prefix))
            continue;
        QString target = mapping.section(QLatin1Char(':'), 2);
        target.truncate(target.lastIndexOf(QLatin1Char(':')));
        target.remove(QLatin1Char('[')).remove(QLatin1Char(']'));
        return isThisMachine(target);
    }
    return isThisMachine(host);
}

NetworkState::NetworkState(const Settings& settings, QObject* parent)
    : QObject(parent)
    , m_file(settings.text("player.network-file"))
    , m_loopbackIsEnough(isOnThisMachine(
          TavuUrl(settings.text("service.base-url")).host(), settings.list("service.connect-to")))
{
    m_settled.setSingleShot(true);
    m_settled.setInterval(settleMs);
    connect(&m_settled, &QTimer::timeout, this, &NetworkState::look);
    if (m_file.isEmpty())
        watchInterfaces();
    else
        watchFile();
    CMRoot()->setValue(TavuNetworkStateConnected(), TavuValue::fromBool(true));
    look();
}

/// The folder, too: a file that is put in place of another is not the one that was watched.
void NetworkState::watchFile()
{
    const auto changed = [this] {
        if (!m_watcher.files().contains(m_file))
            m_watcher.addPath(m_file);
        m_settled.start();
    };
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, changed);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, changed);
    m_watcher.addPath(QFileInfo(m_file).absolutePath());
    m_watcher.addPath(m_file);
}

void NetworkState::watchInterfaces()
{
    const int fd = openNetworkChanges();
    if (fd < 0) {
        LOG4CPLUS_WARN(logger(), "Changes of the network cannot be followed");
        return;
    }
    auto* notifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    connect(notifier, &QObject::destroyed, [fd] { close(fd); });
    connect(notifier, &QSocketNotifier::activated, this, [this, fd] {
        drainNetworkChanges(fd);
        m_settled.start();
    });
}

void NetworkState::look()
{
    const bool connected = isConnected();
    if (connected == m_wasConnected)
        return;
    m_wasConnected = connected;
    LOG4CPLUS_WARN(logger(), (connected ? "There is a network again" : "There is no network"));
    CMRoot()->setValue(TavuNetworkStateConnected(), TavuValue::fromBool(connected));
}

bool NetworkState::isConnected() const
{
    if (!m_file.isEmpty()) {
        constexpr qint64 longest = 64;
        QFile file(m_file);
        // One that is not written yet says nothing.
        return !file.open(QIODevice::ReadOnly) || file.read(longest).trimmed() != "down";
    }
    const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    return std::any_of(interfaces.begin(), interfaces.end(), [this](const auto& interface) {
        return leadsToService(interface.flags(), addressesOf(interface), m_loopbackIsEnough);
    });
}

} // namespace player
