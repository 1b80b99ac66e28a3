#include "cmpath.h"

#include "printers.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

CMPath path(const char* text)
{
    return CMPath(QString::fromUtf8(text));
}

CMPath url(const char* value)
{
    return path("/AmazonMusic/browse").addParam(QStringLiteral("url"), QString::fromUtf8(value));
}

QString restOf(const char* text, const char* prefix)
{
    QString rest(QStringLiteral("untouched"));
    path(text).startsWith(path(prefix), &rest);
    return rest;
}

TEST(CMPath, made_empty_is_empty)
{
    EXPECT_TRUE(CMPath().isEmpty());
    EXPECT_EQ(CMPath().toEncoded(), QString());
    EXPECT_EQ(CMPath::fromEncoded(QString()), CMPath());
    EXPECT_FALSE(path("/").isEmpty());
    EXPECT_FALSE(CMPath().addParam(QStringLiteral("a"), QString()).isEmpty());
}

TEST(CMPath, encodes_parameters_behind_a_question_mark)
{
    const CMPath two = path("/a")
                           .addParam(QStringLiteral("x"), QStringLiteral("1"))
                           .addParam(QStringLiteral("y"), QStringLiteral("2"));
    EXPECT_EQ(two.toEncoded(), QStringLiteral("/a?x=1&y=2"));
}

TEST(CMPath, encodes_a_parameter_over_its_whole_length)
{
    EXPECT_EQ(url("https://h/p?a=b&c#d").toEncoded(),
        QStringLiteral("/AmazonMusic/browse?url=https%3A%2F%2Fh%2Fp%3Fa%3Db%26c%23d"));
}

TEST(CMPath, leaves_only_unreserved_characters_bare)
{
    const QString unreserved = QStringLiteral("AZaz09-._~");
    EXPECT_EQ(path("/").addParam(QStringLiteral("n"), unreserved).toEncoded(),
        QStringLiteral("/?n=") + unreserved);
}

/// Parameter values that must come back byte for byte.
class CMPathValues : public ::testing::TestWithParam<const char*>
{
};

TEST_P(CMPathValues, come_back_as_they_were)
{
    const CMPath before = url(GetParam());
    const CMPath after = CMPath::fromEncoded(before.toEncoded());
    EXPECT_EQ(after, before);
    EXPECT_EQ(after.text(), QStringLiteral("/AmazonMusic/browse"));
    EXPECT_EQ(after.param(QStringLiteral("url")).toUtf8(), QByteArray(GetParam()));
}

TEST_P(CMPathValues, come_back_out_of_a_path_nested_in_a_path)
{
    const CMPath outer = path("/AmazonMusic/action/post")
                             .addParam(QStringLiteral("path"), url(GetParam()).toEncoded());
    const CMPath after = CMPath::fromEncoded(outer.toEncoded());
    EXPECT_EQ(CMPath::fromEncoded(after.param(QStringLiteral("path"))), url(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(CMPath, CMPathValues,
    ::testing::Values("", " ", "+", "a+b c", "%", "%25", "%2F%2f%2B", "100%", "%zz", "=", "a=b=c",
        "&", "&amp;", "?", "#", "#key", "https://h.example/p/?q=a%20b&r=%26#frag%2Fment",
        "https://h/?url=https%3A%2F%2Fi%2F%3Fx%3D1%26y%3D2", "/", "//", "../..", ";:@!$'()*,",
        "\"<>\\^`{|}", "Bj\xC3\xB6rk", "\xE6\x97\xA5\xE6\x9C\xAC", "\xF0\x9F\x8E\xB5", "\n\r\t"));

TEST(CMPath, parameters_of_any_length_come_back)
{
    CMPath path(QStringLiteral("/a"));
    for (const int length : { 1, 169, 170, 171, 511, 512, 513, 100000 }) {
        path =
            path.addParam(QStringLiteral("bare%1").arg(length), QString(length, QLatin1Char('a')));
        path = path.addParam(QStringLiteral("wide%1").arg(length), QString(length, QChar(0x20AC)));
    }
    EXPECT_EQ(CMPath::fromEncoded(path.toEncoded()), path);
}

TEST(CMPath, a_zero_character_in_a_parameter_comes_back)
{
    const QString text = QStringLiteral("a") + QChar(0) + QStringLiteral("b");
    const CMPath before = path("/p").addParam(QStringLiteral("n"), text);
    EXPECT_EQ(CMPath::fromEncoded(before.toEncoded()).param(QStringLiteral("n")), text);
}

TEST(CMPath, a_parameter_that_begins_with_a_byte_order_mark_comes_back)
{
    const QString text = QString(QChar(0xFEFF)) + QStringLiteral("a");
    const CMPath before = path("/p").addParam(text, text);
    EXPECT_EQ(CMPath::fromEncoded(before.toEncoded()).param(text), text);
}

TEST(CMPath, names_of_parameters_are_encoded_too)
{
    const CMPath before = path("/p").addParam(QStringLiteral("a=b&c?d%"), QStringLiteral("v"));
    EXPECT_EQ(before.toEncoded(), QStringLiteral("/p?a%3Db%26c%3Fd%25=v"));
    EXPECT_EQ(CMPath::fromEncoded(before.toEncoded()), before);
}

TEST(CMPath, a_text_with_marks_of_its_own_comes_back)
{
    for (const char* text :
        { "/what?", "/100%", "/%3F", "/a&b=c#d", "/\xC3\xA4/\xF0\x9F\x8E\xB5" }) {
        const CMPath before = path(text).addParam(QStringLiteral("x"), QStringLiteral("?&"));
        EXPECT_EQ(CMPath::fromEncoded(before.toEncoded()), before) << text;
        EXPECT_EQ(CMPath::fromEncoded(before.toEncoded()).text(), QString::fromUtf8(text));
    }
}

TEST(CMPath, reads_a_parameter_without_value_as_empty)
{
    const CMPath read = CMPath::fromEncoded(QStringLiteral("/p?flag&x="));
    EXPECT_TRUE(read.hasParam(QStringLiteral("flag")));
    EXPECT_EQ(read.param(QStringLiteral("flag")), QString());
    EXPECT_TRUE(read.hasParam(QStringLiteral("x")));
    EXPECT_FALSE(read.hasParam(QStringLiteral("y")));
}

TEST(CMPath, reads_what_is_not_quite_encoded_as_it_is)
{
    for (const char* text : { "100%", "%", "%2", "%zz", "%2g", "%-1", "a%", "% 1", "%%" }) {
        const QString written = QStringLiteral("/p?x=") + QLatin1String(text);
        EXPECT_EQ(
            CMPath::fromEncoded(written).param(QStringLiteral("x")), QString::fromLatin1(text));
    }
    EXPECT_EQ(CMPath::fromEncoded(QStringLiteral("/p?x=%%41%c3%A4")).param(QStringLiteral("x")),
        QString::fromUtf8("%A\xC3\xA4"));
}

TEST(CMPath, passes_over_empty_parameters)
{
    EXPECT_EQ(CMPath::fromEncoded(QStringLiteral("/p?&&a=1&")),
        path("/p").addParam(QStringLiteral("a"), QStringLiteral("1")));
    EXPECT_EQ(CMPath::fromEncoded(QStringLiteral("/p?")), path("/p"));
}

TEST(CMPath, the_last_of_equal_names_wins)
{
    const CMPath read = CMPath::fromEncoded(QStringLiteral("/p?a=1&b=2&a=3"));
    EXPECT_EQ(read.toEncoded(), QStringLiteral("/p?a=3&b=2"));
    EXPECT_EQ(path("/p")
                  .addParam(QStringLiteral("a"), QStringLiteral("1"))
                  .addParam(QStringLiteral("a"), QStringLiteral("2"))
                  .toEncoded(),
        QStringLiteral("/p?a=2"));
}

TEST(CMPath, a_plus_is_a_plus)
{
    EXPECT_EQ(CMPath::fromEncoded(QStringLiteral("/p?q=a+b")).param(QStringLiteral("q")),
        QStringLiteral("a+b"));
}

TEST(CMPath, the_param_of_a_path_that_has_none_is_empty)
{
    EXPECT_EQ(path("/p").param(QStringLiteral("x")), QString());
    EXPECT_FALSE(path("/p").hasParam(QStringLiteral("x")));
}

TEST(CMPath, gives_its_parameters_as_a_map)
{
    const CMPath two = path("/a")
                           .addParam(QStringLiteral("x"), QStringLiteral("1"))
                           .addParam(QStringLiteral("b"), QStringLiteral("&"));
    const QMap<QString, QString> expected{ { QStringLiteral("x"), QStringLiteral("1") },
        { QStringLiteral("b"), QStringLiteral("&") } };
    EXPECT_EQ(two.params(), expected);
    EXPECT_TRUE(path("/a").params().isEmpty());
}

TEST(CMPath, plus_appends_text_before_the_parameters)
{
    EXPECT_EQ((path("/AmazonMusic/search") + QStringLiteral("/query")).toEncoded(),
        QStringLiteral("/AmazonMusic/search/query"));
    EXPECT_EQ((url("x") + QStringLiteral("/y")).toEncoded(),
        QStringLiteral("/AmazonMusic/browse/y?url=x"));
}

TEST(CMPath, a_subpath_is_joined_with_one_separator)
{
    for (const char* start : { "/a", "/a/" }) {
        for (const char* end : { "b", "/b" })
            EXPECT_EQ(path(start).appendSubpath(QString::fromLatin1(end)), path("/a/b"));
    }
}

TEST(CMPath, operations_leave_the_path_itself_alone)
{
    const CMPath before = path("/a");
    EXPECT_NE(before + QStringLiteral("b"), before);
    EXPECT_NE(before.appendSubpath(QStringLiteral("b")), before);
    EXPECT_NE(before.addParam(QStringLiteral("b"), QString()), before);
    EXPECT_EQ(before, path("/a"));
}

TEST(CMPath, starts_with_itself_and_with_whole_components)
{
    EXPECT_TRUE(path("/a/b").startsWith(path("/a/b")));
    EXPECT_TRUE(path("/a/b").startsWith(path("/a")));
    EXPECT_TRUE(path("/a/b").startsWith(path("/a/")));
    EXPECT_TRUE(path("/a/b").startsWith(path("/")));
    EXPECT_TRUE(path("/a/b").startsWith(CMPath()));
}

TEST(CMPath, does_not_start_with_a_part_of_a_component)
{
    EXPECT_FALSE(path("/browseMore").startsWith(path("/browse")));
    EXPECT_FALSE(path("/a/b").startsWith(path("/a/b/c")));
    EXPECT_FALSE(path("/a").startsWith(path("/a/")));
    EXPECT_FALSE(path("/A/b").startsWith(path("/a")));
}

TEST(CMPath, parameters_do_not_count_for_a_prefix)
{
    EXPECT_TRUE(url("x").startsWith(path("/AmazonMusic")));
    EXPECT_TRUE(path("/AmazonMusic/browse").startsWith(url("x")));
}

TEST(CMPath, the_rest_behind_a_prefix_has_no_separator)
{
    EXPECT_EQ(restOf("/a/b/c", "/a"), QStringLiteral("b/c"));
    EXPECT_EQ(restOf("/a/b/c", "/a/"), QStringLiteral("b/c"));
    EXPECT_EQ(restOf("/a", "/a"), QString());
}

TEST(CMPath, the_rest_is_left_alone_when_the_prefix_does_not_fit)
{
    EXPECT_EQ(restOf("/ab", "/a"), QStringLiteral("untouched"));
    EXPECT_EQ(restOf("/b", "/a"), QStringLiteral("untouched"));
}

TEST(CMPath, equality_counts_text_and_parameters)
{
    EXPECT_EQ(url("x"), url("x"));
    EXPECT_NE(url("x"), url("y"));
    EXPECT_NE(url("x"), url("x").withoutParams());
    EXPECT_EQ(url("x").withoutParams(), path("/AmazonMusic/browse"));
}

TEST(CMPath, is_logged_encoded)
{
    std::ostringstream log;
    log << url("a b");
    EXPECT_EQ(log.str(), "/AmazonMusic/browse?url=a%20b");
}

TEST(CMPath, stands_in_a_record_as_its_encoded_text)
{
    EXPECT_EQ(TavuField<CMPath>::write(url("a&b")), QVariant(url("a&b").toEncoded()));
    EXPECT_EQ(TavuField<CMPath>::read(url("a&b").toEncoded()), url("a&b"));
    EXPECT_EQ(TavuField<CMPath>::read(QVariantList{ 1 }), CMPath());
}

// Anything but linear work would outlast the time-out of the test.
TEST(CMPath, reads_a_flood_of_parameters)
{
    QString flood(QStringLiteral("/p?"));
    for (int number = 0; number < 300000; ++number)
        flood += QString::number(number) + QLatin1String("=1&");
    const CMPath read = CMPath::fromEncoded(flood);
    EXPECT_EQ(read.param(QStringLiteral("299999")), QStringLiteral("1"));
}

} // namespace
