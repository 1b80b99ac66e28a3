#pragma once

#include "streamer.h"
#include "tavuenums.h"

#include <QVector>

#include <atomic>
#include <mutex>

/// A streamer that makes no sound: it records what it is told, and tells what a test has it tell.
/// Commands may come from any thread; everything else belongs to the test's thread.
class RecordingStreamer : public Streamer
{
    Q_OBJECT

public:
    enum class Kind { Play, SetNextMedia, SetNoNextMedia, Pause, Resume, Stop, SeekTime };

    struct Command
    {
        Kind kind = Kind::Stop;
        quint64 id = 0;
        TavuRoles roles;
        QVariantHash attributes;
        qint64 position = 0;
    };

    // What was commanded.
    QVector<Command> commands() const;
    int count(Kind kind) const;
    /// Waits for the first command that no test step has looked at yet. The test fails when it is
    /// of another kind or does not come.
    Command expect(Kind kind);
    /// The test fails when a command is left that no test step has looked at.
    void expectNothing();
    /// Forgets what was commanded; the items handed over stay.
    void forgetCommands();

    // What the streamer tells, about the item given last by play() (the present one) or by
    // setNextMedia() (the next one).
    /// The present item begins to sound.
    void startPresent();
    /// The next item takes over and begins to sound.
    void startNext();
    void tellState(TavuPlayLogicState::Enum state);
    void tellPosition(qint64 position);
    /// As a real streamer does: below 100 % it first goes to buffering.
    void tellBufferLevel(double percent);
    void wantNextMedia();
    void tellEnded();
    void tellFailed(const CMError& error);
    void tellNextFailed(const CMError& error);
    void tellRenewed(const TavuRoles& roles);

    quint64 presentId() const { return m_presentId; }
    quint64 nextId() const { return m_nextId; }

    // Streamer.
    void play(quint64 id, const TavuRoles& roles, const QVariantHash& attributes) override;
    void setNextMedia(quint64 id, const TavuRoles& roles, const QVariantHash& attributes) override;
    void setNoNextMedia() override;
    void pause() override;
    void resume() override;
    void stop() override;
    void seekTime(qint64 position) override;

private:
    void record(const Command& command);

    mutable std::mutex m_mutex;
    QVector<Command> m_commands; // Guarded by m_mutex.
    int m_lookedAt = 0;
    std::atomic<quint64> m_presentId{ 0 };
    std::atomic<quint64> m_nextId{ 0 };
};
