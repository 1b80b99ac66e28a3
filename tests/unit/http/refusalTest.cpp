#include "clientFixture.h"
#include "cmroot.h"
#include "refusedtoken.h"

namespace {

class HttpClientRefusal : public ClientFixture
{
protected:
    HttpClientRefusal()
    {
        CMRoot()->addService(httpclient::refusedTokenPath(), &m_context,
            [this](const QVariant& token, const CMReply<QVariant>&) {
                events.append(token.toString());
            });
    }
    ~HttpClientRefusal() override { CMRoot()->reset(); }

    /// What was told, and "answer" when the answer came.
    QStringList toldOf(int status, const QByteArray& authorization = "Bearer secret")
    {
        code = status;
        Pending pending;
        client().get(server.url("/"), withHeader("authorization", authorization),
            [this, callback = pending.callback()](const Result& result) {
                events.append(QStringLiteral("answer"));
                callback(result);
            });
        EXPECT_EQ(pending.wait().code, status);
        return events;
    }

    int code = 200;
    QStringList events;
    RawServer server{ [this](const RawServer::Call& call) { call.answer(code, "{}", ""); } };

private:
    QObject m_context;
};

} // namespace

TEST_F(HttpClientRefusal, IsToldBeforeTheAnswerComes)
{
    EXPECT_EQ(toldOf(401), QStringList({ QStringLiteral("secret"), QStringLiteral("answer") }));
}

TEST_F(HttpClientRefusal, MayBeA403)
{
    EXPECT_EQ(toldOf(403).first(), QStringLiteral("secret"));
}

TEST_F(HttpClientRefusal, IsNoOtherAnswer)
{
    for (const int status : { 200, 400, 404, 500 })
        EXPECT_EQ(toldOf(status).count(QStringLiteral("secret")), 0) << status;
}

TEST_F(HttpClientRefusal, TellsOfBearersAlone)
{
    EXPECT_EQ(toldOf(401, "Basic secret"), QStringList(QStringLiteral("answer")));
}

TEST_F(HttpClientRefusal, SaysNothingOfATokenThatWasHeldBack)
{
    config.baseHost = "base.service.test";
    config.domainSuffix = ".service.test";
    config.connectTo.append(
        "base.service.test:80:127.0.0.1:" + QByteArray::number(server.serverPort()));
    EXPECT_EQ(toldOf(401), QStringList(QStringLiteral("answer")));
}
