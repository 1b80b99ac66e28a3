#pragma once

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>

#include <QString>
#include <QStringList>

/// Records what one logger is told while this object lives, at every level. Reading it is safe
/// while other threads log.
class LogCapture
{
public:
    explicit LogCapture(const char* loggerName = "CB_AmazonMusic");
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The texts of the level, in the order in which they were logged.
    QStringList texts(log4cplus::LogLevel level) const;
    /// How often exactly this text was logged at the level.
    int count(log4cplus::LogLevel level, const QString& text) const;
    /// How many texts of the level contain `part`.
    int countContaining(log4cplus::LogLevel level, const QString& part) const;
    bool has(log4cplus::LogLevel level, const QString& text) const
    {
        return count(level, text) > 0;
    }
    /// Whether any text of whatever level contains `part`.
    bool mentions(const QString& part) const;
    void clear();

private:
    class Recorder;

    log4cplus::Logger m_logger;
    log4cplus::LogLevel m_levelBefore;
    bool m_additiveBefore;
    Recorder* m_recorder; // Owned by m_appender.
    log4cplus::SharedAppenderPtr m_appender;
};
