#include "tavuvariant.h"

#include "printers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace tavuvariant;

const auto lowest64 = std::numeric_limits<qint64>::min();
const auto largest64 = std::numeric_limits<qint64>::max();
const auto lowest32 = std::numeric_limits<qint32>::min();
const auto largest32 = std::numeric_limits<qint32>::max();

const QVariantList containers{ QVariantList{ 1 }, QVariantHash{ { QStringLiteral("a"), 1 } },
    QVariantMap{ { QStringLiteral("a"), 1 } }, QStringList{ QStringLiteral("a") } };

TEST(TavuVariant, reads_whole_numbers)
{
    EXPECT_EQ(toI64(qlonglong(5)), 5);
    EXPECT_EQ(toI64(-5), -5);
    EXPECT_EQ(toI32(7), 7);
}

TEST(TavuVariant, cuts_the_fraction_off)
{
    EXPECT_EQ(toI64(1.9), 1);
    EXPECT_EQ(toI64(-1.9), -1);
    EXPECT_EQ(toI64(-0.0), 0);
}

TEST(TavuVariant, saturates_at_64_bits)
{
    EXPECT_EQ(toI64(1e300), largest64);
    EXPECT_EQ(toI64(-1e300), lowest64);
    EXPECT_EQ(toI64(std::numeric_limits<double>::infinity()), largest64);
    EXPECT_EQ(toI64(-std::numeric_limits<double>::infinity()), lowest64);
    EXPECT_EQ(toI64(9223372036854775808.0), largest64);
    EXPECT_EQ(toI64(-9223372036854775808.0), lowest64);
    EXPECT_EQ(toI64(qulonglong(9223372036854775808ULL)), largest64);
    EXPECT_EQ(toI64(qulonglong(9223372036854775807ULL)), largest64);
}

TEST(TavuVariant, saturates_at_32_bits)
{
    EXPECT_EQ(toI32(qlonglong(largest32) + 1), largest32);
    EXPECT_EQ(toI32(qlonglong(lowest32) - 1), lowest32);
    EXPECT_EQ(toI32(1e300), largest32);
    EXPECT_EQ(toI32(-1e300), lowest32);
    EXPECT_EQ(toI32(qlonglong(largest32)), largest32);
}

TEST(TavuVariant, reads_no_number_as_0)
{
    EXPECT_EQ(toI64(std::nan("")), 0);
    EXPECT_EQ(toI64(QVariant()), 0);
    EXPECT_EQ(toI64(QStringLiteral("many")), 0);
    for (const QVariant& container : containers) {
        EXPECT_EQ(toI64(container), 0);
        EXPECT_EQ(toI32(container), 0);
        EXPECT_EQ(toDouble(container), 0.0);
    }
}

TEST(TavuVariant, reads_a_number_written_as_text)
{
    EXPECT_EQ(toI64(QStringLiteral("12")), 12);
    EXPECT_EQ(toI32(QStringLiteral("-12")), -12);
    EXPECT_EQ(toDouble(QStringLiteral("1.5")), 1.5);
}

TEST(TavuVariant, reads_booleans_and_what_stands_for_them)
{
    EXPECT_TRUE(toBool(true));
    EXPECT_FALSE(toBool(false));
    EXPECT_FALSE(toBool(QVariant()));
    EXPECT_TRUE(toBool(1));
    EXPECT_FALSE(toBool(0));
    EXPECT_TRUE(toBool(QStringLiteral("true")));
    EXPECT_FALSE(toBool(QStringLiteral("false")));
    EXPECT_FALSE(toBool(QStringLiteral("0")));
    EXPECT_FALSE(toBool(QString()));
    for (const QVariant& container : containers)
        EXPECT_FALSE(toBool(container));
}

TEST(TavuVariant, reads_texts_numbers_and_booleans_as_text)
{
    EXPECT_EQ(toText(QStringLiteral("a")), QStringLiteral("a"));
    EXPECT_EQ(toText(12), QStringLiteral("12"));
    EXPECT_EQ(toText(true), QStringLiteral("true"));
}

TEST(TavuVariant, reads_no_text_as_the_empty_one)
{
    EXPECT_EQ(toText(QVariant()), QString());
    for (const QVariant& container : containers)
        EXPECT_EQ(toText(container), QString());
}

TEST(TavuVariant, reads_a_text_for_each_element_of_a_list)
{
    const QVariantList mixed{ QStringLiteral("a"), QVariantHash(), 3, QVariant() };
    EXPECT_EQ(toTexts(mixed),
        (QStringList{ QStringLiteral("a"), QString(), QStringLiteral("3"), QString() }));
    EXPECT_EQ(toTexts(QStringList{ QStringLiteral("x") }), QStringList{ QStringLiteral("x") });
}

TEST(TavuVariant, a_lone_text_is_no_list)
{
    EXPECT_TRUE(toTexts(QStringLiteral("a")).isEmpty());
    EXPECT_TRUE(toList(QStringLiteral("a")).isEmpty());
    EXPECT_TRUE(toList(5).isEmpty());
    EXPECT_TRUE(toList(QVariant()).isEmpty());
    EXPECT_TRUE(toList(QVariantHash{ { QStringLiteral("a"), 1 } }).isEmpty());
}

TEST(TavuVariant, reads_hashes_and_maps_as_hashes)
{
    const QVariantHash hash{ { QStringLiteral("a"), 1 } };
    EXPECT_EQ(toHash(hash), hash);
    EXPECT_EQ(toHash(QVariantMap{ { QStringLiteral("a"), 1 } }), hash);
}

TEST(TavuVariant, reads_no_hash_as_the_empty_one)
{
    EXPECT_TRUE(toHash(QVariant()).isEmpty());
    EXPECT_TRUE(toHash(QStringLiteral("a")).isEmpty());
    EXPECT_TRUE(toHash(QVariantList{ 1 }).isEmpty());
    EXPECT_TRUE(toHash(5).isEmpty());
}

} // namespace
