#include "playhistory.h"

#include "watchdog.h"

#include <gtest/gtest.h>

#include <QDateTime>

namespace {

TavuRoles track(const QString& title)
{
    TavuResource resource;
    resource.setUri(QStringLiteral("https://audio.example/signed"));
    resource.setDuration(60000);
    resource.setCryptoData({ { QStringLiteral("a"), QStringLiteral("key") } });
    TavuList<TavuResource> resources;
    resources.append(resource);
    TavuMetaData meta;
    meta.setArtist(QStringLiteral("Someone"));
    meta.setPlayLogicPath(CMPath(QStringLiteral("/music/playLogic")));
    meta.setPrePlayPath(CMPath(QStringLiteral("/music/prePlay")));
    TavuMediaData media;
    media.setMetaData(meta);
    media.setResources(resources);
    TavuRoles roles;
    roles.setTitle(title);
    roles.setMediaData(media);
    roles.setPath(CMPath(QStringLiteral("/music")).addParam(QStringLiteral("trackUrl"), title));
    return roles;
}

TavuRoles album()
{
    TavuRoles roles;
    roles.setTitle(QStringLiteral("Album"));
    roles.setPath(CMPath(QStringLiteral("/music/album")));
    roles.setType(TavuRolesType::Folder);
    roles.setContainerPlayable(true);
    return roles;
}

TavuRoles station()
{
    TavuRoles roles;
    roles.setTitle(QStringLiteral("Station"));
    roles.setPath(CMPath(QStringLiteral("/music/station")));
    roles.setType(TavuRolesType::Playable);
    roles.setAudioType(TavuRolesAudioType::Station);
    return roles;
}

class PlayHistoryTest : public ::testing::Test
{
protected:
    PlayHistoryTest()
    {
        QObject::connect(
            &history, &player::PlayHistory::changed, &history, [this] { ++timesChanged; });
    }

    void show(TavuPlayLogicState::Enum state, const TavuRoles& track, const TavuRoles& from = {})
    {
        TavuPlayLogicData data;
        data.setState(state);
        data.setTrackRoles(track);
        data.setMediaRoles(from);
        history.follow(data);
    }
    void play(const QString& title) { show(TavuPlayLogicState::Playing, track(title)); }
    void stop() { history.follow({}); }

    QStringList played() const
    {
        QStringList titles;
        for (const QVariant& entry : history.played())
            titles += rowOf(entry).title();
        return titles;
    }
    static TavuRoles rowOf(const QVariant& entry)
    {
        return TavuRoles(entry.toHash().value(QStringLiteral("row")).toHash());
    }
    TavuRoles told(const char* key) const
    {
        return TavuRoles(history.queue().value(QString::fromLatin1(key)).toHash());
    }
    bool endless() const { return history.queue().value(QStringLiteral("endless")).toBool(); }

    player::PlayHistory history;
    int timesChanged = 0;
};

TEST_F(PlayHistoryTest, what_plays_now_is_not_among_what_has_played)
{
    play(QStringLiteral("a"));
    play(QStringLiteral("b"));
    EXPECT_EQ(played(), QStringList(QStringLiteral("a")));
    EXPECT_EQ(told("current").title(), QStringLiteral("b"));
    stop();
    EXPECT_EQ(played(), QStringList({ QStringLiteral("a"), QStringLiteral("b") }));
    EXPECT_TRUE(told("current").isEmpty());
}

TEST_F(PlayHistoryTest, only_what_has_sounded_counts)
{
    show(TavuPlayLogicState::Buffering, track(QStringLiteral("unplayable")));
    play(QStringLiteral("a"));
    stop();
    EXPECT_EQ(played(), QStringList(QStringLiteral("a")));
}

TEST_F(PlayHistoryTest, a_pause_makes_no_second_entry_and_no_noise)
{
    play(QStringLiteral("a"));
    timesChanged = 0;
    show(TavuPlayLogicState::Paused, track(QStringLiteral("a")));
    play(QStringLiteral("a"));
    EXPECT_EQ(timesChanged, 0);
    stop();
    EXPECT_EQ(played().size(), 1);
    EXPECT_EQ(timesChanged, 1);
}

TEST_F(PlayHistoryTest, a_track_that_is_started_again_and_again_is_one_entry)
{
    play(QStringLiteral("a"));
    stop();
    play(QStringLiteral("a"));
    play(QStringLiteral("b"));
    play(QStringLiteral("a"));
    stop();
    EXPECT_EQ(
        played(), QStringList({ QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("a") }));
}

TEST_F(PlayHistoryTest, a_track_that_is_started_again_has_begun_when_it_did_so_last)
{
    const auto began = [this] {
        return history.played().last().toHash().value(QStringLiteral("at")).toString();
    };
    play(QStringLiteral("a"));
    stop();
    const QString first = began();
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    ASSERT_TRUE(waitUntil([now] { return QDateTime::currentMSecsSinceEpoch() > now; }));
    play(QStringLiteral("a"));
    stop();
    EXPECT_EQ(played().size(), 1);
    EXPECT_GT(began(), first);
}

TEST_F(PlayHistoryTest, the_last_fifty_are_kept_newest_last)
{
    for (int number = 0; number < 60; ++number)
        play(QString::number(number));
    ASSERT_EQ(played().size(), 50);
    EXPECT_EQ(played().first(), QStringLiteral("9"));
    EXPECT_EQ(played().last(), QStringLiteral("58"));
    stop();
    EXPECT_EQ(played().size(), 50);
    EXPECT_EQ(played().last(), QStringLiteral("59"));
}

TEST_F(PlayHistoryTest, each_entry_says_when_it_began_and_can_be_played_again)
{
    play(QStringLiteral("a"));
    stop();
    const QVariantHash entry = history.played().first().toHash();
    const auto at =
        QDateTime::fromString(entry.value(QStringLiteral("at")).toString(), Qt::ISODateWithMs);
    EXPECT_LT(qAbs(at.msecsTo(QDateTime::currentDateTimeUtc())), 60000);
    const TavuRoles row = rowOf(entry);
    EXPECT_EQ(row.type(), TavuRolesType::Playable);
    EXPECT_EQ(row.path(), track(QStringLiteral("a")).path());
    EXPECT_EQ(row.mediaData().metaData().artist(), QStringLiteral("Someone"));
    EXPECT_EQ(
        row.mediaData().metaData().playLogicPath().text(), QStringLiteral("/music/playLogic"));
    EXPECT_EQ(row.mediaData().firstResource().duration(), 60000);
}

TEST_F(PlayHistoryTest, neither_the_address_nor_the_keys_of_the_sound_are_kept)
{
    play(QStringLiteral("a"));
    const TavuResource resource = told("current").mediaData().firstResource();
    EXPECT_TRUE(resource.uri().isEmpty());
    EXPECT_TRUE(resource.cryptoData().isEmpty());
}

TEST_F(PlayHistoryTest, a_row_that_has_nothing_but_its_address_keeps_it)
{
    TavuRoles radio = track(QStringLiteral("radio"));
    radio.setPath(CMPath(QStringLiteral("/radio/1")));
    EXPECT_EQ(player::playedRow(radio).mediaData().firstResource().uri(),
        QStringLiteral("https://audio.example/signed"));
}

TEST_F(PlayHistoryTest, what_follows_is_told_while_something_plays)
{
    history.setNext(track(QStringLiteral("b")));
    EXPECT_TRUE(told("next").isEmpty());
    play(QStringLiteral("a"));
    EXPECT_EQ(told("next").title(), QStringLiteral("b"));
    timesChanged = 0;
    history.setNext(track(QStringLiteral("b")));
    EXPECT_EQ(timesChanged, 0) << "no news";
    history.setNext({});
    EXPECT_TRUE(told("next").isEmpty());
    EXPECT_EQ(timesChanged, 1);
}

TEST_F(PlayHistoryTest, an_album_ends_and_a_station_does_not)
{
    history.choose(album());
    show(TavuPlayLogicState::Playing, track(QStringLiteral("a")), album());
    EXPECT_EQ(told("from").title(), QStringLiteral("Album"));
    EXPECT_FALSE(endless());
    history.choose(station());
    show(TavuPlayLogicState::Playing, track(QStringLiteral("b")), station());
    EXPECT_EQ(told("from").title(), QStringLiteral("Station"));
    EXPECT_TRUE(endless());
    stop();
    EXPECT_TRUE(told("from").isEmpty());
    EXPECT_FALSE(endless());
}

TEST_F(PlayHistoryTest, an_album_that_the_player_goes_on_with_is_still_the_album)
{
    history.choose(album());
    show(TavuPlayLogicState::Playing, track(QStringLiteral("A")), album());
    TavuRoles row;
    row.setPath(CMPath(QStringLiteral("/music/album/b")));
    history.goOnWith(row);
    show(TavuPlayLogicState::Playing, track(QStringLiteral("B")), row);
    EXPECT_EQ(told("from").title(), QStringLiteral("Album"));
    history.choose(row);
    show(TavuPlayLogicState::Playing, track(QStringLiteral("B")), row);
    EXPECT_TRUE(told("from").isEmpty());
}

TEST_F(PlayHistoryTest, what_was_chosen_but_does_not_play_leaves_the_track_where_it_came_from)
{
    history.choose(album());
    show(TavuPlayLogicState::Playing, track(QStringLiteral("a")), album());
    history.choose(station());
    EXPECT_EQ(told("from").title(), QStringLiteral("Album"));
    show(TavuPlayLogicState::Playing, track(QStringLiteral("b")), album());
    EXPECT_EQ(told("from").title(), QStringLiteral("Album"));
    timesChanged = 0;
    show(TavuPlayLogicState::Playing, track(QStringLiteral("b")), station());
    EXPECT_EQ(told("from").title(), QStringLiteral("Station"));
    EXPECT_EQ(timesChanged, 1);
}

TEST_F(PlayHistoryTest, a_row_that_is_chosen_by_itself_while_its_album_plays_is_told_of)
{
    TavuRoles row = track(QStringLiteral("a"));
    history.choose(album());
    show(TavuPlayLogicState::Playing, track(QStringLiteral("a")), album());
    history.goOnWith(row);
    show(TavuPlayLogicState::Playing, track(QStringLiteral("a")), row);
    history.choose(row);
    timesChanged = 0;
    show(TavuPlayLogicState::Playing, track(QStringLiteral("a")), row);
    EXPECT_EQ(timesChanged, 1);
    EXPECT_TRUE(told("from").isEmpty());
}

TEST_F(PlayHistoryTest, the_row_that_an_album_went_on_with_is_no_row_of_what_is_chosen_next)
{
    const TavuRoles row = track(QStringLiteral("b"));
    history.choose(album());
    show(TavuPlayLogicState::Playing, track(QStringLiteral("a")), album());
    history.goOnWith(row);
    history.choose(station());
    show(TavuPlayLogicState::Playing, track(QStringLiteral("s")), station());
    EXPECT_EQ(told("from").title(), QStringLiteral("Station"));
    show(TavuPlayLogicState::Playing, track(QStringLiteral("b")), row);
    EXPECT_TRUE(told("from").isEmpty());
}

TEST_F(PlayHistoryTest, a_single_track_came_from_nowhere)
{
    history.choose(track(QStringLiteral("a")));
    show(TavuPlayLogicState::Playing, track(QStringLiteral("a")), track(QStringLiteral("a")));
    EXPECT_TRUE(told("from").isEmpty());
}

} // namespace
