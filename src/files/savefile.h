#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QString>

namespace files {

/// Readable and writable by the owner alone (0600), for what is secret.
constexpr QFileDevice::Permissions privateFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
/// Readable by everyone, writable by the owner (0644).
constexpr QFileDevice::Permissions publicFile =
    privateFile | QFileDevice::ReadGroup | QFileDevice::ReadOther;

/// Whether others than the owner may read or write a file.
inline bool isOpenToOthers(QFileDevice::Permissions permissions)
{
    return (permissions
               & (QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ReadOther
                   | QFileDevice::WriteOther))
        != 0;
}

/// Replaces the contents of a file in one step and forces them onto the disk: whatever happens, the
/// file holds either all of the old or all of the new bytes. The new file has exactly `permissions`
/// from its first moment. On false nothing was changed, and `error`, unless null, names the file
/// and says why, for people. Blocks for the disk.
bool replaceFile(const QString& fileName, const QByteArray& data,
    QFileDevice::Permissions permissions, QString* error = nullptr);

/// The same for what nobody could make again: the contents before are kept as "<name>.bak" where
/// that is possible, also when the new ones cannot be written.
bool saveFile(const QString& fileName, const QByteArray& data, QFileDevice::Permissions permissions,
    QString* error = nullptr);

/// Moves a damaged file to "<name>.bad", in the place of an earlier one, so that a fresh start does
/// not destroy what somebody may want to look at. Gives the new name; empty when it cannot be done.
QString setFileAside(const QString& fileName);

/// Removes the file and its .bak. A file that is not there is removed already.
bool removeSavedFile(const QString& fileName, QString* error = nullptr);

} // namespace files
