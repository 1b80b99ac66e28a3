#include "ctlfixture.h"
#include "httpserver.h"
#include "printers.h"

#include <QTimer>

TEST_F(Ctl, PrintsMessagesInTheWordsThatTheyHave)
{
    player.m_messages = { hash(R"({"at": "1", "title": "Thanks!", "text": ""})"),
        hash(R"({"at": "2", "title": "Skipped", "text": "Gone"})"),
        hash(R"({"at": "3", "title": "Error", "text": "No answer"})"), refusedMessage() };
    EXPECT_EQ(run({ text("messages") }), 0);
    EXPECT_EQ(out,
        text("1  Thanks!\n2  Skipped: Gone\n3  No answer\n"
             "now  Not in your plan: Larger plans play it.\n"
             "  (1) See plans  https://plans.example/\n  (2) Not now"));
}

TEST_F(Ctl, PressesAButtonOfTheLatestMessageThatHasAny)
{
    player.m_messages = { refusedMessage(), hash(R"({"at": "2", "title": "Later"})") };
    EXPECT_EQ(run({ text("press"), text("2") }), 0);
    ASSERT_EQ(player.calls.last().name, text("activateRow"));
    EXPECT_EQ(player.calls.last().arguments.first().toHash().value(text("title")), text("Not now"));
    EXPECT_EQ(run({ text("press"), text("see"), text("plans") }), 0);
    EXPECT_EQ(out, text("https://plans.example/"));
    EXPECT_EQ(run({ text("press"), text("3") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: There is no button \"3\". See \"tavu-ctl messages\"."));
    player.m_messages.clear();
    EXPECT_EQ(run({ text("press"), text("1") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: No message has a button."));
}

TEST_F(Ctl, PlayEndsWellOnceItSounds)
{
    player.whenPlaying = [this] { player.m_player = hash(R"({"state": 1, "error": null})"); };
    QTimer soon;
    soon.start(20);
    QObject::connect(&soon, &QTimer::timeout, [this] {
        if (player.m_player.value(text("state")) == 1)
            player.m_player = hash(R"({"state": 2, "error": null})");
    });
    EXPECT_EQ(run({ text("play"), text("Song") }), 0);
    EXPECT_EQ(player.calls.last().name, text("play"));
    EXPECT_EQ(player.m_player.value(text("state")).toInt(), 2);
}

TEST_F(Ctl, PlayFailsWithAStreamThatCannotBePlayed)
{
    player.whenPlaying = [this] {
        player.m_player = hash(R"({"state": 0, "error": {"title": "Error", "detail": "Gone"}})");
    };
    EXPECT_EQ(run({ text("play"), text("Song") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: Gone"));
}

TEST_F(Ctl, PlayThatIsRefusedShowsTheServicesWordsAndButtons)
{
    player.failWith(CMError(hash(R"({"name": "error", "title": "Error", "message": "No",
        "actionReply": {"xclass": "TavuActionReply", "result": {"path": "/refused"}}})")));
    EXPECT_EQ(run({ text("play"), text("Song") }), 1);
    EXPECT_EQ(out, QString());
    EXPECT_EQ(err,
        text("tavu-ctl: Not in your plan: Larger plans play it.\n"
             "  (1) See plans  https://plans.example/\n  (2) Not now\n"
             "tavu-ctl: To press a button: tavu-ctl press NUMBER"));
}

TEST_F(Ctl, CommandsThatFailSayWhy)
{
    player.failWith(CMError(hash(R"({"name": "error", "title": "Error", "message": "No next"})")));
    EXPECT_EQ(run({ text("next") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: No next"));
}

TEST_F(Ctl, PrintsWhatTheServiceSaysToARating)
{
    player.answerWith(hash(R"({"xclass": "TavuActionReply", "result": {"path": "/rated"}})"));
    EXPECT_EQ(run({ text("like") }), 0);
    EXPECT_EQ(out, text("Thanks!"));
}

TEST_F(Ctl, StatusTellsARating)
{
    player.m_player = hash(R"({"state": 2, "title": "Song", "rating": "up", "error": null})");
    EXPECT_EQ(run({ text("status") }), 0);
    EXPECT_TRUE(out.contains(text("rated up"))) << out.toStdString();
}

TEST_F(Ctl, StatusOfATrackWithoutNamesHasNoEmptyLine)
{
    player.m_player = hash(R"({"state": 1, "title": "", "artist": "", "error": null})");
    EXPECT_EQ(run({ text("status") }), 0);
    EXPECT_FALSE(out.contains(text(" - "))) << out.toStdString();
    EXPECT_EQ(out.count(QLatin1Char('\n')), 1) << out.toStdString();
    player.m_player = hash(R"({"state": 2, "title": "Song", "artist": "", "error": null})");
    EXPECT_EQ(run({ text("status") }), 0);
    EXPECT_TRUE(out.contains(text("\nSong\n"))) << out.toStdString();
    player.m_player = hash(R"({"state": 2, "title": "Song", "artist": "Band", "error": null})");
    EXPECT_EQ(run({ text("status") }), 0);
    EXPECT_TRUE(out.contains(text("\nSong - Band\n"))) << out.toStdString();
}

TEST_F(Ctl, StatusTellsOfTroubleWithTheLogin)
{
    player.m_login = hash(R"({"state": "loggedIn", "message": "It could not be renewed."})");
    EXPECT_EQ(run({ text("status") }), 0);
    EXPECT_TRUE(out.endsWith(text("\nIt could not be renewed."))) << out.toStdString();
    player.m_login = hash(R"({"state": "loggedOut", "message": ""})");
    EXPECT_EQ(run({ text("status") }), 0);
    EXPECT_TRUE(out.endsWith(text("Nobody is signed in. Run \"tavu-ctl login\".")));
}

TEST_F(Ctl, WithoutALoginNothingOfTheServiceIsThere)
{
    player.m_login = hash(R"({"state": "loggedOut", "message": ""})");
    for (const char* command : { "ls", "search", "play", "open" }) {
        const QStringList arguments{ text(command), text("Song") };
        EXPECT_EQ(run(arguments), 6) << command;
        EXPECT_EQ(err, text("tavu-ctl: Nobody is signed in. Run \"tavu-ctl login\"."));
        EXPECT_EQ(out, QString());
        EXPECT_EQ(run(arguments + QStringList{ text("--json") }), 6) << command;
        EXPECT_EQ(json().toHash().value(text("title")),
            text("Nobody is signed in. Run \"tavu-ctl login\"."));
    }
    EXPECT_EQ(run({ text("status") }), 0);
}

TEST_F(Ctl, RowsThatAreNotThereAreNamed)
{
    for (const char* command : { "ls", "play", "open" }) {
        EXPECT_EQ(run({ text(command), text("Nowhere/1") }), 1) << command;
        EXPECT_EQ(err, text("tavu-ctl: There is no row \"Nowhere\" at the root."));
        EXPECT_EQ(run({ text("--json"), text(command), text("Song/7") }), 1);
        EXPECT_EQ(json().toHash().value(text("title")), text("There is no row \"7\" in \"Song\"."));
    }
}

TEST_F(Ctl, OpenTellsHowToSeeOrHearWhatIsNoButton)
{
    EXPECT_EQ(run({ text("open"), text("Song") }), 1);
    EXPECT_EQ(
        err, text("tavu-ctl: \"Song\" is no button. To see or hear it: tavu-ctl play \"Song\""));
    player.pages[QString()] = { hash(R"({"title": "Albums", "type": 1, "path": "/a"})") };
    EXPECT_EQ(run({ text("open"), text("1") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: \"Albums\" is no button. To see or hear it: tavu-ctl ls \"1\""));
    EXPECT_FALSE(player.told().join(text(" ")).contains(text("activateRow")));
}

TEST_F(Ctl, WrongArgumentsEndWithTwoAndAHint)
{
    const QList<QPair<QStringList, QString>> cases{
        { {}, text("A command is missing. Run \"tavu-ctl --help\".") },
        { { text("dance") }, text("There is no command \"dance\". Run \"tavu-ctl --help\".") },
        { { text("--loud") }, text("Unknown option 'loud'. Run \"tavu-ctl --help\".") },
        { { text("--url") }, text("Missing value after '--url'. Run \"tavu-ctl --help\".") },
        { { text("seek"), text("-5") }, text("\"-5\" is less than 0. Run \"tavu-ctl --help\".") },
        { { text("seek") }, text("Usage: tavu-ctl seek SECONDS") },
        { { text("seek"), text("1"), text("2") }, text("Usage: tavu-ctl seek SECONDS") },
        { { text("pause"), text("now") }, text("Usage: tavu-ctl pause") },
        { { text("search"), text(" ") }, text("Usage: tavu-ctl search TEXT") },
        { { text("play"), QString() }, text("Usage: tavu-ctl play ROW/ROW/...") },
        { { text("seek"), text("soon") },
            text("\"soon\" is not a number that \"position\" takes.") },
        { { text("seek"), text("nan") }, text("\"nan\" is not a number that \"position\" takes.") },
        { { text("volume"), text("1e300") },
            text("\"1e300\" is not a number that \"volume\" takes.") },
    };
    for (const auto& [arguments, message] : cases) {
        EXPECT_EQ(run(arguments), 2) << arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_EQ(err, text("tavu-ctl: ") + message);
        EXPECT_EQ(out, QString());
        if (arguments.isEmpty() || arguments.first() == text("--url"))
            continue;
        EXPECT_EQ(run(QStringList{ text("--json") } + arguments), 2);
        EXPECT_EQ(json().toHash().value(text("title")).toString(), message);
    }
    EXPECT_TRUE(player.calls.isEmpty());
}

TEST_F(Ctl, BoundsAreThePlayersAndToldInItsWords)
{
    EXPECT_EQ(run({ text("volume"), text("101") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: \"volume\" is a number, 0 to 100; \"mute\" is true or false."));
    EXPECT_EQ(run({ text("mode"), text("6") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: \"mode\" is a number, 0 to 5."));
}

TEST_F(Ctl, EveryCommandAnswersInOneLineOfJson)
{
    player.whenPlaying = [this] { player.m_player = hash(R"({"state": 2, "error": null})"); };
    player.m_messages = { refusedMessage() };
    const QList<QStringList> commands{ { text("login") }, { text("logout") }, { text("ls") },
        { text("search"), text("Song") }, { text("play"), text("Song") },
        { text("open"), text("Renew") }, { text("pause") }, { text("resume") }, { text("next") },
        { text("prev") }, { text("stop") }, { text("seek"), text("1") },
        { text("volume"), text("30") }, { text("mode"), text("1") }, { text("like") },
        { text("dislike") }, { text("status") }, { text("messages") }, { text("press"), text("1") },
        { text("press"), text("2") } };
    for (const QStringList& command : commands) {
        EXPECT_EQ(run(command + QStringList{ text("--json") }), 0)
            << command.first().toStdString() << ' ' << err.toStdString();
        const QVariant::Type type = json().type();
        EXPECT_TRUE(type == QVariant::Hash || type == QVariant::List)
            << command.first().toStdString() << ": " << out.toStdString();
        EXPECT_EQ(err, QString());
    }
}

TEST_F(Ctl, FailuresAreProblemDetailsInJson)
{
    player.failWith(CMError(hash(R"({"name": "error", "title": "Error", "message": "No next"})")));
    EXPECT_EQ(run({ text("next"), text("--json") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: No next"));
    const QVariantHash problem = json().toHash();
    EXPECT_EQ(problem.value(text("status")).toInt(), 409);
    EXPECT_EQ(problem.value(text("detail")).toString(), text("No next"));
}

TEST_F(Ctl, LoginShowsEachStepToPrograms)
{
    const QVariantHash waiting = hash(R"({"state": "waiting", "userCode": "ABCD", "expiresIn": 9,
        "verificationUri": "http://a.example/"})");
    player.logins = { waiting, waiting, waiting, player.m_login };
    EXPECT_EQ(run({ text("login"), text("--json") }), 0);
    const QStringList lines = out.split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 2) << out.toStdString();
    EXPECT_EQ(
        TavuJson::parse(lines.first().toUtf8()).toHash().value(text("userCode")), text("ABCD"));
    EXPECT_EQ(
        TavuJson::parse(lines.last().toUtf8()).toHash().value(text("state")), text("loggedIn"));
}

TEST_F(Ctl, HelpTellsTheExitCodes)
{
    EXPECT_EQ(run({ text("--help") }), 0);
    for (const char* line : { "0: done", "1: it failed", "2: wrong arguments", "4: the player asks",
             "6: nobody is signed in", "7: no player answers" })
        EXPECT_TRUE(out.contains(text(line))) << line;
}

TEST_F(Ctl, AddressesThatAreNoneAreRefused)
{
    for (const char* address :
        { "", "foo", "http://", "ftp://x", "127.0.0.1:6680", "http://a b/" }) {
        EXPECT_EQ(start({ text("--url"), text(address), text("status") }), 2) << address;
        EXPECT_EQ(err,
            text("tavu-ctl: The player's address must be one such as http://127.0.0.1:6680, not "
                 "\"%1\". See --url.")
                .arg(text(address)));
    }
}

TEST_F(Ctl, ADifferentServerIsNoPlayer)
{
    http::Server other;
    other.setHandler([](const http::Request& request, const http::Responder& responder) {
        const bool json = request.path == QLatin1String("/api/v1/state");
        responder.send({ json ? 404 : 200, {}, json ? "{}" : "<html>" });
    });
    port = other.listen(QHostAddress::LocalHost, 0);
    EXPECT_EQ(run({ text("status") }), 1);
    EXPECT_EQ(err,
        text("tavu-ctl: What answers at http://127.0.0.1:%1 is no player (code 404). Name the "
             "player's address with --url.")
            .arg(port));
    EXPECT_EQ(run({ text("messages") }), 1);
    EXPECT_TRUE(err.contains(text("is no player (code 200)"))) << err.toStdString();
}

TEST_F(Ctl, WithoutAPlayerEndsWithACodeOfItsOwn)
{
    port = 1;
    EXPECT_EQ(run({ text("status") }), 7);
    EXPECT_TRUE(err.contains(text("No player answers at http://127.0.0.1:1"))) << err.toStdString();
}

TEST_F(Ctl, ListsTheRowsOfAScreenByNumberOrTitle)
{
    player.pages[QString()] = { hash(R"({"title": "Albums", "type": 1, "path": "/albums"})"),
        hash(R"({"title": "Home", "type": 6, "longDescription": "Nothing new."})") };
    player.pages[text("/albums")] = {
        hash(R"({"title": "One", "type": 1, "path": "/one", "containerPlayable": true,
                 "mediaData": {"metaData": {"artist": "Ann"}}})"),
        hash(R"({"title": "2", "type": 1, "path": "/two"})"),
    };
    EXPECT_EQ(run({ text("ls") }), 0);
    EXPECT_EQ(out, text("1. [ ] Albums\n  2.     Home\n         Nothing new."));
    for (const char* row : { "1", "Albums", "albums" }) {
        EXPECT_EQ(run({ text("ls"), text(row) }), 0);
        EXPECT_TRUE(out.contains(text(" One - Ann\n"))) << out.toStdString();
    }
    // A title counts before a number.
    EXPECT_EQ(run({ text("ls"), text("Albums/2") }), 0);
    EXPECT_EQ(player.calls.last().arguments.first(), text("/two"));
    EXPECT_EQ(run({ text("ls"), text("Albums/3") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: There is no row \"3\" in \"Albums\"."));
    EXPECT_EQ(run({ text("ls"), text("Songs") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: There is no row \"Songs\" at the root."));
}

TEST_F(Ctl, ListsAsJson)
{
    EXPECT_EQ(run({ text("--json"), text("ls") }), 0);
    const QVariantList rows = TavuJson::parse(out.toUtf8()).toList();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows.first().toHash().value(text("title")), text("Song"));
}

TEST_F(Ctl, SearchesForAllWordsAndListsWhatIsFound)
{
    player.answerWith(text("/found"));
    player.pages[text("/found")] = { hash(R"({"title": "Tune", "type": 3, "path": "/tune"})") };
    EXPECT_EQ(run({ text("search"), text("a"), text("tune & more") }), 0);
    EXPECT_TRUE(player.told().join(text(" ")).contains(text("search[\"a tune & more\"")))
        << player.told().join(text(" ")).toStdString();
    EXPECT_EQ(out, text("1.  >  Tune\nTo play one: tavu-ctl play \"?a tune & more/NUMBER\""));
    player.whenPlaying = [this] { player.m_player = hash(R"({"state": 2, "error": null})"); };
    EXPECT_EQ(run({ text("play"), text("?a tune & more/1") }), 0) << err.toStdString();
    EXPECT_EQ(player.calls.last().arguments.first().toHash().value(text("path")), text("/tune"));
    EXPECT_EQ(run({ text("play"), text("?a/2") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: There is no row \"2\" in \"a\"."));
    player.pages[text("/found")].clear();
    EXPECT_EQ(run({ text("search"), text("no") }), 0);
    EXPECT_EQ(out, text("Nothing found for \"no\"."));
}

TEST_F(Ctl, PassesTransportCommandsOn)
{
    const std::vector<std::pair<QStringList, const char*>> commands{
        { { text("pause") }, R"(command["TogglePause"])" },
        { { text("resume") }, R"(command["Resume"])" },
        { { text("next") }, R"(command["Next"])" },
        { { text("prev") }, R"(command["Previous"])" },
        { { text("stop") }, R"(command["Stop"])" },
        { { text("like") }, R"(command["Like"])" },
        { { text("dislike") }, R"(command["Dislike"])" },
        { { text("seek"), text("61.5") }, "seek[61500]" },
        { { text("volume"), text("40") }, "setVolume[40]" },
        { { text("mode"), text("5") }, "setPlayMode[5]" },
        { { text("logout") }, "logout[]" },
    };
    for (const auto& [arguments, told] : commands) {
        player.calls.clear();
        EXPECT_EQ(run(arguments), 0) << told << err.toStdString();
        ASSERT_EQ(player.told().size(), 1) << told;
        EXPECT_EQ(player.told().first(), text(told));
    }
}

TEST_F(Ctl, ShowsTheCodeOfALoginAndWaitsForItsEnd)
{
    player.m_login = hash(R"({"state": "starting"})");
    QTimer steps;
    steps.start(20);
    int asked = 0;
    QObject::connect(&steps, &QTimer::timeout, [&] {
        if (player.calls.isEmpty() || player.calls.last().name != text("startLogin"))
            return;
        ++asked;
        player.m_login = asked < 30 ? hash(R"({"state": "waiting", "userCode": "AB-12",
                       "verificationUri": "https://login.example/",
                       "verificationUriComplete": "https://login.example/?c=AB-12"})")
                                    : hash(R"({"state": "loggedIn"})");
    });
    EXPECT_EQ(run({ text("login") }), 0);
    EXPECT_EQ(out,
        text("Open https://login.example/ on any device and enter the code AB-12\n"
             "or open https://login.example/?c=AB-12\nSigned in."));
}

TEST_F(Ctl, ALoginThatFailsSaysWhy)
{
    player.m_login = hash(R"({"state": "failed", "message": "The code has ended."})");
    EXPECT_EQ(run({ text("login") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: The code has ended."));
}

TEST_F(Ctl, StatusTellsWhatPlaysAndHow)
{
    player.m_login = hash(R"({"state": "loggedIn"})");
    player.m_player = hash(R"({"state": 2, "title": "Song", "artist": "Ann", "position": 61000,
        "duration": 3725000, "volume": 40, "mute": true, "mode": 5, "error": null})");
    EXPECT_EQ(run({ text("status") }), 0);
    EXPECT_EQ(out,
        text("playing  1:01 / 1:02:05\nSong - Ann\nvolume 40 (muted), mode shuffle, repeat all"));
    EXPECT_EQ(run({ text("--json"), text("status") }), 0);
    EXPECT_EQ(
        TavuJson::parse(out.toUtf8()).toHash().value(text("player")).toHash().value(text("title")),
        text("Song"));
    player.m_login = hash(R"({"state": "waiting"})");
    EXPECT_EQ(run({ text("status") }), 0);
    EXPECT_TRUE(out.endsWith(text("Nobody is signed in. Run \"tavu-ctl login\".")))
        << out.toStdString();
}

TEST_F(Ctl, ReachesTitlesWithASlash)
{
    player.pages[QString()] = {
        hash(R"({"title": "AC/DC Live", "type": 1, "path": "/live"})"),
        hash(R"({"title": "AC", "type": 1, "path": "/ac"})"),
    };
    player.pages[text("/live")] = { hash(R"({"title": "On \\/ Off", "type": 3, "path": "/on"})") };
    player.pages[text("/ac")] = { hash(R"({"title": "Other", "type": 3, "path": "/other"})") };
    EXPECT_EQ(run({ text("ls"), text("AC\\/DC Live") }), 0) << err.toStdString();
    EXPECT_EQ(out, text("1.  >  On \\/ Off"));
    EXPECT_EQ(run({ text("ls"), text("AC") }), 0) << err.toStdString();
    EXPECT_EQ(out, text("1.  >  Other"));
    player.whenPlaying = [this] { player.m_player = hash(R"({"state": 2, "error": null})"); };
    EXPECT_EQ(run({ text("play"), text("AC\\/DC Live/On \\\\\\/ Off") }), 0) << err.toStdString();
    EXPECT_EQ(player.calls.last().name, text("play"));
}

TEST_F(Ctl, WritesASearchedSlashAsItIsToBeTyped)
{
    player.answerWith(text("/found"));
    player.pages[text("/found")] = { hash(R"({"title": "Tune", "type": 3, "path": "/tune"})") };
    EXPECT_EQ(run({ text("search"), text("AC/DC") }), 0) << err.toStdString();
    EXPECT_EQ(out, text("1.  >  Tune\nTo play one: tavu-ctl play \"?AC\\/DC/NUMBER\""));
    EXPECT_EQ(run({ text("ls"), text("?AC\\/DC") }), 0) << err.toStdString();
    EXPECT_EQ(player.told().filter(text("search[\"AC/DC\"")).size(), 2);
}

TEST_F(Ctl, SaysWhatTheSoundIs)
{
    player.m_player = hash(R"({"state": 2, "title": "Song", "position": 0, "duration": 60000,
        "mode": 0, "volume": 50, "mute": false, "error": null,
        "audio": {"codec": "FLAC", "lossless": true, "sampleRate": 44100, "bitDepth": 16,
                  "output": {"name": "Speakers"}}})");
    EXPECT_EQ(run({ text("status") }), 0) << err.toStdString();
    EXPECT_TRUE(out.contains(text("FLAC, 44.1 kHz, 16 bit, lossless, to Speakers")))
        << out.toStdString();
    player.m_player[text("audio")] = hash(R"({"codec": "MP3", "lossless": false,
        "sampleRate": 48000, "bitRate": 128000, "output": {"name": "Speakers"}})");
    EXPECT_EQ(run({ text("status") }), 0) << err.toStdString();
    EXPECT_TRUE(out.contains(text("MP3, 48 kHz, 128 kbit/s, to Speakers"))) << out.toStdString();
}

TEST_F(Ctl, ShowsWhatHasPlayedAndWhatFollows)
{
    EXPECT_EQ(run({ text("queue") }), 0) << err.toStdString();
    EXPECT_EQ(out, text("Nothing has played yet."));
    player.m_queue = hash(R"({"endless": true, "from": {"title": "Coast", "type": 3},
        "played": [{"at": "2024-01-01T12:00:00.000Z", "row": {"title": "First", "type": 3}}],
        "current": {"title": "Second", "type": 3,
                    "mediaData": {"metaData": {"artist": "Somebody"}}},
        "next": {"title": "Third", "type": 3}})");
    EXPECT_EQ(run({ text("queue") }), 0) << err.toStdString();
    const QStringList lines = out.split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0], text("from   Coast (endless)"));
    EXPECT_TRUE(lines[1].endsWith(text(":00  First"))) << lines[1].toStdString();
    EXPECT_EQ(lines[2], text("now    Second - Somebody"));
    EXPECT_EQ(lines[3], text("next   Third"));
    EXPECT_EQ(run({ text("--json"), text("queue") }), 0) << err.toStdString();
    EXPECT_EQ(json().toHash().value(text("endless")), QVariant(true));
}

TEST_F(Ctl, SetsTheSleepTimerAndCallsItOff)
{
    EXPECT_EQ(run({ text("sleep"), text("30") }), 0) << err.toStdString();
    EXPECT_EQ(run({ text("sleep"), text("45"), text("finish") }), 0) << err.toStdString();
    EXPECT_EQ(run({ text("sleep"), text("off") }), 0) << err.toStdString();
    EXPECT_EQ(player.told(),
        QStringList({ text("setSleep[1800000,false]"), text("setSleep[2700000,true]"),
            text("setSleep[0,false]") }));
    EXPECT_EQ(run({ text("sleep"), text("2000") }), 1);
    for (const char* wrong : { "0", "soon", "1.5" })
        EXPECT_EQ(run({ text("sleep"), text(wrong) }), 2) << wrong;
    EXPECT_EQ(run({ text("sleep"), text("5"), text("begin") }), 2);
    player.m_player[text("sleep")] = hash(R"({"at": 1, "remaining": 90000, "finishTrack": true})");
    EXPECT_EQ(run({ text("status") }), 0);
    EXPECT_TRUE(out.contains(text("sleeps in 1:30, at the end of the track"))) << out.toStdString();
}
