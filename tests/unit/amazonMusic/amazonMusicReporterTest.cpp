#include "amazonMusicReporter.h"

#include "amazonMusicConnect.h"
#include "logcapture.h"
#include "replies.h"
#include "serviceDocuments.h"
#include "servicescript.h"
#include "testhost.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace serviceDocuments;
using Reason = TavuAmazonMusicEventReason;
using Response = AmazonMusicReporter::Response;

const QString ok = HttpClient::toString(HttpClientStatus::Ok);

class AmazonMusicReporterTest : public testing::Test
{
protected:
    AmazonMusicReporterTest()
    {
        m_host.setBaseUrl(m_service.baseUrl());
        m_host.setToken(QStringLiteral("token"));
        m_connect = std::make_unique<AmazonMusicConnect>();
        m_connect->setLoggedIn(true);
        m_reporter = std::make_unique<AmazonMusicReporter>(nullptr, m_connect.get());
        settle();
        m_url = m_service.url(QStringLiteral("/events/1"));
    }

    void setPlayMode(int mode)
    {
        m_host.setPlayMode(static_cast<TavuPlayerPlayMode::Enum>(mode));
        settle();
    }

    /// Whether a report sent now says that playback is shuffled.
    bool saysShuffle()
    {
        m_reporter->userReportStop(m_url, Reason::Stop, true, 0);
        const ServiceRequest request = m_service.expectRequest("POST", "/events/1");
        m_service.answer(200);
        return request.json().value(QStringLiteral("isShufflePlay")).toBool();
    }

    ServiceScript m_service;
    TestHost m_host;
    std::unique_ptr<AmazonMusicConnect> m_connect;
    std::unique_ptr<AmazonMusicReporter> m_reporter;
    TavuUrl m_url;
};

TEST_F(AmazonMusicReporterTest, APlayReportCarriesEveryField)
{
    const auto reply = m_reporter->userReportPlay(m_url, Reason::Seek, true, 30000);
    const QVariantHash report = m_service.expectRequest("POST", "/events/1").json();
    m_service.answer(200);
    const QDateTime wallClock = QDateTime::fromString(
        report.value(QStringLiteral("wallClockTime")).toString(), Qt::ISODate);
    EXPECT_EQ(wallClock.timeSpec(), Qt::UTC);
    EXPECT_LE(qAbs(wallClock.secsTo(QDateTime::currentDateTimeUtc())), 5);

    QVariantHash rest = report;
    rest.remove(QStringLiteral("wallClockTime"));
    EXPECT_EQ(TavuHash(rest).toJsonString(),
        QStringLiteral("{\"cacheHitStatus\":true,\"event\":\"START\",\"isDirectedPlay\":true,"
                       "\"isShufflePlay\":false,\"playbackDelay\":0,\"reason\":\"SEEK\","
                       "\"rebufferCount\":0,\"source\":\"UNKNOWN\",\"trackPosition\":30000,"
                       "\"transferSpeedBPS\":0}"));
    const Response response = expectValue(reply);
    EXPECT_FALSE(response.error);
    EXPECT_TRUE(response.errorReport.isEmpty());
    EXPECT_TRUE(response.ratingResponse.isEmpty());
}

TEST_F(AmazonMusicReporterTest, AStopReportSaysStop)
{
    const auto reply = m_reporter->userReportStop(m_url, Reason::TrackEnd, false, 180000);
    const QVariantHash report = m_service.expectRequest("POST", "/events/1").json();
    m_service.answer(200);
    EXPECT_EQ(report.value(QStringLiteral("event")).toString(), TavuAmazonMusicEvent::Stop());
    EXPECT_EQ(report.value(QStringLiteral("reason")).toString(), QStringLiteral("TRACK_END"));
    EXPECT_FALSE(report.value(QStringLiteral("isDirectedPlay")).toBool());
    EXPECT_EQ(report.value(QStringLiteral("trackPosition")).toLongLong(), 180000);
    EXPECT_EQ(report.value(QStringLiteral("rebufferCount")), QVariant(qint64(0)));
    EXPECT_EQ(report.size(), 11);
    EXPECT_FALSE(expectValue(reply).error);
}

TEST_F(AmazonMusicReporterTest, AnUnderrunStopsPlaybackAndItsEndStartsIt)
{
    const LogCapture log;
    for (const bool started : { true, false }) {
        const auto reply = m_reporter->userReportUnderrun(m_url, started, 4000, 3);
        const QVariantHash report = m_service.expectRequest("POST", "/events/1").json();
        m_service.answer(200);
        EXPECT_EQ(report.value(QStringLiteral("event")).toString(),
            started ? TavuAmazonMusicEvent::Stop() : TavuAmazonMusicEvent::Start());
        EXPECT_EQ(report.value(QStringLiteral("reason")).toString(), Reason::BufferUnderflow());
        EXPECT_EQ(report.value(QStringLiteral("rebufferCount")).toInt(), 3);
        EXPECT_EQ(report.value(QStringLiteral("trackPosition")).toInt(), 4000);
        EXPECT_FALSE(report.value(QStringLiteral("isDirectedPlay")).toBool());
        EXPECT_EQ(report.size(), 11);
        EXPECT_FALSE(expectValue(reply).error);
    }
    EXPECT_EQ(
        log.count(log4cplus::DEBUG_LOG_LEVEL, QStringLiteral("Underrun, successfully reported")),
        2);
}

TEST_F(AmazonMusicReporterTest, ASelectedActionHasNoBody)
{
    const auto reply = m_reporter->userSelectAction(m_service.url(QStringLiteral("/select?a=1")));
    EXPECT_TRUE(m_service.expectRequest("POST", "/select?a=1").request().body.isEmpty());
    m_service.answer(200);
    EXPECT_FALSE(expectValue(reply).error);
}

TEST_F(AmazonMusicReporterTest, ARatingCarriesThumbPositionAndTime)
{
    const auto reply = m_reporter->userRating(m_url, TavuAmazonMusicThumbRating::Up, 1234);
    const QVariantHash request = m_service.expectRequest("POST", "/events/1").json();
    m_service.answer(200,
        R"({"result":"#r","trackRatingResponses":{"r":{"message":"Thanks %1","shouldSkip":true}}})");
    EXPECT_EQ(request.size(), 3);
    EXPECT_EQ(request.value(QStringLiteral("thumbRating")).toString(), QStringLiteral("UP"));
    EXPECT_EQ(request.value(QStringLiteral("trackPosition")).toInt(), 1234);
    EXPECT_TRUE(
        request.value(QStringLiteral("wallClockTime")).toString().endsWith(QLatin1Char('Z')));
    const Response response = expectValue(reply);
    EXPECT_FALSE(response.error);
    EXPECT_EQ(response.ratingResponse.message(), QStringLiteral("Thanks %1"));
    EXPECT_TRUE(response.ratingResponse.shouldSkip());
}

TEST_F(AmazonMusicReporterTest, ARatingThatFailsSaysWhy)
{
    const auto reply = m_reporter->userRating(m_url, TavuAmazonMusicThumbRating::Down, 0);
    m_service.expectRequest("POST", "/events/1");
    m_service.answer(500);
    const Response response = expectValue(reply);
    EXPECT_TRUE(response.error);
    EXPECT_EQ(response.ratingResponse.message(),
        QStringLiteral("Server response with code: 500, status: ") + ok);
    EXPECT_FALSE(response.ratingResponse.shouldSkip());
}

TEST_F(AmazonMusicReporterTest, ARefusedPlayReportBringsTheServicesMessage)
{
    const auto reply = m_reporter->userReportPlay(m_url, Reason::TrackSelected, true, 0);
    m_service.expectRequest("POST", "/events/1");
    m_service.answer(409, ErrorReport{ QStringLiteral("Another device plays"), {}, {} }.body());
    const Response response = expectValue(reply);
    EXPECT_TRUE(response.error);
    EXPECT_EQ(response.errorReport.brief(), QStringLiteral("Another device plays"));
}

TEST_F(AmazonMusicReporterTest, OnlyOneNumberSignIsTakenFromAKey)
{
    const auto reply = m_reporter->userReportPlay(m_url, Reason::TrackSelected, true, 0);
    m_service.expectRequest("POST", "/events/1");
    m_service.answer(409, R"({"result":"##a","generalErrorReports":{"#a":{"brief":"x"}}})");
    EXPECT_EQ(expectValue(reply).errorReport.brief(), QStringLiteral("x"));
}

TEST_F(AmazonMusicReporterTest, AnAnswerWithoutItsRecordGivesAnEmptyOne)
{
    for (const char* body :
        { "", "{}", "[]", R"({"result":"#a","generalErrorReports":{"a":3}})" }) {
        const auto reply = m_reporter->userReportPlay(m_url, Reason::TrackSelected, true, 0);
        m_service.expectRequest("POST", "/events/1");
        m_service.answer(409, body);
        const Response response = expectValue(reply);
        EXPECT_TRUE(response.error) << body;
        EXPECT_TRUE(response.errorReport.isEmpty()) << body;
    }
    const auto rating = m_reporter->userRating(m_url, TavuAmazonMusicThumbRating::Up, 0);
    m_service.expectRequest("POST", "/events/1");
    m_service.answer(200, R"({"result":"#a"})");
    EXPECT_TRUE(expectValue(rating).ratingResponse.isEmpty());
}

TEST_F(AmazonMusicReporterTest, AnyOtherRefusalIsLoggedAndEndsWithAValue)
{
    const LogCapture log;
    const auto failsWith = [this](const CMReply<Response>& reply, int code) {
        m_service.expectRequest("POST", "/events/1");
        m_service.answer(code);
        const Response response = expectValue(reply);
        EXPECT_TRUE(response.error);
        EXPECT_TRUE(response.errorReport.isEmpty());
    };
    failsWith(m_reporter->userReportPlay(m_url, Reason::TrackSelected, true, 0), 500);
    failsWith(m_reporter->userReportStop(m_url, Reason::Stop, true, 0), 409);
    failsWith(m_reporter->userReportUnderrun(m_url, true, 0, 1), 404);
    failsWith(m_reporter->userSelectAction(m_url), 501);
    EXPECT_EQ(log.texts(log4cplus::WARN_LOG_LEVEL),
        (QStringList{ QStringLiteral("User report play failed with http code: 500 status: ") + ok,
            QStringLiteral("User report stop failed with http code: 409 status: ") + ok,
            QStringLiteral("User report underrun failed with http code: 404"),
            QStringLiteral("User select action failed with http code: 501 status: ") + ok }));
}

TEST_F(AmazonMusicReporterTest, WithoutAUrlNothingIsSentAndPlaybackGoesOn)
{
    const LogCapture log;
    const TavuUrl none;
    for (const auto& reply : { m_reporter->userReportPlay(none, Reason::TrackSelected, true, 0),
             m_reporter->userReportStop(none, Reason::Stop, true, 0),
             m_reporter->userReportUnderrun(none, true, 0, 1), m_reporter->userSelectAction(none),
             m_reporter->userRating(none, TavuAmazonMusicThumbRating::Up, 0) }) {
        ASSERT_TRUE(reply.isFinished());
        EXPECT_FALSE(reply.error().isSet());
        EXPECT_FALSE(reply.value().error);
        EXPECT_TRUE(reply.value().errorReport.isEmpty());
        EXPECT_TRUE(reply.value().ratingResponse.isEmpty());
    }
    EXPECT_EQ(log.texts(log4cplus::WARN_LOG_LEVEL),
        (QStringList{ QStringLiteral("userReportPlay empty report url"),
            QStringLiteral("userReportStop empty report url"),
            QStringLiteral("userReportUnderrun empty report url"),
            QStringLiteral("userSelectAction empty report url"),
            QStringLiteral("userRating empty report url") }));
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicReporterTest, TracesWhichReportItSends)
{
    const LogCapture log;
    m_reporter->userReportPlay(TavuUrl(), Reason::TrackSelected, true, 0);
    m_reporter->userReportStop(TavuUrl(), Reason::Stop, true, 0);
    m_reporter->userReportUnderrun(TavuUrl(), true, 0, 1);
    for (const char* label : { "userPlay", "userStop", "Underrun" }) {
        const QString end = QStringLiteral(": ") + QString::fromLatin1(label);
        const QStringList traces = log.texts(log4cplus::TRACE_LOG_LEVEL);
        EXPECT_TRUE(std::any_of(traces.begin(), traces.end(), [&](const QString& text) {
            return text.startsWith(QStringLiteral("Enter ")) && text.endsWith(end);
        })) << label;
    }
}

TEST_F(AmazonMusicReporterTest, ReportsFollowTheShuffleModes)
{
    EXPECT_FALSE(saysShuffle());
    for (const auto& [mode, shuffled] : { std::pair(1, true), std::pair(0, false),
             std::pair(5, true), std::pair(2, false), std::pair(1, true), std::pair(4, false) }) {
        setPlayMode(mode);
        EXPECT_EQ(saysShuffle(), shuffled) << mode;
    }
}

TEST_F(AmazonMusicReporterTest, ShuffledRepeatOfOneLeavesTheFlagAsItWas)
{
    setPlayMode(3);
    EXPECT_FALSE(saysShuffle());
    setPlayMode(1);
    setPlayMode(3);
    EXPECT_TRUE(saysShuffle());
    setPlayMode(99);
    EXPECT_TRUE(saysShuffle());
}

TEST_F(AmazonMusicReporterTest, CancelEndsEveryReplyAndALateAnswerChangesNothing)
{
    const auto play = m_reporter->userReportPlay(m_url, Reason::TrackSelected, true, 0);
    const auto rating = m_reporter->userRating(
        m_service.url(QStringLiteral("/rate")), TavuAmazonMusicThumbRating::Up, 0);
    const ServiceRequest first = m_service.expectRequest("POST", "/events/1");
    const ServiceRequest second = m_service.expectRequest("POST", "/rate");
    m_reporter->cancel();
    expectCancelled(play);
    expectCancelled(rating);
    first.answer(409, ErrorReport{ QStringLiteral("x"), {}, {} }.body());
    second.answer(200);
    m_service.expectNoRequest();
    expectCancelled(play);
    expectCancelled(rating);
}

TEST_F(AmazonMusicReporterTest, CancelStandsWhenAWatcherReportsAgain)
{
    CMReply<Response> second;
    const auto first = m_reporter->userReportStop(m_url, Reason::Stop, true, 0);
    first.addWatcher([&](const CMVoidReply&) {
        second = m_reporter->userReportStop(m_url, Reason::Stop, true, 0);
    });
    m_reporter->cancel();
    expectCancelled(first);
    expectPending(second);
}

TEST_F(AmazonMusicReporterTest, AnAnswerAfterItsEndTouchesNothing)
{
    const auto reply = m_reporter->userReportPlay(m_url, Reason::TrackSelected, true, 0);
    const ServiceRequest pending = m_service.expectRequest("POST", "/events/1");
    m_reporter.reset();
    pending.answer(200);
    m_service.expectNoRequest();
    EXPECT_FALSE(reply.isFinished());
}

TEST_F(AmazonMusicReporterTest, TheResponseIsAMetaType)
{
    EXPECT_NE(QMetaType::type("AmazonMusicReporter::Response"), QMetaType::UnknownType);
}

} // namespace
