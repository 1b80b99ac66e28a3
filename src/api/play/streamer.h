#pragma once

#include "cmerror.h"
#include "tavuenums.h"
#include "tavuexport.h"
#include "tavuroles.h"

#include <QObject>
#include <QVariant>

/// Turns play commands into sound: what the player implements for its play logics. Each item handed
/// over has an id of its own, and every notification names the item that it is about, so that late
/// news of a replaced item can be told from news of the present one.
///
/// Commands may be called on any thread; they return at once, take effect in the order given, and
/// never call back from within. Signals are emitted on the streamer's thread.
class TAVU_EXPORT Streamer : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    ~Streamer() override;

    /// The process's streamer; null before the player has set one and after it has gone.
    static Streamer* instance();
    static void setInstance(Streamer* streamer);

    /// The name of errors that concern the sound's way out rather than the item: no other item
    /// would fare better.
    static QString outputErrorName() { return QStringLiteral("outputError"); }

    /// Ends what plays and starts `roles` (the first resource of their media data, at the meta
    /// data's start time). With the attribute TavuStreamerAttributesStartPaused() the item is first
    /// pre-rolled without a sound and begins by itself when it is ready.
    virtual void play(quint64 id, const TavuRoles& roles, const QVariantHash& attributes) = 0;
    /// Prepares the item that follows the present one without a gap. A second call replaces the
    /// item prepared before.
    virtual void setNextMedia(
        quint64 id, const TavuRoles& roles, const QVariantHash& attributes) = 0;
    /// Nothing follows the present item; one prepared before is dropped.
    virtual void setNoNextMedia() = 0;
    virtual void pause() = 0;
    virtual void resume() = 0;
    /// Ends what plays; nothing is notified of it afterwards.
    virtual void stop() = 0;
    /// Milliseconds from the start of the item.
    virtual void seekTime(qint64 position) = 0;

Q_SIGNALS:
    /// The item begins to sound: after play(), and when the prepared item takes over.
    void mediaStarted(quint64 id);
    /// A TavuPlayLogicState other than Idle.
    void stateChanged(quint64 id, int state);
    /// Milliseconds; sent on jumps and a few times a second while playing.
    void positionChanged(quint64 id, qint64 position);
    /// Percent of the buffer, 100.0 when it is full enough to play on. The state is set to
    /// Buffering before a level below 100 is sent; 0 is the underrun.
    void bufferLevelChanged(quint64 id, double percent);
    /// The present item nears its end: it is time to hand over the next one. Sent once an item.
    void nextMediaWanted(quint64 id);
    /// The present item ended and nothing was prepared to follow.
    void ended(quint64 id);
    /// The item cannot be played (any further). Nothing more is notified of it.
    void failed(quint64 id, const CMError& error);
    /// The item's roles were renewed, for instance by a fresh resource.
    void rolesRenewed(quint64 id, const TavuRoles& roles);
};
