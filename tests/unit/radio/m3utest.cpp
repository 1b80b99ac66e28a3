#include "m3u.h"

#include "printers.h"

#include <gtest/gtest.h>

namespace {

QStringList read(const char* playlist)
{
    QStringList lines;
    for (const Station& station : readM3u(QString::fromUtf8(playlist)))
        lines.append(station.title + QLatin1String(" @ ") + station.url);
    return lines;
}

QStringList lines(std::initializer_list<const char*> texts)
{
    QStringList list;
    for (const char* text : texts)
        list.append(QString::fromUtf8(text));
    return list;
}

TEST(M3u, names_stations_by_the_line_before_them)
{
    EXPECT_EQ(read("#EXTM3U\n#EXTINF:-1,Café Nuit\nhttp://a.example/1\n"
                   "#EXTINF:-1,Two, and a half\nhttps://b.example/2?x=1#y\n"),
        lines({ "Café Nuit @ http://a.example/1", "Two, and a half @ https://b.example/2?x=1#y" }));
}

TEST(M3u, reads_the_title_behind_attributes_with_commas)
{
    EXPECT_EQ(read("#EXTINF:-1 tvg-name=\"Jazz, live\" group=\"a\",Jazz\nhttp://a.example/\n"),
        lines({ "Jazz @ http://a.example/" }));
}

TEST(M3u, takes_the_address_where_there_is_no_title)
{
    EXPECT_EQ(read("http://a.example/1\n#EXTINF:-1,\nhttp://a.example/2\n#EXTINF:-1\n"
                   "http://a.example/3"),
        lines(
            { "http://a.example/1 @ http://a.example/1", "http://a.example/2 @ http://a.example/2",
                "http://a.example/3 @ http://a.example/3" }));
}

TEST(M3u, reads_lines_that_end_in_either_way_and_blanks_round_them)
{
    EXPECT_EQ(read("#EXTINF:-1,One\r\n  http://a.example/1 \r\n\r\nhttp://a.example/2\r\n"),
        lines({ "One @ http://a.example/1", "http://a.example/2 @ http://a.example/2" }));
}

TEST(M3u, passes_over_what_is_no_station_and_gives_its_title_to_nobody)
{
    EXPECT_EQ(read("#EXTINF:-1,A file\n/music/a.flac\n#EXTINF:-1,Elsewhere\nftp://a.example/1\n"
                   "http:///nowhere\nhttp://a.example/1\n"),
        lines({ "http://a.example/1 @ http://a.example/1" }));
    EXPECT_EQ(read(""), QStringList());
    EXPECT_EQ(read("#EXTM3U\n# nothing\n"), QStringList());
}

} // namespace
