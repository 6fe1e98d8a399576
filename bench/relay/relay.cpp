// A long line in one process: quellmoor-relay PORT TARGET_PORT ROUND_TRIP_MS MEGABITS
//
// Relays TCP connections on 127.0.0.1. All connections share the line's rate, each direction by
// itself; bytes arrive half a round trip after they have left. A new connection costs one round
// trip more before its first byte leaves, as its handshake would. Congestion control is not
// imitated: every connection may use the whole line at once.
#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <list>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::nanoseconds;

constexpr size_t PieceSize = 32 * 1024;
constexpr size_t MostWaiting = 8 * 1024 * 1024;
constexpr auto LongestBacklog = std::chrono::milliseconds(4);

[[noreturn]] void giveUp(const char *what)
{
    std::perror(what);
    std::exit(1);
}

// One direction of the line.
class Wire
{
public:
    Wire(nanoseconds delay, double bytesPerSecond)
        : m_delay(delay), m_bytesPerSecond(bytesPerSecond)
    {
    }

    [[nodiscard]] bool isFree(Clock::time_point now) const { return m_free < now + LongestBacklog; }
    // When bytes that leave not before `from` arrive.
    Clock::time_point send(size_t count, Clock::time_point from)
    {
        m_free =
            std::max(m_free, from) + nanoseconds(int64_t(double(count) / m_bytesPerSecond * 1e9));
        return m_free + m_delay;
    }
    [[nodiscard]] Clock::time_point freeAgain() const { return m_free - LongestBacklog; }

private:
    const nanoseconds m_delay;
    const double m_bytesPerSecond;
    Clock::time_point m_free;
};

struct Piece
{
    Clock::time_point due;
    std::vector<char> bytes; // none: the sender has ended
    size_t sent = 0;
};

// One direction of one connection.
struct Flow
{
    int from;
    int to;
    Wire *wire;
    Clock::time_point begins;
    std::deque<Piece> pieces = {};
    size_t waiting = 0;
    bool isSenderDone = false;
    bool isOver = false;

    [[nodiscard]] bool mayRead(Clock::time_point now) const
    {
        return !isSenderDone && waiting < MostWaiting && wire->isFree(now) && begins <= now;
    }

    void read(Clock::time_point now)
    {
        std::vector<char> bytes(PieceSize);
        const ssize_t count = recv(from, bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (count < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        bytes.resize(size_t(std::max<ssize_t>(count, 0)));
        isSenderDone = bytes.empty();
        waiting += bytes.size();
        const auto due = wire->send(bytes.size(), now);
        pieces.push_back({due, std::move(bytes)});
    }

    void write(Clock::time_point now)
    {
        while (!pieces.empty() && pieces.front().due <= now) {
            Piece &piece = pieces.front();
            if (piece.bytes.empty()) {
                shutdown(to, SHUT_WR);
                isOver = true;
                return;
            }
            const ssize_t count =
                send(to, piece.bytes.data() + piece.sent, piece.bytes.size() - piece.sent,
                     MSG_DONTWAIT | MSG_NOSIGNAL);
            if (count < 0 && (errno == EAGAIN || errno == EINTR))
                return;
            if (count < 0) {
                isSenderDone = isOver = true;
                shutdown(from, SHUT_RD);
                return;
            }
            piece.sent += size_t(count);
            waiting -= size_t(count);
            if (piece.sent == piece.bytes.size())
                pieces.pop_front();
        }
    }
};

struct Connection
{
    Flow up;
    Flow down;
};

sockaddr_in address(int port)
{
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    result.sin_port = htons(uint16_t(port));
    return result;
}

void sendAtOnce(int socket)
{
    const int yes = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
}

int listenOn(int port)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    const sockaddr_in where = address(port);
    if (bind(listener, reinterpret_cast<const sockaddr *>(&where), sizeof where) != 0 ||
        listen(listener, 64) != 0)
        giveUp("listen");
    return listener;
}

class Relay
{
public:
    Relay(int port, int targetPort, nanoseconds roundTrip, double bytesPerSecond)
        : m_listener(listenOn(port)),
          m_target(address(targetPort)),
          m_roundTrip(roundTrip),
          m_up(roundTrip / 2, bytesPerSecond),
          m_down(roundTrip / 2, bytesPerSecond)
    {
    }

    [[noreturn]] void run()
    {
        for (;;) {
            wait();
            const auto now = Clock::now();
            for (Connection &connection : m_connections) {
                for (Flow *flow : {&connection.up, &connection.down}) {
                    if (flow->mayRead(now))
                        flow->read(now);
                    flow->write(now);
                }
            }
            m_connections.remove_if([](const Connection &connection) {
                const bool isOver = connection.up.isOver && connection.down.isOver;
                if (isOver) {
                    close(connection.up.from);
                    close(connection.up.to);
                }
                return isOver;
            });
        }
    }

private:
    // Until something can be read or written or is due.
    void wait()
    {
        const auto now = Clock::now();
        auto wakeUp = now + std::chrono::seconds(1);
        std::vector<pollfd> sockets{{m_listener, POLLIN, 0}};
        for (const Connection &connection : m_connections) {
            for (const Flow *flow : {&connection.up, &connection.down}) {
                if (flow->mayRead(now))
                    sockets.push_back({flow->from, POLLIN, 0});
                else if (!flow->isSenderDone && flow->waiting < MostWaiting)
                    wakeUp = std::min(wakeUp, std::max(flow->begins, flow->wire->freeAgain()));
                if (flow->isOver || flow->pieces.empty())
                    continue;
                if (flow->pieces.front().due <= now)
                    sockets.push_back({flow->to, POLLOUT, 0});
                else
                    wakeUp = std::min(wakeUp, flow->pieces.front().due);
            }
        }
        const auto left = std::max(nanoseconds(wakeUp - now), nanoseconds(0));
        const timespec limit{left.count() / 1'000'000'000, left.count() % 1'000'000'000};
        if (ppoll(sockets.data(), sockets.size(), &limit, nullptr) < 0 && errno != EINTR)
            giveUp("ppoll");
        if (sockets.front().revents & POLLIN)
            accept();
    }

    void accept()
    {
        const int client = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0)
            return;
        const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (connect(server, reinterpret_cast<const sockaddr *>(&m_target), sizeof m_target) != 0) {
            std::perror("connect");
            close(server);
            close(client);
            return;
        }
        sendAtOnce(client);
        sendAtOnce(server);
        const auto now = Clock::now();
        m_connections.push_back(
            {{client, server, &m_up, now + m_roundTrip}, {server, client, &m_down, now}});
    }

    const int m_listener;
    const sockaddr_in m_target;
    const nanoseconds m_roundTrip;
    Wire m_up;
    Wire m_down;
    std::list<Connection> m_connections;
};

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 5) {
        std::fputs("usage: quellmoor-relay PORT TARGET_PORT ROUND_TRIP_MS MEGABITS\n", stderr);
        return 64;
    }
    constexpr double bytesPerMegaBit = 1e6 / 8;
    Relay relay(std::atoi(argv[1]), std::atoi(argv[2]),
                nanoseconds(int64_t(std::atof(argv[3]) * 1e6)),
                std::atof(argv[4]) * bytesPerMegaBit);
    std::puts("ready");
    std::fflush(stdout);
    relay.run();
}
