#include "amazonMusicResource.h"

#include "amazonMusicLog.h"

bool amazonMusicResourceValid(const TavuResource& resource, qint64 nowMs)
{
    AMAZON_MUSIC_ENTER();
    return nowMs < resource.validUntil();
}
