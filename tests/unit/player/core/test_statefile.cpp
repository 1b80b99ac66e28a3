#include "printers.h"
#include "statefile.h"
#include "tavupaths.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

using player::KeptState;
using player::KeptTrack;
using player::RowSource;
using player::StateFile;

namespace {

const QString origin = QStringLiteral("https://music.example/api/");

TavuRoles playedTrack()
{
    TavuResource resource;
    resource.setUri(QStringLiteral("https://cdn.example/sound?signature=secret"));
    resource.setDuration(180000);
    resource.setValidUntil(12345);
    TavuList<TavuResource> resources;
    resources.append(resource);
    TavuMetaData meta;
    meta.setArtist(QStringLiteral("The Band"));
    meta.setAlbum(QStringLiteral("The Album"));
    meta.setPlayLogicPath(TavuAmazonMusicPlayLogicPath());
    TavuMediaData media;
    media.setMetaData(meta);
    media.setResources(resources);
    TavuRoles roles;
    roles.setTitle(QStringLiteral("The Song"));
    roles.setMediaData(media);
    roles.setPath(TavuAmazonMusicPrefixPath().addParam(QStringLiteral("trackUrl"),
        QStringLiteral("https://eu.music.example/tracks/7?x=%26&y=1#z")));
    return roles;
}

KeptState someState()
{
    KeptState state;
    state.setPlayMode(4);
    state.setVolume(35);
    state.setMuted(true);
    state.setTrack(player::keptTrack(playedTrack()));
    state.setPosition(61234);
    state.setPlaying(true);
    return state;
}

class StateFileTest : public ::testing::Test
{
protected:
    QString name() const { return folder.filePath(QStringLiteral("state.json")); }
    QByteArray contents() const
    {
        QFile file(name());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void write(const QByteArray& bytes) const
    {
        QFile file(name());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    }

    QTemporaryDir folder;
    QString complaint;
    QString error;
};

TEST_F(StateFileTest, nothing_is_kept_at_first_and_nobody_is_bothered)
{
    EXPECT_FALSE(StateFile(name()).load(&complaint));
    EXPECT_EQ(complaint, QString());
}

TEST_F(StateFileTest, what_is_saved_is_loaded)
{
    ASSERT_TRUE(StateFile(name()).save(someState(), &error)) << error.toStdString();
    const auto loaded = StateFile(name()).load(&complaint);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(complaint, QString());
    EXPECT_EQ(loaded->playMode(), 4);
    EXPECT_EQ(loaded->volume(), 35);
    EXPECT_TRUE(loaded->muted());
    EXPECT_TRUE(loaded->playing());
    EXPECT_EQ(loaded->position(), 61234);
    EXPECT_EQ(loaded->track().title(), QStringLiteral("The Song"));
}

RowSource someSource()
{
    const CMPath browse = TavuAmazonMusicBrowsePath();
    RowSource source;
    source.setPage(browse.addParam(QStringLiteral("url"),
        QStringLiteral("https://eu.music.example/albums/3/?offset=50&x=%2F")));
    source.setFirstPage(browse.addParam(
        QStringLiteral("url"), QStringLiteral("https://eu.music.example/albums/3/")));
    source.setRow(QStringLiteral("The Song (00:03:00)"));
    return source;
}

TEST_F(StateFileTest, no_address_and_no_signature_is_ever_written)
{
    KeptState state = someState();
    state.setSource(player::keptSource(someSource()));
    ASSERT_TRUE(StateFile(name()).save(state, &error));
    EXPECT_FALSE(contents().contains("%3A%2F%2F"));
    EXPECT_TRUE(contents().contains("albums"));
    EXPECT_FALSE(contents().contains("://"));
    EXPECT_FALSE(contents().contains("example"));
    EXPECT_FALSE(contents().contains("signature"));
    EXPECT_TRUE(contents().contains("The Song"));
}

TEST_F(StateFileTest, the_owner_alone_can_read_it)
{
    ASSERT_TRUE(StateFile(name()).save(someState(), &error));
    EXPECT_EQ(QFileInfo(name()).permissions() & 0x0077, 0);
}

TEST_F(StateFileTest, a_track_comes_back_as_a_row_at_the_present_service)
{
    const TavuRoles row = player::playableRow(player::keptTrack(playedTrack()), origin);
    EXPECT_EQ(row.title(), QStringLiteral("The Song"));
    EXPECT_EQ(row.path().param(QStringLiteral("trackUrl")),
        QStringLiteral("https://music.example/tracks/7?x=%26&y=1#z"));
    EXPECT_EQ(row.mediaData().metaData().artist(), QStringLiteral("The Band"));
    EXPECT_EQ(row.mediaData().metaData().playLogicPath(), TavuAmazonMusicPlayLogicPath());
    EXPECT_EQ(row.mediaData().firstResource().duration(), 180000);
    EXPECT_EQ(row.mediaData().firstResource().uri(), QString());
}

TEST_F(StateFileTest, a_track_without_a_document_of_its_own_is_not_kept)
{
    TavuRoles roles = playedTrack();
    roles.setPath(TavuAmazonMusicPrefixPath());
    EXPECT_TRUE(player::keptTrack(roles).isEmpty());
    EXPECT_TRUE(player::playableRow(KeptTrack(), origin).isEmpty());
}

TEST_F(StateFileTest, the_place_that_a_row_is_from_comes_back_at_the_present_service)
{
    KeptState state = someState();
    state.setSource(player::keptSource(someSource()));
    ASSERT_TRUE(StateFile(name()).save(state, &error));
    const auto loaded = StateFile(name()).load(&complaint);
    ASSERT_TRUE(loaded);
    const RowSource source = player::sourceAt(loaded->source(), origin);
    const QString url = QStringLiteral("url");
    EXPECT_EQ(source.page().withoutParams(), TavuAmazonMusicBrowsePath());
    EXPECT_EQ(source.page().param(url),
        QStringLiteral("https://music.example/albums/3/?offset=50&x=%2F"));
    EXPECT_EQ(source.firstPage().param(url), QStringLiteral("https://music.example/albums/3/"));
    EXPECT_EQ(source.row(), QStringLiteral("The Song (00:03:00)"));
    EXPECT_FALSE(source.station());
}

TEST_F(StateFileTest, a_state_from_before_such_places_were_kept_is_a_whole_one)
{
    ASSERT_TRUE(StateFile(name()).save(someState(), &error));
    const auto loaded = StateFile(name()).load(&complaint);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->track().title(), QStringLiteral("The Song"));
    EXPECT_TRUE(player::sourceAt(loaded->source(), origin).isEmpty());
    EXPECT_TRUE(player::keptSource(RowSource()).isEmpty());
}

TEST_F(StateFileTest, a_file_cut_anywhere_is_set_aside_and_told_of_once)
{
    ASSERT_TRUE(StateFile(name()).save(someState(), &error));
    const QByteArray whole = contents().trimmed();
    for (int size = 0; size < whole.size(); ++size) {
        write(whole.left(size));
        complaint.clear();
        EXPECT_FALSE(StateFile(name()).load(&complaint)) << size;
        EXPECT_TRUE(complaint.contains(name() + QLatin1String(".bad"))) << size;
        EXPECT_FALSE(QFile::exists(name()));
        QFile aside(name() + QLatin1String(".bad"));
        ASSERT_TRUE(aside.open(QIODevice::ReadOnly));
        EXPECT_EQ(aside.readAll(), whole.left(size));
    }
}

TEST_F(StateFileTest, no_flipped_bit_brings_more_than_odd_values_within_their_bounds)
{
    ASSERT_TRUE(StateFile(name()).save(someState(), &error));
    const QByteArray whole = contents();
    for (int at = 0; at < whole.size() * 8; ++at) {
        QByteArray flipped = whole;
        flipped[at / 8] = static_cast<char>(flipped.at(at / 8) ^ (1 << (at % 8)));
        write(flipped);
        complaint.clear();
        const auto loaded = StateFile(name()).load(&complaint);
        EXPECT_EQ(loaded.has_value(), complaint.isEmpty());
        if (!loaded)
            continue;
        EXPECT_TRUE(loaded->volume() >= 0 && loaded->volume() <= 100);
        EXPECT_TRUE(loaded->playMode() >= 0 && loaded->playMode() <= 5);
        EXPECT_GE(loaded->position(), 0);
    }
}

TEST_F(StateFileTest, values_out_of_bounds_are_damage)
{
    for (const char* damage : { R"({"version":2})", R"({"version":1,"volume":101})",
             R"({"version":1,"playMode":6})", R"({"version":1,"position":-1})", "[]", "null" }) {
        write(damage);
        complaint.clear();
        EXPECT_FALSE(StateFile(name()).load(&complaint)) << damage;
        EXPECT_FALSE(complaint.isEmpty()) << damage;
    }
}

TEST_F(StateFileTest, a_state_that_cannot_be_saved_leaves_the_old_one)
{
    ASSERT_TRUE(StateFile(name()).save(someState(), &error));
    const StateFile nowhere(folder.filePath(QStringLiteral("gone/state.json")));
    EXPECT_FALSE(nowhere.save(someState(), &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_TRUE(StateFile(name()).load(&complaint));
}

} // namespace
