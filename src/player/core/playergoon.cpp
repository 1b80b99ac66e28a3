#include "player.h"

#include "deadline.h"
#include "playlogicinterface.h"
#include "renewingstreamer.h"

// A queue has all its addresses from one answer. Once they have expired it ends behind the track
// that plays, though its list would go on: then the player itself goes on, with the list.

namespace player {

namespace {

constexpr qint64 lastMoments = 500; // Of a track, ms.

bool repeatsOne(TavuPlayerPlayMode::Enum mode)
{
    return mode == TavuPlayerPlayMode::RepeatOne || mode == TavuPlayerPlayMode::ShuffleRepeatOne;
}

bool repeats(TavuPlayerPlayMode::Enum mode)
{
    return repeatsOne(mode) || mode == TavuPlayerPlayMode::RepeatAll
        || mode == TavuPlayerPlayMode::ShuffleRepeatAll;
}

} // namespace

/// From a track to its neighbour. A play logic answers before it knows the track, and always steps
/// from the one that sounds: until that has changed a further wish for the next one is the same.
CMReply<QVariant> Player::step(Command command)
{
    giveUpResume();
    const bool again = isStepping() && m_step == command;
    if (isGoingOn() || (command == Command::Next && (again || isAboutToGoOn())))
        return done();
    m_step = command;
    m_stepAge.start();
    PlayLogicInterface* logic = playLogic();
    return command == Command::Next ? logic->next() : logic->previous();
}

/// The track is over, and the next one, which is being fetched, starts by itself.
bool Player::isAboutToGoOn() const
{
    const qint64 duration = m_data.trackRoles().mediaData().firstResource().duration();
    return m_awaitsNext && m_awaitsNext() && duration > 0 && m_position >= duration - lastMoments;
}

bool Player::isStepping() const
{
    return m_step && m_stepAge.elapsed() < answerDeadlineMs;
}

void Player::notePlayed(const TavuPlayLogicData& before)
{
    const bool plays = m_data.state() == TavuPlayLogicState::Playing;
    m_sounded = m_sounded || plays;
    if (plays && before.state() == TavuPlayLogicState::Buffering)
        m_step.reset();
    const TavuRoles track = m_data.trackRoles();
    const TavuRoles last = before.trackRoles();
    if (track.isEmpty() || last.isEmpty())
        return;
    if (track.path() != last.path()) {
        m_step.reset();
        tellPassedOver();
    } else if (track.mediaData().firstResource().validUntil()
        != last.mediaData().firstResource().validUntil()) {
        m_aged.setRenewed();
    }
}

void Player::noteEnd(const TavuPlayLogicData& before, qint64 position)
{
    m_step.reset();
    const bool begins = !isGoingOn() && !isResuming() && hasLostToAge(before.trackRoles(), false);
    if (!isGoingOn() && !begins) {
        m_source.clear();
        return tellPassedOver();
    }
    // Nobody is to see that nothing plays for a moment.
    m_restored = before;
    m_restored.setState(TavuPlayLogicState::Buffering);
    m_restoredPosition = position;
    if (begins)
        goOn(before.trackRoles(), false);
}

/// The tracks of a station are in no list; after one of them the station begins anew.
bool Player::mayGoOnItself() const
{
    return isSignedIn() && !m_source.page().isEmpty() && (!m_source.station() || m_alone);
}

bool Player::hasLostToAge(const TavuRoles& last, bool stepped) const
{
    if (!mayGoOnItself() || !m_sounded || last.isEmpty())
        return false;
    if (m_source.station() || !m_aged.firstPassedOver(stepped).isEmpty())
        return true;
    return repeats(m_mode) && (m_aged.isRenewed() || resourceExpired(last));
}

/// What the queue would have gone on with.
TavuRoles Player::following(const TavuRoles& last, bool stepped) const
{
    const TavuRoles passedOver = m_aged.firstPassedOver(stepped);
    const bool again = passedOver.isEmpty() || (!stepped && repeatsOne(m_mode));
    return again ? last : passedOver;
}

void Player::goOn(const TavuRoles& last, bool stepped)
{
    m_sounded = false;
    RowSearch::Wanted wanted;
    wanted.page = m_source.page();
    wanted.firstPage = m_source.firstPage();
    wanted.start = RowSearch::rowOf(last);
    wanted.row = RowSearch::rowOf(following(last, stepped));
    if (m_source.station()) {
        TavuRoles station;
        station.setTitle(m_source.row());
        wanted.start = wanted.row = RowSearch::rowOf(station);
    }
    m_goingOn = withDeadline(m_search.find(wanted), RowSearch::deadlineMs);
    cmchain::whenFinished(m_goingOn, m_context, [this](const CMReply<QVariant>& found) {
        if (found == m_goingOn)
            goOnWith(found);
    });
}

void Player::goOnWith(const CMReply<QVariant>& found)
{
    const TavuRoles row(found.value().toHash());
    if (row.isEmpty()) {
        const bool toldOfStep = m_stepFailure.isSet();
        giveUpGoingOn();
        if (found.error().isSet() && !toldOfStep)
            tellFailure(found.error());
        return;
    }
    if (m_startAt)
        m_startAt(TavuRoles(), 0);
    m_history.goOnWith(row);
    cmchain::whenFinished(playRow(ListedRows::withoutMark(row), m_source), m_context,
        [this, found](const CMReply<QVariant>& play) {
            if (found != m_goingOn)
                return;
            m_stepFailure.clear(); // If the play failed its own error has been told.
            if (play.error().isSet())
                giveUpGoingOn();
            else
                stopGoingOn();
        });
}

void Player::stopGoingOn()
{
    m_stepFailure.clear();
    const CMReply<QVariant> goingOn = std::exchange(m_goingOn, CMReply<QVariant>());
    if (!!goingOn)
        goingOn.cancel();
}

/// The tracks that were to be played afresh are lost, then.
void Player::giveUpGoingOn()
{
    if (!isGoingOn())
        return;
    const CMError stepFailure = m_stepFailure;
    stopGoingOn();
    tellPassedOver();
    if (m_data.state() == TavuPlayLogicState::Idle) {
        m_source.clear();
        forgetRestored();
    }
    if (stepFailure.isSet())
        tellFailure(stepFailure);
}

/// The listener stops between two tracks: what was to follow follows when it goes on.
void Player::pauseGoingOn()
{
    stopGoingOn();
    if (isRestored())
        showRestoredPaused();
}

void Player::tellPassedOver()
{
    m_aged.tellPassedOver([this](const TavuRoles& track, const CMError& error) {
        m_skipped.add(track.title(), error.message());
    });
}

} // namespace player
