#include "renewingstreamer.h"

#include "cmnodesworker.h"
#include "cmroot.h"
#include "cmuinode.h"
#include "recordingstreamer.h"
#include "streamfailure.h"
#include "streamrequest.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QDateTime>

using player::RenewingStreamer;

namespace {

const QString prePlayPath = QStringLiteral("/Test/prePlay");

TavuRoles item(const QString& uri, qint64 validUntil)
{
    TavuResource resource;
    resource.setUri(uri);
    resource.setValidUntil(validUntil);
    TavuList<TavuResource> resources;
    resources.append(resource);
    TavuMetaData meta;
    meta.setPrePlayPath(CMPath(prePlayPath));
    TavuMediaData media;
    media.setResources(resources);
    media.setMetaData(meta);
    TavuRoles roles;
    roles.setMediaData(media);
    return roles;
}

qint64 soon()
{
    return QDateTime::currentMSecsSinceEpoch() + 60000;
}

QString uriOf(const TavuRoles& roles)
{
    return roles.mediaData().firstResource().uri();
}

/// A node that answers as the test says.
class PrePlayNode : public CMUINode
{
public:
    explicit PrePlayNode(CMNodes* nodes)
        : CMUINode(CMPath(prePlayPath))
    {
        setNodes(nodes);
    }

    void setDataRequest(const CMSetDataRequest& request) override
    {
        requests.append(request);
        if (answers)
            answer(request);
    }

    void answer(const CMSetDataRequest& request)
    {
        const TavuRoles asked(request.value().toHash().value(TavuRoles::PrePlay()).toHash());
        offset = asked.mediaData().metaData().prePlayTimeOffset();
        if (refuses)
            return request.reply().setError(CMError(TrString("No.")));
        TavuRoles fresh = item(QStringLiteral("fresh"), soon());
        TavuMediaData media = fresh.mediaData();
        TavuMetaData meta = media.metaData();
        meta.setStartTime(offset);
        media.setMetaData(meta);
        fresh.setMediaData(media);
        request.reply().setValue(fresh.__variant());
    }

    QList<CMSetDataRequest> requests;
    bool answers = true;
    bool refuses = false;
    qint64 offset = -1;
};

class RenewingStreamerTest : public ::testing::Test
{
protected:
    using Kind = RecordingStreamer::Kind;

    RenewingStreamerTest()
        : worker({}, QStringLiteral("Test"))
        , node(new PrePlayNode(worker.nodes()))
        , streamer(&inner)
    {
        CMRoot()->addWorker(&worker, worker.prefix());
        QObject::connect(&streamer, &Streamer::mediaStarted, &context,
            [this](quint64 id) { started.append(id); });
        QObject::connect(&streamer, &Streamer::failed, &context,
            [this](quint64, const CMError& error) { failure = error; });
        QObject::connect(&streamer, &Streamer::rolesRenewed, &context,
            [this](quint64, const TavuRoles& roles) { renewed.append(roles); });
    }
    ~RenewingStreamerTest() override { CMRoot()->removeWorker(&worker); }

    static CMError refusal(int code)
    {
        CMError error(TrString("refused"));
        error.__set(player::streamErrorHttpCode(), code);
        return error;
    }

    CMNodesWorker worker;
    PrePlayNode* node; // Owned by the worker.
    RecordingStreamer inner;
    RenewingStreamer streamer;
    QObject context;
    QList<quint64> started;
    QList<TavuRoles> renewed;
    CMError failure;
};

TEST_F(RenewingStreamerTest, hands_a_valid_item_straight_on)
{
    streamer.play(1, item(QStringLiteral("a"), soon()), {});
    EXPECT_EQ(uriOf(inner.expect(Kind::Play).roles), QStringLiteral("a"));
    EXPECT_TRUE(node->requests.isEmpty());
}

TEST_F(RenewingStreamerTest, renews_an_expired_item_before_it_plays)
{
    streamer.play(1, item(QStringLiteral("a"), 1), {});
    inner.expect(Kind::Stop);
    EXPECT_EQ(uriOf(inner.expect(Kind::Play).roles), QStringLiteral("fresh"));
    ASSERT_EQ(renewed.size(), 1);
    EXPECT_EQ(uriOf(renewed.first()), QStringLiteral("fresh"));
}

TEST_F(RenewingStreamerTest, marks_the_items_that_it_has_renewed)
{
    streamer.play(1, item(QStringLiteral("a"), soon()), {});
    EXPECT_EQ(inner.expect(Kind::Play).attributes, QVariantHash());
    streamer.setNextMedia(2, item(QStringLiteral("b"), 1), {});
    EXPECT_EQ(inner.expect(Kind::SetNextMedia).attributes.value(player::renewedAttribute()),
        QVariant(true));
}

TEST_F(RenewingStreamerTest, tells_what_follows_until_it_plays_fails_or_is_taken_back)
{
    QStringList next;
    QObject::connect(&streamer, &RenewingStreamer::nextMediaChanged, &context,
        [&next](const TavuRoles& roles) { next.append(uriOf(roles)); });
    const auto prepare = [this](quint64 id, const char* uri) {
        streamer.setNextMedia(id, item(QString::fromLatin1(uri), soon()), {});
    };
    streamer.play(1, item(QStringLiteral("a"), soon()), {});
    inner.startPresent();
    prepare(2, "b");
    inner.startNext();
    prepare(3, "c");
    prepare(4, "d");
    streamer.setNoNextMedia();
    prepare(5, "e");
    inner.tellNextFailed(CMError(TrString("No.")));
    prepare(6, "f");
    streamer.stop();
    const QStringList expected{ QStringLiteral("b"), QString(), QStringLiteral("c"),
        QStringLiteral("d"), QString(), QStringLiteral("e"), QString(), QStringLiteral("f"),
        QString() };
    EXPECT_EQ(next, expected);
}

TEST_F(RenewingStreamerTest, plays_an_expired_item_that_names_no_preplay_path_as_it_is)
{
    TavuRoles roles = item(QStringLiteral("a"), 1);
    TavuMediaData media = roles.mediaData();
    media.setMetaData(TavuMetaData());
    roles.setMediaData(media);
    streamer.play(1, roles, {});
    EXPECT_EQ(uriOf(inner.expect(Kind::Play).roles), QStringLiteral("a"));
}

TEST_F(RenewingStreamerTest, tells_that_a_renewal_was_refused)
{
    node->refuses = true;
    streamer.play(1, item(QStringLiteral("a"), 1), {});
    EXPECT_EQ(failure.message(), QStringLiteral("No."));
    inner.expect(Kind::Stop);
    inner.expectNothing();
}

TEST_F(RenewingStreamerTest, nothing_follows_when_its_renewal_is_refused)
{
    QStringList next;
    QObject::connect(&streamer, &RenewingStreamer::nextMediaChanged, &context,
        [&next](const TavuRoles& roles) { next.append(uriOf(roles)); });
    node->refuses = true;
    streamer.play(1, item(QStringLiteral("a"), soon()), {});
    streamer.setNextMedia(2, item(QStringLiteral("b"), 1), {});
    EXPECT_EQ(next, QStringList({ QStringLiteral("b"), QString() }));
}

TEST_F(RenewingStreamerTest, never_starts_an_item_whose_renewal_comes_after_it_was_replaced)
{
    node->answers = false;
    streamer.play(1, item(QStringLiteral("a"), 1), {});
    streamer.play(2, item(QStringLiteral("b"), soon()), {});
    node->answer(node->requests.first());
    inner.expect(Kind::Stop);
    EXPECT_EQ(uriOf(inner.expect(Kind::Play).roles), QStringLiteral("b"));
    inner.expectNothing();
}

TEST_F(RenewingStreamerTest, renews_an_expired_next_item_before_it_is_prepared)
{
    streamer.play(1, item(QStringLiteral("a"), soon()), {});
    inner.expect(Kind::Play);
    streamer.setNextMedia(2, item(QStringLiteral("b"), 1), {});
    EXPECT_EQ(uriOf(inner.expect(Kind::SetNextMedia).roles), QStringLiteral("fresh"));
}

TEST_F(RenewingStreamerTest, goes_on_at_its_position_with_a_fresh_resource_after_a_pause)
{
    const qint64 shortly = QDateTime::currentMSecsSinceEpoch() + 30;
    streamer.play(1, item(QStringLiteral("a"), shortly), {});
    inner.expect(Kind::Play);
    inner.startPresent();
    inner.tellPosition(4200);
    streamer.pause();
    inner.expect(Kind::Pause);
    ASSERT_TRUE(waitUntil([&] { return QDateTime::currentMSecsSinceEpoch() > shortly; }));
    bool done = false;
    streamer.renewIfExpired([&](const CMError& error) { done = !error.isSet(); });
    ASSERT_TRUE(done);
    EXPECT_EQ(node->offset, 4200);
    streamer.resume();
    const auto command = inner.expect(Kind::Play);
    EXPECT_EQ(command.id, 1U);
    EXPECT_EQ(uriOf(command.roles), QStringLiteral("fresh"));
    EXPECT_EQ(command.roles.mediaData().metaData().startTime(), 4200);
    inner.startPresent();
    EXPECT_EQ(started, QList<quint64>({ 1 })) << "a re-opened item is the same playback";
}

TEST_F(RenewingStreamerTest, renews_the_next_item_too_after_a_pause)
{
    const qint64 shortly = QDateTime::currentMSecsSinceEpoch() + 30;
    streamer.play(1, item(QStringLiteral("a"), shortly), {});
    inner.startPresent();
    streamer.setNextMedia(2, item(QStringLiteral("b"), shortly), {});
    streamer.pause();
    ASSERT_TRUE(waitUntil([&] { return QDateTime::currentMSecsSinceEpoch() > shortly; }));
    streamer.renewIfExpired([](const CMError&) {});
    inner.forgetCommands();
    streamer.resume();
    inner.expect(Kind::Play);
    const auto next = inner.expect(Kind::SetNextMedia);
    EXPECT_EQ(next.id, 2U);
    EXPECT_EQ(uriOf(next.roles), QStringLiteral("fresh"));
}

TEST_F(RenewingStreamerTest, asks_nobody_before_the_resume_of_a_valid_item)
{
    streamer.play(1, item(QStringLiteral("a"), soon()), {});
    bool done = false;
    streamer.renewIfExpired([&](const CMError&) { done = true; });
    EXPECT_TRUE(done);
    EXPECT_TRUE(node->requests.isEmpty());
}

TEST_F(RenewingStreamerTest, reopens_a_stream_that_is_refused_while_it_plays_once)
{
    for (const int code : { 401, 403, 404, 410 }) {
        SCOPED_TRACE(code);
        inner.forgetCommands();
        failure = CMError();
        streamer.play(1, item(QStringLiteral("a"), soon()), {});
        inner.expect(Kind::Play);
        inner.startPresent();
        inner.tellPosition(7000);
        inner.tellFailed(refusal(code));
        const auto command = inner.expect(Kind::Play);
        EXPECT_EQ(uriOf(command.roles), QStringLiteral("fresh"));
        EXPECT_EQ(command.roles.mediaData().metaData().startTime(), 7000);
        EXPECT_FALSE(failure.isSet());
        inner.tellFailed(refusal(code));
        EXPECT_EQ(failure.message(), QStringLiteral("refused"));
    }
}

TEST_F(RenewingStreamerTest, reopens_again_once_the_renewed_stream_has_sounded)
{
    streamer.play(1, item(QStringLiteral("a"), soon()), {});
    inner.expect(Kind::Play);
    inner.startPresent();
    for (const qint64 position : { 7000, 9000, 11000 }) {
        inner.tellPosition(position);
        inner.tellFailed(refusal(403));
        const auto command = inner.expect(Kind::Play);
        EXPECT_EQ(command.roles.mediaData().metaData().startTime(), position);
        EXPECT_FALSE(failure.isSet());
    }
    EXPECT_EQ(node->requests.size(), 3);
    EXPECT_EQ(started, QList<quint64>({ 1 }));
}

TEST_F(RenewingStreamerTest, does_not_take_a_seek_for_a_stream_that_sounds)
{
    streamer.play(1, item(QStringLiteral("a"), soon()), {});
    inner.startPresent();
    inner.tellPosition(7000);
    inner.tellFailed(refusal(403));
    streamer.seekTime(60000);
    inner.tellPosition(60000);
    inner.tellFailed(refusal(403));
    EXPECT_EQ(failure.message(), QStringLiteral("refused"));
    EXPECT_EQ(node->requests.size(), 1);
}

TEST_F(RenewingStreamerTest, stays_paused_when_the_stream_is_refused_during_a_pause)
{
    streamer.play(1, item(QStringLiteral("a"), soon()), {});
    inner.startPresent();
    inner.tellPosition(7000);
    streamer.pause();
    inner.forgetCommands();
    inner.tellFailed(refusal(410));
    EXPECT_EQ(node->requests.size(), 1);
    EXPECT_FALSE(failure.isSet());
    inner.expectNothing();
    streamer.resume();
    const auto command = inner.expect(Kind::Play);
    EXPECT_EQ(uriOf(command.roles), QStringLiteral("fresh"));
    EXPECT_EQ(command.roles.mediaData().metaData().startTime(), 7000);
}

TEST_F(RenewingStreamerTest, does_not_reopen_what_failed_otherwise)
{
    streamer.play(1, item(QStringLiteral("a"), soon()), {});
    inner.startPresent();
    inner.tellFailed(refusal(503));
    EXPECT_EQ(failure.message(), QStringLiteral("refused"));
    EXPECT_TRUE(node->requests.isEmpty());
}

TEST_F(RenewingStreamerTest, starts_an_item_that_plays_twice_twice)
{
    streamer.play(1, item(QStringLiteral("a"), soon()), {});
    inner.startPresent();
    streamer.setNextMedia(2, item(QStringLiteral("b"), soon()), {});
    inner.startNext();
    EXPECT_EQ(started, QList<quint64>({ 1, 2 }));
}

TEST_F(RenewingStreamerTest, starts_the_track_that_was_named_at_its_position_and_no_other)
{
    TavuRoles wanted = item(QStringLiteral("a"), soon());
    wanted.setTitle(QStringLiteral("A"));
    TavuRoles other = wanted;
    other.setTitle(QStringLiteral("B"));
    const auto startOf = [](const TavuRoles& roles) {
        return roles.mediaData().metaData().startTime();
    };
    streamer.startAt(wanted, 7000);
    streamer.play(1, wanted, {});
    EXPECT_EQ(startOf(inner.expect(Kind::Play).roles), 7000);
    streamer.play(2, wanted, {});
    EXPECT_EQ(startOf(inner.expect(Kind::Play).roles), 0);
    streamer.startAt(wanted, 7000);
    streamer.play(3, other, {});
    EXPECT_EQ(startOf(inner.expect(Kind::Play).roles), 0);
    streamer.startAt(wanted, 7000);
    streamer.startAt(TavuRoles(), 0);
    streamer.play(4, wanted, {});
    EXPECT_EQ(startOf(inner.expect(Kind::Play).roles), 0);
}

TEST_F(RenewingStreamerTest, tells_where_a_track_starts_before_it_tells_that_it_does)
{
    QStringList told;
    QObject::connect(&streamer, &Streamer::mediaStarted, &context,
        [&told](quint64 id) { told.append(QStringLiteral("started %1").arg(id)); });
    QObject::connect(
        &streamer, &Streamer::positionChanged, &context, [&told](quint64 id, qint64 position) {
            told.append(QStringLiteral("%1 at %2").arg(id).arg(position));
        });
    TavuRoles wanted = item(QStringLiteral("a"), soon());
    wanted.setTitle(QStringLiteral("A"));
    streamer.startAt(wanted, 7000);
    streamer.play(1, wanted, {});
    inner.startPresent();
    EXPECT_EQ(told, QStringList({ QStringLiteral("1 at 7000"), QStringLiteral("started 1") }));
    told.clear();
    streamer.play(2, wanted, {});
    inner.startPresent();
    EXPECT_EQ(told, QStringList(QStringLiteral("started 2")));
}

TEST_F(RenewingStreamerTest, knows_whether_the_item_that_follows_is_still_to_come)
{
    EXPECT_FALSE(streamer.awaitsNext());
    streamer.play(1, item(QStringLiteral("a"), soon()), {});
    Q_EMIT inner.nextMediaWanted(7);
    EXPECT_FALSE(streamer.awaitsNext());
    const auto ask = [this] {
        Q_EMIT inner.nextMediaWanted(1);
        return streamer.awaitsNext();
    };
    EXPECT_TRUE(ask());
    streamer.setNextMedia(2, item(QStringLiteral("b"), soon()), {});
    EXPECT_FALSE(streamer.awaitsNext());
    EXPECT_TRUE(ask());
    streamer.setNoNextMedia();
    EXPECT_FALSE(streamer.awaitsNext());
    EXPECT_TRUE(ask());
    streamer.stop();
    EXPECT_FALSE(streamer.awaitsNext());
}

} // namespace
