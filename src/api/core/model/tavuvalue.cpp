#include "tavuvalue.h"

TavuValue TavuValue::fromString(const QString& value)
{
    TavuValue result;
    result.setString_(value);
    return result;
}

TavuValue TavuValue::fromBool(bool value)
{
    TavuValue result;
    result.setBool_(value);
    return result;
}

TavuValue TavuValue::fromI32(qint32 value)
{
    TavuValue result;
    result.setI32_(value);
    return result;
}

TavuValue TavuValue::fromPlayerPlayMode(TavuPlayerPlayMode::Enum value)
{
    TavuValue result;
    result.setPlayerPlayMode(value);
    return result;
}
