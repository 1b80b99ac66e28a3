#pragma once

#include "cmerror.h"

#include <QVariantList>

namespace player {

/// A message as people see it. The text may be empty, the title not.
struct Words
{
    QString title;
    QString text;
};

/// The words for an error and the rows of the screen that it leads to, which may be none: the
/// service's own headline and explanation come first. The framework's title for all errors says
/// nothing; the message then is the title.
Words wordsOf(const CMError& error, const QVariantList& rows = {});

/// Whether a row's title is not the service's word, but says that there was none. A rating answers
/// in the same form whether the service took it or not.
bool tellsOfFailure(const QString& title);

} // namespace player
