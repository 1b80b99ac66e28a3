#include "logsetup.h"

#include "redactor.h"

#include <QFile>
#include <QHash>

#include <log4cplus/consoleappender.h>
#include <log4cplus/fileappender.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <sstream>
#include <unistd.h>

namespace player {

namespace {

/// Writes a line as the pattern says, redacted as a whole: what a logger adds cannot leak either.
class RedactingLayout : public log4cplus::PatternLayout
{
public:
    using log4cplus::PatternLayout::PatternLayout;

    void formatAndAppend(
        log4cplus::tostream& out, const log4cplus::spi::InternalLoggingEvent& event) override
    {
        std::ostringstream line;
        log4cplus::PatternLayout::formatAndAppend(line, event);
        out << redacted(line.str());
    }
};

log4cplus::SharedAppenderPtr makeAppender(const QString& fileName)
{
    constexpr long rotateAt = 10L * 1024 * 1024;
    constexpr int kept = 3;
    if (fileName.isEmpty())
        return log4cplus::SharedAppenderPtr(new log4cplus::ConsoleAppender(true, true));
    return log4cplus::SharedAppenderPtr(
        new log4cplus::RollingFileAppender(fileName.toStdString(), rotateAt, kept));
}

const char* patternFor(const QString& fileName)
{
    // Under a service manager the journal keeps the time.
    const bool journal = fileName.isEmpty() && qEnvironmentVariableIsSet("JOURNAL_STREAM");
    return journal ? "%-5p %c: %m%n" : "%D{%Y-%m-%d %H:%M:%S.%q} %-5p %c: %m%n";
}

/// Empty when the log can be written to the file; only an attempt tells.
QString whyNot(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly | QIODevice::Append) ? QString() : file.errorString();
}

} // namespace

QString setUpLog(const QString& level, const QString& fileName)
{
    static const QHash<QString, log4cplus::LogLevel> levels{
        { QStringLiteral("trace"), log4cplus::TRACE_LOG_LEVEL },
        { QStringLiteral("debug"), log4cplus::DEBUG_LOG_LEVEL },
        { QStringLiteral("info"), log4cplus::INFO_LOG_LEVEL },
        { QStringLiteral("warn"), log4cplus::WARN_LOG_LEVEL },
        { QStringLiteral("error"), log4cplus::ERROR_LOG_LEVEL },
        { QStringLiteral("off"), log4cplus::OFF_LOG_LEVEL },
    };
    if (!levels.contains(level))
        return QStringLiteral(
            "log.level must be trace, debug, info, warn, error or off, not \"%1\".")
            .arg(level);
    const QString refusal = fileName.isEmpty() ? QString() : whyNot(fileName);
    if (!refusal.isEmpty())
        return QStringLiteral("The log file %1 cannot be written (%2). Choose another with "
                              "log.file, or leave it empty for standard error.")
            .arg(fileName, refusal);
    auto appender = makeAppender(fileName);
    appender->setLayout(std::make_unique<RedactingLayout>(patternFor(fileName)));
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.removeAllAppenders();
    root.addAppender(appender);
    root.setLogLevel(levels.value(level));
    return QString();
}

} // namespace player
