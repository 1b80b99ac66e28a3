#pragma once

#include "cmpath.h"
#include "httpclient.h"
#include "tavuexport.h"

namespace httpclient {

/// Invoked on the root worker, when there is a service, with a bearer token (QString) that a server
/// has just refused: by 401 or 403, to a request that carried it. It comes before the answer itself
/// reaches whoever asked, so whoever then asks for another token comes after it.
TAVU_EXPORT CMPath refusedTokenPath();

/// Tells the service of an answer to a request with these fields.
void tellOfRefusal(int code, const HttpClientHeaders& sent);

} // namespace httpclient
