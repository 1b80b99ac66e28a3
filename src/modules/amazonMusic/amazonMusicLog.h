#pragma once

#include "tavulog.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <QtGlobal>

#include <string>

/// The plug-in's logger, one handle for each source file. Not const: the logging macros copy a
/// const one each time, which costs more than all the rest of a line that is not logged.
static inline log4cplus::Logger& logger()
{
    static log4cplus::Logger handle =
        log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("CB_AmazonMusic"));
    return handle;
}

/// Writes a line at trace level, as LOG4CPLUS_TRACE does. Apart from its callers and out of their
/// way: tracing is off as a rule, and the code that writes would be most of a small function.
[[gnu::cold, gnu::noinline]] static inline void amazonMusicTrace(
    const char* what, const char* signature, const char* file, int line)
{
    logger().forcedLog(
        log4cplus::TRACE_LOG_LEVEL, std::string(what) + signature, file, line, signature);
}

/// Traces the life of the scope that it stands in.
class AmazonMusicScope
{
public:
    AmazonMusicScope(const char* signature, const char* file, int line)
        : m_signature(logger().isEnabledFor(log4cplus::TRACE_LOG_LEVEL) ? signature : nullptr)
        , m_file(file)
        , m_line(line)
    {
        if (Q_UNLIKELY(m_signature))
            amazonMusicTrace("Enter ", m_signature, m_file, m_line);
    }
    ~AmazonMusicScope()
    {
        if (Q_UNLIKELY(m_signature))
            amazonMusicTrace("Leave ", m_signature, m_file, m_line);
    }
    Q_DISABLE_COPY_MOVE(AmazonMusicScope)

private:
    const char* m_signature; // Null when nothing is traced.
    const char* m_file;
    int m_line;
};

/// The entry trace: the first statement of every function of the plug-in.
#define AMAZON_MUSIC_ENTER()                                                                       \
    do {                                                                                           \
        if (Q_UNLIKELY(logger().isEnabledFor(log4cplus::TRACE_LOG_LEVEL)))                         \
            amazonMusicTrace("Enter ", Q_FUNC_INFO, __FILE__, __LINE__);                           \
    } while (false)

/// The entry trace that is followed by a second one when the function is left.
#define AMAZON_MUSIC_ENTER_SCOPE()                                                                 \
    const AmazonMusicScope amazonMusicScope(Q_FUNC_INFO, __FILE__, __LINE__)

/// The entry trace with what the function was called with, as it would be streamed: a chain of
/// "<<", which parentheses would break. Never a token, a code or a secret.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define AMAZON_MUSIC_ENTER_WITH(values)                                                            \
    LOG4CPLUS_TRACE(logger(), "Enter " << Q_FUNC_INFO << ": " << values)
// NOLINTEND(bugprone-macro-parentheses)
