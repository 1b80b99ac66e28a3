#include "fulldisk.h"
#include "logcapture.h"
#include "oauth2fixture.h"
#include "redactor.h"
#include "refusedtoken.h"

using Server = AuthorizationServer;

namespace {

class TokenRenewal : public OAuth2Fixture
{
protected:
    TokenRenewal() { start(); }

    static QString text(const char* ascii) { return QString::fromLatin1(ascii); }
    bool waitForPolls(int polls)
    {
        return waitUntil([&] { return server.polls() == polls; });
    }
    /// As the HTTP client tells of it, before whoever was refused asks for another token.
    static void refuse(const char* token)
    {
        const auto reply = CMReply<QVariant>::create();
        CMRoot()->invoke(httpclient::refusedTokenPath(), text(token), reply);
        expectValue(reply);
    }
    /// Renewed so long ago that a refusal counts.
    void renewTo(const char* access, const char* refresh)
    {
        server.token = Server::tokens(access, refresh);
        clock.advance(2000);
        expectValue(this->refresh());
        clock.advance(2000);
        EXPECT_EQ(accessToken(), text(access));
        published.clear();
    }
    QString shownRefreshToken() const
    {
        return server.tokenCalls().last().form.value(text("refresh_token"));
    }
};

} // namespace

TEST_F(TokenRenewal, PluginGetsANewToken)
{
    signIn("access-1", "refresh-1");
    server.token = Server::tokens("access-2", "refresh-2");
    expectValue(refresh());
    EXPECT_EQ(accessToken(), text("access-2"));
    const Server::Form form = server.tokenCalls().last().form;
    EXPECT_EQ(form.value(text("grant_type")), text("refresh_token"));
    EXPECT_EQ(form.value(text("refresh_token")), text("refresh-1"));
    EXPECT_EQ(form.value(text("client_id")), text("client & id"));
    EXPECT_EQ(form.value(text("client_secret")), text("client-secret"));
}

TEST_F(TokenRenewal, RotatedTokenIsOnTheDiskBeforeItIsUsed)
{
    signIn("access-1", "refresh-1");
    QByteArray atPublication;
    onToken = [&](const QString&) { atPublication = saved(); };
    server.token = Server::tokens("access-2", "refresh-2");
    expectValue(refresh());
    EXPECT_TRUE(atPublication.contains("refresh-2"));
    EXPECT_TRUE(saved(text(".bak")).contains("refresh-1"));
    advance(2000);
    expectValue(refresh());
    EXPECT_EQ(shownRefreshToken(), text("refresh-2"));
}

TEST_F(TokenRenewal, TokenThatIsNotRotatedStays)
{
    signIn("access-1", "refresh-1");
    server.token = Server::json(200, { { text("access_token"), text("access-2") } });
    expectValue(refresh());
    advance(2000);
    expectValue(refresh());
    EXPECT_EQ(shownRefreshToken(), text("refresh-1"));
    EXPECT_TRUE(saved().contains("refresh-1"));
}

TEST_F(TokenRenewal, TokenThatIsNotRotatedNeverStandsInTheLog)
{
    signIn("access-1", "refresh-of-a-year");
    constexpr int renewals = 80;
    for (int i = 0; i < renewals; ++i) {
        server.token =
            Server::json(200, { { text("access_token"), text("access-") + QString::number(i) } });
        advance(2000);
        expectValue(refresh());
    }
    EXPECT_EQ(server.polls(), 1 + renewals);
    EXPECT_EQ(player::redacted("sent refresh-of-a-year"), "sent ***");
}

TEST_F(TokenRenewal, SeveralWishesShareOneRequest)
{
    signIn("access-1", "refresh-1");
    server.token = Server::silent();
    const auto first = refresh();
    const auto second = refresh();
    EXPECT_TRUE(waitForPolls(2));
    expectPending(first);
    Server::tokens("access-2", "refresh-2")(server.tokenCalls().last());
    expectValue(first);
    expectValue(second);
    EXPECT_EQ(server.polls(), 2);
}

TEST_F(TokenRenewal, WhoWasRefusedWithTheTokenBeforeIsGivenTheNewOne)
{
    signIn("access-1", "refresh-1");
    server.token = Server::tokens("access-2", "refresh-2");
    expectValue(refresh());
    const int asked = server.polls();
    published.clear();
    advance(1999);
    expectValue(refresh());
    EXPECT_EQ(published, QStringList({ text("token access-2") }));
    EXPECT_EQ(server.polls(), asked);
    advance(1);
    expectValue(refresh());
    EXPECT_EQ(server.polls(), asked + 1);
}

TEST_F(TokenRenewal, RefusalOfTheTokenBeforeRenewsNothingHoweverLateItComes)
{
    signIn("access-1", "refresh-1");
    renewTo("access-2", "refresh-2");
    const int asked = server.polls();
    for (int late = 1; late <= 2; ++late) {
        clock.advance(20000);
        refuse("access-1");
        expectValue(refresh());
        EXPECT_EQ(published, QStringList({ text("token access-2") })) << late;
        published.clear();
    }
    EXPECT_EQ(server.polls(), asked);
}

TEST_F(TokenRenewal, RefusalOfATokenFromBeforeTheLoginRenewsNothing)
{
    signIn("access-1", "refresh-1");
    logout();
    signIn("access-2", "refresh-2");
    const int asked = server.polls();
    refuse("access-1");
    expectValue(refresh());
    EXPECT_EQ(accessToken(), text("access-2"));
    EXPECT_EQ(server.polls(), asked);
}

TEST_F(TokenRenewal, RefusalOfThePresentTokenRenewsItWhateverElseIsRefused)
{
    signIn("access-1", "refresh-1");
    renewTo("access-2", "refresh-2");
    refuse("access-2");
    refuse("access-1");
    server.token = Server::tokens("access-3", "refresh-3");
    expectValue(refresh());
    EXPECT_EQ(accessToken(), text("access-3"));
}

TEST_F(TokenRenewal, RefusalAnswersOneWishAndNoFurtherOne)
{
    signIn("access-1", "refresh-1");
    renewTo("access-2", "refresh-2");
    refuse("access-1");
    refuse("somebody else's");
    expectValue(refresh());
    EXPECT_EQ(accessToken(), text("access-2"));
    server.token = Server::tokens("access-3", "refresh-3");
    refuse("somebody else's");
    expectValue(refresh());
    EXPECT_EQ(accessToken(), text("access-3"));
}

TEST_F(TokenRenewal, RefusalOfTheTokenBeforeIsNoReasonToGiveOutAnExpiredOne)
{
    signIn("access-1", "refresh-1");
    server.token = Server::tokens("access-2", "refresh-2", 1);
    expectValue(refresh());
    server.token = Server::silent();
    advance(3000);
    refuse("access-1");
    published.clear();
    expectPending(refresh());
    EXPECT_EQ(published, QStringList());
}

TEST_F(TokenRenewal, TokenThatComesBackIsThePresentOne)
{
    signIn("access-1", "refresh-1");
    renewTo("access-2", "refresh-2");
    renewTo("access-1", "refresh-3");
    refuse("access-1");
    server.token = Server::tokens("access-4", "refresh-4");
    expectValue(refresh());
    EXPECT_EQ(accessToken(), text("access-4"));
}

TEST_F(TokenRenewal, TokenThatHasExpiredMeanwhileIsGivenToNobody)
{
    signIn("access-1", "refresh-1");
    server.token = Server::tokens("access-2", "refresh-2", 1);
    expectValue(refresh());
    server.token = Server::silent();
    advance(1000);
    EXPECT_EQ(accessToken(), QString());
    expectPending(refresh());
    EXPECT_EQ(accessToken(), QString());
}

TEST_F(TokenRenewal, HappensByItselfBeforeTheTokenExpires)
{
    signIn("access-1", "refresh-1", 3600);
    server.token = Server::tokens("access-2", "refresh-2", 100);
    advance(3539 * 1000);
    EXPECT_EQ(server.polls(), 1);
    clock.advance(1000);
    EXPECT_TRUE(waitForToken("access-2"));
    server.token = Server::tokens("access-3", "refresh-3");
    advance(79 * 1000);
    EXPECT_EQ(server.polls(), 2);
    clock.advance(1000);
    EXPECT_TRUE(waitForToken("access-3"));
    EXPECT_EQ(published.filter(text("loggedIn")).size(), 2);
}

TEST_F(TokenRenewal, WallClockHasNoSay)
{
    for (const qint64 jump : { 24LL * 3600 * 1000, -24LL * 3600 * 1000, -1000LL * 3600 * 1000 }) {
        clock.wallOffsetMs += jump;
        signIn("access-1", "refresh-1", 3600);
        const int polls = server.polls();
        clock.wallOffsetMs -= 2 * jump;
        server.token = Server::tokens("access-2", "refresh-2", 3600);
        advance(3539 * 1000);
        EXPECT_EQ(server.polls(), polls);
        EXPECT_EQ(accessToken(), text("access-1"));
        clock.advance(1000);
        EXPECT_TRUE(waitForToken("access-2"));
        logout();
    }
}

TEST_F(TokenRenewal, RevokedLoginEndsOnce)
{
    signIn("access-1", "refresh-1");
    published.clear();
    server.token = Server::error("invalid_grant");
    expectError(refresh(), text("The service has ended the login. Sign in again."));
    EXPECT_EQ(published, (QStringList{ text("loggedIn 0"), text("token ") }));
    EXPECT_EQ(login().state(), text("idle"));
    EXPECT_EQ(login().message(), text("The service has ended the login. Sign in again."));
    EXPECT_FALSE(QFile::exists(tokenFile()));
    EXPECT_FALSE(QFile::exists(tokenFile() + text(".bak")));
    advance(24 * 3600 * 1000);
    EXPECT_EQ(server.polls(), 2);
    EXPECT_EQ(published.size(), 2);
}

TEST_F(TokenRenewal, LostAnswerIsMadeUpForOnceWithTheOldToken)
{
    signIn("access-1", "refresh-1");
    server.token = [this](const Server::Call& call) {
        server.token = Server::tokens("access-2", "refresh-2");
        call.responder.reset();
    };
    expectValue(refresh());
    EXPECT_EQ(shownRefreshToken(), text("refresh-1"));
    EXPECT_EQ(accessToken(), text("access-2"));
    EXPECT_EQ(server.polls(), 3);
}

TEST_F(TokenRenewal, LostAnswerOfARotationEndsInTheLoginScreen)
{
    signIn("access-1", "refresh-1");
    server.token = [this](const Server::Call& call) {
        server.token = Server::error("invalid_grant");
        call.responder.reset();
    };
    expectError(refresh());
    EXPECT_FALSE(isLoggedIn());
    advance(3600 * 1000);
    EXPECT_EQ(server.polls(), 3);
}

TEST_F(TokenRenewal, AnswersThatKeepGettingLostMakeNoLoop)
{
    signIn("access-1", "refresh-1");
    server.token = Server::lost();
    expectError(refresh());
    EXPECT_EQ(server.polls(), 3);
    EXPECT_TRUE(isLoggedIn());
    advance(29999);
    EXPECT_EQ(server.polls(), 3);
    server.token = Server::tokens("access-2", "refresh-2");
    clock.advance(1);
    EXPECT_TRUE(waitForToken("access-2"));
}

TEST_F(TokenRenewal, FailingServerIsAskedEvery30SecondsAndTheLoginIsKept)
{
    signIn("access-1", "refresh-1");
    published.clear();
    server.token = Server::bytes(500, "oops");
    expectError(refresh());
    EXPECT_EQ(accessToken(), text("access-1"));
    EXPECT_EQ(login().state(), text("loggedIn"));
    EXPECT_EQ(login().message(),
        text("The login could not be renewed (HTTP status 500). It is tried again every 30 "
             "seconds."));
    for (int tries = 2; tries <= 20; ++tries) {
        expectError(
            refresh(), text("The login could not be renewed a moment ago; it is tried again."));
        advance(29999);
        EXPECT_EQ(server.polls(), tries);
        clock.advance(1);
        EXPECT_TRUE(waitForPolls(tries + 1));
        EXPECT_TRUE(waitUntil([&] { return clock.untilNext() == 30000; }));
    }
    EXPECT_TRUE(saved().contains("refresh-1"));
    server.token = Server::tokens("access-2", "refresh-2");
    clock.advance(30000);
    EXPECT_TRUE(waitForToken("access-2"));
    EXPECT_TRUE(waitUntil([&] { return login().message().isEmpty(); }));
    EXPECT_EQ(published, QStringList{ text("token access-2") });
}

TEST_F(TokenRenewal, RefusedClientKeepsTheLoginAndSaysSo)
{
    signIn("access-1", "refresh-1");
    server.token = Server::error("invalid_client", 401);
    expectError(refresh());
    EXPECT_TRUE(isLoggedIn());
    EXPECT_TRUE(login().message().contains(text("invalid_client")));
    EXPECT_TRUE(saved().contains("refresh-1"));
}

TEST_F(TokenRenewal, ExpiredTokenIsWithdrawnUntilThereIsANewOne)
{
    signIn("access-1", "refresh-1", 100);
    published.clear();
    server.token = Server::bytes(500, "oops");
    clock.advance(80 * 1000);
    EXPECT_TRUE(waitUntil([&] { return !login().message().isEmpty(); }));
    EXPECT_EQ(accessToken(), text("access-1"));
    advance(20 * 1000);
    EXPECT_EQ(published, QStringList{ text("token ") });
    EXPECT_TRUE(isLoggedIn());
    server.token = Server::tokens("access-2", "refresh-2");
    clock.advance(10 * 1000);
    EXPECT_TRUE(waitForToken("access-2"));
}

TEST_F(TokenRenewal, LoginWithoutRefreshTokenEndsWithItsAccessToken)
{
    showCode();
    server.token =
        Server::json(200, { { text("access_token"), text("only") }, { text("expires_in"), 100 } });
    clock.advance(5000);
    EXPECT_TRUE(waitForToken("only"));
    EXPECT_FALSE(QFile::exists(tokenFile()));
    advance(99 * 1000);
    EXPECT_TRUE(isLoggedIn());
    advance(1000);
    EXPECT_FALSE(isLoggedIn());
    EXPECT_EQ(login().message(), text("The login has expired. Sign in again."));
}

TEST_F(TokenRenewal, UnusableTokensLeaveTheOldOnesAlone)
{
    const QStringList bad{ text("a\r\nb"), QString(64 * 1024, QLatin1Char('a')),
        QString::fromUtf8("t\xc3\xb6ken") };
    signIn("access-1", "refresh-1");
    for (const QString& token : bad) {
        server.token = Server::json(200, { { text("access_token"), token } });
        expectError(refresh());
        EXPECT_EQ(accessToken(), text("access-1"));
        EXPECT_TRUE(saved().contains("refresh-1"));
        server.token = Server::tokens("access-1", "refresh-1");
        clock.advance(30000);
        EXPECT_TRUE(waitUntil([&] { return login().message().isEmpty(); }));
        clock.advance(2000);
    }
}

TEST_F(TokenRenewal, LogoutForgetsEverything)
{
    signIn("access-1", "refresh-1");
    server.token = Server::tokens("access-2", "refresh-2");
    expectValue(refresh());
    published.clear();
    logout();
    EXPECT_EQ(published, (QStringList{ text("loggedIn 0"), text("token ") }));
    EXPECT_FALSE(QFile::exists(tokenFile()));
    EXPECT_FALSE(QFile::exists(tokenFile() + text(".bak")));
    EXPECT_EQ(login().state(), text("idle"));
    EXPECT_TRUE(login().message().isEmpty());
    expectError(refresh(), text("Nobody is signed in."));
    EXPECT_EQ(clock.waiting(), 0);
}

TEST_F(TokenRenewal, LogoutIgnoresTheLateAnswer)
{
    signIn("access-1", "refresh-1");
    server.token = Server::silent();
    const auto wish = refresh();
    EXPECT_TRUE(waitForPolls(2));
    logout();
    expectError(wish, text("Signed out."));
    Server::tokens("late", "late-refresh")(server.tokenCalls().last());
    EXPECT_TRUE(waitUntil([&] { return !server.tokenCalls().last().responder.isOpen(); }));
    settle();
    EXPECT_EQ(accessToken(), QString());
    EXPECT_FALSE(isLoggedIn());
    EXPECT_FALSE(QFile::exists(tokenFile()));
}

TEST_F(TokenRenewal, LoginSurvivesARestart)
{
    signIn("access-1", "refresh-1");
    server.token = Server::silent();
    restart();
    EXPECT_EQ(published, (QStringList{ text("token "), text("loggedIn 1") }));
    EXPECT_EQ(login().state(), text("loggedIn"));
    EXPECT_TRUE(waitForPolls(2));
    EXPECT_EQ(shownRefreshToken(), text("refresh-1"));
    Server::tokens("access-2", "refresh-2")(server.tokenCalls().last());
    EXPECT_TRUE(waitForToken("access-2"));
}

TEST_F(TokenRenewal, FullDiskLosesNeitherTheLoginNorTheOldFile)
{
    signIn("access-1", "refresh-1");
    server.token = Server::tokens("access-2", "refresh-2");
    {
        const FullDisk disk(10);
        expectValue(refresh());
        EXPECT_EQ(accessToken(), text("access-2"));
        EXPECT_TRUE(login().message().contains(
            text("tokens.json: File too large). It works until the player ends")))
            << login().message().toStdString();
        EXPECT_TRUE(saved().contains("refresh-1"));
    }
    advance(30000);
    EXPECT_TRUE(saved().contains("refresh-2"));
    EXPECT_TRUE(login().message().isEmpty());
}

TEST_F(TokenRenewal, TokenThatCouldNotBeSavedIsSavedAtTheEnd)
{
    signIn("access-1", "refresh-1");
    server.token = Server::tokens("access-2", "refresh-2");
    {
        const FullDisk disk(10);
        expectValue(refresh());
    }
    EXPECT_TRUE(saved().contains("refresh-1"));
    restart();
    EXPECT_TRUE(saved().contains("refresh-2"));
}

TEST_F(TokenRenewal, SecretsStayOutOfTheLog)
{
    LogCapture oauth2("OAuth2");
    LogCapture http("HttpClient");
    signIn("access-secret", "refresh-secret");
    server.token = Server::bytes(500, "oops");
    expectError(refresh());
    server.token = Server::error("invalid_grant");
    clock.advance(30000);
    EXPECT_TRUE(waitForState("idle"));
    for (const char* secret :
        { "access-secret", "refresh-secret", "device-code-1", "BCDF-GHJK", "client-secret" }) {
        EXPECT_FALSE(oauth2.mentions(text(secret))) << secret;
        EXPECT_FALSE(http.mentions(text(secret))) << secret;
    }
    EXPECT_GT(oauth2.texts(log4cplus::WARN_LOG_LEVEL).size(), 1);
}
