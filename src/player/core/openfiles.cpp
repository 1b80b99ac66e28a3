#include "openfiles.h"

#include <algorithm>
#include <limits>
#include <sys/resource.h>

namespace player {

int openFilesAtMost()
{
    constexpr rlim_t wanted = 8192;
    constexpr int usual = 1024;
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return usual;
    if (limit.rlim_cur < wanted && limit.rlim_cur < limit.rlim_max) {
        limit.rlim_cur = std::min(wanted, limit.rlim_max);
        ::setrlimit(RLIMIT_NOFILE, &limit);
        ::getrlimit(RLIMIT_NOFILE, &limit);
    }
    return static_cast<int>(std::min<rlim_t>(limit.rlim_cur, std::numeric_limits<int>::max()));
}

} // namespace player
