#pragma once

#include "clock.h"
#include "httpclient.h"
#include "oauth2account.h"
#include "tokenstore.h"

#include <QObject>

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

    /// For people: what was wrong with the saved logins; empty when they were fine.
    QString complaint() const { return m_store.complaint(); }

private:
    using Call = void (OAuth2Service::*)(OAuth2Account&, const QVariant&, const CMReply<QVariant>&);

    void addService(const QVariant& argument, const CMReply<QVariant>& reply);
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
    std::map<QString, std::unique_ptr<OAuth2Account>> m_accounts; // By service name.
};

} // namespace player
