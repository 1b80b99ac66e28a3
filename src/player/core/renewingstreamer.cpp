#include "renewingstreamer.h"

#include "cmroot.h"
#include "deadline.h"
#include "rowsource.h"
#include "streamfailure.h"
#include "streamrequest.h"

#include <QDateTime>
#include <QThread>

namespace player {

namespace {

constexpr int renewalDeadlineMs = 10000;
// A renewed stream that sounded for so long works; what fails after that is another failure.
constexpr qint64 soundsMs = 1000;

bool renewable(const TavuRoles& roles)
{
    return !roles.mediaData().metaData().prePlayPath().isEmpty();
}

TavuRoles withOffset(TavuRoles roles, qint64 position)
{
    TavuMediaData media = roles.mediaData();
    TavuMetaData meta = media.metaData();
    meta.setPrePlayTimeOffset(position);
    media.setMetaData(meta);
    roles.setMediaData(media);
    return roles;
}

TavuRoles startingAt(TavuRoles roles, qint64 position)
{
    TavuMediaData media = roles.mediaData();
    TavuMetaData meta = media.metaData();
    meta.setStartTime(position);
    media.setMetaData(meta);
    roles.setMediaData(media);
    return roles;
}

/// Whether a fresh URL may help: the server refused this one.
bool refusedByServer(const CMError& error)
{
    return isRefusal(tavuvariant::toI32(error.__value(streamErrorHttpCode())));
}

} // namespace

bool resourceExpired(const TavuRoles& roles)
{
    const TavuResource resource = roles.mediaData().firstResource();
    return resource.__contains(TavuResource::ValidUntil())
        && QDateTime::currentMSecsSinceEpoch() >= resource.validUntil();
}

void RenewingStreamer::Item::take(const TavuRoles& renewed)
{
    roles = renewed;
    attributes.insert(renewedAttribute(), true);
}

RenewingStreamer::RenewingStreamer(Streamer* inner, QObject* parent)
    : Streamer(parent)
    , m_inner(inner)
{
    connect(inner, &Streamer::mediaStarted, this, &RenewingStreamer::on_inner_mediaStarted);
    connect(inner, &Streamer::stateChanged, this, &Streamer::stateChanged);
    connect(inner, &Streamer::positionChanged, this, &RenewingStreamer::on_inner_positionChanged);
    connect(inner, &Streamer::bufferLevelChanged, this, &Streamer::bufferLevelChanged);
    connect(inner, &Streamer::nextMediaWanted, this, &RenewingStreamer::on_inner_nextMediaWanted);
    connect(inner, &Streamer::ended, this, &RenewingStreamer::on_inner_ended);
    connect(inner, &Streamer::failed, this, &RenewingStreamer::on_inner_failed);
    connect(inner, &Streamer::rolesRenewed, this, &Streamer::rolesRenewed);
}

RenewingStreamer::~RenewingStreamer() = default;

void RenewingStreamer::onOwnThread(const std::function<void()>& function)
{
    if (QThread::currentThread() == thread())
        function();
    else
        QMetaObject::invokeMethod(this, function, Qt::QueuedConnection);
}

void RenewingStreamer::play(quint64 id, const TavuRoles& roles, const QVariantHash& attributes)
{
    onOwnThread([this, id, roles, attributes] {
        const bool goesOn = isSameTrack(roles, m_startTrack);
        const TavuRoles item = goesOn ? startingAt(roles, m_startPosition) : roles;
        m_startTrack.clear();
        m_present = { id, item, attributes };
        m_nextWanted = false;
        setNext(Item());
        m_position = item.mediaData().metaData().startTime();
        m_paused = false;
        m_reopenOnResume = false;
        handOver(m_present, false);
    });
}

void RenewingStreamer::setNextMedia(
    quint64 id, const TavuRoles& roles, const QVariantHash& attributes)
{
    onOwnThread([this, id, roles, attributes] {
        m_nextWanted = false;
        setNext({ id, roles, attributes });
        handOver(m_next, true);
    });
}

void RenewingStreamer::setNext(const Item& next)
{
    const bool same = next.id == m_next.id;
    m_next = next;
    if (!same)
        Q_EMIT nextMediaChanged(m_next.roles);
}

void RenewingStreamer::startAt(const TavuRoles& track, qint64 position)
{
    m_startTrack = track;
    m_startPosition = position;
}

void RenewingStreamer::handOver(Item& item, bool next)
{
    const auto send = [this, next](const Item& ready) {
        if (next)
            m_inner->setNextMedia(ready.id, ready.roles, ready.attributes);
        else
            m_inner->play(ready.id, ready.roles, ready.attributes);
    };
    if (!resourceExpired(item.roles) || !renewable(item.roles))
        return send(item);
    if (!next)
        m_inner->stop(); // What played before must not sound on while the new item is renewed.
    const quint64 id = item.id;
    renew(
        item, item.roles.mediaData().metaData().startTime(),
        [this, id, next, send](const TavuRoles& roles) {
            Item& renewed = next ? m_next : m_present;
            if (renewed.id != id)
                return;
            renewed.take(roles);
            send(renewed);
        },
        [this, id](const CMError& error) {
            if (id == m_next.id)
                setNext(Item());
            Q_EMIT failed(id, error);
        });
}

void RenewingStreamer::renew(const Item& item, qint64 position,
    const std::function<void(const TavuRoles&)>& renewed,
    const std::function<void(const CMError&)>& refused)
{
    const TavuRoles asked = withOffset(item.roles, position);
    const CMSetDataRequest request(asked.mediaData().metaData().prePlayPath(),
        QVariantHash{ { TavuRoles::PrePlay(), asked.__variant() } });
    cmchain::whenFinished(withDeadline(request.reply(), renewalDeadlineMs), m_context,
        [this, id = item.id, renewed, refused](const CMReply<QVariant>& reply) {
            const CMError error = reply.error();
            if (error.isSet())
                return refused(error);
            const TavuRoles roles(tavuvariant::toHash(reply.value()));
            Q_EMIT rolesRenewed(id, roles);
            renewed(roles);
        });
    CMRoot()->setDataRequest(request);
}

void RenewingStreamer::setNoNextMedia()
{
    onOwnThread([this] {
        m_nextWanted = false;
        setNext(Item());
        m_inner->setNoNextMedia();
    });
}

void RenewingStreamer::pause()
{
    onOwnThread([this] {
        m_paused = true;
        m_inner->pause();
    });
}

void RenewingStreamer::resume()
{
    onOwnThread([this] {
        m_paused = false;
        if (m_reopenOnResume)
            reopen(m_position);
        else
            m_inner->resume();
    });
}

void RenewingStreamer::stop()
{
    onOwnThread([this] {
        m_present = Item();
        m_nextWanted = false;
        setNext(Item());
        m_inner->stop();
    });
}

void RenewingStreamer::seekTime(qint64 position)
{
    onOwnThread([this, position] {
        m_position = position;
        if (m_present.reopenedAt)
            m_present.reopenedAt = position;
        m_inner->seekTime(position);
    });
}

void RenewingStreamer::renewIfExpired(const std::function<void(const CMError&)>& done)
{
    if (m_present.id == 0 || !resourceExpired(m_present.roles) || !renewable(m_present.roles))
        return done(CMError());
    const quint64 id = m_present.id;
    renew(
        m_present, m_position,
        [this, id, done](const TavuRoles& roles) {
            if (isPresent(id)) {
                m_present.take(roles);
                m_reopenOnResume = true;
            }
            done(CMError());
        },
        done);
}

void RenewingStreamer::reopen(qint64 position)
{
    m_reopenOnResume = false;
    m_inner->play(m_present.id, startingAt(m_present.roles, position), m_present.attributes);
    // The next one may have been prepared as long ago.
    if (m_next.id != 0)
        handOver(m_next, true);
}

/// A pause stays one: the stream behind is opened when the user wants to hear it.
void RenewingStreamer::goOnRenewed()
{
    if (m_paused)
        m_reopenOnResume = true;
    else
        reopen(m_position);
}

void RenewingStreamer::on_inner_mediaStarted(quint64 id)
{
    if (id != 0 && id == m_next.id) {
        m_present = m_next;
        setNext(Item());
        m_position = 0;
        m_reopenOnResume = false;
    }
    if (!isPresent(id) || std::exchange(m_present.started, true))
        return;
    // Whoever gave the item need not know that it starts somewhere within.
    if (m_position > 0)
        Q_EMIT positionChanged(id, m_position);
    Q_EMIT mediaStarted(id);
}

void RenewingStreamer::on_inner_positionChanged(quint64 id, qint64 position)
{
    if (isPresent(id)) {
        m_position = position;
        if (m_present.reopenedAt && position >= *m_present.reopenedAt + soundsMs)
            m_present.reopenedAt.reset();
    }
    Q_EMIT positionChanged(id, position);
}

void RenewingStreamer::on_inner_nextMediaWanted(quint64 id)
{
    m_nextWanted = m_nextWanted || isPresent(id);
    Q_EMIT nextMediaWanted(id);
}

void RenewingStreamer::on_inner_ended(quint64 id)
{
    if (isPresent(id))
        m_present = Item();
    Q_EMIT ended(id);
}

void RenewingStreamer::on_inner_failed(quint64 id, const CMError& error)
{
    const bool mayHelp = isPresent(id) && m_present.started && !m_present.reopenedAt
        && renewable(m_present.roles) && refusedByServer(error);
    if (!mayHelp) {
        if (id != 0 && id == m_next.id)
            setNext(Item());
        Q_EMIT failed(id, error);
        return;
    }
    m_present.reopenedAt = m_position;
    // The node renews what has expired; the server says that this has, whatever the clock says.
    TavuRoles expired = m_present.roles;
    TavuMediaData media = expired.mediaData();
    TavuResource resource = media.firstResource();
    resource.setValidUntil(0);
    TavuList<TavuResource> resources;
    resources.append(resource);
    media.setResources(resources);
    expired.setMediaData(media);
    m_present.roles = expired;
    renew(
        m_present, m_position,
        [this, id](const TavuRoles& roles) {
            if (!isPresent(id))
                return;
            m_present.take(roles);
            goOnRenewed();
        },
        [this, id, error](const CMError&) { Q_EMIT failed(id, error); });
}

} // namespace player
