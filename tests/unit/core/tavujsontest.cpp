#include "tavujson.h"

#include "printers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>

namespace {

QVariant parsed(const char* text)
{
    return TavuJson::parse(text);
}

QVariant text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

QVariant whole(qlonglong number)
{
    return number;
}

/// Text and what it reads as.
using Reading = std::pair<QByteArray, QVariant>;

class TavuJsonValid : public ::testing::TestWithParam<Reading>
{
};

TEST_P(TavuJsonValid, reads_as_its_value)
{
    const auto [json, value] = GetParam();
    const QVariant read = TavuJson::parse('[' + json + ']');
    ASSERT_EQ(read.type(), QVariant::List);
    ASSERT_EQ(read.toList().size(), 1);
    EXPECT_EQ(read.toList().at(0), value);
    EXPECT_EQ(read.toList().at(0).userType(), value.userType());
}

TEST_P(TavuJsonValid, may_stand_alone_at_the_top)
{
    const auto [json, value] = GetParam();
    EXPECT_EQ(TavuJson::parse(json), value);
    EXPECT_EQ(TavuJson::parse(" \t\r\n" + json + " \t\r\n"), value);
}

INSTANTIATE_TEST_SUITE_P(Literals, TavuJsonValid,
    ::testing::Values(Reading("true", true), Reading("false", false), Reading("null", QVariant())));

INSTANTIATE_TEST_SUITE_P(Numbers, TavuJsonValid,
    ::testing::Values(Reading("0", whole(0)), Reading("-0", whole(0)), Reading("1", whole(1)),
        Reading("-1", whole(-1)), Reading("1234567890", whole(1234567890)), Reading("0.5", 0.5),
        Reading("-0.5", -0.5), Reading("1e3", 1000.0), Reading("1E3", 1000.0),
        Reading("1e+3", 1000.0), Reading("1e-3", 0.001), Reading("0e1", 0.0),
        Reading("1.25e2", 125.0), Reading("1.0", 1.0), Reading("-1.5e-2", -0.015),
        Reading("0e+1", 0.0), Reading("0.0", 0.0), Reading("-0.0", -0.0), Reading("1E-2", 0.01),
        Reading("1E22", 1e22), Reading("10", whole(10)), Reading("-123", whole(-123)),
        Reading("0.000000000000000000000000000001", 1e-30)));

INSTANTIATE_TEST_SUITE_P(BigNumbers, TavuJsonValid,
    ::testing::Values(Reading("9007199254740993", whole(9007199254740993)),
        Reading("9223372036854775807", whole(std::numeric_limits<qlonglong>::max())),
        Reading("-9223372036854775808", whole(std::numeric_limits<qlonglong>::min())),
        Reading("9223372036854775808", QVariant::fromValue<qulonglong>(9223372036854775808ULL)),
        Reading("18446744073709551615",
            QVariant::fromValue<qulonglong>(std::numeric_limits<qulonglong>::max())),
        Reading("1e308", 1e308), Reading("1e-400", 0.0), Reading("5e-324", 5e-324),
        Reading("0.1", 0.1), Reading("0.1000000000000000055511151231257827", 0.1),
        Reading("123456789012345678901.5", 123456789012345678901.5)));

INSTANTIATE_TEST_SUITE_P(Texts, TavuJsonValid,
    ::testing::Values(Reading("\"\"", text("")), Reading("\"a\"", text("a")),
        Reading("\"\\\"\\\\\\/\\b\\f\\n\\r\\t\"", text("\"\\/\b\f\n\r\t")),
        Reading("\"\\u00e4\\u00E4\"", text("\xC3\xA4\xC3\xA4")),
        Reading("\"\xC3\xA4\xE6\x97\xA5\xF0\x9F\x8E\xB5\"",
            text("\xC3\xA4\xE6\x97\xA5\xF0\x9F\x8E\xB5")),
        Reading("\"\\ud83c\\udfb5\"", text("\xF0\x9F\x8E\xB5")), Reading("\"\x7F\"", text("\x7F")),
        Reading("\"\\u2028\\uFFFF\"", QString(QChar(0x2028)) + QChar(0xFFFF)),
        Reading("\"[{,:}]\"", text("[{,:}]")), Reading("\" \"", text(" ")),
        Reading("\"//*#--\"", text("//*#--")), Reading("\"\\\\u0041\"", text("\\u0041")),
        Reading("\"\\\\n\"", text("\\n")), Reading("\"/\"", text("/")),
        Reading("\"\xE2\x80\xA8\xE2\x80\xA9\"", QString(QChar(0x2028)) + QChar(0x2029)),
        Reading("\"\\u0060\\u012a\\u12AB\"", text("`\xC4\xAA\xE1\x8A\xAB")),
        Reading("\"\\u001F\"", QString(QChar(0x1F))),
        Reading("\"\\uFEFF\\uFDD0\"", QString(QChar(0xFEFF)) + QChar(0xFDD0)),
        Reading("\"\\uDBFF\\uDFFF\"", text("\xF4\x8F\xBF\xBF")),
        Reading("\"\xF4\x8F\xBF\xBF\"", text("\xF4\x8F\xBF\xBF")),
        Reading("\"\xEF\xBF\xBF\"", QString(QChar(0xFFFF)))));

INSTANTIATE_TEST_SUITE_P(Nesting, TavuJsonValid,
    ::testing::Values(Reading("[]", QVariantList()), Reading("{}", QVariantHash()),
        Reading("[[],[[]]]", QVariantList{ QVariantList(), QVariantList{ QVariantList() } }),
        Reading("[1,\"a\",null]", QVariantList{ whole(1), text("a"), QVariant() }),
        Reading("{\"a\":[{\"b\":1}]}",
            QVariantHash{ { QStringLiteral("a"),
                QVariantList{ QVariantHash{ { QStringLiteral("b"), whole(1) } } } } }),
        Reading("{ \"a\" : 1 , \"b\" : 2 }",
            QVariantHash{ { QStringLiteral("a"), whole(1) }, { QStringLiteral("b"), whole(2) } }),
        Reading("[\r\n\t ]", QVariantList()), Reading("{\r\n\t }", QVariantHash()),
        Reading("[ 4\t,\n5\r]", QVariantList{ whole(4), whole(5) }),
        Reading("[[]   ]", QVariantList{ QVariantList() }),
        Reading(
            "[null,1,\"1\",{}]", QVariantList{ QVariant(), whole(1), text("1"), QVariantHash() }),
        Reading(
            "{\"a b\":[1]}", QVariantHash{ { QStringLiteral("a b"), QVariantList{ whole(1) } } }),
        Reading("{\"\":0}", QVariantHash{ { QString(), whole(0) } })));

TEST(TavuJson, one_character_beyond_ascii_is_read_at_each_place_of_a_text_and_a_key)
{
    for (int length = 1; length <= 40; ++length) {
        for (int place = 0; place < length; ++place) {
            QString written(length, QLatin1Char('a'));
            written[place] = QChar(0xE4);
            const QByteArray json = '"' + written.toUtf8() + '"';
            EXPECT_EQ(TavuJson::parse(json), QVariant(written)) << length << ' ' << place;
            EXPECT_EQ(TavuJson::parse('{' + json + ":1}").toHash().keys(), QStringList{ written });
        }
    }
}

TEST(TavuJson, a_zero_character_in_a_text_or_a_key_is_kept)
{
    const QString zero = QStringLiteral("a") + QChar(0) + QStringLiteral("b");
    EXPECT_EQ(parsed("\"a\\u0000b\"").toString(), zero);
    EXPECT_EQ(parsed("{\"a\\u0000b\":1}").toHash().keys(), QStringList{ zero });
}

class TavuJsonInvalid : public ::testing::TestWithParam<QByteArray>
{
};

TEST_P(TavuJsonInvalid, gives_an_invalid_variant)
{
    EXPECT_FALSE(TavuJson::parse(GetParam()).isValid());
}

INSTANTIATE_TEST_SUITE_P(NoDocument, TavuJsonInvalid,
    ::testing::Values(
        "", " ", "\n", ",", ":", "]", "}", "[", "{", "\"", "/", "\\", "\xEF\xBB\xBF"));

INSTANTIATE_TEST_SUITE_P(Structure, TavuJsonInvalid,
    ::testing::Values("[1", "[1,", "[1,]", "[,1]", "[1,,2]", "[1 2]", "[1]]", "[1],", "[1][2]",
        "1 2", "[}", "{]", "[1}", "{\"a\":1]", "{\"a\":1", "{\"a\":1,", "{\"a\":1,}", "{,\"a\":1}",
        "{\"a\"}", "{\"a\":}", "{:1}", "{\"a\" 1}", "{\"a\":1 \"b\":2}", "{\"a\":1,,\"b\":2}",
        "{\"a\":1;\"b\":2}", "{\"a\"::1}", "{a:1}", "{1:1}", "{null:1}", "{[]:1}", "{'a':1}",
        "{\"a\":1}#", "[1:2]", "{\"a\",1}", "(1)", "[1]x", "[1", "[[1]", "[1]}", "{}}", "{}]",
        "{\"a\":1}{}", "{\"a\":1}\"b\"", "[\"a\",\n4\n,1,", "[1,\n1\n,1", "[\"a\"", "{\"a\":\"b",
        "{\"a\":{", "[{", "[\"\\{[\"\\{[", "[\"x\", truth]", "{[: \"x\"}", "{\"x\", null}",
        "{\"x\"::\"b\"}", "{\"id\":0,,,,,}", "{9999E9999:1}", "{true:1}", "{\"a\":\"b\",,}",
        "{\"a\" b}", "{ \"a\":\"b\" } #", "[<null>]", "<.>", "[,]", "[,,]", "[1,,]", "[\"\",]",
        "[:]", "[\"a\":1]", "{\"a\":1 2}"));

INSTANTIATE_TEST_SUITE_P(Literals, TavuJsonInvalid,
    ::testing::Values("[tru]", "[True]", "[truex]", "[fals]", "[nul]", "[NULL]", "[nan]", "[NaN]",
        "[Infinity]", "[-Infinity]", "[inf]", "[undefined]", "[true false]", "[a]", "[*]", "[-]",
        "[\xC2\xA0"
        "1]",
        "[1\x0C]", "[1\x0B]", "\x0C[]", "[\xE2\x81\xA0]", "[\xE2\x80\xA8]", "[\x1F]", "[\x7F]", "*",
        "abc", "\xC3\xA5", "nul", "truefalse", "[ture]", "[trueFalse]", "[nulll]", "[\"a\"true]"));

INSTANTIATE_TEST_SUITE_P(Numbers, TavuJsonInvalid,
    ::testing::Values("[01]", "[-01]", "[00]", "[+1]", "[.5]", "[-.5]", "[1.]", "[-1.]", "[1.e3]",
        "[1e]", "[1e+]", "[1E-]", "[1e1.5]", "[1.2.3]", "[0x10]", "[1_000]", "[-NaN]", "[++1]",
        "[+Inf]", "[-foo]", "[1+2]", "[0.3e]", "[0.3e+]", "[0E+]", "[9.e+]", "[1eE2]", "[1.0e-]",
        "[2.e3]", "[-1x]", "[-123.123foo]", "[1e1a]", "[1 000]", "[1.8011670033376514H-308]",
        "[0b1]", "[0o7]", "[1f]", "[012]", "[-012]", "[1.e]", "[.]", "[e1]", "[1,5.]", "[- 1]",
        "[--1]", "[1-]", "[1 .5]", "[1e 3]", "[-2.]", "[.2e-3]", "[1a]", "[0e]", "[-]",
        "[\xEF\xBC\x91]"));

INSTANTIATE_TEST_SUITE_P(Texts, TavuJsonInvalid,
    ::testing::Values("[\"a]", "[a\"]", "['a']", "[\"\\\"]", "[\"\\x41\"]", "[\"\\a\"]",
        "[\"\\v\"]", "[\"\\0\"]", "[\"\\'\"]", "[\"\\u\"]", "[\"\\u12\"]", "[\"\\u123\"]",
        "[\"\\u123g\"]", "[\"\\u00A\"]", "[\"\\uqqqq\"]", "[\"\\ud83c\\u\"]", "[\"\\ud83c\\\"]",
        "[\"\\", "[\"\\\\\\\"]", "[\\u0020\"a\"]", "[\n\"a]", "[\"\b\"]", "[\"\\U0041\"]",
        "[\"\\ \"]", "[\"\n\"]", "[\"\r\"]", "[\"\t\"]", "[\"\x1F\"]", "[\"a\"b\"]",
        "[\"a\" \"b\"]", "[\"\\\xC3\xA4\"]", "{\"a\n\":1}"));

INSTANTIATE_TEST_SUITE_P(Comments, TavuJsonInvalid,
    ::testing::Values("[1] // x", "[1 /* x */]", "{\"a\":/**/1}", "{\"a\":1}/**//", "[1]//",
        "/**/[1]", "# x\n[1]", "[1] --"));

INSTANTIATE_TEST_SUITE_P(Utf8, TavuJsonInvalid,
    ::testing::Values("[\"\xFF\"]", "[\"\xC3\"]", "[\"\x80\"]", "[\"\xC0\xAF\"]",
        "[\"\xE0\x80\xAF\"]", "[\"\xF0\x80\x80\xAF\"]", "[\"\xED\xA0\x80\"]", "[\"\xED\xB0\x80\"]",
        "[\"\xF4\x90\x80\x80\"]", "[\"\xFC\x83\xBF\xBF\xBF\xBF\"]", "[\"\xF4\xBF\xBF\xBF\"]",
        "[\"\xE0\xFF\"]", "[\"\xED\xA0\xBD\xED\xB0\x80\"]", "[\"\\u00C3\xA9\xC3\"]", "[\xE9]",
        "\xC3", "[1\xE5]", "[\"\xF8\x88\x80\x80\x80\"]", "[\"\xE6\x97\"]", "{\"\xFF\":1}",
        "\xFF[1]", "[1]\xFF"));

INSTANTIATE_TEST_SUITE_P(OtherEncodings, TavuJsonInvalid,
    ::testing::Values(QByteArray("\xFF\xFE[\0]\0", 6), QByteArray("\xFE\xFF\0[\0]", 6),
        QByteArray("[\0]\0", 4), QByteArray("\0[\0]", 4)));

INSTANTIATE_TEST_SUITE_P(RawZeroBytes, TavuJsonInvalid,
    ::testing::Values(QByteArray("[1]\0", 4), QByteArray("[\0001]", 4), QByteArray("\0", 1),
        QByteArray("[\"\0\"]", 5)));

INSTANTIATE_TEST_SUITE_P(ByteOrderMarks, TavuJsonInvalid,
    ::testing::Values("\xEF\xBB\xBF\xEF\xBB\xBF[1]",
        "[\xEF\xBB\xBF"
        "1]",
        "[1]\xEF\xBB\xBF", "\xEF\xBB[1]"));

// The standard leaves these to the reader; here the whole text is refused.
INSTANTIATE_TEST_SUITE_P(HalfSurrogatePairs, TavuJsonInvalid,
    ::testing::Values("[\"\\ud800\"]", "[\"\\udc00\"]", "[\"\\udc00\\ud800\"]",
        "[\"\\ud800\\u0041\"]", "[\"\\ud800x\"]", "[\"\\ud83c\\ud83c\\udfb5\"]",
        "{\"\\ud800\":1}"));
INSTANTIATE_TEST_SUITE_P(NumbersOutOfRange, TavuJsonInvalid,
    ::testing::Values("[18446744073709551616]", "[-9223372036854775809]",
        "[123456789012345678901234567890]", "[1e309]", "[-1e999]", "[123123e100000]",
        "[0.4e00669999999999999999999999999999999999999999999999999999999999999999999999999999999]",
        "[-123123123123123123123123123123]"));

TEST(TavuJson, passes_over_one_byte_order_mark)
{
    EXPECT_EQ(parsed("\xEF\xBB\xBF{\"a\":1}").toHash().value(QStringLiteral("a")), whole(1));
}

TEST(TavuJson, objects_are_hashes_at_every_level)
{
    const QVariant document = parsed("{\"a\":{\"b\":[{\"c\":{}}]}}");
    ASSERT_EQ(document.type(), QVariant::Hash);
    const QVariant a = document.toHash().value(QStringLiteral("a"));
    ASSERT_EQ(a.type(), QVariant::Hash);
    const QVariant inList = a.toHash().value(QStringLiteral("b")).toList().at(0);
    ASSERT_EQ(inList.type(), QVariant::Hash);
    EXPECT_EQ(inList.toHash().value(QStringLiteral("c")).type(), QVariant::Hash);
}

TEST(TavuJson, the_last_of_equal_keys_wins)
{
    EXPECT_EQ(parsed("{\"a\":1,\"b\":2,\"a\":3}"),
        QVariant(
            QVariantHash{ { QStringLiteral("a"), whole(3) }, { QStringLiteral("b"), whole(2) } }));
    // Under the leak sanitizer: what is replaced is freed.
    EXPECT_EQ(parsed("{\"\":[{\"i\":\"\"}],\"\":\"xh\"}"),
        QVariant(QVariantHash{ { QString(), text("xh") } }));
}

TEST(TavuJson, a_hundred_thousand_equal_keys_are_one)
{
    QByteArray json("{");
    for (int number = 0; number < 100000; ++number)
        json += "\"k\":[" + QByteArray::number(number) + "],";
    json += "\"k\":[-1]}";
    EXPECT_EQ(TavuJson::parse(json),
        QVariant(QVariantHash{ { QStringLiteral("k"), QVariantList{ whole(-1) } } }));
}

TEST(TavuJson, keys_that_share_a_place_in_the_cache_stay_apart)
{
    QByteArray json("{");
    for (int number = 0; number < 10000; ++number)
        json += (number ? ",\"key" : "\"key") + QByteArray::number(number)
            + "\":" + QByteArray::number(number);
    json += '}';
    for (int round = 0; round < 2; ++round) {
        const QVariantHash hash = TavuJson::parse(json).toHash();
        ASSERT_EQ(hash.size(), 10000);
        for (int number = 0; number < 10000; ++number)
            ASSERT_EQ(hash.value(QStringLiteral("key%1").arg(number)), whole(number));
    }
}

TEST(TavuJson, a_key_outlasts_those_within_its_value)
{
    QByteArray inner("{");
    for (int number = 0; number < 10000; ++number)
        inner += (number ? ",\"key" : "\"key") + QByteArray::number(number) + "\":0";
    inner += '}';
    const QVariantHash hash = TavuJson::parse("{\"outer\":" + inner + ",\"last\":1}").toHash();
    EXPECT_EQ(hash.size(), 2);
    EXPECT_EQ(hash.value(QStringLiteral("last")), whole(1));
    EXPECT_EQ(hash.value(QStringLiteral("outer")).toHash().size(), 10000);
}

TEST(TavuJson, keys_that_differ_in_one_place_stay_apart)
{
    for (int length = 1; length <= 40; ++length) {
        const QString same(length, QLatin1Char('k'));
        QVariantHash object{ { same, whole(-1) } };
        for (int place = 0; place < length; ++place) {
            QString key = same;
            key[place] = QLatin1Char('x');
            object.insert(key, whole(place));
        }
        const QByteArray json = TavuJson::toJson(object);
        EXPECT_EQ(TavuJson::parse(json), QVariant(object)) << length;
        EXPECT_EQ(TavuJson::parse(json), QVariant(object)) << length << ", again";
    }
}

TEST(TavuJson, keys_of_every_length_are_read)
{
    for (const int length : { 1, 15, 16, 31, 32, 33, 64, 255, 256, 1000, 100000 }) {
        const QByteArray key(length, 'k');
        EXPECT_EQ(
            TavuJson::parse("{\"" + key + "\":1,\"\":2}").toHash().value(QString::fromLatin1(key)),
            whole(1))
            << length;
    }
}

QByteArray nestedLists(int levels)
{
    return QByteArray(levels, '[') + '1' + QByteArray(levels, ']');
}

QByteArray nestedHashes(int levels)
{
    return QByteArray("{\"a\":").repeated(levels) + '1' + QByteArray(levels, '}');
}

TEST(TavuJson, reads_1023_levels)
{
    EXPECT_TRUE(TavuJson::parse(nestedLists(1023)).isValid());
    EXPECT_TRUE(TavuJson::parse(nestedHashes(1023)).isValid());
}

TEST(TavuJson, refuses_more_levels)
{
    for (const int levels : { 1024, 1025, 100000, 1000000 }) {
        EXPECT_FALSE(TavuJson::parse(nestedLists(levels)).isValid()) << levels;
        EXPECT_FALSE(TavuJson::parse(nestedHashes(levels)).isValid()) << levels;
        EXPECT_FALSE(TavuJson::parse(QByteArray(levels, '[')).isValid()) << levels;
    }
}

TEST(TavuJson, reads_on_after_a_refusal)
{
    EXPECT_FALSE(TavuJson::parse(QByteArray(100000, '[')).isValid());
    EXPECT_EQ(parsed("[1]"), QVariant(QVariantList{ whole(1) }));
}

TEST(TavuJson, an_earlier_result_survives_the_next_parse)
{
    const QVariant first = parsed("{\"key\":\"value\"}");
    parsed("{\"other\":\"thing\"}");
    EXPECT_EQ(first.toHash().value(QStringLiteral("key")), text("value"));
}

TEST(TavuJson, every_prefix_of_a_document_is_refused)
{
    const QByteArray json(
        "{\"a\":[1,-2.5e3,\"\\u00e4\\n\",true,false,null,{\"b\":{}}],\"\xC3\xA4\":\"x\"}");
    ASSERT_TRUE(TavuJson::parse(json).isValid());
    for (int length = 0; length < json.size(); ++length)
        EXPECT_FALSE(TavuJson::parse(json.left(length)).isValid()) << length;
}

TEST(TavuJson, reads_text_that_is_not_followed_by_a_zero)
{
    const QByteArray longer("[12]345");
    EXPECT_EQ(TavuJson::parse(QByteArray::fromRawData(longer.constData(), 4)),
        QVariant(QVariantList{ whole(12) }));
}

TEST(TavuJson, reads_on_several_threads_at_once)
{
    std::vector<std::thread> readers;
    for (int number = 0; number < 4; ++number)
        readers.emplace_back([number] {
            const QByteArray json = "{\"shared\":" + QByteArray::number(number) + "}";
            for (int round = 0; round < 1000; ++round)
                ASSERT_EQ(
                    TavuJson::parse(json).toHash().value(QStringLiteral("shared")), whole(number));
        });
    for (std::thread& reader : readers)
        reader.join();
}

// Writing.

TEST(TavuJson, writes_compact_with_keys_in_ascending_order)
{
    const QVariantHash hash{ { QStringLiteral("b"), whole(1) }, { QStringLiteral("a"), true },
        { QStringLiteral("c"), QVariantList{ 1.5, QVariant(), text("x") } } };
    EXPECT_EQ(TavuJson::toJson(hash), QByteArray("{\"a\":true,\"b\":1,\"c\":[1.5,null,\"x\"]}"));
}

TEST(TavuJson, writes_scalars)
{
    EXPECT_EQ(TavuJson::toJson(QVariant()), QByteArray("null"));
    EXPECT_EQ(TavuJson::toJson(true), QByteArray("true"));
    EXPECT_EQ(TavuJson::toJson(whole(-7)), QByteArray("-7"));
    EXPECT_EQ(TavuJson::toJson(text("a\"\\\n")), QByteArray("\"a\\\"\\\\\\n\""));
}

TEST(TavuJson, writes_maps_and_text_lists_too)
{
    EXPECT_EQ(TavuJson::toJson(
                  QVariantMap{ { QStringLiteral("k"), QStringList{ QStringLiteral("v") } } }),
        QByteArray("{\"k\":[\"v\"]}"));
}

TEST(TavuJson, writes_null_for_what_json_cannot_say)
{
    EXPECT_EQ(TavuJson::toJson(std::nan("")), QByteArray("null"));
    EXPECT_EQ(TavuJson::toJson(std::numeric_limits<double>::infinity()), QByteArray("null"));
}

TEST(TavuJson, reads_back_what_it_wrote)
{
    const QVariant document =
        parsed("{\"a\":[1,-2,0.5,\"\xC3\xA4\xF0\x9F\x8E\xB5\\u0000\\n\",true,null,{}],"
               "\"ms\":9007199254740991,\"h\":{\"\":[[]]}}");
    ASSERT_TRUE(document.isValid());
    EXPECT_EQ(TavuJson::parse(TavuJson::toJson(document)), document);
}

TEST(TavuJson, writes_whole_numbers_exactly)
{
    EXPECT_EQ(TavuJson::toJson(whole(9007199254740993)), QByteArray("9007199254740993"));
    EXPECT_EQ(TavuJson::toJson(whole(std::numeric_limits<qint64>::min())),
        QByteArray("-9223372036854775808"));
    EXPECT_EQ(TavuJson::toJson(QVariant::fromValue<qulonglong>(18446744073709551615U)),
        QByteArray("18446744073709551615"));
}

TEST(TavuJson, writes_doubles_that_read_back_as_themselves)
{
    for (const double number : { 0.1, 1.5, 1e20, 1.8446744073709552e19, 5e-324, 1.7e308 })
        EXPECT_EQ(TavuJson::parse(TavuJson::toJson(number)).toDouble(), number);
}

} // namespace
