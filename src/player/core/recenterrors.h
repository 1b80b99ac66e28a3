#pragma once

#include "cmerror.h"

#include <QElapsedTimer>

namespace player {

/// One failure may be heard of twice, by the answer to a command and by what plays. People are told
/// of it once. What they do next may fail in the same words, and is told of again.
class RecentErrors
{
public:
    /// Before each thing that a person does.
    void clear() { m_age.invalidate(); }

    /// Whether this is news. A second tiding that names a screen to show is, after one that did
    /// not.
    bool isNews(const CMError& error)
    {
        const bool hasScreen = !error.actionReply().isEmpty();
        const bool again = m_age.isValid() && m_age.elapsed() < echoMs
            && error.message() == m_last.message()
            && (!hasScreen || !m_last.actionReply().isEmpty());
        m_last = error;
        m_age.start();
        return !again;
    }

private:
    static constexpr int echoMs = 2000;

    CMError m_last;
    QElapsedTimer m_age;
};

} // namespace player
