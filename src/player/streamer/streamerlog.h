#pragma once

#include "tavulog.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

namespace player {

/// What the streamer decides. Its parts have loggers of their own below it.
inline log4cplus::Logger& streamerLogger()
{
    static log4cplus::Logger logger =
        log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("player.streamer"));
    return logger;
}

} // namespace player
