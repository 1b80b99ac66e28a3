#include "emulator/oauth2/approvalpage.h"
#include "emulator/oauth2/authority.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

using namespace emulator::oauth2;

namespace {

constexpr qint64 start = 1700000000000;
const QString goodVerifier =
    QStringLiteral("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"); // RFC 7636, appendix B
const QString challenge = QStringLiteral("E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

QString errorOf(const Answer& answer)
{
    return answer.json.value(text("error")).toString();
}

class Login : public ::testing::Test
{
protected:
    Answer begin(const Form& more = {})
    {
        Form form{ { text("code_challenge"), challenge },
            { text("code_challenge_method"), text("S256") }, { text("scope"), text("music") } };
        for (auto field = more.begin(); field != more.end(); ++field)
            form.insert(field.key(), *field);
        return m_authority.authorizeDevice(
            { text("tavu-player"), QString() }, form, text("http://h/activate"), m_now);
    }

    Answer poll(const Answer& begun, const QString& verifier = goodVerifier,
        const QString& grant = QStringLiteral("device_code"))
    {
        m_now += 6000;
        return m_authority.token(m_client,
            { { text("grant_type"), grant },
                { text("device_code"), begun.json.value(text("device_code")).toString() },
                { text("code_verifier"), verifier } },
            m_now);
    }

    Answer refresh(const QString& token)
    {
        return m_authority.token(m_client,
            { { text("grant_type"), text("refresh_token") }, { text("refresh_token"), token } },
            m_now);
    }

    static QString codeOf(const Answer& begun)
    {
        return begun.json.value(text("user_code")).toString();
    }

    Answer loggedIn()
    {
        const Answer begun = begin();
        EXPECT_TRUE(m_authority.decide(codeOf(begun), true, m_now));
        return poll(begun);
    }

    TokenState check(const QString& access)
    {
        return m_authority.checkBearer("Bearer " + access.toUtf8(), m_now);
    }

    QTemporaryDir m_folder;
    QString m_stateFile = m_folder.filePath(QStringLiteral("logins"));
    Authority m_authority{ Rules(), "secret", m_stateFile };
    Client m_client{ text("tavu-player"), text("emulator-secret") };
    qint64 m_now = start;
};

} // namespace

TEST_F(Login, BeginsWithACodeForTheUserAndOneForTheDevice)
{
    const Answer begun = begin();
    EXPECT_EQ(begun.status, 200);
    EXPECT_EQ(codeOf(begun).size(), 9);
    EXPECT_EQ(codeOf(begun).at(4), QLatin1Char('-'));
    EXPECT_EQ(begun.json.value(text("verification_uri")).toString(), text("http://h/activate"));
    EXPECT_EQ(begun.json.value(text("verification_uri_complete")).toString(),
        text("http://h/activate?user_code=") + codeOf(begun));
    EXPECT_EQ(begun.json.value(text("interval")).toInt(), 5);
    EXPECT_EQ(begun.json.value(text("expires_in")).toInt(), 600);
    EXPECT_NE(codeOf(begin()), codeOf(begun));
}

TEST_F(Login, IsPendingUntilTheUserAllowsIt)
{
    const Answer begun = begin();
    EXPECT_EQ(errorOf(poll(begun)), text("authorization_pending"));
    EXPECT_EQ(poll(begun).status, 400);
    EXPECT_TRUE(m_authority.decide(codeOf(begun), true, m_now));
    const Answer tokens = poll(begun);
    EXPECT_EQ(tokens.status, 200);
    EXPECT_EQ(tokens.json.value(text("token_type")).toString(), text("Bearer"));
    EXPECT_EQ(tokens.json.value(text("scope")).toString(), text("music"));
    EXPECT_EQ(check(tokens.json.value(text("access_token")).toString()), TokenState::Good);
    EXPECT_EQ(errorOf(poll(begun)), text("invalid_grant")); // a code counts once
}

TEST_F(Login, TakesBothNamesOfTheDeviceGrantUnlessToldOtherwise)
{
    const Answer begun = begin();
    m_authority.decide(codeOf(begun), true, m_now);
    EXPECT_EQ(
        poll(begun, goodVerifier, text("urn:ietf:params:oauth:grant-type:device_code")).status,
        200);
    m_authority.rules().deviceGrants = QStringList{ text("device_code") };
    EXPECT_EQ(
        errorOf(poll(begin(), goodVerifier, text("urn:ietf:params:oauth:grant-type:device_code"))),
        text("unsupported_grant_type"));
    EXPECT_EQ(errorOf(poll(begin(), goodVerifier, QString())), text("invalid_request"));
}

TEST_F(Login, NeedsTheVerifierOfTheChallenge)
{
    for (const QString& wrong : { QString(), text("wrong"), goodVerifier + QLatin1Char('x') }) {
        const Answer begun = begin();
        m_authority.decide(codeOf(begun), true, m_now);
        EXPECT_EQ(errorOf(poll(begun, wrong)), text("invalid_grant"));
        EXPECT_EQ(errorOf(poll(begun)), text("invalid_grant")); // and there is no second try
    }
}

TEST_F(Login, NeedsAChallengeByTheStrongMethod)
{
    EXPECT_EQ(errorOf(begin({ { text("code_challenge_method"), text("plain") } })),
        text("invalid_request"));
    EXPECT_EQ(errorOf(begin({ { text("code_challenge"), QString() } })), text("invalid_request"));
    m_authority.rules().pkceRequired = false;
    EXPECT_EQ(begin({ { text("code_challenge"), QString() } }).status, 200);
}

TEST_F(Login, AsksTooEagerClientsToSlowDownForGood)
{
    const Answer begun = begin();
    EXPECT_EQ(errorOf(poll(begun)), text("authorization_pending"));
    m_now -= 4000; // two seconds after the last
    EXPECT_EQ(errorOf(poll(begun)), text("slow_down"));
    EXPECT_EQ(errorOf(poll(begun)), text("slow_down")); // the interval is ten seconds now
    m_now += 10000;
    EXPECT_EQ(errorOf(poll(begun)), text("authorization_pending"));
}

TEST_F(Login, LetsAPollBeATenthOfTheIntervalEarly)
{
    const Answer begun = begin();
    poll(begun);
    m_now -= 1500;
    EXPECT_EQ(errorOf(poll(begun)), text("authorization_pending"));
}

TEST_F(Login, EndsWhenTheUserSaysNoOrTakesTooLong)
{
    const Answer denied = begin();
    EXPECT_TRUE(m_authority.decide(codeOf(denied), false, m_now));
    EXPECT_EQ(errorOf(poll(denied)), text("access_denied"));
    const Answer late = begin();
    m_now += 600 * 1000;
    EXPECT_FALSE(m_authority.decide(codeOf(late), true, m_now));
    EXPECT_EQ(errorOf(poll(late)), text("expired_token"));
}

TEST_F(Login, AcceptsTheCodeHoweverItIsTypedButOnlyOnce)
{
    const Answer begun = begin();
    const QString typed = codeOf(begun).toLower().replace(QLatin1Char('-'), QLatin1Char(' '));
    EXPECT_TRUE(m_authority.asking(typed, m_now).has_value());
    EXPECT_TRUE(m_authority.decide(typed, true, m_now));
    EXPECT_FALSE(m_authority.decide(typed, false, m_now));
    EXPECT_FALSE(m_authority.decide(text("AAAA-AAAA"), true, m_now));
    EXPECT_FALSE(m_authority.decide(QString(), true, m_now));
}

TEST_F(Login, ChecksTheClient)
{
    const Answer begun = begin();
    m_client.secret = text("wrong");
    EXPECT_EQ(poll(begun).status, 401);
    EXPECT_EQ(errorOf(poll(begun)), text("invalid_client"));
    m_client.secret.clear();
    EXPECT_EQ(errorOf(poll(begun)), text("invalid_client"));
    m_client = { text("nobody"), text("emulator-secret") };
    EXPECT_EQ(errorOf(poll(begun)), text("invalid_client"));
    EXPECT_EQ(
        m_authority.authorizeDevice({ text("nobody"), QString() }, {}, QString(), m_now).status,
        401);
}

TEST_F(Login, ApprovesByItselfWhenToldTo)
{
    m_authority.rules().autoApprove = true;
    EXPECT_EQ(poll(begin()).status, 200);
}

TEST_F(Login, TokensExpire)
{
    const QString access = loggedIn().json.value(text("access_token")).toString();
    m_now += 3599 * 1000;
    EXPECT_EQ(check(access), TokenState::Good);
    m_now += 1000;
    EXPECT_EQ(check(access), TokenState::Expired);
}

TEST_F(Login, RefreshTokenWorksUntilItsSuccessorWasUsed)
{
    const auto refreshOf = [](const Answer& answer) {
        return answer.json.value(text("refresh_token")).toString();
    };
    const Answer first = loggedIn();
    const Answer lost = refresh(refreshOf(first));
    const Answer second = refresh(refreshOf(first));
    ASSERT_EQ(second.status, 200);
    EXPECT_EQ(refreshOf(second), refreshOf(lost));
    const QString access = second.json.value(text("access_token")).toString();
    EXPECT_EQ(check(access), TokenState::Good);
    EXPECT_EQ(errorOf(refresh(refreshOf(first))), text("invalid_grant"));
    EXPECT_EQ(check(access), TokenState::Revoked);
}

TEST_F(Login, UseOfAnEarlierTokenDoesNotUndoTheUseOfItsSuccessor)
{
    const Answer first = loggedIn();
    const QString refreshToken = first.json.value(text("refresh_token")).toString();
    const Answer second = refresh(refreshToken);
    EXPECT_EQ(check(second.json.value(text("access_token")).toString()), TokenState::Good);
    EXPECT_EQ(check(first.json.value(text("access_token")).toString()), TokenState::Good);
    EXPECT_EQ(errorOf(refresh(refreshToken)), text("invalid_grant"));
}

TEST_F(Login, RefreshTokenOfTheOneBeforeLastEndsTheLogin)
{
    const Answer first = loggedIn();
    const QString oldest = first.json.value(text("refresh_token")).toString();
    const Answer second = refresh(oldest);
    EXPECT_EQ(refresh(second.json.value(text("refresh_token")).toString()).status, 200);
    EXPECT_EQ(errorOf(refresh(oldest)), text("invalid_grant"));
}

TEST_F(Login, StrictRefreshTokensWorkOnceAndTheirReuseEndsTheLogin)
{
    m_authority.rules().refreshGrace = false;
    const Answer first = loggedIn();
    const QString oldRefresh = first.json.value(text("refresh_token")).toString();
    const Answer second = refresh(oldRefresh);
    EXPECT_EQ(second.status, 200);
    EXPECT_NE(second.json.value(text("refresh_token")).toString(), oldRefresh);
    const QString access = second.json.value(text("access_token")).toString();
    EXPECT_EQ(check(access), TokenState::Good);
    EXPECT_EQ(errorOf(refresh(oldRefresh)), text("invalid_grant"));
    EXPECT_EQ(check(access), TokenState::Revoked);
    EXPECT_EQ(errorOf(refresh(second.json.value(text("refresh_token")).toString())),
        text("invalid_grant"));
}

TEST_F(Login, SurvivesARestart)
{
    const Answer first = loggedIn();
    const Answer second = refresh(first.json.value(text("refresh_token")).toString());
    Authority after(Rules(), "secret", m_stateFile);
    EXPECT_EQ(
        after.checkBearer("bearer " + second.json.value(text("access_token")).toByteArray(), m_now),
        TokenState::Good);
    const auto again = [&](const Answer& from) {
        return after.token(m_client,
            { { text("grant_type"), text("refresh_token") },
                { text("refresh_token"), from.json.value(text("refresh_token")).toString() } },
            m_now);
    };
    EXPECT_EQ(again(second).status, 200);
    EXPECT_EQ(errorOf(again(first)), text("invalid_grant"));
    EXPECT_EQ(QFileInfo(m_stateFile).permissions()
            & (QFile::ReadGroup | QFile::ReadOther | QFile::WriteOther),
        0);
}

TEST_F(Login, RevokingAndExpiringDiffer)
{
    const Answer tokens = loggedIn();
    const QString access = tokens.json.value(text("access_token")).toString();
    m_authority.expireAccessTokens();
    EXPECT_EQ(check(access), TokenState::Expired);
    const Answer renewed = refresh(tokens.json.value(text("refresh_token")).toString());
    EXPECT_EQ(check(renewed.json.value(text("access_token")).toString()), TokenState::Good);
    m_authority.revokeAll();
    EXPECT_EQ(check(renewed.json.value(text("access_token")).toString()), TokenState::Revoked);
    EXPECT_EQ(refresh(renewed.json.value(text("refresh_token")).toString()).status, 400);
}

TEST_F(Login, TakesNoTokenThatIsNotItsOwn)
{
    const Answer tokens = loggedIn();
    const QString access = tokens.json.value(text("access_token")).toString();
    EXPECT_EQ(m_authority.checkBearer({}, m_now), TokenState::Missing);
    EXPECT_EQ(m_authority.checkBearer("Basic eDp5", m_now), TokenState::Unknown);
    EXPECT_EQ(check(access + text("x")), TokenState::Unknown);
    EXPECT_EQ(check(tokens.json.value(text("refresh_token")).toString()), TokenState::Unknown);
    EXPECT_EQ(check(QString()), TokenState::Unknown);
    Authority other(Rules(), "other secret", QString());
    EXPECT_EQ(other.checkBearer("Bearer " + access.toUtf8(), m_now), TokenState::Unknown);
    EXPECT_EQ(errorOf(refresh(access)), text("invalid_grant"));
}

TEST(Client, IsNamedByBasicAuthorizationOrByTheForm)
{
    const Client basic = clientOf("Basic " + QByteArray("a%3Ab:c%2Bd").toBase64(), {});
    EXPECT_EQ(basic.id, text("a:b"));
    EXPECT_EQ(basic.secret, text("c+d"));
    const Client form =
        clientOf({}, { { text("client_id"), text("x") }, { text("client_secret"), text("y") } });
    EXPECT_EQ(form.id, text("x"));
    EXPECT_EQ(form.secret, text("y"));
}

TEST(Form, IsReadWithItsEscapes)
{
    const Form form = parseForm("a=1+2&b=%26%3D%C3%A9&c=&d");
    EXPECT_EQ(form.value(text("a")), text("1 2"));
    EXPECT_EQ(form.value(text("b")), text("&=é"));
    EXPECT_TRUE(form.contains(text("c")));
    EXPECT_FALSE(form.contains(text("d")));
}

TEST(ApprovalPage, CountsOnlyFormsThatItMadeForTheVisitor)
{
    const ApprovalPage page("secret");
    const QByteArray visitor = ApprovalPage::newVisitor();
    const QByteArray html = page.form(visitor, text("BCDF-GHJK"), std::nullopt, QString());
    const QByteArray before = "name=\"mark\" value=\"";
    const int at = html.indexOf(before) + before.size();
    const QString mark = QString::fromLatin1(html.mid(at, html.indexOf('"', at) - at));
    EXPECT_TRUE(page.isGenuine(visitor, { { text("mark"), mark } }));
    EXPECT_FALSE(page.isGenuine(ApprovalPage::newVisitor(), { { text("mark"), mark } }));
    EXPECT_FALSE(page.isGenuine({}, { { text("mark"), mark } }));
    EXPECT_FALSE(page.isGenuine(visitor, {}));
    EXPECT_FALSE(ApprovalPage("other").isGenuine(visitor, { { text("mark"), mark } }));
}

TEST(ApprovalPage, ShowsTextsAsTextsOnly)
{
    const QByteArray html = ApprovalPage("s").form(
        "v", text("\"><script>alert(1)</script>"), std::nullopt, text("<b>no</b>"));
    EXPECT_FALSE(html.contains("<script>"));
    EXPECT_FALSE(html.contains("<b>"));
    EXPECT_TRUE(html.contains("name=\"viewport\""));
}

TEST(ApprovalPage, AllowsExactlyItsOwnStyle)
{
    const QByteArray html = ApprovalPage::done(true);
    const int begin = html.indexOf("<style>") + 7;
    const QByteArray style = html.mid(begin, html.indexOf("</style>") - begin);
    const QByteArray digest =
        QCryptographicHash::hash(style, QCryptographicHash::Sha256).toBase64();
    EXPECT_TRUE(ApprovalPage::policy().contains("'sha256-" + digest + "'"));
}

TEST(ApprovalPage, FindsItsVisitorAmongOtherCookies)
{
    EXPECT_EQ(ApprovalPage::visitorOf("a=b; emulator_visitor=xyz; c=d"), "xyz");
    EXPECT_EQ(ApprovalPage::visitorOf("emulator_visitors=xyz"), "");
    EXPECT_EQ(ApprovalPage::visitorOf({}), "");
}
