#pragma once

#include "httpclient.h"

#include <curl/curl.h>

namespace httpclient {

/// What a transfer's end means to the client's users.
HttpClientStatus statusOf(CURLcode code);

} // namespace httpclient
