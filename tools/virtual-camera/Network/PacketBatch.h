// Up to 64 GVSP packets that go to the kernel in one call. Payload is not copied: it must stay until Send has
// returned.
#ifndef VCAM_NETWORK_PACKETBATCH_H
#define VCAM_NETWORK_PACKETBATCH_H

#include "Protocol/GvspCodec.h"

#include <array>
#include <functional>
#include <sys/socket.h>
#include <sys/uio.h>

namespace vcam {

enum class SendResult : uint8_t { Sent, TooBig, Failed };

class PacketBatch {
public:
    static constexpr uint32_t kMost = 64;
    static constexpr size_t kHead = 64; // room for the longest leader or trailer

    // Head of the next packet, to be written by the caller, who then calls Add.
    uint8_t* NextHead() { return m_heads[m_count].data(); }
    void Add(size_t headLength, const uint8_t* payload, size_t payloadLength);
    void DropLast() { --m_count; }
    bool Full() const { return m_count == kMost; }
    uint32_t Count() const { return m_count; }
    size_t BytesOf(uint32_t index) const { return m_vectors[index][0].iov_len + m_vectors[index][1].iov_len; }

    // Sends all on a connected socket, waiting while its buffer is full, tells the fate of each, and empties
    // the batch.
    void Send(int socket, const std::function<void(uint32_t index, SendResult result)>& tell);

private:
    std::array<std::array<uint8_t, kHead>, kMost> m_heads{};
    std::array<std::array<iovec, 2>, kMost> m_vectors{};
    std::array<mmsghdr, kMost> m_messages{};
    uint32_t m_count = 0;
};

} // namespace vcam

#endif
