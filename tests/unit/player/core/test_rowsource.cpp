#include "rowsource.h"

#include "printers.h"

#include <gtest/gtest.h>

using player::isRowOf;
using player::isSameTrack;
using player::ListedRows;
using player::RowSource;

namespace {

QString text(const char* ascii)
{
    return QString::fromUtf8(ascii);
}

TavuRoles track(
    const char* title, const char* artist = "", const char* album = "", qint64 duration = 0)
{
    TavuMetaData meta;
    meta.setArtist(text(artist));
    meta.setAlbum(text(album));
    TavuResource resource;
    resource.setDuration(duration);
    TavuList<TavuResource> resources;
    resources.append(resource);
    TavuMediaData media;
    media.setMetaData(meta);
    media.setResources(resources);
    TavuRoles roles;
    roles.setTitle(text(title));
    roles.setMediaData(media);
    return roles;
}

TavuRoles nextPage(const char* path)
{
    TavuRoles row;
    row.setTitle(text("See more results"));
    row.setType(TavuRolesType::Folder);
    row.setPath(CMPath(text(path)));
    return row;
}

/// The rows of a page as they are after they were marked.
QVariantList marked(ListedRows& listed, const char* page, const QList<TavuRoles>& rows)
{
    QVariantList list;
    for (const TavuRoles& row : rows)
        list.append(row.__variant());
    QVariantHash answer{ { text("path"), text(page) }, { text("rows"), list } };
    listed.mark(answer);
    return answer.value(text("rows")).toList();
}

TEST(IsRowOf, a_row_tells_the_duration_behind_the_title)
{
    EXPECT_TRUE(isRowOf(track("A Song"), track("A Song", "", "", 200000)));
    EXPECT_TRUE(isRowOf(track("A Song (00:03:20)"), track("A Song", "", "", 200900)));
    EXPECT_FALSE(isRowOf(track("A Song (00:03:20)"), track("A Song", "", "", 260000)));
    EXPECT_TRUE(isRowOf(track("A Song (00:03:20)"), track("A Song")));
    EXPECT_FALSE(isRowOf(track("A Song (live)"), track("A Song")));
    EXPECT_FALSE(isRowOf(track("Another"), track("A Song")));
}

TEST(IsRowOf, a_title_may_look_like_one_with_a_duration)
{
    EXPECT_TRUE(isRowOf(track("At (00:00:10)"), track("At (00:00:10)", "", "", 90000)));
    EXPECT_TRUE(isRowOf(track("At (00:00:10) (00:01:30)"), track("At (00:00:10)", "", "", 90000)));
}

TEST(IsRowOf, artist_and_album_count_where_both_tell_them)
{
    EXPECT_TRUE(isRowOf(track("A", "B", "C"), track("A", "B", "C")));
    EXPECT_TRUE(isRowOf(track("A", "B"), track("A", "B", "C")));
    EXPECT_FALSE(isRowOf(track("A", "X", "C"), track("A", "B", "C")));
    EXPECT_FALSE(isRowOf(track("A", "B", "X"), track("A", "B", "C")));
}

TEST(IsRowOf, nothing_is_the_row_of_a_track_without_title)
{
    EXPECT_FALSE(isRowOf(track(""), track("")));
}

TEST(IsSameTrack, whatever_the_host)
{
    EXPECT_TRUE(isSameTrack(track("A", "B", "C", 5000), track("A", "B", "C", 5000)));
    EXPECT_FALSE(isSameTrack(track("A", "B", "C", 5000), track("A", "B", "C", 50000)));
    EXPECT_FALSE(isSameTrack(TavuRoles(), track("A")));
    EXPECT_FALSE(isSameTrack(track("A"), TavuRoles()));
    TavuRoles one = track("A", "", "", 5000);
    one.setPath(CMPath(text("/a")));
    TavuRoles renamed = track("A (remastered)", "", "", 50000);
    renamed.setPath(CMPath(text("/a")));
    EXPECT_TRUE(isSameTrack(one, renamed));
}

TEST(LeadsToNextPage, a_folder_alone)
{
    EXPECT_TRUE(player::leadsToNextPage(nextPage("/page2")));
    TavuRoles song = track("See more results");
    song.setType(TavuRolesType::Playable);
    EXPECT_FALSE(player::leadsToNextPage(song));
}

TEST(SourceOf, a_row_comes_from_the_page_that_it_was_listed_on)
{
    ListedRows listed;
    const TavuRoles row(marked(listed, "/page", { track("A") }).first().toHash());
    const RowSource source = player::sourceOf(row);
    EXPECT_EQ(source.page(), CMPath(text("/page")));
    EXPECT_TRUE(source.firstPage().isEmpty());
    EXPECT_EQ(source.row(), text("A"));
    EXPECT_FALSE(source.station());
    EXPECT_EQ(ListedRows::withoutMark(row), track("A"));
}

TEST(SourceOf, a_page_that_goes_on_knows_where_the_list_begins)
{
    ListedRows listed;
    marked(listed, "/page", { track("A"), nextPage("/page2") });
    marked(listed, "/page2", { track("B"), nextPage("/page3") });
    const TavuRoles row(marked(listed, "/page3", { track("C") }).first().toHash());
    const RowSource source = player::sourceOf(row);
    EXPECT_EQ(source.page(), CMPath(text("/page3")));
    EXPECT_EQ(source.firstPage(), CMPath(text("/page")));
    EXPECT_EQ(ListedRows::withoutMark(row), track("C"));
}

TEST(SourceOf, an_album_is_a_page_of_its_own)
{
    TavuRoles album = track("An Album");
    album.setContainerPlayable(true);
    album.setPath(CMPath(text("/album")));
    ListedRows listed;
    const RowSource source =
        player::sourceOf(TavuRoles(marked(listed, "/page", { album }).first().toHash()));
    EXPECT_EQ(source.page(), CMPath(text("/album")));
    EXPECT_EQ(source.row(), QString());
}

TEST(SourceOf, a_station_is_a_row_whose_tracks_are_listed_nowhere)
{
    TavuRoles station = track("Some Station");
    station.setAudioType(TavuRolesAudioType::Station);
    ListedRows listed;
    const RowSource source =
        player::sourceOf(TavuRoles(marked(listed, "/page", { station }).first().toHash()));
    EXPECT_TRUE(source.station());
    EXPECT_EQ(source.row(), text("Some Station"));
}

TEST(SourceOf, a_row_that_was_never_listed_comes_from_nowhere)
{
    EXPECT_TRUE(player::sourceOf(track("A")).isEmpty());
}

} // namespace
