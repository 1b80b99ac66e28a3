#pragma once

#include "authorizationserver.h"
#include "cmroot.h"
#include "handclock.h"
#include "oauth2service.h"
#include "printers.h"
#include "replies.h"
#include "tavuoauth2devicecode.h"
#include "tavupaths.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

/// The OAuth 2 service with a server on loopback and a clock that stands still. What it publishes
/// is recorded in order.
class OAuth2Fixture : public QObject, public ::testing::Test
{
    Q_OBJECT

protected:
    OAuth2Fixture();
    ~OAuth2Fixture() override;

    TavuOAuth2ServiceInfo info() const;
    /// Makes the service and registers.
    void start() { start(info()); }
    void start(const TavuOAuth2ServiceInfo& registration);
    /// The service ends and another one begins in the same folder.
    void restart();

    CMReply<QVariant> invoke(const QString& subpath, const QVariant& argument = QVariant());
    void startLogin() { expectValue(invoke(TavuOAuth2StartLoginSubPath())); }
    void logout() { expectValue(invoke(TavuOAuth2LogoutSubPath())); }
    CMReply<QVariant> refresh() { return invoke(TavuOAuth2RefreshTokenSubPath()); }

    /// Up to the code that waits for the user.
    void showCode();
    /// Signed in with these tokens.
    void signIn(const char* access, const char* refresh, int lifetimeS = 3600);
    /// Waits for the interval and one answered poll. Nothing may have been asked a moment before.
    void expectPollAfter(qint64 ms);
    /// Turns the clock and lets everything happen that becomes due.
    void advance(qint64 ms);

    bool isLoggedIn() const;
    QString accessToken() const;
    TavuOAuth2DeviceCode login() const;
    bool waitForState(const char* state);
    bool waitForToken(const char* token);

    QString tokenFile() const { return folder.filePath(QStringLiteral("tokens.json")); }
    QByteArray saved(const QString& suffix = QString()) const;
    static CMPath path(const QString& subpath);

    QTemporaryDir folder;
    AuthorizationServer server;
    HandClock clock;
    std::unique_ptr<player::OAuth2Service> service;
    /// "token <value>" and "loggedIn <0 or 1>".
    QStringList published;
    /// Called at each published token.
    std::function<void(const QString&)> onToken;

private Q_SLOTS:
    void on_token_published(const TavuValue& value);
    void on_loggedIn_published(const TavuValue& value);
};
