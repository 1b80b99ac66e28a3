#include "house.h"
#include "printers.h"
#include "sound.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace {

constexpr int idle = 0;
constexpr int playing = 2;
constexpr int paused = 3;

using Command = PlayerFacade::Command;

QByteArray contentsOf(const QString& name)
{
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return file.readAll();
}

/// The FLAC files of the sample album that joins without gaps, in their order.
QStringList gaplessAlbum(const QString& samples)
{
    QStringList files;
    QDirIterator all(
        samples, { QStringLiteral("*.flac") }, QDir::Files, QDirIterator::Subdirectories);
    while (all.hasNext()) {
        const QString file = all.next();
        if (file.contains(QLatin1String("Harbour at First Light")))
            files.append(file);
    }
    files.sort();
    return files;
}

class Play : public ::testing::Test
{
protected:
    void startInRealTime()
    {
        house.setOutput(QStringLiteral("audioconvert ! fakesink sync=true"));
        // "Previous" leads to the track before, however late a busy machine is with it.
        house.set(QStringLiteral("player.previous-limit-ms=60000"));
        house.startSignedIn();
    }
    QString rating() { return house.player().player().value(QStringLiteral("rating")).toString(); }

    House house;
};

TEST_F(Play, an_album_sample_by_sample_as_its_files_hold_it_joins_included)
{
    const QString captured = house.file("captured.raw");
    house.setOutput(QStringLiteral("audioconvert ! "
                                   "audio/x-raw,format=S16LE,rate=44100,channels=2,layout="
                                   "interleaved ! filesink location=%1")
                        .arg(captured));
    house.startSignedIn();
    QByteArray expected;
    const QStringList files = gaplessAlbum(house.samplesFolder());
    ASSERT_GE(files.size(), 2);
    for (const QString& file : files)
        expected += decode(contentsOf(file));
    house.play(QStringLiteral("Albums/Harbour at First Light"));
    // A file takes sound faster than an ear: the last title may be gone before anybody looks.
    ASSERT_TRUE(waitUntil([&] { return QFileInfo(captured).size() >= expected.size(); }, 60000));
    ASSERT_TRUE(house.waitForState(idle));
    EXPECT_EQ(contentsOf(captured).size(), expected.size());
    EXPECT_TRUE(contentsOf(captured) == expected);
    EXPECT_EQ(house.reportsWithoutPositions().mid(0, 3),
        QStringList({ QStringLiteral("START CONTAINER_SELECTED"), QStringLiteral("STOP TRACK_END"),
            QStringLiteral("START AUTO_NEXT") }));
}

TEST_F(Play, a_track_of_an_album_then_the_rest_of_it_and_then_nothing)
{
    house.startSignedIn();
    house.play(QStringLiteral("Albums/Night Trains/Sleeper Car"));
    ASSERT_TRUE(waitUntil([&] { return house.reports().size() == 5; }, 60000));
    ASSERT_TRUE(house.waitForState(idle));
    EXPECT_EQ(house.reportsWithoutPositions(),
        QStringList({ QStringLiteral("START TRACK_SELECTED"), QStringLiteral("STOP TRACK_END"),
            QStringLiteral("START AUTO_NEXT"), QStringLiteral("STOP TRACK_END"),
            QStringLiteral("START AUTO_NEXT") }));
}

TEST_F(Play, an_endless_station_over_several_chunks)
{
    house.startSignedIn();
    house.play(QStringLiteral("Stations/"));
    ASSERT_TRUE(waitUntil([&] { return house.requests("chunk") >= 3; }, 60000));
    house.command(Command::Stop);
    EXPECT_TRUE(house.waitForState(idle));
    EXPECT_GE(house.reports().size(), 20);
    EXPECT_EQ(house.reportsWithoutPositions().first(), QStringLiteral("START TRACK_SELECTED"));
}

TEST_F(Play, pauses_and_goes_on_and_tells_the_service_of_both)
{
    startInRealTime();
    house.play(QStringLiteral("Albums/Night Trains"));
    ASSERT_TRUE(house.waitForState(playing));
    house.command(Command::TogglePause);
    ASSERT_TRUE(house.waitForState(paused));
    house.command(Command::TogglePause);
    ASSERT_TRUE(house.waitForState(playing));
    house.command(Command::Stop);
    ASSERT_TRUE(house.waitForState(idle));
    ASSERT_TRUE(waitUntil([&] { return house.reports().size() == 4; }));
    EXPECT_EQ(house.reportsWithoutPositions(),
        QStringList({ QStringLiteral("START CONTAINER_SELECTED"), QStringLiteral("STOP PAUSE"),
            QStringLiteral("START UNPAUSE"), QStringLiteral("STOP STOP") }));
}

TEST_F(Play, goes_on_once_for_two_wishes_to_go_on)
{
    startInRealTime();
    house.play(QStringLiteral("Albums/Night Trains"));
    ASSERT_TRUE(house.waitForState(playing));
    house.command(Command::TogglePause);
    ASSERT_TRUE(house.waitForState(paused));
    house.fault("kind=report effect=none delay=1000");
    const auto first = house.player().command(Command::TogglePause);
    const auto second = house.player().command(Command::TogglePause);
    valueOf(first);
    valueOf(second);
    ASSERT_TRUE(house.waitForState(playing));
    EXPECT_EQ(house.reportsWithoutPositions().count(QStringLiteral("START UNPAUSE")), 1);
    EXPECT_EQ(house.messageTexts(), QStringList());
}

TEST_F(Play, a_resume_that_the_service_refuses_is_told_at_once_and_once)
{
    startInRealTime();
    house.play(QStringLiteral("Albums/Night Trains"));
    ASSERT_TRUE(house.waitForState(playing));
    house.command(Command::TogglePause);
    ASSERT_TRUE(house.waitForState(paused));
    house.fault("kind=report effect=conflict brief=Elsewhere explanation=x label=Close "
                "action=close");
    EXPECT_EQ(errorOf(house.player().command(Command::Resume)),
        QStringLiteral("Reporting failed: Elsewhere"));
    ASSERT_TRUE(house.waitForState(idle));
    ASSERT_TRUE(waitUntil([&] { return !house.messageTexts().isEmpty(); }));
    settle();
    EXPECT_EQ(house.messageTexts(), QStringList{ QStringLiteral("Elsewhere: x") });
}

TEST_F(Play, a_resume_that_comes_after_another_play_does_not_pause_that)
{
    startInRealTime();
    house.fault("kind=chunk effect=expire in=1500 times=1");
    house.play(QStringLiteral("Albums/Night Trains"));
    ASSERT_TRUE(house.waitForState(playing));
    house.command(Command::TogglePause);
    ASSERT_TRUE(house.waitForState(paused));
    const qint64 expired = QDateTime::currentMSecsSinceEpoch() + 1600;
    ASSERT_TRUE(waitUntil([&] { return QDateTime::currentMSecsSinceEpoch() > expired; }));
    const QVariantHash other = house.row(QStringLiteral("Albums/Small Rooms"));
    house.fault("kind=instance effect=none delay=3000");
    const auto resumed = house.player().command(Command::Resume);
    valueOf(house.player().play(other));
    ASSERT_TRUE(house.waitForState(playing));
    errorOf(resumed);
    emulator::Ledger::Filter instances;
    instances.kinds = QStringList{ QStringLiteral("instance") };
    ASSERT_TRUE(waitUntil([&] {
        const auto asked = house.service().ledger().entries(instances);
        return !asked.empty() && asked.front().status != 0;
    }));
    house.row(QStringLiteral("Albums/Night Trains")); // Comes behind that answer.
    settle();
    EXPECT_EQ(house.state(), playing);
    EXPECT_FALSE(house.reportsWithoutPositions().contains(QStringLiteral("START UNPAUSE")));
    EXPECT_EQ(house.reportsWithoutPositions().count(QStringLiteral("STOP PAUSE")), 1);
}

TEST_F(Play, goes_to_the_next_track_and_back)
{
    startInRealTime();
    house.play(QStringLiteral("Albums/Night Trains"));
    ASSERT_TRUE(house.waitForState(playing));
    const QString first = house.title();
    house.command(Command::Next);
    ASSERT_TRUE(waitUntil([&] { return house.title() != first && house.state() == playing; }));
    house.command(Command::Previous);
    ASSERT_TRUE(house.waitForTitle(first));
    ASSERT_TRUE(waitUntil([&] { return house.reports().size() == 5; }));
    EXPECT_EQ(house.reportsWithoutPositions(),
        QStringList({ QStringLiteral("START CONTAINER_SELECTED"), QStringLiteral("STOP NEXT"),
            QStringLiteral("START NEXT"), QStringLiteral("STOP PREVIOUS"),
            QStringLiteral("START PREVIOUS") }));
}

TEST_F(Play, seeks_and_reports_where_it_was_and_where_it_is)
{
    startInRealTime();
    house.play(QStringLiteral("Albums/Night Trains/Sleeper Car"));
    ASSERT_TRUE(house.waitForState(playing));
    valueOf(house.player().seek(8000));
    ASSERT_TRUE(waitUntil([&] {
        return house.player().player().value(QStringLiteral("position")).toLongLong() >= 8000;
    }));
    ASSERT_TRUE(waitUntil([&] { return house.reports().size() == 3; }));
    const QStringList reports = house.reports();
    EXPECT_TRUE(reports.at(1).startsWith(QStringLiteral("STOP SEEK ")));
    EXPECT_TRUE(reports.at(2).startsWith(QStringLiteral("START SEEK 8")))
        << reports.at(2).toStdString();
    EXPECT_EQ(errorOf(house.player().seek(-1)),
        QStringLiteral("The position must lie within the track."));
}

TEST_F(Play, answers_commands_when_nothing_plays_with_an_error_and_goes_on)
{
    house.startSignedIn();
    QStringList told;
    for (const Command command : { Command::TogglePause, Command::Resume, Command::Next,
             Command::Previous, Command::Like, Command::Dislike }) {
        EXPECT_EQ(errorOf(house.player().command(command)), QStringLiteral("Nothing is playing."));
        told.append(QStringLiteral("Nothing is playing.: "));
        EXPECT_EQ(house.messageTexts(), told);
    }
    EXPECT_EQ(valueOf(house.player().command(Command::Stop)), QVariant());
    settle();
    EXPECT_EQ(house.messageTexts(), told);
    house.player().setPlayMode(5);
    house.play(QStringLiteral("Albums/Night Trains"));
    EXPECT_TRUE(house.waitForState(playing));
}

TEST_F(Play, shows_the_services_answer_to_a_thumb)
{
    startInRealTime();
    house.play(QStringLiteral("Albums/Night Trains"));
    ASSERT_TRUE(house.waitForState(playing));
    const QVariantHash answer = valueOf(house.player().command(Command::Like)).toHash();
    EXPECT_EQ(answer.value(QStringLiteral("xclass")), QStringLiteral("TavuActionReply"));
    ASSERT_TRUE(waitUntil([&] { return !house.messageTexts().isEmpty(); }));
    EXPECT_TRUE(house.messageTexts().last().startsWith(QStringLiteral("Thanks")));
    EXPECT_EQ(house.requests("rating"), 1);
    EXPECT_TRUE(waitUntil([&] { return rating() == QLatin1String("up"); }));
}

TEST_F(Play, a_rating_stays_with_its_track)
{
    startInRealTime();
    house.play(QStringLiteral("Albums/Night Trains"));
    ASSERT_TRUE(house.waitForState(playing));
    const QString rated = house.title();
    valueOf(house.player().command(Command::Dislike));
    EXPECT_TRUE(waitUntil([&] { return rating() == QLatin1String("down"); }));
    house.command(Command::Next);
    ASSERT_TRUE(waitUntil([&] { return house.title() != rated; }));
    EXPECT_EQ(rating(), QString());
    house.command(Command::Previous);
    ASSERT_TRUE(house.waitForTitle(rated));
    EXPECT_EQ(rating(), QStringLiteral("down"));
}

TEST_F(Play, a_rating_that_the_service_does_not_take_is_an_error_and_no_rating)
{
    startInRealTime();
    house.play(QStringLiteral("Albums/Night Trains"));
    ASSERT_TRUE(house.waitForState(playing));
    house.fault("kind=rating effect=status status=500");
    valueOf(house.player().command(Command::Like));
    ASSERT_TRUE(waitUntil([&] { return !house.player().messages().isEmpty(); }));
    const QVariantHash message = house.player().messages().last().toHash();
    EXPECT_EQ(message.value(QStringLiteral("kind")), QStringLiteral("error"));
    settle();
    EXPECT_EQ(rating(), QString());
}

TEST_F(Play, a_play_that_the_player_refuses_by_itself_is_told_to_everybody)
{
    house.startSignedIn();
    const QVariantHash row = house.row(QStringLiteral("Messages/A song outside your plan"));
    EXPECT_FALSE(errorOf(house.player().play(row)).isEmpty());
    EXPECT_EQ(house.messageTexts(),
        QStringList{
            QStringLiteral("\"A song outside your plan\" is nothing that can be played.: ") });
}

TEST_F(Play, a_start_that_is_refused_is_told_once_with_the_services_words_and_buttons)
{
    startInRealTime();
    const QVariantHash row = house.row(QStringLiteral("Messages/Is refused when it starts"));
    errorOf(house.player().play(row));
    ASSERT_TRUE(waitUntil([&] { return !house.messageTexts().isEmpty(); }));
    settle();
    EXPECT_EQ(house.messageTexts(),
        QStringList{
            QStringLiteral("Withdrawn: It was taken out of the catalogue a moment ago.") });
    EXPECT_EQ(
        house.player().messages().last().toHash().value(QStringLiteral("rows")).toList().size(), 2);
}

TEST_F(Play, stops_once_when_the_user_signs_out)
{
    startInRealTime();
    house.play(QStringLiteral("Albums/Night Trains"));
    ASSERT_TRUE(house.waitForState(playing));
    house.player().logout();
    ASSERT_TRUE(house.waitForState(idle));
    ASSERT_TRUE(waitUntil([&] { return house.reports().size() == 2; }));
    EXPECT_EQ(house.reportsWithoutPositions().last(), QStringLiteral("STOP STOP"));
}

TEST_F(Play, shuffles_an_album_and_plays_each_track_once)
{
    house.startSignedIn();
    house.player().setPlayMode(1);
    house.play(QStringLiteral("Albums/Harbour at First Light"));
    ASSERT_TRUE(waitUntil([&] { return house.reports().size() >= 9; }));
    ASSERT_TRUE(house.waitForState(idle));
    EXPECT_EQ(house.reportsWithoutPositions().count(QStringLiteral("START AUTO_NEXT")), 4);
}

} // namespace
