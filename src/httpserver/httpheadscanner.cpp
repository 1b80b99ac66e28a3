#include "httpheadscanner.h"

#include <cstring>

namespace http {

namespace {

bool isToken(unsigned char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')
        || (c != 0 && std::strchr("!#$%&'*+-.^_`|~", c) != nullptr);
}

bool isControl(unsigned char c)
{
    return c < 0x20 || c == 0x7f;
}

} // namespace

HeadScanner::HeadScanner(const Limits& limits)
    : m_limits(limits)
{
}

void HeadScanner::reset()
{
    m_position = 0;
    m_lineStart = 0;
    m_status = 0;
    m_requestLine = true;
    m_inName = false;
    m_sawCr = false;
}

HeadScanner::State HeadScanner::scan(const char* data, int size)
{
    while (m_position < size) {
        const State state = take(data[m_position]);
        if (state != State::NeedMore)
            return state;
    }
    return State::NeedMore;
}

HeadScanner::State HeadScanner::refuse(int status)
{
    m_status = status;
    return State::Refused;
}

HeadScanner::State HeadScanner::take(char c)
{
    if (const int status = overrun())
        return refuse(status);
    ++m_position;
    if (m_sawCr) {
        if (c != '\n')
            return refuse(400);
        m_sawCr = false;
        return endLine() ? State::Complete : State::NeedMore;
    }
    if (c == '\r') {
        // A field without a colon.
        if (m_inName && m_position - 1 > m_lineStart)
            return refuse(400);
        m_sawCr = true;
        return State::NeedMore;
    }
    return takeInLine(static_cast<unsigned char>(c)) ? State::NeedMore : refuse(400);
}

/// Returns whether the ended line was the empty one.
bool HeadScanner::endLine()
{
    const bool empty = m_position - m_lineStart == 2;
    m_lineStart = m_position;
    if (empty && !m_requestLine)
        return true;
    // Empty lines before the request line are skipped, as some clients send one after a body.
    if (!empty)
        m_requestLine = false;
    m_inName = !m_requestLine;
    return false;
}

bool HeadScanner::takeInLine(unsigned char c)
{
    if (!m_inName)
        return !isControl(c) || (c == '\t' && !m_requestLine);
    // Folded lines begin with space, and so fail here, as does a space before the colon.
    if (c != ':')
        return isToken(c);
    m_inName = false;
    return m_position - 1 > m_lineStart;
}

int HeadScanner::overrun() const
{
    if (m_requestLine && m_position >= m_limits.requestLineBytes)
        return 414;
    return m_position >= m_limits.headerBytes ? 431 : 0;
}

} // namespace http
