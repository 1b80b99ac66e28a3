#include "house.h"
#include "logsetup.h"
#include "printers.h"
#include "tavuactionreply.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>

#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

namespace {

const log4cplus::Initializer logLibrary;

constexpr int playing = 2;

const QString cannotBrowse = QStringLiteral("Unable to browse in to the folder.");

/// A fault of the service: the person is told, nothing is lost, and all works when it is over.
class Fault : public ::testing::Test
{
protected:
    Fault() { house.startSignedIn(); }

    QString browseError() { return errorOf(house.player().rows(albumsPath(), 0, 49)); }

    QString albumsPath()
    {
        if (m_albums.isEmpty())
            m_albums = house.row(QStringLiteral("Albums")).value(QStringLiteral("path")).toString();
        return m_albums;
    }

    void expectHealthy()
    {
        house.liftFaults();
        EXPECT_EQ(house.rows(albumsPath()).size(), 3);
        house.play(QStringLiteral("Albums/Night Trains"));
        EXPECT_TRUE(house.waitForState(playing));
        EXPECT_EQ(
            house.player().login().value(QStringLiteral("state")), QStringLiteral("loggedIn"));
    }

    House house;

private:
    QString m_albums;
};

TEST_F(Fault, a_status_becomes_an_error_for_people)
{
    albumsPath();
    house.fault("kind=browse effect=status status=503");
    EXPECT_EQ(browseError(), cannotBrowse);
    expectHealthy();
}

TEST_F(Fault, a_delay_only_delays)
{
    albumsPath();
    house.fault("kind=browse effect=none delay=300");
    EXPECT_EQ(house.rows(albumsPath()).size(), 3);
    expectHealthy();
}

TEST_F(Fault, a_cut_body_is_never_parsed)
{
    albumsPath();
    house.fault("kind=browse effect=cut after=100");
    EXPECT_EQ(browseError(), cannotBrowse);
    expectHealthy();
}

TEST_F(Fault, bad_json_is_an_empty_page)
{
    albumsPath();
    house.fault("kind=browse effect=bad-json");
    EXPECT_EQ(house.screen(albumsPath()).value(QStringLiteral("count")).toInt(), 0);
    expectHealthy();
}

TEST_F(Fault, a_chain_of_redirects_is_followed_and_a_loop_is_not)
{
    albumsPath();
    house.fault("kind=browse effect=redirect times=5");
    EXPECT_EQ(house.rows(albumsPath()).size(), 3);
    house.liftFaults();
    house.fault("kind=browse effect=redirect");
    EXPECT_EQ(browseError(), cannotBrowse);
    expectHealthy();
}

TEST_F(Fault, the_service_may_move_the_player_to_another_host_of_its_domain)
{
    albumsPath();
    house.fault("kind=browse effect=redirect toHost=eu.music.localhost times=1");
    EXPECT_EQ(house.rows(albumsPath()).size(), 3);
    house.rows(albumsPath());
    EXPECT_EQ(house.service().ledger().entries().back().host, QStringLiteral("eu.music.localhost"));
    expectHealthy();
}

TEST_F(Fault, a_foreign_host_is_followed_without_the_token_and_moves_nothing)
{
    albumsPath();
    house.fault("kind=browse effect=redirect toHost=foreign.example.localhost times=1");
    browseError();
    EXPECT_EQ(house.service().ledger().entries().back().host,
        QStringLiteral("foreign.example.localhost"));
    EXPECT_EQ(house.rows(albumsPath()).size(), 3);
    EXPECT_EQ(house.service().ledger().entries().back().host, QStringLiteral("music.localhost"));
    expectHealthy();
}

TEST_F(Fault, one_401_is_renewed_and_the_request_sent_again)
{
    albumsPath();
    const int renewals = house.requests("token");
    house.fault("kind=browse effect=unauthorized times=1");
    EXPECT_EQ(house.rows(albumsPath()).size(), 3);
    EXPECT_EQ(house.requests("token"), renewals + 1);
    expectHealthy();
}

TEST_F(Fault, a_401_for_ever_reaches_the_person_after_one_renewal)
{
    albumsPath();
    const int renewals = house.requests("token");
    house.fault("kind=browse effect=unauthorized");
    EXPECT_EQ(browseError(), cannotBrowse);
    EXPECT_EQ(house.requests("token"), renewals + 1);
    house.liftFaults();
    house.fault("kind=browse effect=unauthorized status=403");
    EXPECT_EQ(
        browseError(), QStringLiteral("Account credentials are not correct. Please log in again."));
    expectHealthy();
}

TEST_F(Fault, a_409_is_the_services_own_screen)
{
    albumsPath();
    house.fault("kind=browse effect=conflict brief=Closed terse=Shut explanation=Later label=Fine "
                "action=post uri=/actions/fine");
    const QVariantList rows = house.rows(albumsPath());
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows.first().toHash().value(QStringLiteral("title")), QStringLiteral("Shut"));
    EXPECT_EQ(
        rows.first().toHash().value(QStringLiteral("longDescription")), QStringLiteral("Later"));
    EXPECT_EQ(rows.last().toHash().value(QStringLiteral("title")), QStringLiteral("Fine"));
    expectHealthy();
}

TEST_F(Fault, a_409_on_a_chunk_fails_the_play_with_the_services_words_and_its_screen)
{
    const QVariantHash album = house.row(QStringLiteral("Albums/Night Trains"));
    house.fault("kind=chunk effect=conflict brief=No explanation=Region label=Close action=close");
    const CMReply<QVariant> reply = house.player().play(album);
    EXPECT_EQ(errorOf(reply), QStringLiteral("Region"));
    ASSERT_TRUE(waitUntil([&] { return !house.messageTexts().isEmpty(); }));
    EXPECT_TRUE(house.messageTexts().last().contains(QStringLiteral("Region")));
    expectHealthy();
}

TEST_F(Fault, a_second_409_on_a_chunk_shows_its_own_words_and_buttons_alone)
{
    const QVariantHash album = house.row(QStringLiteral("Albums/Night Trains"));
    house.fault("kind=chunk effect=conflict brief=No explanation=Region label=Close action=close "
                "times=1");
    house.fault("kind=chunk effect=conflict brief=Never explanation=Gone label=Pity action=close "
                "times=1");
    EXPECT_EQ(errorOf(house.player().play(album)), QStringLiteral("Region"));
    const CMReply<QVariant> second = house.player().play(album);
    EXPECT_EQ(errorOf(second), QStringLiteral("Gone"));
    ASSERT_TRUE(waitUntil([&] { return house.messageTexts().size() == 2; }));
    EXPECT_EQ(house.messageTexts().last(), QStringLiteral("Never: Gone"));
    const QVariantHash message = house.player().messages().last().toHash();
    EXPECT_EQ(message.value(QStringLiteral("rows")).toList().size(), 2);

    const QString screen =
        TavuActionReply(second.error().actionReply()).result().path().toEncoded();
    QStringList shown;
    for (const QVariant& row : house.rows(screen))
        shown.append(row.toHash().value(QStringLiteral("title")).toString());
    EXPECT_EQ(shown, QStringList({ QStringLiteral("Never"), QStringLiteral("Pity") }));
    const QVariantHash window = house.screen(screen, 1, 7);
    EXPECT_EQ(window.value(QStringLiteral("rows")).toList().size(), 1);
    EXPECT_EQ(window.value(QStringLiteral("count")).toInt(), 2);
    expectHealthy();
}

TEST_F(Fault, a_409_on_the_play_report_refuses_the_play)
{
    const QVariantHash album = house.row(QStringLiteral("Albums/Night Trains"));
    house.fault(
        "kind=report effect=conflict brief=Elsewhere explanation=x label=Close action=close");
    EXPECT_EQ(errorOf(house.player().play(album)), QStringLiteral("Reporting failed: Elsewhere"));
    expectHealthy();
}

TEST_F(Fault, a_409_on_the_play_report_is_overtaken_when_the_service_offers_it)
{
    const QVariantHash album = house.row(QStringLiteral("Albums/Night Trains"));
    house.fault("kind=report effect=conflict brief=Elsewhere label=Here action=post resume=true "
                "uri=/selections/here times=1");
    valueOf(house.player().play(album));
    EXPECT_TRUE(house.waitForState(playing));
    EXPECT_TRUE(waitUntil([&] { return house.requests("selection") == 1; }));
}

TEST_F(Fault, a_404_on_the_playable_says_so)
{
    const QVariantHash album = house.row(QStringLiteral("Albums/Night Trains"));
    house.fault("effect=status status=404");
    EXPECT_EQ(errorOf(house.player().play(album)),
        QStringLiteral("Failed to fetch playable, error: 404, status: OK"));
    expectHealthy();
}

TEST_F(Fault, a_track_that_has_expired_early_is_refused_with_the_reason)
{
    const QVariantHash album = house.row(QStringLiteral("Albums/Night Trains"));
    house.fault("kind=chunk effect=expire in=-1000");
    EXPECT_EQ(errorOf(house.player().play(album)), QStringLiteral("Error: Track already expired"));
    expectHealthy();
}

TEST_F(Fault, protected_tracks_play_with_their_key_headers)
{
    house.fault("kind=chunk effect=key-headers");
    house.play(QStringLiteral("Albums/Night Trains"));
    EXPECT_TRUE(house.waitForState(playing));
    EXPECT_TRUE(house.messageTexts().isEmpty());
}

TEST(Log, never_holds_a_token_a_code_or_a_key)
{
    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("player.log"));
    ASSERT_EQ(player::setUpLog(QStringLiteral("trace"), name), QString());
    {
        House house;
        house.startSignedIn();
        house.fault("kind=chunk effect=key-headers");
        house.fault("kind=browse effect=unauthorized times=1");
        house.rows(house.row(QStringLiteral("Albums")).value(QStringLiteral("path")).toString());
        house.play(QStringLiteral("Albums/Night Trains"));
        EXPECT_TRUE(house.waitForState(playing));
    }
    log4cplus::Logger::getRoot().removeAllAppenders();
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray log = file.readAll();
    EXPECT_TRUE(log.contains("Enter "));
    EXPECT_FALSE(log.contains("emulator-secret"));
    const QRegularExpression bearer(QStringLiteral("Bearer (?!\\*\\*\\*)"));
    EXPECT_FALSE(QString::fromUtf8(log).contains(bearer));
    const QRegularExpression key(QStringLiteral(
        "(?i)keyHeaders\\\\?\"\\s*:\\s*\\[\\s*\\{[^*]*\"value\"\\s*:\\s*\"(?!\\*\\*\\*)"));
    EXPECT_FALSE(QString::fromUtf8(log).contains(key));
}

} // namespace
