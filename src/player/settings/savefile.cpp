#include "savefile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace player {

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
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    forceToDisk(descriptor);
    ::close(descriptor);
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

bool replace(const QString& fileName, const QByteArray& data, QFileDevice::Permissions permissions,
    QString* error)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(permissions)) {
        *error = file.errorString();
        return false;
    }
    if (!writeAll(file, data, error)) {
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        *error = file.errorString();
        return false;
    }
    forceFolderToDisk(fileName);
    return true;
}

/// A previous state that cannot be kept is no reason to lose the new one.
void keepPrevious(const QString& fileName, QFileDevice::Permissions permissions)
{
    QFile present(fileName);
    QString ignored;
    if (present.open(QIODevice::ReadOnly))
        replace(backupName(fileName), present.readAll(), permissions, &ignored);
}

} // namespace

bool saveFile(const QString& fileName, const QByteArray& data, QFileDevice::Permissions permissions,
    QString* error)
{
    QString ignored;
    keepPrevious(fileName, permissions);
    return replace(fileName, data, permissions, error ? error : &ignored);
}

bool removeSavedFile(const QString& fileName, QString* error)
{
    for (const QString& name : { fileName, backupName(fileName) }) {
        QFile file(name);
        if (!file.exists() || file.remove())
            continue;
        if (error)
            *error = file.errorString();
        return false;
    }
    forceFolderToDisk(fileName);
    return true;
}

} // namespace player
