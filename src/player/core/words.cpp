#include "words.h"

#include "tavuroles.h"

namespace player {

Words wordsOf(const CMError& error, const QVariantList& rows)
{
    const TavuRoles head(rows.value(0).toHash());
    if (!head.title().isEmpty())
        return { head.title(), head.longDescription() };
    if (error.title().isEmpty() || error.title() == CMError::DefaultTitle())
        return { error.message(), QString() };
    return { error.title(), error.message() };
}

bool tellsOfFailure(const QString& title)
{
    return title.startsWith(QLatin1String("Server response with code: "));
}

} // namespace player
