#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QString>

namespace player {

/// Readable and writable by the owner alone (0600), for what is secret.
constexpr QFileDevice::Permissions privateFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

/// Replaces the contents of a file in one step and forces them onto the disk: whatever happens, the
/// file holds either all of the old or all of the new bytes. The contents before it are kept as
/// "<name>.bak" where that is possible. The new file has exactly `permissions` from its first
/// moment. On false nothing was changed, the .bak apart, and `error`, unless null, says why, for
/// people. Blocks for the disk.
bool saveFile(const QString& fileName, const QByteArray& data, QFileDevice::Permissions permissions,
    QString* error = nullptr);

/// Removes the file and its .bak. A file that is not there is removed already.
bool removeSavedFile(const QString& fileName, QString* error = nullptr);

} // namespace player
