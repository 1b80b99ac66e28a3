#include "savefile.h"

#include <QSaveFile>

namespace emulator {

QString saveFile(const QString& file, const QByteArray& bytes, Access access)
{
    QSaveFile out(file);
    const auto failed = [&out, &file] {
        return QStringLiteral("cannot write %1: %2").arg(file, out.errorString());
    };
    if (!out.open(QIODevice::WriteOnly))
        return failed();
    if (access == Access::OwnerOnly)
        out.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    // commit() alone does not notice that a full disk has swallowed the bytes.
    if (out.write(bytes) != bytes.size() || !out.flush() || out.error() != QFileDevice::NoError) {
        QString problem = failed();
        out.cancelWriting();
        return problem;
    }
    return out.commit() ? QString() : failed();
}

} // namespace emulator
