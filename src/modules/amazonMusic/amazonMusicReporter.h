#pragma once

#include "cmchain.h"
#include "cmreply.h"
#include "httpclient.h"
#include "tavuamazonmusic.h"
#include "tavuamazonmusicvocabulary.h"
#include "tavuurl.h"
#include "tavuvalue.h"

#include <QMetaType>
#include <QObject>
#include <QSet>

#include <functional>

class AmazonMusicConnect;
class CMValueItem;

/// Tells the service what the player did: each operation posts one report to a URL that the service
/// gave and returns at once. Its reply ends with a value whatever the service answers, so that
/// playback goes on; only cancel() ends it with an error. Without a URL nothing is sent and the
/// reply is finished, with an empty response, when the call returns. Everything runs on the thread
/// that made the object. Positions are milliseconds into the track.
class AmazonMusicReporter : public QObject
{
    Q_OBJECT

public:
    struct Response
    {
        /// The service answered with another code than 200.
        bool error = false;
        /// The message with which the service refused a play report; else empty.
        TavuAmazonMusicGeneralErrorReport errorReport;
        /// The answer to a rating, or a message about its failure in its place; else empty.
        TavuAmazonMusicTrackRatingResponse ratingResponse;
    };

    /// `connect` is not owned.
    AmazonMusicReporter(QObject* parent, AmazonMusicConnect* connect);
    ~AmazonMusicReporter() override;

    /// Playback started. `directed` is whether the user asked for it.
    CMReply<Response> userReportPlay(const TavuUrl& url, TavuAmazonMusicEventReason::Enum reason,
        bool directed, qint64 positionMs);
    /// Playback stopped. `directed` is whether the user asked for it.
    CMReply<Response> userReportStop(const TavuUrl& url, TavuAmazonMusicEventReason::Enum reason,
        bool directed, qint64 positionMs);
    /// The buffer ran dry (`started`), or playback runs again. `rebufferCount` counts the times.
    CMReply<Response> userReportUnderrun(
        const TavuUrl& url, bool started, qint64 positionMs, qint32 rebufferCount);
    /// The user, or playback on the user's behalf, chose an option of an error report.
    CMReply<Response> userSelectAction(const TavuUrl& url);
    CMReply<Response> userRating(
        const TavuUrl& url, TavuAmazonMusicThumbRating::Enum rating, qint64 positionMs);

    /// Cancels every unfinished reply. What was sent is not called back.
    void cancel();

public Q_SLOTS:
    void on_playerModeItem_changed(const TavuValue& value);

private:
    void userReportPlayFinished(const HttpClient::Result& result, const CMReply<Response>& reply);
    void userReportStopFinished(const HttpClient::Result& result, const CMReply<Response>& reply);
    void userReportUnderrunFinished(
        const HttpClient::Result& result, const CMReply<Response>& reply);
    void userSelectActionFinished(const HttpClient::Result& result, const CMReply<Response>& reply);
    void userRatingFinished(const HttpClient::Result& result, const CMReply<Response>& reply);

    using Send = std::function<CMReply<HttpClient::Result>()>;
    using Finished = void (AmazonMusicReporter::*)(
        const HttpClient::Result&, const CMReply<Response>&);

    CMReply<Response> send(
        const TavuUrl& url, const char* operation, const Send& send, Finished finished);
    CMReply<Response> createReply();

    AmazonMusicConnect* m_connect;
    bool m_shuffle = false; // The player is in a shuffle mode.
    CMValueItem* m_playerModeItem; // Owned.
    QSet<CMReply<Response>> m_outstandingReplies;
    CMContext m_context;
};

Q_DECLARE_METATYPE(AmazonMusicReporter::Response)
