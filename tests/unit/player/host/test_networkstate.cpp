#include "networkstate.h"

#include "cmroot.h"
#include "networkchanges.h"
#include "settings.h"
#include "tavupaths.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

using player::isOnThisMachine;
using player::leadsToService;
using player::NetworkState;
using player::Settings;

namespace {

using Interface = QNetworkInterface;

const QList<QHostAddress> home{ QHostAddress(QStringLiteral("192.168.1.7")) };
const QList<QHostAddress> linkLocal{ QHostAddress(QStringLiteral("169.254.3.4")),
    QHostAddress(QStringLiteral("fe80::1")) };
const QList<QHostAddress> own{ QHostAddress(QHostAddress::LocalHost) };

bool isConnected()
{
    return TavuValue(CMRoot()->getValue(TavuNetworkStateConnected()).toHash()).bool_();
}

TEST(NetworkState, an_interface_counts_that_is_up_and_running_and_has_an_address)
{
    const auto working = Interface::IsUp | Interface::IsRunning;
    EXPECT_TRUE(leadsToService(working, home, false));
    EXPECT_TRUE(leadsToService(working, linkLocal + home, false));
    EXPECT_FALSE(leadsToService(working, linkLocal, false));
    EXPECT_FALSE(leadsToService(working, {}, false));
    EXPECT_FALSE(leadsToService(Interface::IsUp, home, false)) << "no cable";
    EXPECT_FALSE(leadsToService(Interface::IsRunning, home, false));
}

TEST(NetworkState, the_loopback_interface_counts_for_a_service_on_this_machine_alone)
{
    const auto loopback = Interface::IsUp | Interface::IsRunning | Interface::IsLoopBack;
    EXPECT_TRUE(leadsToService(loopback, own, true));
    EXPECT_FALSE(leadsToService(loopback, own, false));
    EXPECT_FALSE(leadsToService(Interface::IsLoopBack, own, true));
}

TEST(NetworkState, a_service_is_on_this_machine_by_its_name_or_by_where_its_name_is_mapped_to)
{
    const QString host = QStringLiteral("music.example");
    EXPECT_FALSE(isOnThisMachine(host, {}));
    EXPECT_FALSE(isOnThisMachine(host, { QStringLiteral("other.example:443:127.0.0.1:8443") }));
    EXPECT_FALSE(isOnThisMachine(host, { QStringLiteral("music.example:443:10.0.0.1:8443") }));
    EXPECT_TRUE(isOnThisMachine(host, { QStringLiteral("music.example:443:127.0.0.1:8443") }));
    EXPECT_TRUE(isOnThisMachine(host, { QStringLiteral("music.example:443:[::1]:8443") }));
    EXPECT_TRUE(isOnThisMachine(QStringLiteral("localhost"), {}));
    EXPECT_TRUE(isOnThisMachine(QStringLiteral("music.localhost"), {}));
    EXPECT_TRUE(isOnThisMachine(QStringLiteral("127.0.0.3"), {}));
    EXPECT_FALSE(isOnThisMachine(QStringLiteral("localhost.example"), {}));
}

TEST(NetworkChanges, are_those_of_links_and_of_addresses_of_both_kinds)
{
    const int fd = player::openNetworkChanges();
    ASSERT_GE(fd, 0);
    sockaddr_nl address{};
    socklen_t size = sizeof address;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
    EXPECT_EQ(getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
    close(fd);
    EXPECT_EQ(address.nl_groups,
        __u32(RTMGRP_LINK) | __u32(RTMGRP_IPV4_IFADDR) | __u32(RTMGRP_IPV6_IFADDR));
}

TEST(NetworkChanges, leave_the_descriptor_quiet_once_they_are_taken)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0, ends.data()), 0);
    for (int change = 0; change < 3; ++change)
        ASSERT_EQ(send(ends[0], "changed", 7, 0), 7);
    player::drainNetworkChanges(ends[1]);
    pollfd quiet{ ends[1], POLLIN, 0 };
    EXPECT_EQ(poll(&quiet, 1, 0), 0);
    for (const int end : ends)
        close(end);
}

class NetworkFile : public QObject, public testing::Test
{
    Q_OBJECT

public Q_SLOTS:
    void on_published(const TavuValue& value) { m_published.append(value.bool_()); }

protected:
    NetworkFile()
    {
        CMRoot()->connectValueChange(
            TavuNetworkStateConnected(), this, SLOT(on_published(TavuValue)), Qt::DirectConnection);
        EXPECT_TRUE(m_settings.apply(QStringLiteral("player.network-file=") + m_name));
    }

    void write(const QByteArray& text)
    {
        QFile file(m_name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
    }
    void replace(const QByteArray& text)
    {
        const QString other = m_folder.filePath(QStringLiteral("other"));
        QFile file(other);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.close();
        QFile::remove(m_name);
        ASSERT_TRUE(QFile::rename(other, m_name));
    }

    QList<bool> m_published;
    QTemporaryDir m_folder;
    QString m_name = m_folder.filePath(QStringLiteral("network"));
    Settings m_settings;
};

TEST_F(NetworkFile, that_is_not_there_or_says_something_else_takes_nothing_away)
{
    const NetworkState missing(m_settings);
    EXPECT_TRUE(isConnected());
    write("whatever\n");
    const NetworkState other(m_settings);
    EXPECT_TRUE(isConnected());
}

TEST_F(NetworkFile, is_read_at_the_start)
{
    write("down\n");
    const NetworkState state(m_settings);
    EXPECT_FALSE(isConnected());
}

TEST_F(NetworkFile, that_takes_nothing_away_is_no_news)
{
    const NetworkState state(m_settings);
    EXPECT_EQ(m_published, QList<bool>({ true }));
}

TEST_F(NetworkFile, is_followed_when_it_is_made_written_and_replaced)
{
    const NetworkState state(m_settings);
    write("down\n");
    ASSERT_TRUE(waitUntil([] { return !isConnected(); }));
    write("up\n");
    ASSERT_TRUE(waitUntil(isConnected));
    replace("down\n");
    ASSERT_TRUE(waitUntil([] { return !isConnected(); }));
    write("up\n");
    ASSERT_TRUE(waitUntil(isConnected));
}

} // namespace

#include "test_networkstate.moc"
