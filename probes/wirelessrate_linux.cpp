#include "probes/wirelessrate_linux.h"

#include "probes/wirelessrate.h"

#include <linux/genetlink.h>
#include <linux/netlink.h>
#include <linux/nl80211.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cstring>

namespace {

/// One conversation with the kernel about generic netlink.
class GenericNetlink final {
public:
    GenericNetlink() : m_socket(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_GENERIC))
    {
        const timeval limit{1, 0};
        if (m_socket >= 0)
            setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    }
    ~GenericNetlink()
    {
        if (m_socket >= 0)
            close(m_socket);
    }
    GenericNetlink(const GenericNetlink &) = delete;
    GenericNetlink &operator=(const GenericNetlink &) = delete;

    /// Sends a request that has one attribute; the attributes of the first message of the answer.
    std::optional<QByteArray> ask(quint16 family, quint8 command, quint16 flags, quint16 attribute,
                                  const QByteArray &content)
    {
        constexpr int attributeHeadSize = 4; // NLA_HDRLEN has a sign that its use here does not allow
        nlattr attributeHead{};
        static_assert(sizeof(attributeHead) == attributeHeadSize);
        attributeHead.nla_len = static_cast<quint16>(attributeHeadSize + content.size());
        attributeHead.nla_type = attribute;
        genlmsghdr commandHead{};
        commandHead.cmd = command;
        commandHead.version = 1;
        QByteArray body;
        append(body, &commandHead, GENL_HDRLEN);
        append(body, &attributeHead, attributeHeadSize);
        body += content;
        body += QByteArray(NLA_ALIGN(content.size()) - content.size(), '\0');
        nlmsghdr head{};
        head.nlmsg_len = static_cast<quint32>(NLMSG_HDRLEN + body.size());
        head.nlmsg_type = family;
        head.nlmsg_flags = static_cast<quint16>(NLM_F_REQUEST | flags);
        QByteArray request;
        append(request, &head, NLMSG_HDRLEN);
        request += body;
        if (m_socket < 0 || send(m_socket, request.constData(), static_cast<std::size_t>(request.size()), 0) < 0)
            return std::nullopt;
        return answer(family);
    }

private:
    static void append(QByteArray &bytes, const void *from, int size)
    {
        bytes.append(static_cast<const char *>(from), size);
    }

    std::optional<QByteArray> answer(quint16 family)
    {
        std::array<char, 16384> buffer{};
        const ssize_t received = recv(m_socket, buffer.data(), buffer.size(), 0);
        constexpr int headSize = NLMSG_HDRLEN + GENL_HDRLEN;
        nlmsghdr head{};
        if (received < headSize)
            return std::nullopt;
        std::memcpy(&head, buffer.data(), sizeof(head));
        // An error and an empty list come as messages of other types.
        if (head.nlmsg_type != family || head.nlmsg_len < headSize || head.nlmsg_len > static_cast<quint64>(received))
            return std::nullopt;
        return QByteArray(buffer.data() + headSize, static_cast<int>(head.nlmsg_len) - headSize);
    }

    int m_socket;
};

} // namespace

std::optional<int> wirelessRateMbps(unsigned interfaceIndex)
{
    const std::optional<QByteArray> family = GenericNetlink().ask(
        GENL_ID_CTRL, CTRL_CMD_GETFAMILY, 0, CTRL_ATTR_FAMILY_NAME, QByteArray("nl80211", sizeof("nl80211")));
    const std::optional<QByteArray> id = family ? netlinkAttribute(*family, CTRL_ATTR_FAMILY_ID) : std::nullopt;
    quint16 number = 0;
    if (!id || id->size() != int(sizeof(number)))
        return std::nullopt;
    std::memcpy(&number, id->constData(), sizeof(number));
    const quint32 index = interfaceIndex;
    const std::optional<QByteArray> station =
        GenericNetlink().ask(number, NL80211_CMD_GET_STATION, NLM_F_DUMP, NL80211_ATTR_IFINDEX,
                             QByteArray(reinterpret_cast<const char *>(&index), sizeof(index)));
    return station ? stationRateMbps(*station) : std::nullopt;
}
