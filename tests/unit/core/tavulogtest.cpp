#include "tavulog.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

template <class T>
std::string logged(const T& value)
{
    std::ostringstream log;
    log << value;
    return log.str();
}

TEST(TavuLog, writes_texts_as_utf8)
{
    EXPECT_EQ(logged(QStringLiteral("Bj\u00F6rk")), "Bj\xC3\xB6rk");
    EXPECT_EQ(logged(QString()), "");
}

TEST(TavuLog, writes_bytes_as_they_are)
{
    EXPECT_EQ(logged(QByteArray("a\0b", 3)), std::string("a\0b", 3));
}

TEST(TavuLog, writes_lists_with_commas)
{
    EXPECT_EQ(logged(QStringList{ QStringLiteral("a"), QStringLiteral("b") }), "a, b");
    EXPECT_EQ(logged(QStringList()), "");
}

} // namespace
