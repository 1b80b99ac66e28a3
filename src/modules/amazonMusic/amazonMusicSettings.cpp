#include "amazonMusicSettings.h"

#include "amazonMusicLog.h"
#include "cmroot.h"

TavuValue amazonMusicSetting(const CMPath& path)
{
    AMAZON_MUSIC_ENTER();
    return TavuValue(TavuHash(CMRoot()->getValue(path).toHash()));
}
