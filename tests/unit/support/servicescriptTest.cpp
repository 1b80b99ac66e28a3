#include "servicescript.h"

#include "httpclient.h"
#include "printers.h"
#include "watchdog.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace {

class ServiceScriptTest : public testing::Test
{
protected:
    void get(const QString& target)
    {
        m_client.get(m_service.url(target), HttpClientOptions(),
            [this](const HttpClient::Result& result) { m_results.append(result); });
    }

    void post(const QString& target, const QByteArray& body)
    {
        m_client.post(m_service.url(target), body, HttpClientOptions(),
            [this](const HttpClient::Result& result) { m_results.append(result); });
    }

    HttpClient::Result result()
    {
        EXPECT_TRUE(waitUntil([this] { return !m_results.isEmpty(); }));
        return m_results.isEmpty() ? HttpClient::Result() : m_results.takeFirst();
    }

    ServiceScript m_service;
    HttpClient m_client{ nullptr, HttpClient::HttpDefault, false };
    QList<HttpClient::Result> m_results;
};

TEST_F(ServiceScriptTest, AnswersTheRequestThatATestExpects)
{
    get(QStringLiteral("/page?x=1"));
    m_service.expectRequest("GET", "/page?x=1");
    m_service.answer(409, "{\"a\":1}");
    const HttpClient::Result answered = result();
    EXPECT_EQ(answered.code, 409);
    EXPECT_EQ(answered.data, QByteArray("{\"a\":1}"));
    m_service.expectNoRequest();
}

TEST_F(ServiceScriptTest, AnswersInWhateverOrderATestTakes)
{
    get(QStringLiteral("/a"));
    get(QStringLiteral("/b"));
    const ServiceRequest b = m_service.expectRequest("GET", "/b");
    const ServiceRequest a = m_service.expectRequest("GET", "/a");
    b.answer(200, "b");
    EXPECT_EQ(result().data, QByteArray("b"));
    a.answer(200, "a");
    EXPECT_EQ(result().data, QByteArray("a"));
}

TEST_F(ServiceScriptTest, FindsARequestByItsBody)
{
    post(QStringLiteral("/events"), "{\"event\":\"STOP\"}");
    post(QStringLiteral("/events"), "{\"event\":\"START\"}");
    const ServiceRequest start =
        m_service.expectRequest("POST", "/events", [](const ServiceRequest& request) {
            return request.json().value(QStringLiteral("event")) == QStringLiteral("START");
        });
    EXPECT_EQ(start.request().body, QByteArray("{\"event\":\"START\"}"));
    EXPECT_EQ(m_service.expectRequest("POST", "/events").request().body,
        QByteArray("{\"event\":\"STOP\"}"));
}

TEST_F(ServiceScriptTest, CountsWhatAStandingAnswerTook)
{
    m_service.always("GET", "/page", 200, "[1]");
    get(QStringLiteral("/page"));
    EXPECT_EQ(result().data, QByteArray("[1]"));
    EXPECT_EQ(m_service.servedCount("GET", "/page"), 1);
    EXPECT_EQ(m_service.servedCount("POST", "/page"), 0);
    m_service.expectNoRequest();
}

TEST_F(ServiceScriptTest, FailsATestThatGetsARequestItDidNotExpect)
{
    static ServiceScript* service;
    service = &m_service;
    get(QStringLiteral("/surprise"));
    EXPECT_NONFATAL_FAILURE(service->expectNoRequest(), "GET /surprise");
}

TEST_F(ServiceScriptTest, CutsAConnection)
{
    post(QStringLiteral("/page"), "x");
    m_service.expectRequest("POST", "/page").cut();
    const HttpClient::Result cut = result();
    EXPECT_EQ(cut.code, 0);
    EXPECT_NE(cut.error, HttpClientStatus::Ok);
}

TEST_F(ServiceScriptTest, AnswersForHostsOverTls)
{
    m_service.serveHost("*.service.test");
    m_service.serveHost("elsewhere.test");
    HttpClient client(nullptr, HttpClient::HttpDefault, false);
    for (const char* url : { "https://a.service.test/x", "https://elsewhere.test/x" }) {
        client.get(TavuUrl::fromEncoded(url), HttpClientOptions(),
            [this](const HttpClient::Result& result) { m_results.append(result); });
        const ServiceRequest request = m_service.expectRequest("GET", "/x");
        EXPECT_EQ(request.url(), QByteArray(url));
        request.answer(200);
        EXPECT_EQ(result().code, 200);
    }
}

} // namespace
