#include "player.h"

// What played when the player ended, until something plays again.

namespace player {

void Player::restore(const TavuRoles& row, qint64 position)
{
    TavuPlayLogicControls controls;
    controls.setPause(true);
    controls.setSeekTime(true);
    m_restored.setState(TavuPlayLogicState::Paused);
    m_restored.setControls(controls);
    m_restored.setTrackRoles(row);
    m_restoredPosition = position;
    setPosition(position);
    m_history.follow(shown());
    Q_EMIT playerChanged();
}

bool Player::waitsRestored() const
{
    return isRestored() && m_data.state() == TavuPlayLogicState::Idle;
}

TavuPlayLogicData Player::shown() const
{
    if (!isRestored())
        return m_data;
    TavuPlayLogicData shown = m_restored;
    if (m_data.state() != TavuPlayLogicState::Idle)
        shown.setState(m_data.state());
    return shown;
}

qint64 Player::position() const
{
    return isRestored() ? m_restoredPosition : m_position;
}

CMReply<QVariant> Player::playRestored()
{
    const TavuRoles row = m_restored.trackRoles();
    if (m_startAt)
        m_startAt(row.path(), m_restoredPosition);
    return playRow(row);
}

void Player::forgetRestored()
{
    if (!isRestored())
        return;
    m_restored.clear();
    m_history.follow(shown());
    Q_EMIT playerChanged();
}

} // namespace player
