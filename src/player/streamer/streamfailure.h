#pragma once

#include "cmerror.h"

#include <QString>

namespace player {

/// Why a stream cannot be had (any further).
struct StreamFailure
{
    enum Kind {
        None,
        BadAddress, ///< No address, or one that is not http or https with a host.
        BadKeyHeaders, ///< A key header that no request could carry.
        NameNotResolved,
        ConnectFailed,
        LocalAddress, ///< The public service's address leads to this machine or its link.
        TlsFailed,
        Stalled, ///< No answer, or nothing more of it, for too long.
        Interrupted, ///< Cut off, and not to be resumed.
        HttpError, ///< `httpStatus` says which.
        TooManyRedirects,
        Downgraded, ///< A redirect from https to http.
        Changed, ///< The resource is not the same any more.
        Empty,
        NotAudio, ///< `detail` is the media type, when the server named one.
        NoDecoder, ///< `detail` names the format.
        Damaged, ///< The decoder gave up.
        EndedEarly, ///< The stream ended long before the item's duration.
        OutputFailed, ///< `detail` is the output's own word.
        NoOutput,
    };

    Kind kind = None;
    QString host;
    int httpStatus = 0;
    QString detail;

    bool isSet() const { return kind != None; }
};

/// Whether the server refused the address itself (401, 403, 404 or 410): asking again does not
/// help, a fresh address may.
bool isRefusal(int httpStatus);

/// For people: which item could not be played, why, and what to do. The error carries the HTTP
/// status under streamErrorHttpCode() when there is one.
CMError streamError(const QString& title, const StreamFailure& failure);

/// Key of a number in a CMError.
QString streamErrorHttpCode();

/// The name of errors that concern the sound's way out rather than an item.
QString outputErrorName();

} // namespace player
