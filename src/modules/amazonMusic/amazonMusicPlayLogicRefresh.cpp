#include "amazonMusicPlayLogic.h"

#include "amazonMusicLog.h"
#include "amazonMusicRedact.h"
#include "amazonMusicResource.h"
#include "amazonMusicRetriever.h"

#include <QDateTime>

// Fresh resources in the place of those that have expired: before a play, and when a pause was
// long.

void AmazonMusicPlayLogic::on_prePlay_activated(const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    const TavuRoles roles(tavuvariant::toHash(request.value()));
    const TavuMediaData mediaData = roles.mediaData();
    if (mediaData.resources().isEmpty()) {
        return request.reply().setError(CMError(
            TrString(TrCharData(trExtractContext("AmazonMusicPlayLogic"), "Missing resources"))));
    }
    if (amazonMusicResourceValid(mediaData.firstResource(), QDateTime::currentMSecsSinceEpoch())) {
        LOG4CPLUS_DEBUG(logger(), "Resource still valid");
        return request.reply().setValue(roles.__variant());
    }
    const CMPath data = CMPath::fromEncoded(mediaData.metaData().prePlayData());
    const TavuUrl url = TavuUrl::fromEncoded(data.param(QStringLiteral("url")).toUtf8());
    cmchain::whenFinished(m_retriever->fetchTrackInstance(url), m_context,
        [this, roles, reply = request.reply()](
            const CMReply<TavuAmazonMusicTrackInstance>& instance) {
            updateMediaData(roles, reply, instance);
        });
}

void AmazonMusicPlayLogic::updateMediaData(TavuRoles roles, const CMReply<QVariant>& reply,
    const CMReply<TavuAmazonMusicTrackInstance>& instance)
{
    AMAZON_MUSIC_ENTER();
    const CMError error = instance.error();
    if (error.isSet()) {
        LOG4CPLUS_ERROR(logger(), "Failed to update track resources: " << error);
        return reply.setError(error);
    }
    const qint64 offset = roles.mediaData().metaData().prePlayTimeOffset();
    TavuMediaData mediaData = AmazonMusicTrack(0, 0, instance.value()).tavuRoles().mediaData();
    TavuMetaData metaData = mediaData.metaData();
    metaData.setPrePlayTimeOffset(offset);
    metaData.setStartTime(offset);
    metaData.setAllowSeekTime(true);
    mediaData.setMetaData(metaData);
    roles.setMediaData(mediaData);
    // Made before the log line, as it traces and lines do not nest.
    const TavuMediaData shown = amazonMusicRedact::mediaData(mediaData);
    LOG4CPLUS_DEBUG(logger(), "New media data: " << shown);
    reply.setValue(roles.__variant());
}

void AmazonMusicPlayLogic::userUnpauseTrackReceived(
    const CMSetDataRequest& request, const CMReply<AmazonMusicTrack>& track)
{
    AMAZON_MUSIC_ENTER();
    const CMError error = track.error();
    if (error.isSet()) {
        LOG4CPLUS_ERROR(logger(), "Cannot update current track, stopping, error: " << error);
        sendStopCommand();
        return request.reply().setError(error);
    }
    m_pendingTrack = track.value();
    reportUnpauseEvent(request, true);
}

/// As the player holds it, which may have had it renewed since the play command.
bool AmazonMusicPlayLogic::isCurrentResourceValid() const
{
    AMAZON_MUSIC_ENTER();
    return amazonMusicResourceValid(
        data().trackRoles().mediaData().firstResource(), QDateTime::currentMSecsSinceEpoch());
}
