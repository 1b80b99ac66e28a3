#include "player.h"

#include "deadline.h"

#include <QTimer>

// What played when the player ended, until something plays again.

namespace player {

namespace {

// A picture is not worth more requests.
constexpr int artworkPagesAtMost = 3;

RowSearch::Fits titled(const QString& title)
{
    TavuRoles wanted;
    wanted.setTitle(title);
    return
        [wanted](const TavuRoles& row) { return wanted.title().isEmpty() || isRowOf(row, wanted); };
}

} // namespace

void Player::restore(const TavuRoles& row, qint64 position, const RowSource& source)
{
    m_restored.setTrackRoles(row);
    m_restoredPosition = position;
    m_source = source;
    showRestoredPaused();
    setPosition(position);
}

void Player::showRestoredPaused()
{
    TavuPlayLogicControls controls;
    controls.setPause(true);
    controls.setSeekTime(true);
    m_restored.setState(TavuPlayLogicState::Paused);
    m_restored.setControls(controls);
    m_history.follow(shown());
    Q_EMIT playerChanged();
}

bool Player::waitsRestored() const
{
    return isRestored() && !isGoingOn() && m_data.state() == TavuPlayLogicState::Idle;
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

/// Where its list still has it, the track is played as a row of that, so that the list goes on
/// behind it; else alone.
CMReply<QVariant> Player::playRestored()
{
    auto reply = CMReply<QVariant>::create();
    m_resume = reply;
    if (m_source.page().isEmpty() || m_source.station())
        playRestoredAs(TavuRoles(), reply);
    else
        cmchain::whenFinished(withDeadline(m_search.find(restoredInList()), RowSearch::deadlineMs),
            m_context, [this, reply](const CMReply<QVariant>& found) {
                playRestoredAs(TavuRoles(found.value().toHash()), reply);
            });
    return reply;
}

void Player::playRestoredAs(const TavuRoles& row, const CMReply<QVariant>& reply)
{
    if (reply.isFinished())
        return; // Something else was wanted meanwhile.
    const TavuRoles track = m_restored.trackRoles();
    const bool alone = row.isEmpty();
    if (m_startAt)
        m_startAt(track, m_restoredPosition);
    cmchain::forward(playRow(alone ? track : ListedRows::withoutMark(row), m_source, alone), reply);
}

RowSearch::Wanted Player::restoredInList() const
{
    RowSearch::Wanted wanted;
    wanted.page = m_source.page();
    wanted.firstPage = m_source.firstPage();
    wanted.start = titled(m_source.row());
    wanted.row = RowSearch::rowOf(m_restored.trackRoles());
    return wanted;
}

/// The address of its picture is not kept, but its list shows it.
void Player::fetchRestoredArtwork()
{
    if (!isSignedIn() || !waitsRestored() || m_source.page().isEmpty()
        || !m_restored.trackRoles().icon().isEmpty())
        return;
    RowSearch::Wanted wanted = restoredInList();
    if (m_source.station())
        wanted.row = titled(m_source.row());
    wanted.pagesAtMost = artworkPagesAtMost;
    cmchain::onSuccess(m_search.find(wanted), m_context,
        [this, track = m_restored.trackRoles()](const QVariant& row) {
            if (m_restored.trackRoles() != track)
                return;
            TavuRoles pictured = track;
            pictured.setIcon(TavuRoles(row.toHash()).icon());
            m_restored.setTrackRoles(pictured);
            Q_EMIT playerChanged();
        });
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
