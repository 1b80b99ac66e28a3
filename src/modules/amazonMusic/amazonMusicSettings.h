#pragma once

#include "cmpath.h"
#include "tavuvalue.h"

/// The host's value at `path` as it is now; an empty one when there is none.
TavuValue amazonMusicSetting(const CMPath& path);
