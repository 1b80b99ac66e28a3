#pragma once

#include "tavuhash.h"

/// One way to get the sound of an item.
class TavuResource : public TavuHash
{
    TAVU_RECORD(TavuResource)
    TAVU_FIELD(QString, uri, Uri)
    TAVU_FIELD(QString, mimeType, MimeType)
    /// Milliseconds.
    TAVU_FIELD(qint64, duration, Duration)
    /// Milliseconds since the epoch from which `uri` no longer works; unset when it does not
    /// expire.
    TAVU_FIELD(qint64, validUntil, ValidUntil)
    /// By service: what the streamer needs to play an encrypted stream.
    TAVU_FIELD(QVariantHash, cryptoData, CryptoData)
};
