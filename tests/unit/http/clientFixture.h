#pragma once

#include "httpclient.h"
#include "printers.h"
#include "rawserver.h"
#include "watchdog.h"

#include <gtest/gtest.h>

/// A client on its own configuration, and requests that wait for their results.
class ClientFixture : public ::testing::Test
{
protected:
    using Result = HttpClient::Result;

    ~ClientFixture() override { HttpClientConfig::setShared(HttpClientConfig()); }

    /// Takes effect when the client is made, which its first use does.
    HttpClientConfig config;
    bool useCache = false;

    HttpClient& client()
    {
        if (!m_client) {
            HttpClientConfig::setShared(config);
            m_client = std::make_unique<HttpClient>(nullptr, HttpClient::HttpDefault, useCache);
            if (useCache)
                m_client->setCacheSize(1024 * 1024);
        }
        return *m_client;
    }
    void destroyClient() { m_client.reset(); }

    static HttpClientOptions options(int timeoutMs = 30000, int readSizeLimit = 1048576)
    {
        HttpClientOptions made;
        made.setTimeoutMs(timeoutMs);
        made.setReadSizeLimit(readSizeLimit);
        return made;
    }
    static HttpClientOptions withHeader(const QByteArray& name, const QByteArray& value)
    {
        HttpClientHeaders headers;
        headers.insert(name, value);
        HttpClientOptions made = options();
        made.setHeaders(headers);
        return made;
    }

    Result get(const TavuUrl& url) { return get(url, options()); }
    Result get(const TavuUrl& url, const HttpClientOptions& how)
    {
        Pending pending;
        client().get(url, how, pending.callback());
        return pending.wait();
    }
    Result post(const TavuUrl& url, const QByteArray& body) { return post(url, body, options()); }
    Result post(const TavuUrl& url, const QByteArray& body, const HttpClientOptions& how)
    {
        Pending pending;
        client().post(url, body, how, pending.callback());
        return pending.wait();
    }

    /// One request on its way.
    class Pending
    {
    public:
        HttpClient::Callback callback()
        {
            return [state = m_state](const Result& result) {
                ++state->calls;
                state->result = result;
            };
        }
        int calls() const { return m_state->calls; }
        const Result& result() const { return m_state->result; }
        Result wait()
        {
            EXPECT_TRUE(waitUntil([this] { return calls() > 0; })) << "no result came";
            settle();
            EXPECT_EQ(calls(), 1);
            return result();
        }

    private:
        struct State
        {
            int calls = 0;
            Result result;
        };
        std::shared_ptr<State> m_state = std::make_shared<State>();
    };

private:
    std::unique_ptr<HttpClient> m_client;
};

/// The transfer failed with the status, and nothing of an answer came along.
inline void expectFailure(const HttpClient::Result& result, HttpClientStatus status)
{
    EXPECT_EQ(result.error, status) << result.reason.toStdString();
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(result.data.isEmpty());
    EXPECT_TRUE(result.headers.isEmpty());
    EXPECT_FALSE(result.reason.isEmpty());
}
