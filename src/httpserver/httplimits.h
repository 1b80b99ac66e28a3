#pragma once

#include <QtGlobal>

namespace http {

/// What one server grants its peers. Times are in milliseconds, sizes in bytes; a time of 0 means
/// no limit.
struct Limits
{
    int requestLineBytes = 8 * 1024; ///< longer: 414
    int headerBytes = 64 * 1024; ///< the head with its request line; longer: 431
    qint64 bodyBytes = 64 * 1024LL; ///< longer, announced or counted: 413 before the rest is read
    int connections = 2048; ///< further ones get 503 and are closed
    int connectionsPerAddress = 0; ///< of one peer's address, so that others find a place; 0: all
    int headTimeoutMs = 10000; ///< TLS handshake and head in all; then 408
    int bodyTimeoutMs = 10000; ///< the body in all; then 408
    int idleTimeoutMs = 60000; ///< between two requests of a connection; then closed
    /// A peer that takes less than 16 KiB of a waiting answer in this time is cut off. Servers of
    /// media set 0, since a paused player may stop reading for hours. Event streams are exempt:
    /// their backlog counts.
    int writeTimeoutMs = 10000;
    int eventBacklogBytes = 256 * 1024; ///< an event client that lags further behind is cut off
    int heartbeatMs = 15000; ///< comment on an event stream that has been quiet for so long
};

} // namespace http
