#include "mpris.h"

#include "mprisadaptors.h"
#include "mprisstate.h"
#include "playerfacade.h"
#include "tavulog.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDateTime>
#include <QFileInfo>

namespace player {

namespace {

const char objectPath[] = "/org/mpris/MediaPlayer2";
const char playerInterface[] = "org.mpris.MediaPlayer2.Player";

log4cplus::Logger& logger()
{
    static log4cplus::Logger logger = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("Mpris"));
    return logger;
}

qint64 now()
{
    return QDateTime::currentMSecsSinceEpoch();
}

/// Asked without this, the library would start a bus of its own.
bool hasSessionBus()
{
    const QString socket = qEnvironmentVariable("XDG_RUNTIME_DIR") + QLatin1String("/bus");
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") || QFileInfo::exists(socket);
}

QVariantMap changed(const QVariantMap& before, const QVariantMap& after)
{
    QVariantMap difference;
    for (auto property = after.begin(); property != after.end(); ++property)
        if (before.value(property.key()) != property.value())
            difference.insert(property.key(), property.value());
    return difference;
}

} // namespace

QDBusConnection Mpris::busNamed(const QString& setting)
{
    const bool session = setting == QLatin1String("session")
        || (setting != QLatin1String("system") && hasSessionBus());
    return session ? QDBusConnection::sessionBus() : QDBusConnection::systemBus();
}

Mpris::Mpris(
    PlayerFacade* facade, const QString& identity, const QDBusConnection& bus, QObject* parent)
    : QObject(parent)
    , m_facade(facade)
    , m_identity(identity)
    , m_bus(bus)
{
    // Metadata that did not change must compare equal, its track id included.
    if (!QMetaType::hasRegisteredComparators<QDBusObjectPath>())
        QMetaType::registerComparators<QDBusObjectPath>();
    new MprisRootAdaptor(this);
    new MprisPlayerAdaptor(this);
    connect(facade, &PlayerFacade::playerChanged, this, &Mpris::refresh);
    connect(facade, &PlayerFacade::positionChanged, this, &Mpris::take);
    refresh();
    offer();
}

Mpris::~Mpris()
{
    if (m_busName.isEmpty())
        return;
    m_bus.unregisterService(m_busName);
    m_bus.unregisterObject(QLatin1String(objectPath));
}

void Mpris::offer()
{
    if (!m_bus.isConnected()) {
        LOG4CPLUS_WARN(logger(),
            "No D-Bus (" << m_bus.lastError().message()
                         << "): media keys and desktops cannot steer the player; all else works. "
                            "Start it in a session with a bus, or set player.mpris = false");
        return;
    }
    m_bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
        SLOT(on_bus_disconnected()));
    m_bus.registerObject(QLatin1String(objectPath), this);
    const auto name = QStringLiteral("org.mpris.MediaPlayer2.tavu");
    const QString ofInstance =
        name + QStringLiteral(".instance%1").arg(QCoreApplication::applicationPid());
    for (const QString& candidate : { name, ofInstance }) {
        if (!m_bus.registerService(candidate))
            continue;
        m_busName = candidate;
        LOG4CPLUS_INFO(logger(), "MPRIS is on as " << m_busName);
        return;
    }
    LOG4CPLUS_WARN(logger(),
        "D-Bus does not let the player have its name ("
            << m_bus.lastError().message()
            << "): media keys and desktops cannot steer "
               "the player; all else works. On the "
               "system bus, install the policy that "
               "comes with the player");
}

void Mpris::on_bus_disconnected()
{
    m_busName.clear();
    LOG4CPLUS_WARN(logger(),
        "D-Bus has gone: media keys and desktops cannot steer the player until it is started "
        "again; all else works");
}

QVariant Mpris::playerProperty(const char* name) const
{
    return m_properties.value(QString::fromLatin1(name));
}

qint64 Mpris::duration() const
{
    return m_facade->player().value(QStringLiteral("duration")).toLongLong();
}

qint64 Mpris::position() const
{
    const qint64 position = m_position.positionAt(now());
    return duration() > 0 ? qMin(position, duration()) : position;
}

void Mpris::refresh()
{
    const QVariantHash player = m_facade->player();
    const QString item = mpris::itemOf(player);
    if (item != m_item) {
        m_item = item;
        ++m_track;
        m_position.restart(now());
    }
    m_position.setFlowing(mpris::playStateOf(player) == mpris::PlayState::Playing, now());
    const QVariantMap before = m_properties;
    m_properties = mpris::playerProperties(player, m_track);
    announceChanges(before);
}

void Mpris::take(qint64 positionMs, qint64 at)
{
    if (m_position.report(positionMs, at))
        announceSeek(positionMs);
}

void Mpris::announceChanges(const QVariantMap& before)
{
    const QVariantMap difference = changed(before, m_properties);
    if (!difference.isEmpty())
        send("org.freedesktop.DBus.Properties", "PropertiesChanged",
            { QString::fromLatin1(playerInterface), difference, QStringList() });
}

void Mpris::announceSeek(qint64 positionMs)
{
    send(playerInterface, "Seeked", { positionMs * 1000 });
}

void Mpris::send(const char* interface, const char* signal, const QVariantList& arguments)
{
    if (m_busName.isEmpty())
        return;
    QDBusMessage message = QDBusMessage::createSignal(
        QLatin1String(objectPath), QLatin1String(interface), QLatin1String(signal));
    message.setArguments(arguments);
    m_bus.send(message);
}

} // namespace player
