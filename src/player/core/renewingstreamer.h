#pragma once

#include "cmchain.h"
#include "streamer.h"

#include <functional>
#include <optional>

namespace player {

/// Never hands a dead URL to the streamer behind it. An item whose first resource has expired, and
/// which names a pre-play path, is sent through that node first, with the position as time offset,
/// and plays on with the answer at that position. The same happens, once for an item's failure,
/// when its stream is refused (401, 403, 404, 410) while it plays. To those who listen it stays the
/// same playback: no second started notification, and the position runs on.
///
/// Lives on the thread of the streamer behind it; commands may come from any thread.
class RenewingStreamer : public Streamer
{
    Q_OBJECT

public:
    /// `inner` is not owned and must outlive this object.
    explicit RenewingStreamer(Streamer* inner, QObject* parent = nullptr);
    ~RenewingStreamer() override;

    void play(quint64 id, const TavuRoles& roles, const QVariantHash& attributes) override;
    void setNextMedia(quint64 id, const TavuRoles& roles, const QVariantHash& attributes) override;
    void setNoNextMedia() override;
    void pause() override;
    void resume() override;
    void stop() override;
    void seekTime(qint64 position) override;

    /// The next item that play() gets starts at the position, ms, if it is this track; an empty one
    /// takes that back. On this object's thread.
    void startAt(const TavuRoles& track, qint64 position);

    /// Whether the item that follows has been asked for and is still to come. On this object's
    /// thread.
    bool awaitsNext() const { return m_nextWanted; }

    /// Renews the present item if its resource has expired, and calls `done` then, with the error
    /// if that failed. rolesRenewed() has been sent before. Call it before a resume, on this
    /// object's thread.
    void renewIfExpired(const std::function<void(const CMError&)>& done);

Q_SIGNALS:
    /// What follows the present item without a gap; empty for nothing. It may yet fail or be
    /// replaced.
    void nextMediaChanged(const TavuRoles& roles);

private:
    struct Item
    {
        quint64 id = 0; // 0 is no item.
        TavuRoles roles;
        QVariantHash attributes;
        bool started = false;
        /// Where it was re-opened after a failure, ms, until it has sounded on from there.
        std::optional<qint64> reopenedAt = std::nullopt;

        void take(const TavuRoles& renewed);
    };

    void onOwnThread(const std::function<void()>& function);
    void handOver(Item& item, bool next);
    void setNext(const Item& next);
    void renew(const Item& item, qint64 position,
        const std::function<void(const TavuRoles&)>& renewed,
        const std::function<void(const CMError&)>& refused);
    void reopen(qint64 position);
    void goOnRenewed();
    bool isPresent(quint64 id) const { return id != 0 && id == m_present.id; }

    void on_inner_mediaStarted(quint64 id);
    void on_inner_positionChanged(quint64 id, qint64 position);
    void on_inner_nextMediaWanted(quint64 id);
    void on_inner_ended(quint64 id);
    void on_inner_failed(quint64 id, const CMError& error);

    Streamer* m_inner;
    Item m_present;
    Item m_next;
    bool m_nextWanted = false;
    qint64 m_position = 0;
    bool m_paused = false;
    bool m_reopenOnResume = false;
    TavuRoles m_startTrack;
    qint64 m_startPosition = 0;
    CMContext m_context;
};

/// Whether the first resource of the roles has an end and has reached it.
bool resourceExpired(const TavuRoles& roles);

} // namespace player
