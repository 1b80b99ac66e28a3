#include "player.h"

// How the player goes to sleep.

namespace player {

SleepTimer::Hands Player::sleepHands()
{
    return { [this](double part) { m_audio->setFade(part); },
        [this] {
            if (m_data.state() != TavuPlayLogicState::Paused)
                command(Command::TogglePause);
        },
        [this] { return remaining(); } };
}

void Player::setSleep(int ms, bool finishTrack)
{
    if (ms > 0)
        m_sleep.start(ms, finishTrack);
    else
        m_sleep.cancel();
}

} // namespace player
