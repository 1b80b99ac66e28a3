#include "amazonMusicReporter.h"

#include "amazonMusicConnect.h"
#include "amazonMusicLog.h"
#include "cmvalueitem.h"
#include "tavujson.h"
#include "tavupaths.h"

#include <QDateTime>

namespace {

constexpr int ok = 200;
constexpr int conflict = 409;

QString wallClockTime()
{
    AMAZON_MUSIC_ENTER();
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
}

/// What all reports have in common, in the order in which the service documents it.
TavuAmazonMusicPlaybackEventReport playbackEvent(
    const QString& event, qint64 positionMs, bool directed, bool shuffle)
{
    AMAZON_MUSIC_ENTER();
    TavuAmazonMusicPlaybackEventReport report;
    report.setEvent(event);
    report.setWallClockTime(wallClockTime());
    report.setTrackPosition(positionMs);
    report.setPlaybackDelay(0);
    report.setIsDirectedPlay(directed);
    report.setIsShufflePlay(shuffle);
    report.setCacheHitStatus(true);
    report.setSource(QStringLiteral("UNKNOWN"));
    report.setTransferSpeedBPS(0);
    return report;
}

/// The record that the answer calls its result.
TavuHash resultOf(const TavuHash& collection, const QString& result)
{
    AMAZON_MUSIC_ENTER();
    const QString key = result.startsWith(QLatin1Char('#')) ? result.mid(1) : result;
    return TavuHash(tavuvariant::toHash(collection.__value(key)));
}

AmazonMusicReporter::Response responseTo(const HttpClient::Result& result)
{
    AMAZON_MUSIC_ENTER();
    AmazonMusicReporter::Response response;
    response.error = result.code != ok;
    return response;
}

} // namespace

AmazonMusicReporter::AmazonMusicReporter(QObject* parent, AmazonMusicConnect* connect)
    : QObject(parent)
    , m_connect(connect)
    , m_playerModeItem(new CMValueItem(this, TavuPlayerPlayModePath(), this,
          SLOT(on_playerModeItem_changed(TavuValue)), Qt::AutoConnection))
{
    AMAZON_MUSIC_ENTER();
    qRegisterMetaType<Response>("AmazonMusicReporter::Response");
}

AmazonMusicReporter::~AmazonMusicReporter()
{
    AMAZON_MUSIC_ENTER();
}

CMReply<AmazonMusicReporter::Response> AmazonMusicReporter::userReportPlay(
    const TavuUrl& url, TavuAmazonMusicEventReason::Enum reason, bool directed, qint64 positionMs)
{
    AMAZON_MUSIC_ENTER_WITH("userPlay");
    TavuAmazonMusicPlaybackEventReport report =
        playbackEvent(TavuAmazonMusicEvent::Start(), positionMs, directed, m_shuffle);
    report.setRebufferCount(0);
    report.setReason(TavuAmazonMusicEventReason::toString(reason));
    return send(
        url, "userReportPlay", [&] { return m_connect->sendReport(url, report); },
        &AmazonMusicReporter::userReportPlayFinished);
}

CMReply<AmazonMusicReporter::Response> AmazonMusicReporter::userReportStop(
    const TavuUrl& url, TavuAmazonMusicEventReason::Enum reason, bool directed, qint64 positionMs)
{
    AMAZON_MUSIC_ENTER_WITH("userStop");
    TavuAmazonMusicPlaybackEventReport report =
        playbackEvent(TavuAmazonMusicEvent::Stop(), positionMs, directed, m_shuffle);
    report.setRebufferCount(0);
    report.setReason(TavuAmazonMusicEventReason::toString(reason));
    return send(
        url, "userReportStop", [&] { return m_connect->sendReport(url, report); },
        &AmazonMusicReporter::userReportStopFinished);
}

CMReply<AmazonMusicReporter::Response> AmazonMusicReporter::userReportUnderrun(
    const TavuUrl& url, bool started, qint64 positionMs, qint32 rebufferCount)
{
    AMAZON_MUSIC_ENTER_WITH("Underrun");
    // Seen from the listener: playback stops when an underrun starts.
    TavuAmazonMusicPlaybackEventReport report =
        playbackEvent(started ? TavuAmazonMusicEvent::Stop() : TavuAmazonMusicEvent::Start(),
            positionMs, false, m_shuffle);
    report.setRebufferCount(rebufferCount);
    report.setReason(TavuAmazonMusicEventReason::BufferUnderflow());
    return send(
        url, "userReportUnderrun", [&] { return m_connect->sendReport(url, report); },
        &AmazonMusicReporter::userReportUnderrunFinished);
}

CMReply<AmazonMusicReporter::Response> AmazonMusicReporter::userSelectAction(const TavuUrl& url)
{
    AMAZON_MUSIC_ENTER();
    return send(
        url, "userSelectAction", [&] { return m_connect->sendUserSelect(url); },
        &AmazonMusicReporter::userSelectActionFinished);
}

CMReply<AmazonMusicReporter::Response> AmazonMusicReporter::userRating(
    const TavuUrl& url, TavuAmazonMusicThumbRating::Enum rating, qint64 positionMs)
{
    AMAZON_MUSIC_ENTER();
    TavuAmazonMusicTrackRatingRequest request;
    request.setTrackPosition(positionMs);
    request.setWallClockTime(wallClockTime());
    request.setThumbRating(TavuAmazonMusicThumbRating::toString(rating));
    return send(
        url, "userRating", [&] { return m_connect->sendRating(url, request); },
        &AmazonMusicReporter::userRatingFinished);
}

void AmazonMusicReporter::cancel()
{
    AMAZON_MUSIC_ENTER();
    // A snapshot, as each reply leaves the set while it is cancelled.
    const QList<CMReply<Response>> replies = m_outstandingReplies.values();
    for (const CMReply<Response>& reply : replies)
        reply.cancel();
}

void AmazonMusicReporter::on_playerModeItem_changed(const TavuValue& value)
{
    AMAZON_MUSIC_ENTER();
    switch (value.playerPlayMode()) {
    case TavuPlayerPlayMode::Normal:
    case TavuPlayerPlayMode::RepeatOne:
    case TavuPlayerPlayMode::RepeatAll:
        m_shuffle = false;
        break;
    case TavuPlayerPlayMode::Shuffle:
    case TavuPlayerPlayMode::ShuffleRepeatAll:
        m_shuffle = true;
        break;
    case TavuPlayerPlayMode::ShuffleRepeatOne:
        // One track over and over is neither; what was said of the play before stays.
        break;
    }
}

void AmazonMusicReporter::userReportPlayFinished(
    const HttpClient::Result& result, const CMReply<Response>& reply)
{
    AMAZON_MUSIC_ENTER();
    Response response = responseTo(result);
    if (result.code == conflict) {
        const TavuAmazonMusicErrors errors(tavuvariant::toHash(TavuJson::parse(result.data)));
        response.errorReport = resultOf(errors.generalErrorReports(), errors.result());
    } else if (result.code != ok) {
        LOG4CPLUS_WARN(logger(),
            "User report play failed with http code: " << result.code
                                                       << " status: " << result.error);
    }
    reply.setValue(response);
}

void AmazonMusicReporter::userReportStopFinished(
    const HttpClient::Result& result, const CMReply<Response>& reply)
{
    AMAZON_MUSIC_ENTER();
    if (result.code != ok)
        LOG4CPLUS_WARN(logger(),
            "User report stop failed with http code: " << result.code
                                                       << " status: " << result.error);
    reply.setValue(responseTo(result));
}

void AmazonMusicReporter::userReportUnderrunFinished(
    const HttpClient::Result& result, const CMReply<Response>& reply)
{
    AMAZON_MUSIC_ENTER();
    if (result.code != ok)
        LOG4CPLUS_WARN(logger(), "User report underrun failed with http code: " << result.code);
    else
        LOG4CPLUS_DEBUG(logger(), "Underrun, successfully reported");
    reply.setValue(responseTo(result));
}

void AmazonMusicReporter::userSelectActionFinished(
    const HttpClient::Result& result, const CMReply<Response>& reply)
{
    AMAZON_MUSIC_ENTER();
    if (result.code != ok)
        LOG4CPLUS_WARN(logger(),
            "User select action failed with http code: " << result.code
                                                         << " status: " << result.error);
    reply.setValue(responseTo(result));
}

void AmazonMusicReporter::userRatingFinished(
    const HttpClient::Result& result, const CMReply<Response>& reply)
{
    AMAZON_MUSIC_ENTER();
    Response response = responseTo(result);
    if (response.error) {
        const TrString message(TrCharData(trExtractContext("AmazonMusicReporter"),
                                   "Server response with code: %1, status: %2"),
            { QString::number(result.code), HttpClient::toString(result.error) });
        response.ratingResponse.setMessage(message.toString());
    } else {
        const TavuAmazonMusicRatings ratings(tavuvariant::toHash(TavuJson::parse(result.data)));
        response.ratingResponse = resultOf(ratings.trackRatingResponses(), ratings.result());
    }
    reply.setValue(response);
}

CMReply<AmazonMusicReporter::Response> AmazonMusicReporter::send(
    const TavuUrl& url, const char* operation, const Send& send, Finished finished)
{
    AMAZON_MUSIC_ENTER();
    CMReply<Response> reply = createReply();
    if (url.isEmpty()) {
        LOG4CPLUS_WARN(logger(), operation << " empty report url");
        reply.setValue(Response());
        return reply;
    }
    cmchain::onSuccess(
        send(), m_context, [this, reply, finished](const HttpClient::Result& result) {
            (this->*finished)(result, reply);
        });
    return reply;
}

CMReply<AmazonMusicReporter::Response> AmazonMusicReporter::createReply()
{
    AMAZON_MUSIC_ENTER();
    auto reply = CMReply<Response>::create();
    m_outstandingReplies.insert(reply);
    cmchain::whenFinished(reply, m_context,
        [this](const CMReply<Response>& finished) { m_outstandingReplies.remove(finished); });
    return reply;
}
