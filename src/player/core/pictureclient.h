#pragma once

#include "artworkstore.h"
#include "httpclient.h"

namespace player {

/// Fetches pictures for the player's faces, which cannot reach the service's hosts themselves:
/// anything that calls itself a picture, up to 8 MiB, following redirects.
class PictureClient
{
public:
    PictureClient();

    /// As control::ArtworkFetch.
    void fetch(const QString& url, const std::function<void(const control::Artwork&)>& done);

private:
    HttpClient m_http;
};

} // namespace player
