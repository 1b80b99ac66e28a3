#pragma once

#include "settings.h"

namespace player {

/// What a value of the type must be, for "must be ..."; empty when this value is.
QString demandOn(SettingType type, const QString& value);

} // namespace player
