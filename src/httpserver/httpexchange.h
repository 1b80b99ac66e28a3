#pragma once

#include <QPointer>

namespace http {

class Answer;

/// What all copies of a Responder or EventStream share. The answer learns when the last one goes.
class Exchange
{
public:
    explicit Exchange(Answer* answer);
    ~Exchange();
    Q_DISABLE_COPY_MOVE(Exchange)

    /// Null once the connection is over.
    Answer* answer() const;

private:
    QPointer<Answer> m_answer;
};

} // namespace http
