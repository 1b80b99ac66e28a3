#include "amazonMusicPlayLogic.h"

#include "amazonMusicConnect.h"
#include "amazonMusicLog.h"
#include "amazonMusicPlayQueue.h"

// Which track plays next: the walk along the queue to one that can be played.

namespace {

CMError error(const char* message, const QList<TrArg>& args = {})
{
    AMAZON_MUSIC_ENTER();
    return CMError(TrString(TrCharData(trExtractContext("AmazonMusicPlayLogic"), message), args));
}

void fail(const CMReply<AmazonMusicTrack>& result, const CMError& error)
{
    AMAZON_MUSIC_ENTER();
    LOG4CPLUS_ERROR(logger(), error.message());
    result.setError(error);
}

CMReply<AmazonMusicTrack> finished(const AmazonMusicTrack& track)
{
    AMAZON_MUSIC_ENTER();
    auto reply = CMReply<AmazonMusicTrack>::create();
    reply.setValue(track);
    return reply;
}

CMReply<AmazonMusicTrack> nothingPlays()
{
    AMAZON_MUSIC_ENTER();
    auto reply = CMReply<AmazonMusicTrack>::create();
    reply.setError(error("Nothing is playing"));
    return reply;
}

/// Why the track cannot be played; no error when it can.
CMError problemOf(const AmazonMusicTrack& track, const TavuAmazonMusicTrackDefinition& definition)
{
    AMAZON_MUSIC_ENTER();
    const TavuAmazonMusicGeneralErrorReport report = definition.errorInst();
    if (!report.isEmpty()) {
        LOG4CPLUS_WARN(logger(), "Cannot play current track: " << report.brief());
        return error("Error: %1", { report.brief() });
    }
    if (definition.audio().uri().isEmpty()) {
        LOG4CPLUS_WARN(logger(), "Cannot play current track: Missing track uri");
        return error("Error: Missing track uri");
    }
    if (track.expired()) {
        LOG4CPLUS_WARN(logger(), "Cannot play current track: Track uri expired");
        return error("Error: Track already expired");
    }
    return CMError();
}

} // namespace

CMReply<AmazonMusicTrack> AmazonMusicPlayLogic::getTrack(
    Direction direction, bool shuffle, bool wrap)
{
    AMAZON_MUSIC_ENTER();
    auto result = CMReply<AmazonMusicTrack>::create();
    const auto fetched = direction == Current && m_currentTrack.isSet()
        ? finished(m_currentTrack)
        : stepFrom(m_currentTrack, { direction, shuffle, wrap, 0 });
    cmchain::whenFinished(fetched, m_context,
        [this, result, direction, shuffle, wrap](const CMReply<AmazonMusicTrack>& received) {
            trackReceived(result, received, direction, shuffle, wrap);
        });
    return result;
}

/// The neighbour of `track`, or the first of the queue when no direction is asked for.
CMReply<AmazonMusicTrack> AmazonMusicPlayLogic::stepFrom(
    const AmazonMusicTrack& track, const Walk& walk)
{
    AMAZON_MUSIC_ENTER();
    // Held: whoever hears of a reply may end the play.
    const QSharedPointer<AmazonMusicPlayQueue> queue = m_playQueue;
    if (!queue)
        return nothingPlays();
    switch (walk.direction) {
    case Next:
        return queue->getNextTrack(track, walk.shuffle, walk.wrap);
    case Previous:
        return queue->getPreviousTrack(track, walk.shuffle, walk.wrap);
    case Current:
        break;
    }
    return queue->getFirstTrack();
}

void AmazonMusicPlayLogic::trackReceived(const CMReply<AmazonMusicTrack>& result,
    const CMReply<AmazonMusicTrack>& fetched, Direction direction, bool shuffle, bool wrap)
{
    AMAZON_MUSIC_ENTER();
    walkTracks(result, fetched, { direction, shuffle, wrap, 0 });
}

/// A loop over the tracks that are there, since a long run of tracks that do not play must not nest
/// calls; a track that is still on its way goes on from the event loop.
void AmazonMusicPlayLogic::walkTracks(
    const CMReply<AmazonMusicTrack>& result, const CMReply<AmazonMusicTrack>& fetched, Walk walk)
{
    AMAZON_MUSIC_ENTER();
    CMReply<AmazonMusicTrack> track = fetched;
    while (track.isFinished()) {
        ++walk.tried;
        track = tryTrack(result, track, walk);
        if (!track)
            return;
    }
    cmchain::whenFinished(
        track, m_context, [this, result, walk](const CMReply<AmazonMusicTrack>& received) {
            walkTracks(result, received, walk);
        });
}

/// Completes `result`, or returns the track to try next.
CMReply<AmazonMusicTrack> AmazonMusicPlayLogic::tryTrack(const CMReply<AmazonMusicTrack>& result,
    const CMReply<AmazonMusicTrack>& fetched, const Walk& walk)
{
    AMAZON_MUSIC_ENTER();
    if (fetched.error().isSet()) {
        result.setError(fetched.error());
        return {};
    }
    AmazonMusicTrack track = fetched.value();
    const TavuAmazonMusicTrackDefinition definition = track.trackInstance().trackDefinitionInst();
    if (definition.isEmpty()) {
        fail(result, error("Missing track definition"));
        return {};
    }
    const CMError problem = problemOf(track, definition);
    if (!problem.isSet()) {
        track.setToken(m_connect->getToken());
        result.setValue(track);
        return {};
    }
    if (!definition.autoSkipOnError() || !mayWalkOn(walk)) {
        fail(result, problem);
        return {};
    }
    LOG4CPLUS_WARN(logger(), "Cannot play current track, skipping to next track");
    Q_EMIT mediaSkipped(track.tavuRoles(), problem);
    return stepFrom(track, walk);
}

/// Once round the queue at most: what did not play the first time will not the second.
bool AmazonMusicPlayLogic::mayWalkOn(const Walk& walk) const
{
    AMAZON_MUSIC_ENTER();
    return walk.direction != Current && !m_playQueue.isNull() && walk.tried < m_playQueue->size();
}
