#include "emulatorclient.h"
#include "musicfolder.h"

#include "emulator/http/certificates.h"
#include "tavuamazonmusic.h"
#include "tavujson.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSslConfiguration>
#include <QTcpServer>

using namespace emulator;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

// Two albums: one in FLAC of five tracks, one in Opus.
class Service : public ::testing::Test
{
protected:
    void SetUp() override
    {
        for (int i = 1; i <= 5; ++i)
            addTone(QStringLiteral("one/%1.flac").arg(i), samples::Format::Flac, "First", i);
        addTone(text("two/1.opus"), samples::Format::Opus, "Second", 1);
        ASSERT_EQ(m_client.start().toStdString(), "");
    }

    void addTone(const QString& name, samples::Format format, const char* album, int number)
    {
        catalogue::Tags tags = tagged("Someone", album, "", number);
        tags.title = QStringLiteral("%1 %2").arg(tags.album).arg(number);
        ASSERT_EQ(makeTone(m_client.musicFolder() + QLatin1Char('/') + name, format, tags, 0.2)
                      .toStdString(),
            "");
    }

    TavuAmazonMusic document(const QString& path)
    {
        return TavuAmazonMusic(m_client.document(path));
    }

    // The chunk of the first album on the page of albums, found as a player finds it.
    QString firstChunk()
    {
        const TavuAmazonMusic page = document(text("/albums/"));
        const auto node = TavuAmazonMusicNavigationNodeDescription(
            page.navigationNodeDescriptions().__value(page.result().mid(1)).toHash());
        const auto item = TavuAmazonMusicItemDescription(
            page.itemDescriptions().__value(node.items().first().mid(1)).toHash());
        return TavuAmazonMusicPlayable(page.playables().__value(item.playable().mid(1)).toHash())
            .naturalTrackPointer()
            .chunk();
    }

    TavuAmazonMusicTrackInstance instanceOf(const TavuAmazonMusic& chunk, int index)
    {
        return TavuAmazonMusicTrackInstance(
            chunk.trackInstances().__value(QStringLiteral("instance-%1").arg(index)).toHash());
    }

    TavuAmazonMusicTrackDefinition trackOf(const TavuAmazonMusic& chunk, int index)
    {
        return TavuAmazonMusicTrackDefinition(
            chunk.trackDefinitions()
                .__value(instanceOf(chunk, index).trackDefinition().mid(1))
                .toHash());
    }

    std::vector<LedgerEntry> ledger(const char* kind)
    {
        Ledger::Filter filter;
        filter.kinds = QStringList{ text(kind) };
        return m_client.emulator().ledger().entries(filter);
    }

    static QByteArray fileBytes(const QString& name)
    {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    EmulatorClient m_client;
};

} // namespace

TEST_F(Service, AlbumIsFoundAndItsSoundIsTheFile)
{
    const TavuAmazonMusic chunk = document(firstChunk());
    const auto track = trackOf(chunk, 0);
    EXPECT_EQ(track.title(), text("First 1"));
    const Reply sound = m_client.get(track.audio().uri(), { { "authorization", "" } });
    EXPECT_EQ(sound.status, 200);
    EXPECT_EQ(sound.header("Content-Type"), "audio/flac");
    EXPECT_EQ(sound.body, fileBytes(m_client.musicFolder() + text("/one/1.flac")));
}

TEST_F(Service, SoundIsServedByRanges)
{
    const QString url = trackOf(document(firstChunk()), 0).audio().uri();
    const QByteArray whole = fileBytes(m_client.musicFolder() + text("/one/1.flac"));
    const Reply part = m_client.get(url, { { "range", "bytes=100-149" } });
    EXPECT_EQ(part.status, 206);
    EXPECT_EQ(part.body, whole.mid(100, 50));
    EXPECT_EQ(m_client.get(url, { { "range", "bytes=99999999-" } }).status, 416);
    const auto told = ledger("audio");
    EXPECT_EQ(told.front().details.value(text("range")).toString(), text("bytes=100-149"));
    EXPECT_EQ(told.front().status, 206);
    EXPECT_EQ(told.back().status, 416);
}

TEST_F(Service, ProtectedSoundNeedsItsKeyHeaders)
{
    const auto audio = trackOf(document(firstChunk()), 3).audio();
    const auto headers = audio.headers().keyHeaders();
    ASSERT_EQ(headers.size(), 2);
    const auto pair = [&headers](int i) {
        return qMakePair(headers.record(i).name().toUtf8(), headers.record(i).value().toUtf8());
    };
    EXPECT_EQ(m_client.get(audio.uri()).status, 403);
    EXPECT_EQ(m_client.get(audio.uri(), { pair(0) }).status, 403);
    EXPECT_EQ(
        m_client.get(audio.uri(), { pair(0), qMakePair(pair(1).first, QByteArray("x")) }).status,
        403);
    EXPECT_EQ(m_client.get(audio.uri(), { pair(0), pair(1) }).status, 200);
    EXPECT_FALSE(ledger("audio").front().details.value(text("keyHeaders")).toBool());
    EXPECT_TRUE(ledger("audio").back().details.value(text("keyHeaders")).toBool());
}

TEST_F(Service, SoundExpires)
{
    m_client.run([this] { m_client.emulator().documentRules().expiresAfterMs = -1; });
    EXPECT_EQ(m_client.get(trackOf(document(firstChunk()), 0).audio().uri()).status, 403);
    m_client.run([this] { m_client.emulator().documentRules().expiresAfterMs = 60000; });
    const QString again =
        document(instanceOf(document(firstChunk()), 0).selfData()).trackInstances().isEmpty()
        ? QString()
        : trackOf(document(firstChunk()), 0).audio().uri();
    EXPECT_EQ(m_client.get(again).status, 200);
}

TEST_F(Service, SoundAddressesStayGoodOverARestart)
{
    const QString path = QUrl(trackOf(document(firstChunk()), 0).audio().uri())
                             .toString(QUrl::RemoveScheme | QUrl::RemoveAuthority);
    ASSERT_EQ(m_client.restart().toStdString(), "");
    EXPECT_EQ(m_client.get(path).status, 200);
    EXPECT_EQ(m_client.get(text("/albums/")).status, 200); // the token too
}

TEST_F(Service, EveryDocumentNeedsAToken)
{
    for (const char* path : { "/", "/albums/", "/search/?keywords=x", "/chunks/albums/1" }) {
        const Reply refused = m_client.get(text(path), { { "authorization", "" } });
        EXPECT_EQ(refused.status, 401) << path;
        EXPECT_FALSE(refused.header("WWW-Authenticate").isEmpty());
    }
    EXPECT_EQ(m_client.get(text("/"), { { "authorization", "Bearer nonsense" } }).status, 401);
    EXPECT_EQ(m_client.get(text("/"), { { "authorization", "Basic abc" } }).status, 401);
    EXPECT_EQ(m_client.get(text("/")).status, 200);
    QStringList tokens;
    for (const LedgerEntry& entry : ledger("browse"))
        tokens += entry.details.value(text("token")).toString();
    EXPECT_EQ(tokens,
        (QStringList{
            text("missing"), text("missing"), text("unknown"), text("unknown"), text("good") }));
}

TEST_F(Service, ExpiredAndRevokedTokensAreRefused)
{
    EXPECT_EQ(m_client.get(text("/")).status, 200);
    EXPECT_EQ(m_client.post(text("/emulator/login/expire"), "{}").status, 200);
    EXPECT_EQ(m_client.get(text("/")).status, 401);
    const QByteArray fresh = "Bearer "
        + m_client.post(text("/emulator/login/token"), "{}")
              .json()
              .value(text("access_token"))
              .toByteArray();
    EXPECT_EQ(m_client.get(text("/"), { { "authorization", fresh } }).status, 200);
    EXPECT_EQ(m_client.post(text("/emulator/login/revoke"), "{}").status, 200);
    EXPECT_EQ(m_client.get(text("/"), { { "authorization", fresh } }).status, 401);
    EXPECT_EQ(ledger("browse").back().details.value(text("token")).toString(), text("revoked"));
}

TEST_F(Service, PagesAreRevalidatedNotRead)
{
    const Reply first = m_client.get(text("/albums/"));
    const QByteArray tag = first.header("ETag");
    EXPECT_EQ(first.header("Cache-Control"), "private, no-cache");
    const Reply again = m_client.get(text("/albums/"), { { "if-none-match", tag } });
    EXPECT_EQ(again.status, 304);
    EXPECT_TRUE(again.body.isEmpty());
    EXPECT_EQ(m_client.get(text("/artists/"), { { "if-none-match", tag } }).status, 200);
}

TEST_F(Service, WhatExpiresIsNotKept)
{
    EXPECT_EQ(m_client.get(firstChunk()).header("Cache-Control"), "no-store");
}

TEST_F(Service, ReportsAreTakenAndToldInTheLedger)
{
    const TavuAmazonMusic chunk = document(firstChunk());
    const Reply reply = m_client.post(instanceOf(chunk, 2).playbackEventCollector(),
        R"({"event":"START","reason":"TRACK_SELECTED","trackPosition":0})");
    EXPECT_EQ(reply.status, 200);
    const LedgerEntry entry = ledger("report").front();
    EXPECT_EQ(entry.details.value(text("track")).toString(), text("First 3"));
    EXPECT_EQ(entry.details.value(text("report")).toHash().value(text("event")).toString(),
        text("START"));
    EXPECT_TRUE(entry.details.value(text("in")).toString().endsWith(text("-2")));
    EXPECT_EQ(m_client.post(text("/events/0000000000000001"), "{}").status, 404);
}

TEST_F(Service, RatingsAreAnsweredWithAMessage)
{
    const QString url = trackOf(document(firstChunk()), 0).trackRating().ratingURI();
    const TavuAmazonMusicRatings up(
        m_client.post(url, R"({"thumbRating":"UP","trackPosition":5})").json());
    const auto response = TavuAmazonMusicTrackRatingResponse(
        up.trackRatingResponses().__value(up.result().mid(1)).toHash());
    EXPECT_EQ(response.message(), text("Thanks! You will hear more like this."));
    EXPECT_FALSE(response.shouldSkip());
    const TavuAmazonMusicRatings skip(
        m_client.post(url + text("?in=messages-skip-0"), R"({"thumbRating":"DOWN"})").json());
    EXPECT_TRUE(TavuAmazonMusicTrackRatingResponse(
        skip.trackRatingResponses().__value(skip.result().mid(1)).toHash())
                    .shouldSkip());
    EXPECT_EQ(ledger("rating").size(), 2u);
}

TEST_F(Service, ARefusedStartCarriesTheReport)
{
    const QString path =
        QUrl(instanceOf(document(firstChunk()), 0).playbackEventCollector()).path();
    const QString url = path + text("?in=messages-ask-0");
    const Reply refused = m_client.post(url, R"({"event":"START"})");
    EXPECT_EQ(refused.status, 409);
    const TavuAmazonMusicErrors errors(refused.json());
    EXPECT_TRUE(errors.generalErrorReports().__contains(errors.result().mid(1)));
    EXPECT_EQ(m_client.post(url, R"({"event":"STOP"})").status, 200);
    EXPECT_EQ(m_client.post(text("/selections/go-on"), {}).status, 200);
    EXPECT_EQ(m_client.post(text("/actions/play-here"), {}).status, 200);
}

TEST_F(Service, ArtworkIsThePictureOrDrawn)
{
    const QString url = trackOf(document(firstChunk()), 0).image().uri();
    const Reply drawn = m_client.get(url, { { "authorization", "" } });
    EXPECT_EQ(drawn.status, 200);
    EXPECT_EQ(drawn.header("Content-Type"), "image/png");
    EXPECT_TRUE(drawn.body.startsWith("\x89PNG"));
    EXPECT_EQ(m_client.get(text("/artwork/drawn/a%2Fb%20%C3%A9")).status, 200);
    EXPECT_EQ(m_client.get(text("/artwork/albums/0000000000000001")).status, 404);
}

TEST_F(Service, UnknownAddressesAreRefusedAndTold)
{
    EXPECT_EQ(m_client.get(text("/nowhere")).status, 404);
    EXPECT_EQ(m_client.get(text("/nowhere/")).status, 404);
    EXPECT_EQ(m_client.get(text("/albums/zzz/")).status, 404);
    EXPECT_EQ(m_client.post(text("/albums/"), "{}").status, 405);
    EXPECT_EQ(ledger("other").front().path, text("/nowhere"));
}

TEST_F(Service, SpeaksTlsUnderEachOfItsNames)
{
    const Identity authority{ fileBytes(m_client.emulator().caFile()), {} };
    QSslConfiguration trust = QSslConfiguration::defaultConfiguration();
    trust.setCaCertificates(
        QSslCertificate::fromData(fileBytes(m_client.emulator().caFile()), QSsl::Pem));
    ASSERT_EQ(trust.caCertificates().size(), 1);
    for (const char* name : { "music.localhost", "eu.music.localhost", "foreign.example.localhost",
             "localhost", "127.0.0.1" }) {
        QSslSocket socket;
        socket.setSslConfiguration(trust);
        socket.connectToHostEncrypted(text("127.0.0.1"), m_client.emulator().tlsPort(), text(name));
        EXPECT_TRUE(socket.waitForEncrypted(5000))
            << name << ": " << socket.errorString().toStdString();
    }
    QSslSocket stranger;
    stranger.setSslConfiguration(trust);
    stranger.connectToHostEncrypted(
        text("127.0.0.1"), m_client.emulator().tlsPort(), text("other.example"));
    EXPECT_FALSE(stranger.waitForEncrypted(5000));
}

TEST_F(Service, KeepsItsCertificateAuthorityOverARestart)
{
    const QByteArray before = fileBytes(m_client.emulator().caFile());
    ASSERT_EQ(m_client.restart().toStdString(), "");
    EXPECT_EQ(fileBytes(m_client.emulator().caFile()), before);
}

TEST_F(Service, TellsItsStateItsCatalogueAndItsLedger)
{
    const QVariantHash status = m_client.document(text("/emulator/status"));
    EXPECT_EQ(status.value(text("tracks")).toInt(), 6);
    EXPECT_EQ(status.value(text("albums")).toInt(), 2);
    EXPECT_EQ(status.value(text("scan")).toString(), text("done"));
    const QVariantHash first = m_client.document(text("/emulator/catalogue?limit=1"))
                                   .value(text("tracks"))
                                   .toList()
                                   .first()
                                   .toHash();
    EXPECT_EQ(first.value(text("title")).toString(), text("First 1"));
    EXPECT_TRUE(QFile::exists(first.value(text("file")).toString()));
    m_client.get(text("/albums/"));
    const QVariantHash told = m_client.document(text("/emulator/ledger?kind=browse&since=0"));
    EXPECT_EQ(told.value(text("entries")).toList().size(), 1);
    EXPECT_EQ(m_client.post(text("/emulator/ledger/clear"), "{}").status, 200);
    EXPECT_TRUE(
        m_client.document(text("/emulator/ledger")).value(text("entries")).toList().isEmpty());
}

TEST_F(Service, ChangesNothingForForeignPages)
{
    const auto refused = [this](const EmulatorClient::Headers& headers) {
        return m_client.post(text("/emulator/faults"), R"({"effect":"hang"})", headers).status;
    };
    EXPECT_EQ(refused({ { "origin", "https://evil.example" } }), 403);
    EXPECT_EQ(refused({ { "origin", "null" } }), 403);
    EXPECT_EQ(refused({ { "content-type", "text/plain" } }), 403);
    EXPECT_EQ(refused({ { "host", "evil.example" } }), 421);
    EXPECT_TRUE(m_client.emulator().dial().rules().empty());
}

TEST_F(Service, LeavesSecretsOutOfTheLedger)
{
    const auto audio = trackOf(document(firstChunk()), 3).audio();
    m_client.get(audio.uri(), { { "x-audio-key", "very-secret-key" } });
    m_client.post(text("/oauth2/token"), "grant_type=refresh_token&refresh_token=very-secret-token",
        { { "content-type", "application/x-www-form-urlencoded" } });
    m_client.get(text("/activate?user_code=BCDF-GHJK"));
    const QByteArray told = m_client.get(text("/emulator/ledger")).body;
    EXPECT_FALSE(told.contains("very-secret"));
    EXPECT_FALSE(told.contains("BCDF"));
    EXPECT_FALSE(told.contains(m_client.bearer().mid(7)));
    EXPECT_TRUE(told.contains("signature=redacted"));
}

TEST(ServiceStart, NamesAPortThatIsInUse)
{
    QTcpServer holder;
    ASSERT_TRUE(holder.listen(QHostAddress::LocalHost, 0));
    EmulatorClient client;
    client.settings.httpPort = holder.serverPort();
    const QString problem = client.start();
    EXPECT_TRUE(problem.contains(QString::number(holder.serverPort()))) << problem.toStdString();
}

TEST(ServiceStart, SaysThatThereIsNoMusicAndServesAllTheSame)
{
    EmulatorClient client;
    ASSERT_EQ(client.start().toStdString(), "");
    const TavuAmazonMusic root(client.document(text("/")));
    EXPECT_TRUE(
        TavuAmazonMusicItemDescription(root.itemDescriptions().__value(text("notice")).toHash())
            .itemLabel()
            .startsWith(text("There is no music in the folder")));
    EXPECT_EQ(client.get(text("/albums/")).status, 200);
    EXPECT_EQ(client.get(text("/messages/")).status, 200);
}

TEST(ServiceStart, RefusesAStateFolderThatCannotBeMade)
{
    EmulatorClient client;
    client.settings.stateFolder = text("/proc/nowhere");
    EXPECT_TRUE(client.start().contains(text("--state")));
}

TEST(ServiceStart, OnEveryAddressNamesOneThatOthersCanReach)
{
    EmulatorClient client;
    client.settings.address = QHostAddress(QHostAddress::AnyIPv4);
    ASSERT_EQ(client.start().toStdString(), "");
    QVariantHash told;
    client.run([&] { told = client.emulator().description(); });
    EXPECT_FALSE(told.value(text("verificationUri")).toString().contains(text("0.0.0.0")));
    EXPECT_EQ(QUrl(told.value(text("http")).toString()).port(), client.emulator().httpPort());
}
