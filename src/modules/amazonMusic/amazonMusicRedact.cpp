#include "amazonMusicRedact.h"

#include "amazonMusicLog.h"
#include "tavuurl.h"

namespace {

QString withoutQuery(const QString& uri)
{
    AMAZON_MUSIC_ENTER();
    TavuUrl url(uri);
    url.setQueryItems({});
    return url.toString();
}

} // namespace

namespace amazonMusicRedact {

TavuAmazonMusicTrackInstance instance(TavuAmazonMusicTrackInstance instance)
{
    AMAZON_MUSIC_ENTER();
    TavuAmazonMusicTrackDefinition definition = instance.trackDefinitionInst();
    TavuAmazonMusicAudio audio = definition.audio();
    audio.setUri(withoutQuery(audio.uri()));
    audio.__remove(TavuAmazonMusicAudio::Headers());
    definition.setAudio(audio);
    instance.setTrackDefinitionInst(definition);
    return instance;
}

TavuMediaData mediaData(TavuMediaData mediaData)
{
    AMAZON_MUSIC_ENTER();
    const TavuList<TavuResource> resources = mediaData.resources();
    TavuList<TavuResource> redacted;
    for (int i = 0; i < resources.size(); ++i) {
        TavuResource resource = resources.record(i);
        resource.setUri(withoutQuery(resource.uri()));
        resource.__remove(TavuResource::CryptoData());
        redacted.append(resource);
    }
    mediaData.setResources(redacted);
    return mediaData;
}

} // namespace amazonMusicRedact
