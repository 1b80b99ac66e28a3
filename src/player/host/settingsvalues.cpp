#include "settingsvalues.h"

#include "cmroot.h"
#include "httpclient.h"
#include "savefile.h"
#include "tavupaths.h"

#include <QFile>
#include <QSslCertificate>
#include <QUrl>

#include <algorithm>
#include <array>

namespace player {

namespace {

void publish(const CMPath& path, const QString& text)
{
    CMRoot()->setValue(path, TavuValue::fromString(text));
}

/// Returns an empty text, or what is wrong.
QString readSecret(const QString& fileName, QString& secret)
{
    if (fileName.isEmpty())
        return QString();
    constexpr qint64 longest = 4096;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("service.client-secret-file: %1 cannot be read (%2). Put the client "
                              "secret there, with mode 0600, or name another file.")
            .arg(fileName, file.errorString());
    if (files::isOpenToOthers(file.permissions()))
        return QStringLiteral("service.client-secret-file: %1 can be read by others; run "
                              "\"chmod 600 %1\".")
            .arg(fileName);
    const QByteArray bytes = file.read(longest + 1).trimmed();
    const bool visible = std::all_of(
        bytes.begin(), bytes.end(), [](char byte) { return byte >= ' ' && byte <= '~'; });
    if (bytes.isEmpty() || bytes.size() > longest || !visible)
        return QStringLiteral("service.client-secret-file: %1 holds no client secret, which is one "
                              "line of text. Put the service's there, or name another file.")
            .arg(fileName);
    secret = QString::fromLatin1(bytes);
    return QString();
}

/// Returns an empty text, or what is wrong: a file that holds nothing would only show later, as a
/// service whose certificate is not trusted.
QString checkAuthorities(const QString& fileName)
{
    if (fileName.isEmpty())
        return QString();
    const QString remedy = QStringLiteral(
        "Name a PEM file with the certificates of the authorities that the service's comes from, "
        "or leave service.ca-file empty to trust those of this system.");
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("service.ca-file: %1 cannot be read (%2). %3")
            .arg(fileName, file.errorString(), remedy);
    constexpr qint64 longest = qint64{ 16 } * 1024 * 1024;
    if (QSslCertificate::fromData(file.read(longest), QSsl::Pem).isEmpty())
        return QStringLiteral("service.ca-file: %1 holds no certificate. %2").arg(fileName, remedy);
    return QString();
}

constexpr std::array neededSettings{ "service.base-url", "service.token-url",
    "service.device-code-url", "service.client-id" };

/// Another plug-in than the player's own may have no use for the service's settings.
bool needsService(const Settings& settings)
{
    const bool someSet = std::any_of(neededSettings.begin(), neededSettings.end(),
        [&settings](const char* key) { return !settings.text(key).isEmpty(); });
    return someSet || settings.text("player.plugin").isEmpty();
}

QString missingSetting(const Settings& settings)
{
    if (!needsService(settings))
        return QString();
    for (const char* key : neededSettings) {
        if (settings.text(key).isEmpty())
            return QStringLiteral(
                "%1 is not set. The service's addresses and the client id come from "
                "the service's partner programme; to try the player without them, "
                "start it with ./run.")
                .arg(QString::fromLatin1(key));
    }
    if (!settings.text("service.base-url").endsWith(QLatin1Char('/')))
        return QStringLiteral("service.base-url must end in \"/\".");
    return QString();
}

void configureHttp(const Settings& settings)
{
    HttpClientConfig config;
    config.caFile = settings.text("service.ca-file");
    for (const QString& mapping : settings.list("service.connect-to"))
        config.connectTo.append(mapping.toLatin1());
    config.baseHost = TavuUrl(settings.text("service.base-url")).host().toLatin1();
    config.domainSuffix = settings.text("service.domain-suffix").toLatin1();
    HttpClientConfig::setShared(config);
}

} // namespace

QString publishSettings(const Settings& settings)
{
    QString missing = missingSetting(settings);
    if (!missing.isEmpty())
        return missing;
    QString untrusted = checkAuthorities(settings.text("service.ca-file"));
    if (!untrusted.isEmpty())
        return untrusted;
    QString secret;
    QString unreadable = readSecret(settings.text("service.client-secret-file"), secret);
    if (!unreadable.isEmpty())
        return unreadable;

    configureHttp(settings);
    publish(TavuAmazonMusicBaseUrlPath(), settings.text("service.base-url"));
    publish(
        TavuAmazonMusicAuthorizationServiceUrlPath(), settings.text("service.authorization-url"));
    publish(TavuAmazonMusicTokenServiceUrlPath(), settings.text("service.token-url"));
    publish(TavuAmazonMusicDeviceCodeUrlPath(), settings.text("service.device-code-url"));
    publish(TavuAmazonMusicClientIdPath(), settings.text("service.client-id"));
    publish(TavuAmazonMusicClientSecretPath(), secret);
    publish(TavuAmazonMusicScope(), settings.text("service.scope"));
    publish(TavuAmazonMusicDeviceHDCapabilityPath(), settings.text("service.device-capability"));
    publish(TavuAmazonMusicDomainSuffixPath(), settings.text("service.domain-suffix"));
    CMRoot()->setValue(TavuAmazonMusicMaxQueueSizePath(),
        TavuValue::fromI32(settings.number("service.max-queue-size")));
    CMRoot()->setValue(
        TavuPlayerPlayModePath(), TavuValue::fromPlayerPlayMode(TavuPlayerPlayMode::Normal));
    TavuSetPreviousTrackTimeLimit(settings.number("player.previous-limit-ms"));
    return QString();
}

QVariantHash pluginSettings(const Settings& settings)
{
    QVariantHash hash;
    for (const QString& assignment : settings.list("player.plugin-settings")) {
        const int equals = assignment.indexOf(QLatin1Char('='));
        hash.insert(assignment.left(equals),
            equals < 0 ? QString()
                       : QUrl::fromPercentEncoding(assignment.mid(equals + 1).toUtf8()));
    }
    return hash;
}

} // namespace player
