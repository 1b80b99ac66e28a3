#pragma once

#include "amazonMusicConnect.h"

#include "logcapture.h"
#include "replies.h"
#include "servicescript.h"
#include "testhost.h"

#include <gtest/gtest.h>

#include <memory>

/// A connection to a scripted service. It is made by its first use, so that a test can change the
/// settings before.
class ConnectFixture : public testing::Test
{
protected:
    using Reply = CMReply<HttpClient::Result>;

    ConnectFixture() { host.setBaseUrl(service.baseUrl()); }

    ~ConnectFixture() override { service.expectNoRequest(); }

    AmazonMusicConnect& connect()
    {
        if (!m_connect)
            m_connect = std::make_unique<AmazonMusicConnect>();
        return *m_connect;
    }

    /// Opens a session with the token "T1".
    void signIn()
    {
        connect().setLoggedIn(true);
        host.setToken(QStringLiteral("T1"));
    }

    const QTimer& timer() { return *connect().findChild<QTimer*>(); }

    static http::Headers location(const QByteArray& url) { return { { "Location", url } }; }
    static TavuUrl url(const QByteArray& encoded) { return TavuUrl::fromEncoded(encoded); }
    /// An URL of the service.
    TavuUrl at(const QByteArray& target) { return service.url(QString::fromLatin1(target)); }
    Reply get(const QByteArray& path) { return connect().get(at(path)); }
    static int code(const Reply& reply) { return expectValue(reply).code; }

    static int count(const LogCapture& log, log4cplus::LogLevel level, const char* text)
    {
        return log.count(level, QString::fromLatin1(text));
    }

    TestHost host;
    ServiceScript service;

private:
    std::unique_ptr<AmazonMusicConnect> m_connect;
};
