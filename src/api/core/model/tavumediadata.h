#pragma once

#include "tavuhash.h"
#include "tavumetadata.h"
#include "tavuresource.h"

/// What the player needs to play an item.
class TavuMediaData : public TavuHash
{
    TAVU_RECORD(TavuMediaData)
    TAVU_FIELD(TavuMetaData, metaData, MetaData)
    /// In order of preference.
    TAVU_FIELD(TavuList<TavuResource>, resources, Resources)

    /// The resource that is played; empty when there is none.
    TavuResource firstResource() const
    {
        const TavuList<TavuResource> list = resources();
        return list.isEmpty() ? TavuResource() : list.record(0);
    }
};
