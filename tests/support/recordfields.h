#pragma once

#include "printers.h"
#include "tavuhash.h"

#include <gtest/gtest.h>

#include <type_traits>

/// Checks everything that a field promises: its key, its empty value, the way there and back, that
/// unset and empty differ, and that it leaves other keys alone.
template <class Record, class Value>
void expectField(const QString& key, const QString& expectedKey, Value (Record::*getter)() const,
    void (Record::*setter)(const Value&), const Value& value)
{
    SCOPED_TRACE(expectedKey.toStdString());
    EXPECT_EQ(key, expectedKey);

    Record record;
    EXPECT_TRUE((record.*getter)() == Value());
    EXPECT_FALSE(record.__contains(key));
    ASSERT_FALSE(value == Value()) << "the test needs a value that is not the empty one";

    record.__set(QStringLiteral("unknown"), 1);
    (record.*setter)(value);
    EXPECT_TRUE((record.*getter)() == value);
    EXPECT_EQ(record.__hash().keys().size(), 2);
    EXPECT_TRUE(record.__contains(key));

    const Record readBack(record.__variant().toHash());
    EXPECT_TRUE((readBack.*getter)() == value);
    EXPECT_EQ(readBack, record);

    (record.*setter)(Value());
    EXPECT_TRUE(record.__contains(key));
    EXPECT_TRUE((record.*getter)() == Value());
}

#define EXPECT_FIELD(Record, getter, Name, value)                                                  \
    expectField<Record, decltype(std::declval<Record>().getter())>(                                \
        Record::Name(), QStringLiteral(#getter), &Record::getter, &Record::set##Name, value)

/// A record with one key, to put into record fields.
template <class Record>
Record someRecord()
{
    return Record(QVariantHash{ { QStringLiteral("k"), QStringLiteral("v") } });
}

template <class Record>
TavuList<Record> someRecords()
{
    return TavuList<Record>(QVariantList{ someRecord<Record>().__variant(), Record().__variant() });
}

const QString someText = QStringLiteral("t\u00E4xt %1 & \"more\"");
