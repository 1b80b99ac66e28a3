#include "logsetup.h"

#include "fulldisk.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QDir>
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

TEST(LogSetup, goes_on_after_a_full_disk_and_keeps_what_was_written_before)
{
    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("player.log"));
    ASSERT_EQ(player::setUpLog(QStringLiteral("info"), name), QString());
    const log4cplus::Logger logger = log4cplus::Logger::getInstance("test");
    LOG4CPLUS_INFO(logger, "before");
    const QByteArray before = contentsOf(name);
    EXPECT_TRUE(before.contains("before"));
    {
        const FullDisk full(static_cast<rlim_t>(before.size()));
        for (int line = 0; line < 100; ++line)
            LOG4CPLUS_INFO(logger, "lost");
    }
    EXPECT_EQ(contentsOf(name), before);
    // The file is opened anew a second after the first line that was lost.
    EXPECT_TRUE(waitUntil([&] {
        LOG4CPLUS_INFO(logger, "again");
        return contentsOf(name).endsWith("again\n");
    }));
    log4cplus::Logger::getRoot().removeAllAppenders();
    EXPECT_TRUE(contentsOf(name).startsWith(before));
}

TEST(LogSetup, takes_a_bounded_part_of_the_disk_however_much_is_written)
{
    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("player.log"));
    ASSERT_EQ(player::setUpLog(QStringLiteral("info"), name), QString());
    const log4cplus::Logger logger = log4cplus::Logger::getInstance("test");
    constexpr qint64 mebibyte = 1024 * 1024;
    const std::string line(mebibyte / 8, 'x');
    constexpr int lines = 8 * 60;
    for (int written = 0; written < lines; ++written)
        LOG4CPLUS_INFO(logger, line);
    LOG4CPLUS_INFO(logger, "last");
    log4cplus::Logger::getRoot().removeAllAppenders();
    EXPECT_TRUE(contentsOf(name).endsWith("last\n"));
    qint64 sizes = 0;
    const QFileInfoList files = QDir(folder.path()).entryInfoList(QDir::Files);
    for (const QFileInfo& file : files)
        sizes += file.size();
    EXPECT_EQ(files.size(), 4);
    EXPECT_LE(sizes, 41 * mebibyte);
    EXPECT_GE(sizes, 30 * mebibyte);
}

} // namespace
