#pragma once

#include "tavuenums.h"
#include "tavuhash.h"

/// Something that the screen which sent an action is to do.
class TavuEvent : public TavuHash
{
    TAVU_RECORD(TavuEvent)
    TAVU_FIELD(TavuEventRowsType::Enum, rowsType, RowsType)
};
