#include "rowanswer.h"

#include <gtest/gtest.h>

namespace {

QVariantList rowWithTitle(const QString& title)
{
    QVariantList values;
    for (const QString& role : player::rowRoles())
        values.append(role == TavuRoles::Title() ? QVariant(title) : QVariant());
    return values;
}

TEST(RowAnswer, gives_each_row_the_roles_that_it_has)
{
    TavuRowsRoles answer;
    answer.setRows({ QVariant(rowWithTitle(QStringLiteral("one"))) });
    answer.setRowsCount(7);
    const QVariantHash given = player::rowAnswer(answer, 3);
    const QVariantList rows = given.value(QStringLiteral("rows")).toList();
    ASSERT_EQ(rows.size(), 1);
    const QVariantHash expected{ { QStringLiteral("title"), QStringLiteral("one") } };
    EXPECT_EQ(rows.first().toHash(), expected);
    EXPECT_EQ(given.value(QStringLiteral("count")).toInt(), 7);
    EXPECT_EQ(given.value(QStringLiteral("from")).toInt(), 3);
}

TEST(RowAnswer, leaves_out_rows_that_a_plugin_got_wrong)
{
    TavuRowsRoles answer;
    answer.setRows({ QVariant(QVariantList{ 1, 2 }), QVariant(QStringLiteral("row")),
        QVariant(rowWithTitle(QStringLiteral("good"))) });
    answer.setRowsCount(-5);
    const QVariantHash given = player::rowAnswer(answer, 0);
    EXPECT_EQ(given.value(QStringLiteral("rows")).toList().size(), 1);
    EXPECT_EQ(given.value(QStringLiteral("count")).toInt(), 0);
}

TavuRoles rowWithResource(const QString& uri)
{
    TavuResource resource;
    resource.setUri(uri);
    TavuList<TavuResource> resources;
    resources.append(resource);
    TavuMediaData media;
    media.setResources(resources);
    TavuRoles row;
    row.setAudioType(TavuRolesAudioType::Tracks);
    row.setMediaData(media);
    return row;
}

TEST(MediaRoles, fetch_a_browsed_row_by_its_playable_document)
{
    const TavuRoles row = rowWithResource(QStringLiteral("https://service/page#p1"));
    EXPECT_EQ(player::mediaRolesFor(row).audioType(), TavuRolesAudioType::Station);
    EXPECT_EQ(player::mediaRolesFor(row).mediaData(), row.mediaData());
}

TEST(MediaRoles, leave_a_row_with_its_own_track_document_as_it_is)
{
    TavuRoles row = rowWithResource(QStringLiteral("https://service/audio/1"));
    row.setPath(
        CMPath(QStringLiteral("/x")).addParam(QStringLiteral("trackUrl"), QStringLiteral("u")));
    EXPECT_EQ(player::mediaRolesFor(row), row);
}

TEST(MediaRoles, leave_a_row_without_resource_as_it_is)
{
    const TavuRoles row = rowWithResource(QString());
    EXPECT_EQ(player::mediaRolesFor(row), row);
}

} // namespace
