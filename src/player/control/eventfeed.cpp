#include "eventfeed.h"

#include "problem.h"
#include "tavujson.h"

#include <QDateTime>
#include <QPointer>

namespace control {

namespace {

constexpr std::size_t changesKept = 256;
/// How soon a browser tries again; in milliseconds.
const QByteArray retry = QByteArrayLiteral("retry: 1000\n\n");

} // namespace

EventFeed::EventFeed(
    PlayerFacade& player, const ClientView& view, int clientsAtMost, QObject* parent)
    : QObject(parent)
    , m_player(player)
    , m_view(view)
    , m_clientsAtMost(clientsAtMost)
    , m_serial(QDateTime::currentMSecsSinceEpoch())
{
    m_flush.setSingleShot(true);
    connect(&m_flush, &QTimer::timeout, this, &EventFeed::flush);
    const auto playerChanged = [this] {
        m_playerChanged = true;
        flushLater();
    };
    connect(&player, &PlayerFacade::playerChanged, this, playerChanged);
    connect(&player, &PlayerFacade::outputsChanged, this, playerChanged);
    connect(&player, &PlayerFacade::queueChanged, this, [this] {
        m_queueChanged = true;
        flushLater();
    });
    connect(&player, &PlayerFacade::loginChanged, this, [this] {
        m_loginChanged = true;
        flushLater();
    });
    connect(&player, &PlayerFacade::rowsChanged, this, [this](const QString& path) {
        m_changedRows += path;
        flushLater();
    });
    connect(&player, &PlayerFacade::positionChanged, this, [this](qint64 position, qint64 at) {
        flush();
        publish(
            "position", { { QStringLiteral("position"), position }, { QStringLiteral("at"), at } });
    });
    connect(&player, &PlayerFacade::messageAdded, this, [this](const QVariantHash& message) {
        flush();
        publish("message", m_view.message(message));
    });
}

void EventFeed::flushLater()
{
    if (!m_flush.isActive())
        m_flush.start(0);
}

void EventFeed::flush()
{
    m_flush.stop();
    if (std::exchange(m_loginChanged, false))
        publish("login", m_player.login());
    if (std::exchange(m_playerChanged, false))
        publish("player", m_view.player(m_player.player()));
    if (std::exchange(m_queueChanged, false))
        publish("queue", {});
    for (const QString& path : std::exchange(m_changedRows, {}))
        publish("rows", { { QStringLiteral("path"), path } });
}

void EventFeed::publish(const char* event, const QVariantHash& data)
{
    ++m_serial;
    const QByteArray formatted =
        http::EventStream::format(QByteArray::number(m_serial), event, TavuJson::toJson(data));
    m_changes.push_back({ m_serial, formatted });
    if (m_changes.size() > changesKept)
        m_changes.pop_front();
    for (auto client = m_clients.begin(); client != m_clients.end();) {
        if (client->send(formatted))
            ++client;
        else
            client = m_clients.erase(client);
    }
}

QVariantHash EventFeed::snapshot()
{
    // What is told by the snapshot need not be told again.
    flush();
    const QVariantHash login = m_player.login();
    const QVariantHash service = m_player.service();
    const bool loggedIn = login.value(QStringLiteral("state")) == QStringLiteral("loggedIn");
    QVariantList messages;
    for (const QVariant& message : m_player.messages())
        messages += m_view.message(message.toHash());
    return {
        { QStringLiteral("version"), service.value(QStringLiteral("version")) },
        { QStringLiteral("login"), login },
        { QStringLiteral("player"), m_view.player(m_player.player()) },
        { QStringLiteral("messages"), messages },
        { QStringLiteral("serial"), m_serial },
        { QStringLiteral("service"),
            QVariantHash{ { QStringLiteral("name"), service.value(QStringLiteral("name")) },
                { QStringLiteral("loggedIn"), loggedIn } } },
    };
}

/// Returns whether the client now has everything that it missed.
bool EventFeed::resume(const http::EventStream& client, const QByteArray& lastId)
{
    bool isNumber = false;
    const qint64 last = lastId.toLongLong(&isNumber);
    const qint64 oldest = m_serial - qint64(m_changes.size());
    if (!isNumber || last < oldest || last > m_serial)
        return false;
    for (const Change& change : m_changes) {
        if (change.serial > last)
            client.send(change.formatted);
    }
    return true;
}

void EventFeed::join(const http::Request& request, const http::Responder& responder)
{
    if (m_clients.size() >= m_clientsAtMost) {
        responder.send(problem(503, {}, QStringLiteral("Too many clients listen to events.")));
        return;
    }
    const QByteArray state = TavuJson::toJson(snapshot());
    const http::EventStream client = responder.events();
    client.send(retry);
    if (!resume(client, request.headers.value("Last-Event-ID")))
        client.send(QByteArray::number(m_serial), "snapshot", state);
    if (!client.isOpen())
        return;
    const qint64 number = ++m_lastClient;
    m_clients.insert(number, client);
    const QPointer<EventFeed> self(this);
    client.onClosed([self, number] {
        if (self)
            self->m_clients.remove(number);
    });
}

} // namespace control
