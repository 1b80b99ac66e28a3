#include "cmerror.h"

#include "printers.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

TEST(CMError, without_a_name_is_no_error)
{
    CMError error;
    EXPECT_FALSE(error.isSet());
    error.setMessage(QStringLiteral("words alone are none"));
    EXPECT_FALSE(error.isSet());
    error.setName(QStringLiteral("x"));
    EXPECT_TRUE(error.isSet());
}

TEST(CMError, made_from_a_message_has_the_default_name_and_title)
{
    const CMError error(TrString("Unable to do so."));
    EXPECT_TRUE(error.isSet());
    EXPECT_EQ(error.name(), CMError::DefaultName());
    EXPECT_EQ(error.title(), CMError::DefaultTitle());
    EXPECT_EQ(error.message(), QStringLiteral("Unable to do so."));
    EXPECT_FALSE(CMError::DefaultName().isEmpty());
    EXPECT_FALSE(CMError::DefaultTitle().isEmpty());
}

TEST(CMError, is_a_record_under_its_static_keys)
{
    const CMError error(QVariantHash{ { CMError::Name(), QStringLiteral("n") },
        { CMError::Title(), QStringLiteral("t") }, { CMError::Message(), QStringLiteral("m") },
        { CMError::ActionReply(), QVariantHash{ { QStringLiteral("k"), 1 } } } });
    EXPECT_EQ(error.name(), QStringLiteral("n"));
    EXPECT_EQ(error.title(), QStringLiteral("t"));
    EXPECT_EQ(error.message(), QStringLiteral("m"));
    EXPECT_EQ(error.actionReply().value(QStringLiteral("k")), QVariant(1));
}

TEST(CMError, is_not_the_cancel_error)
{
    EXPECT_NE(CMError::DefaultName(), QStringLiteral("cancel"));
}

TEST(CMError, writes_its_name_and_message_to_a_log)
{
    CMError error(TrString("Zu sp\xC3\xA4t"));
    error.setName(QStringLiteral("late"));
    std::ostringstream log;
    log << error;
    EXPECT_EQ(log.str(), "late: Zu sp\xC3\xA4t");
}

} // namespace
