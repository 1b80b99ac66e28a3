#pragma once

#include <QString>
#include <QStringList>

namespace emulator::catalogue {

/// The text for comparing: case and accents folded away, blanks simplified.
QString fold(const QString& text);

/// The folded text without a leading English article, so that lists stand as people look for them.
QString sortKey(const QString& text);

/// The folded words of a text: runs of letters and digits, in order.
QStringList words(const QString& text);

} // namespace emulator::catalogue
