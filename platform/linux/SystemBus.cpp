#include "platform/linux/SystemBus.h"

#include <QByteArray>
#include <QList>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <optional>

namespace {

constexpr int Milliseconds = 1000;

// Nothing for a bus that is not at a path.
std::optional<sockaddr_un> address()
{
    QByteArray text = qgetenv("DBUS_SYSTEM_BUS_ADDRESS");
    if (text.isEmpty())
        text = "unix:path=/run/dbus/system_bus_socket";
    const QByteArray head = "unix:path=";
    if (!text.startsWith(head) || text.contains(';'))
        return std::nullopt;
    text = QByteArray::fromPercentEncoding(text.mid(head.size()).split(',').first());
    sockaddr_un result{};
    result.sun_family = AF_UNIX;
    if (text.size() >= qsizetype(sizeof result.sun_path))
        return std::nullopt;
    std::memcpy(result.sun_path, text.constData(), size_t(text.size()));
    return result;
}

// Begins as every client does; a refusal would be an answer, too.
bool isAnsweredAt(int client, const sockaddr_un &bus)
{
    if (connect(client, reinterpret_cast<const sockaddr *>(&bus), sizeof bus) != 0)
        return false;
    const QByteArray hello =
        QByteArray("\0AUTH EXTERNAL ", 15) + QByteArray::number(getuid()).toHex() + "\r\n";
    if (send(client, hello.constData(), size_t(hello.size()), MSG_NOSIGNAL) != hello.size())
        return false;
    pollfd answer{client, POLLIN, 0};
    char first = 0;
    return poll(&answer, 1, Milliseconds) == 1 && recv(client, &first, 1, 0) == 1;
}

} // namespace

bool SystemBus::answers()
{
    const auto bus = address();
    if (!bus)
        return true; // it cannot be asked
    // One that does not block: a bus that lets nobody in is silent, too.
    const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (client < 0)
        return false;
    const bool isAnswered = isAnsweredAt(client, *bus);
    close(client);
    return isAnswered;
}
