#include "logcapture.h"

#include <log4cplus/spi/loggingevent.h>

#include <algorithm>
#include <mutex>
#include <vector>

class LogCapture::Recorder : public log4cplus::Appender
{
public:
    ~Recorder() override { destructorImpl(); }

    void close() override { closed = true; }

    std::vector<std::pair<log4cplus::LogLevel, QString>> lines() const
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return m_lines;
    }

    void clear()
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_lines.clear();
    }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_lines.emplace_back(event.getLogLevel(), QString::fromStdString(event.getMessage()));
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::pair<log4cplus::LogLevel, QString>> m_lines; // Guarded by m_mutex.
};

LogCapture::LogCapture(const char* loggerName)
    : m_logger(log4cplus::Logger::getInstance(loggerName))
    , m_levelBefore(m_logger.getLogLevel())
    , m_additiveBefore(m_logger.getAdditivity())
    , m_recorder(new Recorder)
    , m_appender(m_recorder)
{
    m_logger.setLogLevel(log4cplus::ALL_LOG_LEVEL);
    m_logger.setAdditivity(false);
    m_logger.addAppender(m_appender);
}

LogCapture::~LogCapture()
{
    m_logger.removeAppender(m_appender);
    m_logger.setAdditivity(m_additiveBefore);
    m_logger.setLogLevel(m_levelBefore);
}

QStringList LogCapture::texts(log4cplus::LogLevel level) const
{
    QStringList texts;
    for (const auto& [lineLevel, text] : m_recorder->lines()) {
        if (lineLevel == level)
            texts.append(text);
    }
    return texts;
}

int LogCapture::count(log4cplus::LogLevel level, const QString& text) const
{
    return texts(level).count(text);
}

int LogCapture::countContaining(log4cplus::LogLevel level, const QString& part) const
{
    return texts(level).filter(part).size();
}

bool LogCapture::mentions(const QString& part) const
{
    const auto lines = m_recorder->lines();
    return std::any_of(
        lines.begin(), lines.end(), [&](const auto& line) { return line.second.contains(part); });
}

void LogCapture::clear()
{
    m_recorder->clear();
}
