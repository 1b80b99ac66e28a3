#include "savefile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <unistd.h>

namespace files {

namespace {

QString backupName(const QString& fileName)
{
    return fileName + QLatin1String(".bak");
}

QString systemError(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

/// Some file systems cannot; that is not an error of the data.
bool forceToDisk(int descriptor)
{
    return ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
}

/// The new name, too, is on the disk only when its folder is.
void forceFolderToDisk(const QString& fileName)
{
    const QByteArray folder = QFile::encodeName(QFileInfo(fileName).absolutePath());
    DIR* opened = ::opendir(folder.constData());
    if (!opened)
        return;
    forceToDisk(::dirfd(opened));
    ::closedir(opened);
}

/// What a full disk does to the bytes shows at the flush, never at the commit. The first write to
/// it is often a short one, for which the file has no words; the system's number tells more.
bool writeAll(QSaveFile& file, const QByteArray& data, QString* error)
{
    errno = 0;
    const bool written = file.write(data) == data.size() && file.flush()
        && file.error() == QFileDevice::NoError && forceToDisk(file.handle());
    if (!written)
        *error = errno != 0 ? systemError(errno) : file.errorString();
    return written;
}

/// Returns an empty text, or why the file could not be replaced.
QString replace(
    const QString& fileName, const QByteArray& data, QFileDevice::Permissions permissions)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(permissions))
        return file.errorString();
    QString reason;
    if (!writeAll(file, data, &reason)) {
        file.cancelWriting();
        return reason;
    }
    if (!file.commit())
        return file.errorString();
    forceFolderToDisk(fileName);
    return QString();
}

bool succeeded(const QString& fileName, const QString& reason, QString* error)
{
    if (!reason.isEmpty() && error)
        *error = QStringLiteral("%1: %2").arg(fileName, reason);
    return reason.isEmpty();
}

/// A previous state that cannot be kept is no reason to lose the new one.
void keepPrevious(const QString& fileName, QFileDevice::Permissions permissions)
{
    QFile present(fileName);
    if (present.open(QIODevice::ReadOnly))
        replace(backupName(fileName), present.readAll(), permissions);
}

} // namespace

bool replaceFile(const QString& fileName, const QByteArray& data,
    QFileDevice::Permissions permissions, QString* error)
{
    return succeeded(fileName, replace(fileName, data, permissions), error);
}

bool saveFile(const QString& fileName, const QByteArray& data, QFileDevice::Permissions permissions,
    QString* error)
{
    keepPrevious(fileName, permissions);
    return replaceFile(fileName, data, permissions, error);
}

QString setFileAside(const QString& fileName)
{
    const QString aside = fileName + QLatin1String(".bad");
    QFile::remove(aside);
    return QFile::rename(fileName, aside) ? aside : QString();
}

bool removeSavedFile(const QString& fileName, QString* error)
{
    for (const QString& name : { fileName, backupName(fileName) }) {
        QFile file(name);
        if (file.exists() && !file.remove())
            return succeeded(name, file.errorString(), error);
    }
    forceFolderToDisk(fileName);
    return true;
}

} // namespace files
