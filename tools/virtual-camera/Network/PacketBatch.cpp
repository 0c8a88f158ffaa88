#include "Network/PacketBatch.h"

#include <cerrno>
#include <poll.h>

namespace vcam {

void PacketBatch::Add(size_t headLength, const uint8_t* payload, size_t payloadLength) {
    m_vectors[m_count][0] = {m_heads[m_count].data(), headLength};
    m_vectors[m_count][1] = {const_cast<uint8_t*>(payload), payloadLength};
    mmsghdr& message = m_messages[m_count];
    message = {};
    message.msg_hdr.msg_iov = m_vectors[m_count].data();
    message.msg_hdr.msg_iovlen = payloadLength > 0 ? 2 : 1;
    ++m_count;
}

void PacketBatch::Send(int socket, const std::function<void(uint32_t index, SendResult result)>& tell) {
    constexpr int kMostRefusals = 20;
    constexpr int kFullBufferMs = 10;
    uint32_t next = 0;
    int refusals = 0;
    while (next < m_count) {
        const int sent = sendmmsg(socket, m_messages.data() + next, m_count - next, 0);
        if (sent > 0) {
            for (int i = 0; i < sent; ++i)
                tell(next++, SendResult::Sent);
            refusals = 0;
            continue;
        }
        const int error = errno;
        if (error == EINTR)
            continue;
        // "Refused" is the report of an earlier packet that found nobody listening; this one has not been
        // tried yet.
        if ((error == EAGAIN || error == ENOBUFS || error == ECONNREFUSED) && ++refusals < kMostRefusals) {
            pollfd writable{socket, POLLOUT, 0};
            if (error != ECONNREFUSED)
                poll(&writable, 1, kFullBufferMs);
            continue;
        }
        tell(next++, error == EMSGSIZE ? SendResult::TooBig : SendResult::Failed);
        refusals = 0;
    }
    m_count = 0;
}

} // namespace vcam
