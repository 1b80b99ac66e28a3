#include "logcapture.h"

#include <log4cplus/loggingmacros.h>

#include <gtest/gtest.h>

namespace {

log4cplus::Logger tested()
{
    return log4cplus::Logger::getInstance("logcaptureTest");
}

TEST(LogCapture, KeepsTheTextsOfEachLevelApartAndInOrder)
{
    const LogCapture log("logcaptureTest");
    LOG4CPLUS_TRACE(tested(), "entered");
    LOG4CPLUS_ERROR(tested(), "first");
    LOG4CPLUS_ERROR(tested(), "second");

    EXPECT_EQ(log.texts(log4cplus::TRACE_LOG_LEVEL), QStringList{ QStringLiteral("entered") });
    EXPECT_EQ(log.texts(log4cplus::ERROR_LOG_LEVEL),
        (QStringList{ QStringLiteral("first"), QStringLiteral("second") }));
    EXPECT_TRUE(log.texts(log4cplus::WARN_LOG_LEVEL).isEmpty());
}

TEST(LogCapture, TellsAWholeTextFromAPart)
{
    const LogCapture log("logcaptureTest");
    LOG4CPLUS_WARN(tested(), "a whole text");

    EXPECT_TRUE(log.has(log4cplus::WARN_LOG_LEVEL, QStringLiteral("a whole text")));
    EXPECT_FALSE(log.has(log4cplus::WARN_LOG_LEVEL, QStringLiteral("whole")));
    EXPECT_EQ(log.countContaining(log4cplus::WARN_LOG_LEVEL, QStringLiteral("whole")), 1);
    EXPECT_TRUE(log.mentions(QStringLiteral("whole")));
    EXPECT_FALSE(log.mentions(QStringLiteral("partial")));
}

TEST(LogCapture, RecordsOnlyWhileItLives)
{
    {
        LogCapture log("logcaptureTest");
        LOG4CPLUS_INFO(tested(), "before");
        log.clear();
        EXPECT_FALSE(log.mentions(QStringLiteral("before")));
    }
    LOG4CPLUS_INFO(tested(), "between");
    const LogCapture log("logcaptureTest");
    EXPECT_FALSE(log.mentions(QStringLiteral("between")));
}

} // namespace
