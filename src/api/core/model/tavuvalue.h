#pragma once

#include "tavuenums.h"
#include "tavuhash.h"

/// One value of the host: a setting, a token, the play mode. It has one of the fields below.
class TAVU_EXPORT TavuValue : public TavuHash
{
    TAVU_RECORD(TavuValue)
    TAVU_FIELD(QString, string_, String_)
    TAVU_FIELD(bool, bool_, Bool_)
    TAVU_FIELD(qint32, i32_, I32_)
    TAVU_FIELD(TavuPlayerPlayMode::Enum, playerPlayMode, PlayerPlayMode)

    QString string() const { return string_(); }
    qint32 i32() const { return i32_(); }

    static TavuValue fromString(const QString& value);
    static TavuValue fromBool(bool value);
    static TavuValue fromI32(qint32 value);
    static TavuValue fromPlayerPlayMode(TavuPlayerPlayMode::Enum value);
};

Q_DECLARE_METATYPE(TavuValue)
