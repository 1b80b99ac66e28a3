#pragma once

#include "player.h"
#include "statefile.h"

#include <QThreadPool>
#include <QTimer>

namespace player {

/// Keeps what plays and how on the disk, so that neither a kill nor a power cut loses more than
/// ten seconds of the position: each change is written a moment after it happens, on a thread that
/// may wait for the disk. Its end waits for that, and writes once more.
class StateKeeper : public QObject
{
    Q_OBJECT

public:
    /// `player` must outlive the keeper. `origin` is the service's base URL.
    StateKeeper(Player* player, const QString& fileName, const QString& origin);
    ~StateKeeper() override;

    /// Gives the player back what was kept. Once.
    void restore();
    /// Keeps what the player does from now on. Until then the file stays as it is, so that a start
    /// that fails loses nothing. Once, after restore().
    void begin();
    /// Whether something played, rather than was paused, when the player ended.
    bool wasPlaying() const { return m_wasPlaying; }

private:
    void apply(const KeptState& state);
    void chooseOutput(const QString& id);
    KeptState present() const;
    void followPosition();
    void saveIfChanged();
    void save();
    void on_saved(const KeptState& state, const QString& error);
    void tellFailure(const QString& error);

    Player* m_player;
    const StateFile m_file;
    const QString m_origin;
    const QString m_configuredOutput;
    bool m_wasPlaying = false;
    bool m_begun = false;
    bool m_told = false; // That saving fails.
    bool m_saving = false;
    bool m_changed = false; // While it was being saved.
    KeptState m_saved;
    QThreadPool m_disk; // One thread, and none while there is nothing to write.
    QTimer m_soon;
    QTimer m_positionDue; // Runs while something plays.
};

} // namespace player
