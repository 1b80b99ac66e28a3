#pragma once

#include "recordingstreamer.h"
#include "tavuoauth2serviceinfo.h"
#include "tavuvalue.h"

#include <QList>
#include <QObject>
#include <QString>

/// The host as a plug-in sees it, in memory, for one test: values with usable defaults, an OAuth 2
/// service that answers at once, and a streamer that records. One at a time; what a test changed is
/// gone with it. Services answer on the thread that made it.
class TestHost
{
public:
    /// Values at first: the base URL "https://service.example/", no token, network there, play mode
    /// normal, at most 500 queued tracks, no device capability, no domain suffix.
    TestHost();
    ~TestHost();
    Q_DISABLE_COPY_MOVE(TestHost)

    RecordingStreamer& streamer() { return m_streamer; }

    // Values of CMRoot(); whoever watches them hears of it.
    void setBaseUrl(const QString& url);
    void setToken(const QString& token);
    void setNetworkConnected(bool connected);
    void setPlayMode(TavuPlayerPlayMode::Enum mode);
    void setMaxQueueSize(int tracks);
    void setDeviceCapability(const QString& capability);
    void setDomainSuffix(const QString& suffix);
    void setPreviousTrackTimeLimit(qint64 ms);

    // The OAuth 2 service.
    /// Whether the login screens count as passed; false at first.
    void setLoggedIn(bool loggedIn);
    /// What was registered, in order.
    const QList<TavuOAuth2ServiceInfo>& registeredServices() const { return m_services; }
    /// How often a new token was asked for.
    int tokenRenewals() const { return m_tokenRenewals; }
    /// From now on each wish for a new token publishes this one; empty, as at first: none.
    void renewTokenWith(const QString& token) { m_renewedToken = token; }

private:
    void serveOAuth2();

    QObject m_context; // Of the services.
    RecordingStreamer m_streamer;
    QList<TavuOAuth2ServiceInfo> m_services;
    int m_tokenRenewals = 0;
    QString m_renewedToken;
};
