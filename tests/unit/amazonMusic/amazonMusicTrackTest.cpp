#include "amazonMusicTrack.h"

#include "mimetypes.h"
#include "printers.h"
#include "tavupaths.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

const QString farExpiry = QStringLiteral("2130-01-01T00:00:00.000Z");

TavuAmazonMusicTrackInstance instanceOf(const TavuAmazonMusicTrackDefinition& definition)
{
    TavuAmazonMusicTrackInstance instance;
    instance.setTrackDefinitionInst(definition);
    instance.setSelfDataUrl(QStringLiteral("https://service.example/tracks/1?a=b&c=d#inst"));
    instance.setPlaybackEventCollectorUrl(QStringLiteral("https://service.example/events/1"));
    return instance;
}

TavuAmazonMusicTrackDefinition definitionWith(const TavuAmazonMusicAudio& audio)
{
    TavuAmazonMusicArtist artist;
    artist.setName(QStringLiteral("Artist"));
    TavuAmazonMusicAlbum album;
    album.setName(QStringLiteral("Album"));
    TavuAmazonMusicImage image;
    image.setUri(QStringLiteral("https://images.example/1.jpg"));
    TavuAmazonMusicTrackDefinition definition;
    definition.setTitle(QStringLiteral("Title"));
    definition.setArtist(artist);
    definition.setAlbum(album);
    definition.setImage(image);
    definition.setDuration(123456);
    definition.setTrackRatingUrl(QStringLiteral("https://service.example/ratings/1"));
    definition.setAudio(audio);
    return definition;
}

TavuAmazonMusicAudio audioUntil(const QString& expires)
{
    TavuAmazonMusicAudio audio;
    audio.setUri(QStringLiteral("https://cdn.example/1.flac"));
    audio.setExpires(expires);
    return audio;
}

AmazonMusicTrack trackUntil(const QString& expires)
{
    return AmazonMusicTrack(3, 7, instanceOf(definitionWith(audioUntil(expires))));
}

AmazonMusicTrack encryptedTrack()
{
    TavuList<TavuAmazonMusicAudioHeader> list;
    for (const auto& [name, value] : { std::pair("A", "1"), std::pair("B", "2") }) {
        TavuAmazonMusicAudioHeader header;
        header.setName(QString::fromLatin1(name));
        header.setValue(QString::fromLatin1(value));
        list.append(header);
    }
    TavuAmazonMusicAudioHeaders headers;
    headers.setKeyHeaders(list);
    TavuAmazonMusicAudio audio = audioUntil(farExpiry);
    audio.setHeaders(headers);
    return AmazonMusicTrack(0, 0, instanceOf(definitionWith(audio)));
}

QStringList keysOf(const TavuHash& record)
{
    QStringList keys = record.__hash().keys();
    keys.sort();
    return keys;
}

QVariantHash cryptoOf(const AmazonMusicTrack& track)
{
    return track.tavuRoles().mediaData().firstResource().cryptoData();
}

QDateTime utc(const char* text)
{
    QDateTime time = QDateTime::fromString(QString::fromLatin1(text), Qt::ISODateWithMs);
    time.setTimeSpec(Qt::UTC);
    return time;
}

TEST(AmazonMusicTrack, IsNotSetAtFirstAndHasNoPlace)
{
    const AmazonMusicTrack track;
    EXPECT_FALSE(track.isSet());
    EXPECT_EQ(track.naturalId(), -1);
    EXPECT_EQ(track.shuffleId(), -1);
    EXPECT_EQ(track.token(), QString());
    EXPECT_TRUE(track.eventCollectorUrl().isEmpty());
    EXPECT_TRUE(track.ratingUrl().isEmpty());
    EXPECT_FALSE(track.encrypted());
    EXPECT_FALSE(track.expired());
}

TEST(AmazonMusicTrack, ClearingKeepsIdsAndToken)
{
    AmazonMusicTrack track = trackUntil(farExpiry);
    track.setToken(QStringLiteral("token"));
    EXPECT_TRUE(track.isSet());
    track.clear();
    EXPECT_FALSE(track.isSet());
    EXPECT_TRUE(track.trackInstance().isEmpty());
    EXPECT_EQ(track.naturalId(), 3);
    EXPECT_EQ(track.shuffleId(), 7);
    EXPECT_EQ(track.token(), QStringLiteral("token"));
}

TEST(AmazonMusicTrack, GivesTheUrlsOfItsDocument)
{
    const AmazonMusicTrack track = trackUntil(farExpiry);
    EXPECT_EQ(
        track.eventCollectorUrl().toString(), QStringLiteral("https://service.example/events/1"));
    EXPECT_EQ(track.ratingUrl().toString(), QStringLiteral("https://service.example/ratings/1"));
}

TEST(AmazonMusicTrack, ExpiryNeedsMilliseconds)
{
    EXPECT_TRUE(trackUntil(QStringLiteral("2020-01-01T00:00:00.000Z")).expired());
    EXPECT_FALSE(trackUntil(QStringLiteral("2020-01-01T00:00:00Z")).expired());
    EXPECT_FALSE(trackUntil(QStringLiteral("2020-01-01T00:00:00.00Z")).expired());
}

TEST(AmazonMusicTrack, ExpiryOfAnotherFormDoesNotExpire)
{
    for (const char* text : { "", "soon", "1577836800000", "2020-01-01T00:00:00.000",
             "2020-01-01 00:00:00.000Z", "2020-02-30T00:00:00.000Z", "2020-01-01T24:00:00.000Z",
             "20200101T000000.000Z", "2020-01-01T00:00:00.000Z " })
        EXPECT_FALSE(trackUntil(QString::fromLatin1(text)).expired()) << text;
}

TEST(AmazonMusicTrack, ExpiryMayBeInLowerCase)
{
    EXPECT_TRUE(trackUntil(QStringLiteral("2020-01-01t00:00:00.000z")).expired());
    EXPECT_EQ(trackUntil(QStringLiteral("2030-01-01t00:00:00.000z"))
                  .tavuRoles()
                  .mediaData()
                  .firstResource()
                  .validUntil(),
        1893456000000);
}

TEST(AmazonMusicTrack, IsStillGoodAtTheInstantOfItsExpiry)
{
    const AmazonMusicTrack track = trackUntil(QStringLiteral("2030-01-01T00:00:00.000Z"));
    EXPECT_FALSE(track.expiredAt(utc("2029-12-31T23:59:59.999")));
    EXPECT_FALSE(track.expiredAt(utc("2030-01-01T00:00:00.000")));
    EXPECT_TRUE(track.expiredAt(utc("2030-01-01T00:00:00.001")));
}

TEST(AmazonMusicTrack, ExpiresInTheHourThatLocalTimeLeavesOut)
{
    const QByteArray before = qgetenv("TZ");
    qputenv("TZ", "Europe/Berlin");
    tzset();
    const AmazonMusicTrack track = trackUntil(QStringLiteral("2026-03-29T02:30:00.000Z"));
    EXPECT_EQ(track.tavuRoles().mediaData().firstResource().validUntil(), 1774751400000);
    if (before.isNull())
        qunsetenv("TZ");
    else
        qputenv("TZ", before);
    tzset();
}

TEST(AmazonMusicTrack, RolesSayWhatPlays)
{
    const TavuRoles roles = trackUntil(farExpiry).tavuRoles();
    EXPECT_EQ(roles.title(), QStringLiteral("Title"));
    EXPECT_EQ(roles.icon(), QStringLiteral("https://images.example/1.jpg"));
    EXPECT_EQ(roles.path().text(), TavuAmazonMusicPrefixPath().text());
    EXPECT_EQ(roles.path().param(QStringLiteral("trackUrl")),
        QStringLiteral("https://service.example/tracks/1?a=b&c=d#inst"));

    const TavuMetaData metaData = roles.mediaData().metaData();
    EXPECT_EQ(metaData.artist(), QStringLiteral("Artist"));
    EXPECT_EQ(metaData.album(), QStringLiteral("Album"));
    EXPECT_EQ(metaData.track(), QStringLiteral("Title"));
    EXPECT_EQ(metaData.playLogicPath(), TavuAmazonMusicPlayLogicPath());

    ASSERT_EQ(roles.mediaData().resources().size(), 1);
    const TavuResource resource = roles.mediaData().firstResource();
    EXPECT_EQ(resource.uri(), QStringLiteral("https://cdn.example/1.flac"));
    EXPECT_EQ(resource.duration(), 123456);
    EXPECT_EQ(resource.mimeType(), MimeTypes::Audio::unknown());
}

TEST(AmazonMusicTrack, RolesSayNothingElse)
{
    const TavuRoles roles = trackUntil(farExpiry).tavuRoles();
    EXPECT_EQ(keysOf(roles),
        (QStringList{
            TavuRoles::Icon(), TavuRoles::MediaData(), TavuRoles::Path(), TavuRoles::Title() }));
    EXPECT_EQ(keysOf(roles.mediaData().metaData()),
        (QStringList{ TavuMetaData::Album(), TavuMetaData::Artist(), TavuMetaData::PlayLogicPath(),
            TavuMetaData::PrePlayData(), TavuMetaData::PrePlayPath(), TavuMetaData::Track() }));
    EXPECT_EQ(keysOf(roles.mediaData().firstResource()),
        (QStringList{ TavuResource::Duration(), TavuResource::MimeType(), TavuResource::Uri(),
            TavuResource::ValidUntil() }));
}

TEST(AmazonMusicTrack, ATimeOfExpiryBringsTheWayToANewResource)
{
    const TavuMediaData mediaData =
        trackUntil(QStringLiteral("2030-01-01T00:00:00.000Z")).tavuRoles().mediaData();
    EXPECT_EQ(mediaData.firstResource().validUntil(), 1893456000000);
    EXPECT_EQ(mediaData.metaData().prePlayPath(), TavuAmazonMusicPrePlayPath());
    const CMPath data = CMPath::fromEncoded(mediaData.metaData().prePlayData());
    EXPECT_EQ(data.text(), TavuAmazonMusicPrefixPath().text());
    EXPECT_EQ(data.param(QStringLiteral("url")),
        QStringLiteral("https://service.example/tracks/1?a=b&c=d#inst"));
}

TEST(AmazonMusicTrack, WithoutATimeOfExpiryThereIsNothingToRenew)
{
    const TavuMediaData mediaData =
        trackUntil(QStringLiteral("2030-01-01T00:00:00Z")).tavuRoles().mediaData();
    EXPECT_FALSE(mediaData.firstResource().__contains(TavuResource::ValidUntil()));
    EXPECT_FALSE(mediaData.metaData().__contains(TavuMetaData::PrePlayPath()));
    EXPECT_FALSE(mediaData.metaData().__contains(TavuMetaData::PrePlayData()));
}

TEST(AmazonMusicTrack, KeyHeadersTravelAsLinesInTheirOrder)
{
    AmazonMusicTrack track = encryptedTrack();
    EXPECT_TRUE(track.encrypted());
    track.setToken(QStringLiteral("token"));
    const QVariantHash crypto = cryptoOf(track);
    ASSERT_EQ(crypto.keys(), QStringList{ QStringLiteral("amazonMusic") });
    const QVariantHash data = crypto.value(QStringLiteral("amazonMusic")).toHash();
    EXPECT_EQ(data.value(QStringLiteral("token")).toString(), QStringLiteral("token"));
    EXPECT_EQ(data.value(QStringLiteral("key-headers")).toStringList(),
        (QStringList{ QStringLiteral("A: 1"), QStringLiteral("B: 2") }));
    EXPECT_EQ(data.size(), 2);
}

TEST(AmazonMusicTrack, AnEmptyTokenIsLeftOut)
{
    const QVariantHash data =
        cryptoOf(encryptedTrack()).value(QStringLiteral("amazonMusic")).toHash();
    EXPECT_EQ(data.keys(), QStringList{ QStringLiteral("key-headers") });
}

TEST(AmazonMusicTrack, ATrackWithoutHeadersHasNoCryptoData)
{
    AmazonMusicTrack track = trackUntil(farExpiry);
    track.setToken(QStringLiteral("token"));
    EXPECT_FALSE(track.encrypted());
    EXPECT_FALSE(
        track.tavuRoles().mediaData().firstResource().__contains(TavuResource::CryptoData()));
}

TEST(AmazonMusicTrack, HeadersWithoutKeyHeadersStillEncrypt)
{
    TavuAmazonMusicAudioHeaders headers;
    headers.setKeyHeaders({});
    TavuAmazonMusicAudio audio = audioUntil(farExpiry);
    audio.setHeaders(headers);
    const AmazonMusicTrack track(0, 0, instanceOf(definitionWith(audio)));
    EXPECT_TRUE(track.encrypted());
    EXPECT_TRUE(
        track.tavuRoles().mediaData().firstResource().__contains(TavuResource::CryptoData()));
}

TEST(AmazonMusicTrack, WithoutADocumentOfItsOwnItHasNoPath)
{
    TavuAmazonMusicTrackInstance instance = instanceOf(definitionWith(audioUntil(farExpiry)));
    instance.setSelfDataUrl(QString());
    EXPECT_FALSE(AmazonMusicTrack(0, 0, instance).tavuRoles().__contains(TavuRoles::Path()));
}

TEST(AmazonMusicTrack, ATitleKeepsItsPercentSigns)
{
    TavuAmazonMusicTrackDefinition definition = definitionWith(audioUntil(farExpiry));
    definition.setTitle(QStringLiteral("100%1 %n %2"));
    const TavuRoles roles = AmazonMusicTrack(0, 0, instanceOf(definition)).tavuRoles();
    EXPECT_EQ(roles.title(), QStringLiteral("100%1 %n %2"));
    EXPECT_EQ(roles.mediaData().metaData().track(), QStringLiteral("100%1 %n %2"));
}

} // namespace
