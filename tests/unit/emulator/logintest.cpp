#include "emulatorclient.h"

#include <gtest/gtest.h>

#include <QUrl>

namespace {

const EmulatorClient::Headers formType{ { "content-type", "application/x-www-form-urlencoded" },
    { "authorization", "" } };
const QByteArray challenge = "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM";
const QByteArray verifier = "dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk";

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

class LoginOverHttp : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_client.settings.oauth2.pollIntervalS = 0;
        ASSERT_EQ(m_client.start().toStdString(), "");
    }

    QVariantHash begin()
    {
        return m_client
            .post(text("/oauth2/device"),
                "client_id=tavu-player&scope=music&code_challenge=" + challenge
                    + "&code_challenge_method=S256",
                formType)
            .json();
    }

    Reply poll(const QVariantHash& begun)
    {
        return m_client.post(text("/oauth2/token"),
            "client_id=tavu-player&client_secret=emulator-secret&grant_type="
            "device_code&device_code="
                + begun.value(text("device_code")).toByteArray() + "&code_verifier=" + verifier,
            formType);
    }

    // The visitor's cookie and the mark in the form, as a browser would keep them.
    struct Visit
    {
        QByteArray cookie;
        QByteArray mark;
        Reply reply;
    };
    Visit visit(const QString& url)
    {
        Visit made;
        made.reply = m_client.get(url, { { "authorization", "" } });
        made.cookie = made.reply.header("Set-Cookie").split(';').first();
        const QByteArray before = "name=\"mark\" value=\"";
        const int at = made.reply.body.indexOf(before) + before.size();
        made.mark = made.reply.body.mid(at, made.reply.body.indexOf('"', at) - at);
        return made;
    }

    Reply press(const Visit& made, const QByteArray& code, const QByteArray& decision,
        const QByteArray& cookie)
    {
        EmulatorClient::Headers headers = formType;
        if (!cookie.isEmpty())
            headers.append({ "cookie", cookie });
        return m_client.post(text("/activate"),
            "user_code=" + code + "&decision=" + decision + "&mark=" + made.mark, headers);
    }

    EmulatorClient m_client;
};

} // namespace

TEST_F(LoginOverHttp, GoesFromCodeToTokenByWayOfThePage)
{
    const QVariantHash begun = begin();
    EXPECT_EQ(poll(begun).json().value(text("error")).toString(), text("authorization_pending"));
    const Visit made = visit(begun.value(text("verification_uri_complete")).toString());
    const QByteArray code = begun.value(text("user_code")).toByteArray();
    EXPECT_EQ(made.reply.status, 200);
    EXPECT_TRUE(made.reply.body.contains("value=\"" + code + "\""));
    EXPECT_TRUE(made.reply.header("Content-Security-Policy").contains("default-src 'none'"));
    EXPECT_TRUE(made.reply.header("Set-Cookie").contains("SameSite=Strict"));
    EXPECT_TRUE(press(made, code, "allow", made.cookie).body.contains("Connected"));
    const Reply tokens = poll(begun);
    EXPECT_EQ(tokens.status, 200);
    EXPECT_EQ(tokens.header("Cache-Control"), "no-store");
    const QByteArray bearer = "Bearer " + tokens.json().value(text("access_token")).toByteArray();
    EXPECT_EQ(m_client.get(text("/"), { { "authorization", bearer } }).status, 200);
}

TEST_F(LoginOverHttp, CanBeDeniedOnThePage)
{
    const QVariantHash begun = begin();
    const Visit made = visit(text("/activate"));
    EXPECT_TRUE(press(made, begun.value(text("user_code")).toByteArray(), "deny", made.cookie)
                    .body.contains("Not connected"));
    EXPECT_EQ(poll(begun).json().value(text("error")).toString(), text("access_denied"));
}

TEST_F(LoginOverHttp, CannotBeAllowedByAForeignForm)
{
    const QVariantHash begun = begin();
    const QByteArray code = begun.value(text("user_code")).toByteArray();
    const Visit own = visit(text("/activate"));
    const Visit foreign = visit(text("/activate"));
    EXPECT_EQ(press(own, code, "allow", {}).status, 400);
    EXPECT_EQ(press(own, code, "allow", foreign.cookie).status, 400);
    EXPECT_EQ(poll(begun).json().value(text("error")).toString(), text("authorization_pending"));
}

TEST_F(LoginOverHttp, SaysThatACodeIsUnknownOrUsed)
{
    EXPECT_TRUE(visit(text("/activate?user_code=BBBB-BBBB")).reply.body.contains("not known"));
    const QVariantHash begun = begin();
    const QByteArray code = begun.value(text("user_code")).toByteArray();
    const Visit made = visit(text("/activate"));
    press(made, code, "allow", made.cookie);
    const Reply again = press(made, code, "allow", made.cookie);
    EXPECT_EQ(again.status, 400);
    EXPECT_TRUE(again.body.contains("was answered already"));
}

TEST_F(LoginOverHttp, CanBeApprovedByTheControlAddress)
{
    const QVariantHash begun = begin();
    const QByteArray body =
        R"({"user_code":")" + begun.value(text("user_code")).toByteArray() + "\"}";
    EXPECT_EQ(m_client.post(text("/emulator/login/approve"), body).status, 200);
    EXPECT_EQ(m_client.post(text("/emulator/login/approve"), body).status, 404);
    EXPECT_EQ(poll(begun).status, 200);
    EXPECT_EQ(m_client.post(text("/emulator/login/dance"), "{}").status, 404);
}

TEST_F(LoginOverHttp, RefusesAWrongClientWithAChallenge)
{
    const Reply refused = m_client.post(
        text("/oauth2/token"), "client_id=tavu-player&grant_type=device_code", formType);
    EXPECT_EQ(refused.status, 401);
    EXPECT_TRUE(refused.header("WWW-Authenticate").startsWith("Basic"));
    EXPECT_EQ(refused.json().value(text("error")).toString(), text("invalid_client"));
}

TEST_F(LoginOverHttp, ObeysTheDial)
{
    m_client.post(text("/emulator/faults"),
        R"([{"kind":"token","effect":"oauth-error","error":"slow_down","times":1},)"
        R"({"kind":"login","effect":"edit","remove":["interval"],"times":1}])");
    const QVariantHash begun = begin();
    EXPECT_FALSE(begun.contains(text("interval")));
    EXPECT_EQ(poll(begun).json().value(text("error")).toString(), text("slow_down"));
    EXPECT_EQ(poll(begun).json().value(text("error")).toString(), text("authorization_pending"));
}
