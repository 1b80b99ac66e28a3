#include "servicemanager.h"

#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace player {

void tellServiceManager(const QByteArray& state)
{
    const QByteArray name = qgetenv("NOTIFY_SOCKET");
    sockaddr_un address = {};
    if (name.isEmpty() || static_cast<std::size_t>(name.size()) >= sizeof(address.sun_path))
        return;
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket < 0)
        return;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    if (address.sun_path[0] == '@')
        address.sun_path[0] = '\0'; // An abstract socket.
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path))
        + static_cast<socklen_t>(name.size());
    ::sendto(socket, state.constData(), static_cast<std::size_t>(state.size()), MSG_NOSIGNAL,
        reinterpret_cast<const sockaddr*>(&address), length);
    ::close(socket);
}

} // namespace player
