#include "platform/linux/Routes.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace {

// A name server of the internet's root: no network of the machine's own leads there, only a route
// to the internet as a whole. Nothing is sent to it.
constexpr std::array<unsigned char, 4> FarAway4{198, 41, 0, 4};
constexpr std::array<unsigned char, 16> FarAway6{0x20, 0x01, 0x05, 0x03, 0xba, 0x3e, 0, 0,
                                                 0,    0,    0,    0,    0,    2,    0, 0x30};
constexpr unsigned Groups =
    RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_IFADDR | RTMGRP_IPV6_ROUTE;

using Buffer = std::array<char, 16384>;

class NetlinkSocket
{
public:
    explicit NetlinkSocket(unsigned groups)
        : m_descriptor(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE))
    {
        sockaddr_nl address{};
        address.nl_family = AF_NETLINK;
        address.nl_groups = groups;
        if (m_descriptor >= 0 &&
            bind(m_descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
            close(std::exchange(m_descriptor, -1));
    }
    NetlinkSocket(const NetlinkSocket &) = delete;
    NetlinkSocket &operator=(const NetlinkSocket &) = delete;
    ~NetlinkSocket()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }

    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

// Asks for the route that the kernel would take to an address, as it stands in the routing table.
template<std::size_t Size>
struct RouteQuestion
{
    RouteQuestion(unsigned char family, const std::array<unsigned char, Size> &address)
    {
        header.nlmsg_len = sizeof *this;
        header.nlmsg_type = RTM_GETROUTE;
        header.nlmsg_flags = NLM_F_REQUEST;
        route.rtm_family = family;
        route.rtm_dst_len = Size * 8;
        route.rtm_flags = RTM_F_FIB_MATCH;
        attribute.rta_len = RTA_LENGTH(Size);
        attribute.rta_type = RTA_DST;
        destination = address;
    }

    nlmsghdr header{};
    rtmsg route{};
    rtattr attribute{};
    std::array<unsigned char, Size> destination{};
};

// The kernel has answered before send() returns. A table without such a route is an error there.
std::optional<bool> read(const NetlinkSocket &socket)
{
    alignas(nlmsghdr) Buffer buffer;
    const ssize_t size = recv(socket.descriptor(), buffer.data(), buffer.size(), 0);
    // Not const, since the macro for what follows it casts that away.
    auto *header = reinterpret_cast<nlmsghdr *>(buffer.data());
    if (size < ssize_t(sizeof *header) || !NLMSG_OK(header, size_t(size)))
        return std::nullopt;
    if (header->nlmsg_type == NLMSG_ERROR)
        return false;
    if (header->nlmsg_type != RTM_NEWROUTE || header->nlmsg_len < NLMSG_LENGTH(sizeof(rtmsg)))
        return std::nullopt;
    const auto *route = static_cast<const rtmsg *>(NLMSG_DATA(header));
    return route->rtm_type == RTN_UNICAST && !(route->rtm_flags & (RTNH_F_DEAD | RTNH_F_LINKDOWN));
}

template<std::size_t Size>
std::optional<bool> hasRouteTo(unsigned char family, const std::array<unsigned char, Size> &address)
{
    const NetlinkSocket socket(0);
    const RouteQuestion<Size> question(family, address);
    if (socket.descriptor() < 0 ||
        send(socket.descriptor(), &question, sizeof question, 0) != ssize_t(sizeof question))
        return std::nullopt;
    return read(socket);
}

class KernelRoutes final : public Routes
{
public:
    std::optional<bool> leadOut() override
    {
        const auto first = hasRouteTo(AF_INET, FarAway4);
        const auto second = hasRouteTo(AF_INET6, FarAway6);
        if (!first && !second)
            return std::nullopt;
        return first.value_or(false) || second.value_or(false);
    }

    int changes() const override { return m_changes.descriptor(); }

    // What it says does not matter, and neither does what was lost when it came too fast.
    void forgetChanges() override
    {
        Buffer buffer;
        while (recv(changes(), buffer.data(), buffer.size(), 0) > 0 || errno == EINTR ||
               errno == ENOBUFS) {
        }
    }

private:
    const NetlinkSocket m_changes{Groups};
};

} // namespace

std::unique_ptr<Routes> makeRoutes() { return std::make_unique<KernelRoutes>(); }
