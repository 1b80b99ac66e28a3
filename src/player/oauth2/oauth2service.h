#pragma once

#include "clock.h"
#include "httpclient.h"
#include "oauth2account.h"
#include "tokenstore.h"

#include <QObject>
#include <QVector>

#include <map>
#include <memory>

namespace player {

/// The host's OAuth 2 service: signs users in to the services that plug-ins register, keeps their
/// tokens, and publishes them as values of the root worker. Lives in the main thread and never
/// blocks it beyond the saving of a token. One in the process.
class OAuth2Service : public QObject
{
    Q_OBJECT

public:
    /// Tokens are kept as "tokens.json" in the folder, which must exist. From now on services can
    /// register. Without `clock`, the machine's; a given one must outlive the service.
    explicit OAuth2Service(
        const QString& stateFolder, Clock* clock = nullptr, QObject* parent = nullptr);
    ~OAuth2Service() override;

    /// A service that signs in: the name that its paths have, and the one for people.
    struct Registration
    {
        QString name;
        QString displayName;
    };
    /// In the order of their registration.
    const QVector<Registration>& registrations() const { return m_registrations; }

    /// For people: what was wrong with the saved logins; empty when they were fine.
    QString complaint() const { return m_store.complaint(); }

Q_SIGNALS:
    /// Before anything is published for the service.
    void registered(const QString& name);

private:
    using Call = void (OAuth2Service::*)(OAuth2Account&, const QVariant&, const CMReply<QVariant>&);

    void addService(const QVariant& argument, const CMReply<QVariant>& reply);
    void tokenRefused(const QVariant& token, const CMReply<QVariant>& reply);
    void serve(const QString& name, const QString& subpath, Call call);
    void startLogin(
        OAuth2Account& account, const QVariant& argument, const CMReply<QVariant>& reply);
    void refreshToken(
        OAuth2Account& account, const QVariant& argument, const CMReply<QVariant>& reply);
    void logout(OAuth2Account& account, const QVariant& argument, const CMReply<QVariant>& reply);

    SystemClock m_systemClock;
    Clock& m_clock;
    TokenStore m_store;
    HttpClient m_http;
    QVector<Registration> m_registrations;
    std::map<QString, std::unique_ptr<OAuth2Account>> m_accounts; // By service name.
};

} // namespace player
