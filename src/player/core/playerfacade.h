#pragma once

#include "cmreply.h"

#include <QObject>
#include <QString>
#include <QVariant>

/// What the player's faces (control API, MPRIS, terminal) may ask of the player, and all that they
/// know of it. They neither see nodes, nor the plug-in, nor the streamer.
///
/// Lives in the main thread; every call and every signal happens there, and no call blocks. What
/// needs the plug-in or the network answers by a reply, which may be finished on any thread, in any
/// order, and already when it is returned, but within answerDeadlineMs whatever the plug-in does;
/// the caller may cancel. A failed reply carries a CMError whose title and message are for people,
/// and whose action reply, when there is one, names the screen to show. What a play command or an
/// activation fails with is told by messageAdded(), too: nobody has to wait for the reply.
///
/// Rows are role hashes as the plug-in made them, service URLs included; a row is passed back as a
/// whole. Hashes use the framework's keys ("title", "path", "mediaData", ...).
class PlayerFacade : public QObject
{
    Q_OBJECT

public:
    enum class Command { TogglePause, Resume, Next, Previous, Stop, Like, Dislike };
    Q_ENUM(Command)

    using QObject::QObject;

    /// No answer to a person takes longer: the plug-in gives up on the service after 30 s.
    static constexpr int answerDeadlineMs = 35000;
    /// The name of the error of a reply that nobody answered in time.
    static QString noAnswerName() { return QStringLiteral("noAnswer"); }

    // Browsing

    /// Rows `from` to `to`, both included and counted from 0, of an encoded path; an empty path is
    /// the root. The value is a hash: "path" (as asked; the root's own for an empty one), "parent"
    /// (row: title, containerType, search, ...), "rows" (list of rows), "from" (of the first row
    /// given), "count" (rows in all, -1 while not known), "version". `from` and `to` are in order
    /// and at most 500 rows apart.
    virtual CMReply<QVariant> rows(const QString& path, int from, int to) = 0;

    /// Activates a row: gives its path the row's roles, or `value` for the row's own role when it
    /// is valid. The value is the receiver's answer: an action reply hash, or an invalid variant.
    virtual CMReply<QVariant> activateRow(const QVariantHash& row, const QVariant& value) = 0;

    /// The same for a path without its row. An empty role means the value as it stands.
    virtual CMReply<QVariant> activatePath(
        const QString& path, const QString& role, const QVariant& value) = 0;

    /// Searches with the query node of `path`, or of the service's search when it is empty. The
    /// value is the encoded path (string) whose rows are the result.
    virtual CMReply<QVariant> search(const QString& text, const QString& path) = 0;

    // Playing. Values are action reply hashes or invalid variants.

    virtual CMReply<QVariant> play(const QVariantHash& row) = 0;
    virtual CMReply<QVariant> command(Command command) = 0;
    /// A position below 0 or behind the end is refused by an error.
    virtual CMReply<QVariant> seek(qint64 positionMs) = 0;

    /// 0 normal, 1 shuffle, 2 repeat one, 3 shuffle + repeat one, 4 repeat all, 5 shuffle + repeat
    /// all. Only these.
    virtual void setPlayMode(int mode) = 0;
    /// 0 to 100. Only these.
    virtual void setVolume(int volume) = 0;
    virtual void setMuted(bool muted) = 0;

    /// Lets the sound fade away and playback pause after so many milliseconds, at most a day, or
    /// when the track ends that plays then; 0 calls that off.
    virtual void setSleep(int ms, bool finishTrack) = 0;

    /// "state" (0 idle, 1 buffering, 2 playing, 3 paused), "position" (ms, at the time "at", ms
    /// since the epoch), "duration" (ms), "title", "artist", "album", "artwork" (URL or empty),
    /// "controls" {pause, next, previous, seek, like, dislike}, "playModes" {shuffle, repeatOne,
    /// repeatAll, shuffleRepeatOne, shuffleRepeatAll}, "mode", "volume", "mute", "bufferLevel",
    /// "error" (null or {title, detail}), "output", "audio" (of what plays, empty while nothing
    /// does; AudioControl::soundPath() has its keys), "sleep" (SleepTimer::state() has its keys),
    /// "rating" (of the track: "up", "down", or empty while the listener has not said; known for
    /// the latest few hundred rated tracks).
    virtual QVariantHash player() const = 0;

    /// What has played and what is known to follow: "from" (row of the album, playlist or station
    /// that somebody chose; empty when it was a single track), "endless" (it ends only when it is
    /// stopped), "played" (the last 50 tracks before the present one, oldest first: hashes of "at",
    /// ISO 8601, and "row"), "current", "next" (rows, empty for none). Rows can be played again.
    /// What follows is known shortly before its turn.
    virtual QVariantHash queue() const = 0;

    // Outputs

    /// Hashes of "id", "name", "selected".
    virtual QVariantList outputs() const = 0;
    /// Returns false, and changes nothing, for an unknown id.
    virtual bool selectOutput(const QString& id) = 0;

    // Login

    /// "state" ("loggedOut", "starting", "waiting", "loggedIn", "failed"), "userCode",
    /// "verificationUri", "verificationUriComplete", "expiresAt" (ISO 8601), "expiresIn" (s),
    /// "message".
    virtual QVariantHash login() const = 0;
    /// Asks for a new code, unless one is being waited on or the user is logged in.
    virtual void startLogin() = 0;
    virtual void logout() = 0;

    // Messages

    /// The last 20, oldest first: "id", "at" (ISO 8601), "kind" ("error", "info", "skipped"),
    /// "title", "text", "rows" (list of rows, optional), "source".
    virtual QVariantList messages() const = 0;

    /// "name" (for people), "version" of the player's program.
    virtual QVariantHash service() const = 0;

Q_SIGNALS:
    void loginChanged();
    /// Anything of player() but the position's even flow.
    void playerChanged();
    void queueChanged();
    /// At least once a second while playing, and at every jump. `at` is ms since the epoch.
    void positionChanged(qint64 positionMs, qint64 at);
    /// Rows at or below the encoded path have changed and are to be asked for again.
    void rowsChanged(const QString& path);
    void outputsChanged();
    void messageAdded(const QVariantHash& message);
};
