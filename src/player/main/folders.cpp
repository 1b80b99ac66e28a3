#include "folders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace player {

namespace {

QString xdgFolder(const char* variable, const char* belowHome)
{
    const QString configured = qEnvironmentVariable(variable);
    const QString base = configured.isEmpty()
        ? QDir::homePath() + QLatin1Char('/') + QString::fromLatin1(belowHome)
        : configured;
    return base + QLatin1String("/tavu");
}

QString stateFolder(const Settings& settings)
{
    QString configured = settings.text("player.state-folder");
    if (!configured.isEmpty())
        return configured;
    const QString ofService =
        qEnvironmentVariable("STATE_DIRECTORY").section(QLatin1Char(':'), 0, 0);
    return ofService.isEmpty() ? xdgFolder("XDG_STATE_HOME", ".local/state") : ofService;
}

QString faultOf(const QFileInfo& folder)
{
    if (!folder.exists())
        return QStringLiteral("cannot be made");
    if (!folder.isDir())
        return QStringLiteral("is not a folder");
    return folder.isWritable() ? QString() : QStringLiteral("cannot be written");
}

} // namespace

QString defaultSettingsFile()
{
    const QString ofUser = xdgFolder("XDG_CONFIG_HOME", ".config") + QLatin1String("/player.conf");
    const QString ofSystem = QStringLiteral("/etc/tavu/player.conf");
    return !QFileInfo::exists(ofUser) && QFileInfo::exists(ofSystem) ? ofSystem : ofUser;
}

QString makeStateFolder(const Settings& settings, QString& problem)
{
    QString folder = stateFolder(settings);
    if (!QFileInfo::exists(folder) && QDir().mkpath(folder))
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QString fault = faultOf(QFileInfo(folder));
    if (fault.isEmpty())
        return folder;
    problem = QStringLiteral("The state folder %1 %2. Set player.state-folder to a folder that can "
                             "be written.")
                  .arg(folder, fault);
    return QString();
}

QString pluginFile(const Settings& settings)
{
    QString configured = settings.text("player.plugin");
    if (!configured.isEmpty())
        return configured;
    const QString here = QCoreApplication::applicationDirPath();
    const QString name = QStringLiteral("/cb_amazonMusic.so");
    const QString built = here + QLatin1String("/../../../modules") + name;
    return QDir::cleanPath(QFileInfo::exists(built)
            ? built
            : here + QLatin1String("/" TAVU_MODULES_FROM_PROGRAM) + name);
}

} // namespace player
