#pragma once

#include "cb_amazonMusic.h"

#include "logcapture.h"
#include "replies.h"
#include "servicescript.h"
#include "tavupaths.h"
#include "testhost.h"

#include <gtest/gtest.h>

#include <memory>

/// The whole plug-in in the test's host, on the test's thread.
class WorkerFixture : public testing::Test
{
protected:
    WorkerFixture() { host.setBaseUrl(service.baseUrl()); }
    ~WorkerFixture() override { service.expectNoRequest(); }

    /// Made by its first use, so that a test can change the settings before.
    CMAmazonMusicWorker& worker()
    {
        if (!m_worker)
            m_worker = std::make_unique<CMAmazonMusicWorker>(QVariantHash());
        return *m_worker;
    }
    void destroyWorker() { m_worker.reset(); }

    /// The worker with a user signed in and a token.
    void signIn()
    {
        host.setLoggedIn(true);
        host.setToken(QStringLiteral("T1"));
        worker();
        settle();
    }

    CMReply<TavuRowsRoles> rows(
        const CMPath& path, const QStringList& roles = { TavuRoles::Title() })
    {
        const CMGetRowsRequest request(path, 0, 9, roles);
        worker().getRowsRequest(request);
        return request.reply();
    }

    CMReply<QVariant> activate(const CMPath& path, const QVariant& value)
    {
        const CMSetDataRequest request(path, value);
        worker().setDataRequest(request);
        return request.reply();
    }

    static QStringList titles(const TavuRowsRoles& rows)
    {
        QStringList titles;
        for (const QVariant& row : rows.rows())
            titles += row.toList().value(0).toString();
        return titles;
    }

    static TavuActionReply actionReply(const CMReply<QVariant>& reply)
    {
        return TavuActionReply(TavuHash(expectValue(reply).toHash()));
    }

    static void expectCloseReply(const CMReply<QVariant>& reply)
    {
        const TavuActionReply close = actionReply(reply);
        EXPECT_EQ(close.xclass(), QStringLiteral("TavuActionReply"));
        ASSERT_EQ(close.events().count(), 1);
        EXPECT_EQ(int(close.events().record(0).rowsType()), 1);
        EXPECT_EQ(close.__hash().size(), 2);
    }

    TestHost host;
    ServiceScript service;

private:
    std::unique_ptr<CMAmazonMusicWorker> m_worker;
};
