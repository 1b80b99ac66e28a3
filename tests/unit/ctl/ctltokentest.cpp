#include "ctlfixture.h"
#include "httpserver.h"

namespace {

/// A player that asks for a token, as one does that others can reach. Behind a server that passes
/// all to it, so that the program's own address, which needs none, is not seen.
class CtlWithToken : public Ctl
{
protected:
    CtlWithToken()
    {
        guarded.setHandler([](const http::Request& request, const http::Responder& responder) {
            const bool good = request.headers.value("Authorization") == "Bearer open-sesame-please";
            responder.send(good
                    ? http::Response{ 200, {}, R"({"player": {"state": 0, "error": null},
                                                   "login": {"state": "loggedIn"}})" }
                    : http::Response{
                        401, {}, R"({"title": "Unauthorized", "detail": "A code"})" });
        });
        port = guarded.listen(QHostAddress::LocalHost, 0);
    }

    http::Server guarded;
};

} // namespace

TEST_F(CtlWithToken, AsksForTheTokenAndTellsAWrongOne)
{
    EXPECT_EQ(run({ text("status") }), 4);
    EXPECT_EQ(err,
        text("tavu-ctl: This player asks for its token, which it prints when it starts. Give it "
             "with --token or TAVU_TOKEN."));
    EXPECT_EQ(run({ text("--token"), text("wrong"), text("status") }), 4);
    EXPECT_TRUE(err.startsWith(text("tavu-ctl: The token is not this player's.")));
    EXPECT_EQ(run({ text("--token"), text("open-sesame-please"), text("status") }), 0);
}

TEST_F(CtlWithToken, TakesTheAddressAsThePlayerPrintsIt)
{
    const QString printed = text("http://127.0.0.1:%1/?token=open-sesame-please").arg(port);
    EXPECT_EQ(start({ text("--url"), printed, text("status") }), 0) << err.toStdString();
}
