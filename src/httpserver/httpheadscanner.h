#pragma once

#include "httplimits.h"

namespace http {

/// Finds the end of a request's head as it arrives and refuses what lenient parsers read in two
/// ways: bare CR or LF, folded fields, space before a colon, control characters. So a peer learns
/// of a bad head at once, also of one that has no proper end.
class HeadScanner
{
public:
    enum class State { NeedMore, Complete, Refused };

    explicit HeadScanner(const Limits& limits);

    /// `data` begins with the head's first byte at each call; earlier bytes are not looked at
    /// again.
    State scan(const char* data, int size);
    /// The head's length with the empty line, once complete.
    int length() const { return m_position; }
    /// 400, 414 or 431, once refused.
    int status() const { return m_status; }
    void reset();

private:
    State refuse(int status);
    State take(char c);
    bool endLine();
    bool takeInLine(unsigned char c);
    int overrun() const;

    const Limits& m_limits;
    int m_position = 0;
    int m_lineStart = 0;
    int m_status = 0;
    bool m_requestLine = true;
    bool m_inName = false;
    bool m_sawCr = false;
};

} // namespace http
