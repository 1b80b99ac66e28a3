#pragma once

#include <QByteArray>
#include <QString>

namespace emulator {

/// Who may read a file that is written.
enum class Access { Everyone, OwnerOnly };

/// Replaces a file as a whole: after a crash, a full disk or any other failure the old one stands.
/// Returns what went wrong, for people; empty on success.
QString saveFile(const QString& file, const QByteArray& bytes, Access access = Access::Everyone);

} // namespace emulator
