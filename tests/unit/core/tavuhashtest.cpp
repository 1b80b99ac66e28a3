#include "tavuhash.h"

#include "printers.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

struct Shade
{
    enum Enum : int { Red = 1, Blue = 5 };
};

class Leaf : public TavuHash
{
    TAVU_RECORD(Leaf)
    TAVU_FIELD(QString, name, Name)
};

class Sample : public TavuHash
{
    TAVU_RECORD(Sample)
    TAVU_FIELD(QString, text, Text)
    TAVU_FIELD(QStringList, texts, Texts)
    TAVU_FIELD(qint32, small, Small)
    TAVU_FIELD(qint64, big, Big)
    TAVU_FIELD(double, real, Real)
    TAVU_FIELD(bool, flag, Flag)
    TAVU_FIELD(Shade::Enum, colour, Colour)
    TAVU_FIELD(Leaf, inner, Inner)
    TAVU_FIELD(TavuList<Leaf>, list, List)
    TAVU_FIELD(QVariantHash, hash, Hash)
    TAVU_FIELD(QVariantList, variants, Variants)
    TAVU_FIELD(QVariant, any, Any)
};

Leaf leaf(const char* name)
{
    Leaf record;
    record.setName(QString::fromLatin1(name));
    return record;
}

TEST(TavuHash, a_record_inside_is_changed_in_place)
{
    Sample sample;
    sample.setInner(leaf("before"));
    const Sample copy = sample;
    sample.__edit<Leaf>(Sample::Inner(), [](Leaf* inner) {
        EXPECT_EQ(inner->name(), QStringLiteral("before"));
        inner->setName(QStringLiteral("after"));
    });
    EXPECT_EQ(sample.inner(), leaf("after"));
    EXPECT_EQ(copy.inner(), leaf("before"));
}

TEST(TavuHash, editing_what_is_no_record_begins_with_an_empty_one_and_sets_it)
{
    Sample sample;
    sample.__set(Sample::Hash(), QStringLiteral("a text"));
    const auto expectEmpty = [](Leaf* record) { EXPECT_TRUE(record->isEmpty()); };
    sample.__edit<Leaf>(Sample::Inner(), expectEmpty);
    sample.__edit<Leaf>(Sample::Hash(), expectEmpty);
    EXPECT_EQ(sample.__value(Sample::Inner()), QVariant(QVariantHash()));
    EXPECT_EQ(sample.__value(Sample::Hash()), QVariant(QVariantHash()));
}

TEST(TavuHash, a_record_that_stands_anywhere_is_changed_in_place)
{
    QVariant field = leaf("before").__variant();
    TavuHash::__editField<Leaf>(&field, [](Leaf* record) {
        EXPECT_EQ(*record, leaf("before"));
        record->setName(QStringLiteral("after"));
    });
    EXPECT_EQ(field, leaf("after").__variant());
}

TEST(TavuHash, finds_a_field_that_is_set_if_to_nothing)
{
    Sample sample;
    EXPECT_EQ(sample.__find(Sample::Any()), nullptr);
    sample.setAny(QVariant());
    ASSERT_NE(sample.__find(Sample::Any()), nullptr);
    EXPECT_FALSE(sample.__find(Sample::Any())->isValid());
    sample.setAny(5);
    EXPECT_EQ(*sample.__find(Sample::Any()), QVariant(5));
}

TEST(TavuHash, getters_of_an_empty_record_give_empty_values)
{
    const Sample empty;
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_EQ(empty.text(), QString());
    EXPECT_TRUE(empty.texts().isEmpty());
    EXPECT_EQ(empty.small(), 0);
    EXPECT_EQ(empty.big(), 0);
    EXPECT_EQ(empty.real(), 0.0);
    EXPECT_FALSE(empty.flag());
    EXPECT_EQ(empty.colour(), 0);
    EXPECT_TRUE(empty.inner().isEmpty());
    EXPECT_TRUE(empty.list().isEmpty());
    EXPECT_TRUE(empty.hash().isEmpty());
    EXPECT_TRUE(empty.variants().isEmpty());
    EXPECT_FALSE(empty.any().isValid());
}

TEST(TavuHash, gives_back_what_was_set)
{
    Sample record;
    record.setText(QStringLiteral("t"));
    record.setTexts({ QStringLiteral("a"), QStringLiteral("b") });
    record.setSmall(-3);
    record.setBig(1LL << 40);
    record.setReal(2.5);
    record.setFlag(true);
    record.setColour(Shade::Blue);
    record.setInner(leaf("i"));
    record.setHash({ { QStringLiteral("k"), 1 } });
    record.setVariants({ 1, QStringLiteral("x") });
    record.setAny(7);
    EXPECT_EQ(record.text(), QStringLiteral("t"));
    EXPECT_EQ(record.texts(), (QStringList{ QStringLiteral("a"), QStringLiteral("b") }));
    EXPECT_EQ(record.small(), -3);
    EXPECT_EQ(record.big(), 1LL << 40);
    EXPECT_EQ(record.real(), 2.5);
    EXPECT_TRUE(record.flag());
    EXPECT_EQ(record.colour(), Shade::Blue);
    EXPECT_EQ(record.inner(), leaf("i"));
    EXPECT_EQ(record.hash().value(QStringLiteral("k")), QVariant(1));
    EXPECT_EQ(record.variants().size(), 2);
    EXPECT_EQ(record.any(), QVariant(7));
}

TEST(TavuHash, the_key_of_a_field_is_the_name_of_its_getter)
{
    EXPECT_EQ(Sample::Text(), QStringLiteral("text"));
    Sample record;
    record.setText(QStringLiteral("t"));
    EXPECT_EQ(record.__hash(), (QVariantHash{ { QStringLiteral("text"), QStringLiteral("t") } }));
}

TEST(TavuHash, an_unset_field_differs_from_an_empty_one)
{
    Sample record;
    EXPECT_FALSE(record.__contains(Sample::Text()));
    record.setText(QString());
    EXPECT_TRUE(record.__contains(Sample::Text()));
    EXPECT_NE(record, Sample());
    record.__remove(Sample::Text());
    EXPECT_EQ(record, Sample());
}

TEST(TavuHash, keeps_keys_that_the_class_does_not_know)
{
    Sample record(QVariantHash{
        { QStringLiteral("text"), QStringLiteral("t") }, { QStringLiteral("future"), 1 } });
    record.setText(QStringLiteral("u"));
    const Sample copy(record.__variant().toHash());
    EXPECT_EQ(copy.__value(QStringLiteral("future")), QVariant(1));
    EXPECT_EQ(copy, record);
}

TEST(TavuHash, survives_being_read_as_another_record)
{
    Sample record;
    record.setText(QStringLiteral("t"));
    const Leaf other(record);
    EXPECT_EQ(Sample(other), record);
}

TEST(TavuHash, a_copy_is_a_value_of_its_own)
{
    Sample record;
    record.setSmall(1);
    Sample copy = record;
    copy.setSmall(2);
    EXPECT_EQ(record.small(), 1);
    EXPECT_EQ(copy.small(), 2);
}

TEST(TavuHash, reads_values_of_the_wrong_type_as_empty)
{
    const QVariantHash object{ { QStringLiteral("k"), 1 } };
    const QVariantList list{ 1, 2 };
    const QVariant lone(QStringLiteral("words"));
    for (const QVariant& wrong : { QVariant(object), QVariant(list) }) {
        const Sample record(QVariantHash{ { Sample::Text(), wrong }, { Sample::Small(), wrong },
            { Sample::Big(), wrong }, { Sample::Flag(), wrong }, { Sample::Real(), wrong },
            { Sample::Colour(), wrong } });
        EXPECT_EQ(record.text(), QString());
        EXPECT_EQ(record.small(), 0);
        EXPECT_EQ(record.big(), 0);
        EXPECT_EQ(record.real(), 0.0);
        EXPECT_FALSE(record.flag());
        EXPECT_EQ(record.colour(), 0);
    }
    for (const QVariant& wrong : { lone, QVariant(list), QVariant(5) }) {
        const Sample record(QVariantHash{ { Sample::Inner(), wrong }, { Sample::Hash(), wrong } });
        EXPECT_TRUE(record.inner().isEmpty());
        EXPECT_TRUE(record.hash().isEmpty());
    }
    for (const QVariant& wrong : { lone, QVariant(object), QVariant(5) }) {
        const Sample record(QVariantHash{
            { Sample::List(), wrong }, { Sample::Texts(), wrong }, { Sample::Variants(), wrong } });
        EXPECT_TRUE(record.list().isEmpty());
        EXPECT_TRUE(record.texts().isEmpty());
        EXPECT_TRUE(record.variants().isEmpty());
    }
}

TEST(TavuHash, numbers_out_of_range_saturate)
{
    const Sample record(QVariantHash{
        { Sample::Small(), 1e300 }, { Sample::Big(), -1e300 }, { Sample::Colour(), 1e300 } });
    EXPECT_EQ(record.small(), std::numeric_limits<qint32>::max());
    EXPECT_EQ(record.big(), std::numeric_limits<qint64>::min());
    EXPECT_EQ(record.colour(), std::numeric_limits<int>::max());
}

TEST(TavuHash, a_number_without_a_name_is_kept)
{
    Sample record;
    record.__set(Sample::Colour(), 4711);
    EXPECT_EQ(record.colour(), 4711);
    Sample copy;
    copy.setColour(record.colour());
    EXPECT_EQ(copy, record);
}

TEST(TavuHash, a_list_of_records_stands_as_a_list_of_hashes)
{
    TavuList<Leaf> list;
    list.append(leaf("a"));
    list.append(leaf("b"));
    Sample record;
    record.setList(list);
    const QVariantList stored = record.__value(Sample::List()).toList();
    ASSERT_EQ(stored.size(), 2);
    EXPECT_EQ(stored.at(0).type(), QVariant::Hash);
    EXPECT_EQ(record.list().record(0), leaf("a"));
    EXPECT_EQ(record.list().record(1), leaf("b"));
    EXPECT_EQ(record.list(), list);
}

TEST(TavuHash, an_element_that_is_no_hash_is_an_empty_record)
{
    const TavuList<Leaf> list(QVariantList{ 5, leaf("b").__variant() });
    EXPECT_TRUE(list.record(0).isEmpty());
    EXPECT_EQ(list.record(1), leaf("b"));
}

TEST(TavuHash, equality_is_that_of_the_contents)
{
    Sample a;
    Sample b;
    a.setText(QStringLiteral("x"));
    b.setText(QStringLiteral("x"));
    EXPECT_EQ(a, b);
    b.setSmall(0);
    EXPECT_NE(a, b);
    b.clear();
    EXPECT_TRUE(b.isEmpty());
    EXPECT_EQ(b, TavuHash());
}

TEST(TavuHash, is_written_as_json)
{
    Sample record;
    record.setText(QStringLiteral("a\"b"));
    record.setFlag(true);
    record.setInner(leaf("i"));
    const QString json =
        QStringLiteral("{\"flag\":true,\"inner\":{\"name\":\"i\"},\"text\":\"a\\\"b\"}");
    EXPECT_EQ(record.toJsonString(), json);
    std::ostringstream log;
    log << record;
    EXPECT_EQ(QString::fromStdString(log.str()), json);
    EXPECT_EQ(TavuHash().toJsonString(), QStringLiteral("{}"));
}

TEST(TavuHash, travels_in_a_variant)
{
    const QVariant carried =
        QVariant::fromValue(TavuHash(QVariantHash{ { QStringLiteral("a"), 1 } }));
    EXPECT_TRUE(carried.value<TavuHash>().__contains(QStringLiteral("a")));
}

} // namespace
