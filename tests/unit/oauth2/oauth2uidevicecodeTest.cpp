#include "oauth2uidevicecode.h"

#include "cmnodesworker.h"
#include "cmroot.h"
#include "printers.h"
#include "replies.h"
#include "tavuconnect.h"
#include "tavumediadata.h"
#include "tavuoauth2devicecode.h"
#include "tavupaths.h"
#include "watchdog.h"

#include <gtest/gtest.h>

namespace {

QString text(const char* ascii)
{
    return QString::fromLatin1(ascii);
}

CMPath servicePath(const QString& subpath)
{
    return (TavuOAuth2ServicePath() + TavuAmazonMusicName()).appendSubpath(subpath);
}

/// A worker with login screens, and a test in place of the OAuth 2 service.
class LoginScreens : public QObject, public ::testing::Test
{
    Q_OBJECT

protected:
    LoginScreens()
    {
        CMRoot()->reset();
        CMRoot()->addService(servicePath(TavuOAuth2StartLoginSubPath()), this,
            [this](const QVariant& argument, const CMReply<QVariant>& reply) {
                starts.append(TavuValue(argument.toHash()).bool_());
                reply.setValue(QVariant());
            });
        publishLoggedIn(false);
        publish(state("idle"));
        worker.subscribe()->connectChange(CMSubscribe::ChangeType::Rows,
            TavuAmazonMusicBrowsePath(), this, SLOT(on_rows_changed(CMPath)), Qt::DirectConnection);
    }
    ~LoginScreens() override { CMRoot()->reset(); }

    static TavuOAuth2DeviceCode state(const char* name, const char* message = "")
    {
        TavuOAuth2DeviceCode record;
        record.setState(text(name));
        record.setDisplayName(text("Amazon Music"));
        record.setMessage(text(message));
        return record;
    }
    static TavuOAuth2DeviceCode waiting()
    {
        TavuOAuth2DeviceCode record = state("waiting");
        record.setUserCode(text("BCDF-GHJK"));
        record.setVerificationUri(text("https://example.com/code"));
        record.setVerificationUriComplete(text("https://example.com/code?c=BCDF-GHJK"));
        return record;
    }
    void publish(const TavuOAuth2DeviceCode& record)
    {
        CMRoot()->setValue(servicePath(TavuOAuth2DeviceCodeSubPath()), record);
        settle();
    }
    void publishLoggedIn(bool loggedIn)
    {
        CMRoot()->setValue(servicePath(TavuOAuth2LoggedInSubPath()), TavuValue::fromBool(loggedIn));
        settle();
    }
    OAuth2UiDeviceCode& ui()
    {
        if (!m_ui) {
            m_ui = new OAuth2UiDeviceCode(&worker, worker.nodes(), worker.subscribe(),
                TavuAmazonMusicName(), TavuAmazonMusicBrowsePath());
            tavuConnect(m_ui, SIGNAL(loginStateChanged(bool)), this,
                SLOT(on_loginState_changed(bool)), Qt::AutoConnection);
        }
        return *m_ui;
    }

    TavuRowsRoles answer(int from = 0, int to = 100)
    {
        const CMGetRowsRequest request(TavuAmazonMusicSearchPath(), from, to, roles);
        ui().getRowsRequest(request);
        return expectValue(request.reply());
    }
    /// The rows as hashes.
    QList<TavuRoles> rows()
    {
        QList<TavuRoles> list;
        for (const QVariant& row : answer().rows()) {
            QVariantHash hash;
            for (int index = 0; index < roles.size(); ++index)
                if (row.toList().at(index).isValid())
                    hash.insert(roles.at(index), row.toList().at(index));
            list.append(TavuRoles(hash));
        }
        return list;
    }
    QList<int> types()
    {
        QList<int> list;
        for (const TavuRoles& row : rows())
            list.append(row.type());
        return list;
    }

    const QStringList roles{ TavuRoles::Title(), TavuRoles::Type(), TavuRoles::Path(),
        TavuRoles::LongDescription(), TavuRoles::MediaData() };
    CMNodesWorker worker{ {}, text("AmazonMusic") };
    QList<bool> starts; ///< The arguments of the logins that were asked for.
    QList<bool> changes; ///< What loginStateChanged said.
    int rowsChanges = 0;

private Q_SLOTS:
    void on_loginState_changed(bool loggedIn) { changes.append(loggedIn); }
    void on_rows_changed(const CMPath&) { ++rowsChanges; }

private:
    OAuth2UiDeviceCode* m_ui = nullptr;
};

} // namespace

TEST_F(LoginScreens, StateIsRightFromConstructionOn)
{
    EXPECT_FALSE(ui().loggedIn());
}

TEST_F(LoginScreens, LoggedInStateIsRightFromConstructionOnAndNotAnnounced)
{
    publishLoggedIn(true);
    EXPECT_TRUE(ui().loggedIn());
    settle();
    EXPECT_TRUE(changes.isEmpty());
}

TEST_F(LoginScreens, AnnouncesChangesOnly)
{
    ui();
    settle();
    publishLoggedIn(false);
    publishLoggedIn(true);
    publishLoggedIn(true);
    publishLoggedIn(false);
    EXPECT_EQ(changes, (QList<bool>{ true, false }));
}

TEST_F(LoginScreens, FirstLookStartsALogin)
{
    ui();
    settle();
    EXPECT_TRUE(starts.isEmpty());
    rows();
    rows();
    EXPECT_EQ(starts, QList<bool>{ false });
}

TEST_F(LoginScreens, EachTimeSignedOutHasItsOwnFirstLook)
{
    rows();
    publishLoggedIn(true);
    rows();
    EXPECT_EQ(starts.size(), 1);
    publishLoggedIn(false);
    rows();
    EXPECT_EQ(starts.size(), 2);
}

TEST_F(LoginScreens, ExpiredCodeDoesNotStartALoginByItself)
{
    rows();
    publish(state("failed", "The code has expired. Get a new code."));
    rows();
    EXPECT_EQ(starts.size(), 1);
}

TEST_F(LoginScreens, StartingScreenSaysThatItTakesAMoment)
{
    publish(state("starting"));
    const QList<TavuRoles> shown = rows();
    ASSERT_EQ(shown.size(), 1);
    EXPECT_EQ(shown.at(0).type(), TavuRolesType::Message);
    EXPECT_EQ(shown.at(0).title(), text("Sign in to Amazon Music"));
    EXPECT_EQ(shown.at(0).longDescription(), text("Getting a code. This takes a moment."));
}

TEST_F(LoginScreens, WaitingScreenShowsCodeLinkAndAction)
{
    publish(waiting());
    const QList<TavuRoles> shown = rows();
    ASSERT_EQ(shown.size(), 4);
    EXPECT_EQ(shown.at(0).type(), 6);
    EXPECT_EQ(shown.at(0).title(), text("Sign in to Amazon Music"));
    EXPECT_EQ(shown.at(0).longDescription(),
        text("On a phone or a computer, go to https://example.com/code and enter the code "
             "BCDF-GHJK."));
    EXPECT_EQ(shown.at(1).title(), text("BCDF-GHJK"));
    EXPECT_EQ(shown.at(2).type(), 106);
    EXPECT_EQ(shown.at(2).title(), text("Open https://example.com/code"));
    EXPECT_EQ(shown.at(2).mediaData().firstResource().uri(),
        text("https://example.com/code?c=BCDF-GHJK"));
    EXPECT_EQ(shown.at(3).type(), 102);
    EXPECT_EQ(shown.at(3).title(), text("Get a new code"));
}

TEST_F(LoginScreens, LinkLeadsToThePlainAddressWhenThereIsNoComplete)
{
    TavuOAuth2DeviceCode record = waiting();
    record.setVerificationUriComplete(QString());
    publish(record);
    EXPECT_EQ(rows().at(2).mediaData().firstResource().uri(), text("https://example.com/code"));
}

TEST_F(LoginScreens, TextsFromTheServerAreNotReadAsPlaceholders)
{
    TavuOAuth2DeviceCode record = waiting();
    record.setVerificationUri(text("https://example.com/%2"));
    record.setDisplayName(text("%1 Music"));
    publish(record);
    EXPECT_EQ(rows().at(0).title(), text("Sign in to %1 Music"));
    EXPECT_TRUE(rows().at(0).longDescription().contains(text("https://example.com/%2 ")));
}

TEST_F(LoginScreens, FailedScreenSaysWhyAndOffersANewCode)
{
    publish(state("failed", "The sign-in was declined. Get a new code to try again."));
    EXPECT_EQ(types(), (QList<int>{ 6, 102 }));
    EXPECT_EQ(rows().at(0).longDescription(),
        text("The sign-in was declined. Get a new code to try again."));
}

TEST_F(LoginScreens, EndedLoginIsExplainedUntilTheNextOne)
{
    ui();
    publish(state("idle", "The service has ended the login. Sign in again."));
    publish(waiting());
    EXPECT_TRUE(rows().at(0).longDescription().startsWith(
        text("The service has ended the login. Sign in again.\nOn a phone")));
    publishLoggedIn(true);
    EXPECT_TRUE(rows().at(0).longDescription().startsWith(text("On a phone")));
}

TEST_F(LoginScreens, ServiceNameStandsInForAMissingDisplayName)
{
    TavuOAuth2DeviceCode record = state("starting");
    record.setDisplayName(QString());
    publish(record);
    EXPECT_EQ(rows().at(0).title(), text("Sign in to amazonMusic"));
}

TEST_F(LoginScreens, ContainerIsTheAskedPath)
{
    publish(waiting());
    const TavuRowsRoles all = answer();
    EXPECT_EQ(all.roles().path(), TavuAmazonMusicSearchPath());
    EXPECT_EQ(all.roles().title(), text("Sign in to Amazon Music"));
    EXPECT_EQ(all.roles().containerType(), TavuRolesContainerType::List);
    EXPECT_EQ(all.rowsCount(), 4);
}

TEST_F(LoginScreens, OnlyTheAskedRowsAreGiven)
{
    publish(waiting());
    EXPECT_EQ(answer(1, 2).rows().size(), 2);
    EXPECT_EQ(answer(1, 2).rowsCount(), 4);
    EXPECT_EQ(answer(4, 10).rows().size(), 0);
    EXPECT_EQ(answer(-5, 0).rows().size(), 1);
    EXPECT_EQ(answer(2, 1).rows().size(), 0);
}

TEST_F(LoginScreens, ChangesOfTheLoginChangeTheRows)
{
    ui();
    settle();
    const int version = answer().rowsVersion();
    rowsChanges = 0;
    publish(waiting());
    EXPECT_EQ(rowsChanges, 1);
    EXPECT_NE(answer().rowsVersion(), version);
    publish(waiting());
    EXPECT_EQ(rowsChanges, 1);
    publishLoggedIn(true);
    EXPECT_EQ(rowsChanges, 2);
}

TEST_F(LoginScreens, GetANewCodeAsksForOneEvenWhileOneWaits)
{
    publish(waiting());
    const CMPath action = rows().at(3).path();
    EXPECT_TRUE(action.startsWith(worker.prefix()));
    const CMSetDataRequest activation(action, QVariantHash());
    worker.setDataRequest(activation);
    expectValue(activation.reply());
    EXPECT_EQ(starts, (QList<bool>{ false, true }));
}

TEST_F(LoginScreens, DestroyingTheScreensTakesTheActionAway)
{
    publish(waiting());
    const CMPath action = rows().at(3).path();
    delete &ui();
    const CMSetDataRequest activation(action, QVariantHash());
    worker.setDataRequest(activation);
    expectError(activation.reply());
}

#include "oauth2uidevicecodeTest.moc"
