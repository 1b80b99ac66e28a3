#pragma once

#include "tavulog.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

namespace player {

/// Never told a token, a code or a secret.
inline log4cplus::Logger& oauth2Logger()
{
    static log4cplus::Logger logger = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("OAuth2"));
    return logger;
}

} // namespace player
