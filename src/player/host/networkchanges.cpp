#include "networkchanges.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

namespace player {

int openNetworkChanges()
{
    const int fd = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
    if (fd < 0)
        return fd;
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR;
    // The kernel's interface to all kinds of addresses.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
    const auto* any = reinterpret_cast<const sockaddr*>(&address);
    if (bind(fd, any, sizeof address) == 0)
        return fd;
    close(fd);
    return -1;
}

void drainNetworkChanges(int descriptor)
{
    std::array<char, 8192> message{};
    while (recv(descriptor, message.data(), message.size(), 0) > 0) { }
}

} // namespace player
