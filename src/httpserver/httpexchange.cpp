#include "httpexchange.h"

#include "httpanswer.h"

namespace http {

Exchange::Exchange(Answer* answer)
    : m_answer(answer)
{
}

Exchange::~Exchange()
{
    if (m_answer)
        m_answer->abandon();
}

Answer* Exchange::answer() const
{
    return m_answer;
}

} // namespace http
