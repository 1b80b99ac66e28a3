#pragma once

#include <QString>

namespace player {

/// The token that clients elsewhere present to the control API, kept in a file of its own. Made, of
/// 256 random bits, when the file is missing or empty; a file that holds anything else than a token
/// is left alone.
class ControlToken
{
public:
    explicit ControlToken(const QString& fileName);

    /// Empty when there is none; problem() says why then, and what to do.
    QString text() const { return m_text; }
    QString problem() const { return m_problem; }

private:
    void read(const QString& fileName);
    void make(const QString& fileName);

    QString m_text;
    QString m_problem;
};

} // namespace player
