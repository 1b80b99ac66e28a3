#pragma once

#include "httplimits.h"
#include "httpmessage.h"

#include <memory>

namespace http {

/// Turns the bytes of a connection into requests, one after the other. Strict: see Server.
class RequestParser
{
public:
    enum class State {
        NeedMore, ///< everything usable was consumed
        Head, ///< the head is complete, the body has not been looked at; feed again
        Complete, ///< request() is whole; call reset() before the next one
        Refused ///< answer with status() and close
    };

    /// The limits must outlive the parser.
    explicit RequestParser(const Limits& limits);
    ~RequestParser();
    Q_DISABLE_COPY_MOVE(RequestParser)

    /// `data` begins with the first byte not consumed yet. Sets `consumed` to the bytes used up.
    State feed(const char* data, int size, int* consumed);
    void reset();

    /// From Head on. Without the body before Complete.
    Request& request();
    const Request& request() const;
    int status() const;
    bool isHttp10() const;
    bool keepsAlive() const;
    bool expectsContinue() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace http
