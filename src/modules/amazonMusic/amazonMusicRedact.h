#pragma once

#include "tavuamazonmusic.h"
#include "tavumediadata.h"

/// Records as they may be logged: without the headers and tokens that open an encrypted stream, and
/// without the query of a stream's URL, which is its signature.
namespace amazonMusicRedact {

TavuAmazonMusicTrackInstance instance(TavuAmazonMusicTrackInstance instance);
TavuMediaData mediaData(TavuMediaData mediaData);

} // namespace amazonMusicRedact
