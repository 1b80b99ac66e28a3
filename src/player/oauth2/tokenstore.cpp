#include "tokenstore.h"

#include "oauth2answers.h"
#include "oauth2log.h"
#include "savefile.h"
#include "tavuhash.h"
#include "tavujson.h"

#include <QFile>
#include <QVariantHash>

namespace player {

namespace {

constexpr qint64 longestFile = qint64{ 1024 } * 1024;
constexpr int fileVersion = 1;

struct StoredLogin : public TavuHash
{
    TAVU_RECORD(StoredLogin)
    TAVU_FIELD(QString, refreshToken, RefreshToken)
};

struct StoredLogins : public TavuHash
{
    TAVU_RECORD(StoredLogins)
    TAVU_FIELD(qint32, version, Version)
    /// StoredLogin by service.
    TAVU_FIELD(QVariantHash, services, Services)
};

} // namespace

TokenStore::TokenStore(const QString& fileName)
    : m_fileName(fileName)
{
    load();
}

void TokenStore::load()
{
    QFile file(m_fileName);
    if (!file.exists())
        return;
    mendMode();
    if (!file.open(QIODevice::ReadOnly)) {
        m_complaint = QStringLiteral("The saved login in %1 cannot be read (%2). Sign in again.")
                          .arg(m_fileName, file.errorString());
        LOG4CPLUS_ERROR(oauth2Logger(), m_complaint);
        return;
    }
    if (!take(file.read(longestFile)))
        setAside();
}

void TokenStore::mendMode()
{
    if (!files::isOpenToOthers(QFile::permissions(m_fileName)))
        return;
    const bool mended = QFile::setPermissions(m_fileName, files::privateFile);
    LOG4CPLUS_WARN(oauth2Logger(),
        "Others could read " << m_fileName
                             << (mended ? "; its mode is now 0600"
                                        : "; its mode cannot be changed"));
}

bool TokenStore::take(const QByteArray& text)
{
    const StoredLogins logins(TavuJson::parse(text).toHash());
    if (logins.version() != fileVersion
        || logins.__value(StoredLogins::Services()).type() != QVariant::Hash)
        return false;
    const QVariantHash services = logins.services();
    QHash<QString, QString> tokens;
    for (auto service = services.begin(); service != services.end(); ++service) {
        const QString token = StoredLogin(service->toHash()).refreshToken();
        if (!isToken(token))
            return false;
        tokens.insert(service.key(), token);
    }
    m_tokens = tokens;
    return true;
}

void TokenStore::setAside()
{
    const QString aside = files::setFileAside(m_fileName);
    m_complaint = aside.isEmpty()
        ? QStringLiteral("The saved login in %1 is damaged. Sign in again.").arg(m_fileName)
        : QStringLiteral("The saved login was damaged and is set aside as %1. Sign in again.")
              .arg(aside);
    LOG4CPLUS_ERROR(oauth2Logger(), m_complaint);
}

bool TokenStore::save(const QString& service, const QString& refreshToken, QString* error)
{
    if (!refreshToken.isEmpty() && refreshToken == m_tokens.value(service))
        return true;
    const QHash<QString, QString> before = m_tokens;
    if (refreshToken.isEmpty())
        m_tokens.remove(service);
    else
        m_tokens.insert(service, refreshToken);
    // A second time, so that a token that was given up is not in the previous generation either.
    if (write(error) && (!refreshToken.isEmpty() || write(error)))
        return true;
    m_tokens = before;
    return false;
}

bool TokenStore::write(QString* error) const
{
    if (m_tokens.isEmpty())
        return files::removeSavedFile(m_fileName, error);
    QVariantHash services;
    for (auto token = m_tokens.begin(); token != m_tokens.end(); ++token) {
        StoredLogin login;
        login.setRefreshToken(token.value());
        services.insert(token.key(), login.__variant());
    }
    StoredLogins logins;
    logins.setVersion(fileVersion);
    logins.setServices(services);
    return files::saveFile(
        m_fileName, TavuJson::toJson(logins.__variant()) + '\n', files::privateFile, error);
}

} // namespace player
