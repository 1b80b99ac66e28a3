#include "cmerror.h"

#include "tavulog.h"

#include <ostream>

CMError::CMError(const TrString& message)
{
    setName(DefaultName());
    setTitle(TrString(DefaultTitle()).toString());
    setMessage(message.toString());
}

std::ostream& operator<<(std::ostream& out, const CMError& error)
{
    return out << error.name() << ": " << error.message();
}
