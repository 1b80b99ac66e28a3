#pragma once

#include "tavulog.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <QtGlobal>

/// The plug-in's logger, one handle for each source file. Not const: the logging macros copy a
/// const one each time, which costs more than all the rest of a line that is not logged.
static inline log4cplus::Logger& logger()
{
    static log4cplus::Logger handle =
        log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("CB_AmazonMusic"));
    return handle;
}

/// Traces the life of the scope that it stands in.
class AmazonMusicScope
{
public:
    explicit AmazonMusicScope(const char* signature)
        : m_signature(logger().isEnabledFor(log4cplus::TRACE_LOG_LEVEL) ? signature : nullptr)
    {
        if (m_signature)
            LOG4CPLUS_TRACE(logger(), "Enter " << m_signature);
    }
    ~AmazonMusicScope()
    {
        if (m_signature)
            LOG4CPLUS_TRACE(logger(), "Leave " << m_signature);
    }
    Q_DISABLE_COPY_MOVE(AmazonMusicScope)

private:
    const char* m_signature; // Null when nothing is traced.
};

/// The entry trace: the first statement of every function of the plug-in.
#define AMAZON_MUSIC_ENTER() LOG4CPLUS_TRACE(logger(), "Enter " << Q_FUNC_INFO)

/// The entry trace that is followed by a second one when the function is left.
#define AMAZON_MUSIC_ENTER_SCOPE() const AmazonMusicScope amazonMusicScope(Q_FUNC_INFO)

/// The entry trace with what the function was called with, as it would be streamed: a chain of
/// "<<", which parentheses would break. Never a token, a code or a secret.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define AMAZON_MUSIC_ENTER_WITH(values)                                                            \
    LOG4CPLUS_TRACE(logger(), "Enter " << Q_FUNC_INFO << ": " << values)
// NOLINTEND(bugprone-macro-parentheses)
