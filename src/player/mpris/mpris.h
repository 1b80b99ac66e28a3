#pragma once

#include "positiontracker.h"

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

class PlayerFacade;

namespace player {

/// The player on D-Bus for desktops, media keys and playerctl (MPRIS 2.2), from construction on.
/// Without a bus, or once the bus has gone, it is off: one log line says so, and everything else
/// goes on. Lives in the main thread.
class Mpris : public QObject
{
    Q_OBJECT

public:
    /// The bus by its setting: "session", "system", which needs the policy file that comes with the
    /// player, or "auto", the session's when there is one. It may turn out not to be there.
    static QDBusConnection busNamed(const QString& setting);

    /// `identity` is the player's name for people. `facade` must outlive the object.
    Mpris(PlayerFacade* facade, const QString& identity, const QDBusConnection& bus,
        QObject* parent = nullptr);
    ~Mpris() override;

    /// "org.mpris.MediaPlayer2.tavu", with ".instance" and the process id behind it when another
    /// player has that name; empty while it is off.
    const QString& busName() const { return m_busName; }

    // For the adaptors.
    const QString& identity() const { return m_identity; }
    QVariant playerProperty(const char* name) const;
    /// Milliseconds.
    qint64 position() const;
    qint64 duration() const;
    PlayerFacade& facade() { return *m_facade; }
    const QDBusConnection& bus() const { return m_bus; }

private Q_SLOTS:
    void on_bus_disconnected();

private:
    void offer();
    void refresh();
    void take(qint64 positionMs, qint64 at);
    void announceChanges(const QVariantMap& before);
    void announceSeek(qint64 positionMs);
    void send(const char* interface, const char* signal, const QVariantList& arguments);

    PlayerFacade* const m_facade;
    const QString m_identity;
    QDBusConnection m_bus;
    QString m_busName;
    QVariantMap m_properties; // As announced.
    QString m_item;
    int m_track = 0;
    mpris::PositionTracker m_position;
};

} // namespace player
