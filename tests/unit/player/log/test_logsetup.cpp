#include "logsetup.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

namespace {

// The library can be started once a process.
const log4cplus::Initializer logLibrary;

QByteArray contentsOf(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TEST(LogSetup, writes_redacted_lines_of_the_level_and_above_to_the_file)
{
    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("player.log"));
    ASSERT_EQ(player::setUpLog(QStringLiteral("info"), name), QString());
    const log4cplus::Logger logger = log4cplus::Logger::getInstance("test");
    LOG4CPLUS_INFO(logger, "Bearer abcdefgh");
    LOG4CPLUS_DEBUG(logger, "not written");
    log4cplus::Logger::getRoot().removeAllAppenders();
    const QByteArray lines = contentsOf(name);
    EXPECT_TRUE(lines.contains("INFO  test: Bearer ***\n")) << lines.constData();
    EXPECT_FALSE(lines.contains("not written"));
}

TEST(LogSetup, says_what_is_wrong_with_a_level_and_with_a_file)
{
    EXPECT_TRUE(player::setUpLog(QStringLiteral("loud"), QString())
                    .contains(QStringLiteral("trace, debug, info, warn, error or off")));
    EXPECT_TRUE(player::setUpLog(QStringLiteral("info"), QStringLiteral("/nowhere/at/all.log"))
                    .contains(QStringLiteral("cannot be written")));
    // A folder can be written to, but not as a log.
    EXPECT_EQ(player::setUpLog(QStringLiteral("info"), QStringLiteral("/tmp")),
        QStringLiteral("The log file /tmp cannot be written (Is a directory). Choose another with "
                       "log.file, or leave it empty for standard error."));
}

} // namespace
