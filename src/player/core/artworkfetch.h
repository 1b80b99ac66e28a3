#pragma once

#include "cmreply.h"
#include "httpclient.h"

namespace player {

/// Fetches pictures for the player's faces, which cannot reach the service's hosts themselves.
class ArtworkFetch
{
public:
    struct Picture
    {
        QByteArray bytes;
        QByteArray mediaType;
    };

    ArtworkFetch();

    /// Fails for anything that is not a picture of at most 8 MiB.
    CMReply<Picture> fetch(const QString& url);

private:
    HttpClient m_http;
};

} // namespace player
