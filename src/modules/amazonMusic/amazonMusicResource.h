#pragma once

#include "tavuresource.h"

/// Whether the resource works at `nowMs` milliseconds since the epoch. At the very end of its time
/// it no longer does, and one without such a time never does.
bool amazonMusicResourceValid(const TavuResource& resource, qint64 nowMs);
