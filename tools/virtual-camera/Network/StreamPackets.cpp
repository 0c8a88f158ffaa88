// The part of StreamSender that puts packets on the wire, or doesn't, and keeps the books about it.
#include "Device/BootstrapRegisters.h"
#include "Network/PacketBatch.h"
#include "Network/StreamSender.h"

#include <algorithm>
#include <cerrno>

namespace vcam {

namespace {
constexpr size_t kIpAndUdp = 28;
constexpr size_t kLossRecords = 1024;
enum Salt : uint32_t { SaltLoss = 1, SaltDuplicate = 2, SaltReorder = 3, SaltResend = 16 };
} // namespace

bool StreamSender::Connect(const StreamSettings& settings) {
    const Peer wanted{settings.destination, settings.port};
    if (m_connected == wanted && m_connectedWhole == settings.doNotFragment)
        return true;
    const int discover = settings.doNotFragment ? IP_PMTUDISC_DO : IP_PMTUDISC_DONT;
    setsockopt(m_socket.Get(), IPPROTO_IP, IP_MTU_DISCOVER, &discover, sizeof discover);
    const sockaddr_in address = ToSockaddr(wanted);
    if (connect(m_socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        m_connected = {};
        return false;
    }
    m_connected = wanted;
    m_connectedWhole = settings.doNotFragment;
    return true;
}

// Writes packet `packet` of the frame into the batch.
static void AddPacket(PacketBatch& batch, const Bytes& data, const FrameDescription& description,
                      uint16_t blockId, uint32_t packets, uint32_t packetPayload, uint32_t packet,
                      Status status) {
    uint8_t* head = batch.NextHead();
    if (packet == 0) {
        batch.Add(PutLeader(head, status, blockId, description), nullptr, 0);
    } else if (packet == packets - 1) {
        batch.Add(PutTrailer(head, status, blockId, packet, description), nullptr, 0);
    } else {
        PutGvspHeader(head, status, blockId, PacketFormat::Payload, packet);
        const size_t from = size_t{packet - 1} * packetPayload;
        batch.Add(kGvspHeaderLength, data.data() + from, std::min<size_t>(packetPayload, data.size() - from));
    }
}

// First attempts at packets `first` to `first + count - 1`.
void StreamSender::SendRange(Slot& slot, uint32_t first, uint32_t count, const Faults& faults) {
    std::vector<uint32_t> order;
    order.reserve(count + 1);
    uint32_t dropped = 0;
    for (uint32_t packet = first; packet < first + count; ++packet) {
        const bool edge = packet == 0 || packet == slot.packets - 1;
        const bool spared = edge && faults.losePayloadOnly;
        if (faults.silent || faults.streamSilent ||
            (!spared && Draw(faults.lossPerMille, slot.blockId, packet, SaltLoss)))
            ++dropped;
        else
            order.push_back(packet);
    }
    uint32_t reordered = 0;
    for (size_t i = 0; i + 1 < order.size(); ++i) {
        if (Draw(faults.reorderPerMille, slot.blockId, order[i], SaltReorder)) {
            std::swap(order[i], order[i + 1]);
            ++reordered;
            ++i;
        }
    }
    slot.attempted = first + count;
    if (dropped > 0) {
        m_counters.Add(&Counters::packetsDropped, dropped);
        CountMissing(slot, static_cast<int>(dropped));
    }
    if (reordered > 0)
        m_counters.Add(&Counters::packetsReordered, reordered);
    SendPackets(slot, order, Status::Success);

    std::vector<uint32_t> twice;
    for (const uint32_t packet : order) {
        if (Draw(faults.duplicatePerMille, slot.blockId, packet, SaltDuplicate))
            twice.push_back(packet);
    }
    if (!twice.empty()) {
        m_counters.Add(&Counters::packetsDuplicated, twice.size());
        SendPackets(slot, twice, Status::Success);
    }
}

void StreamSender::SendPackets(Slot& slot, const std::vector<uint32_t>& order, Status status) {
    const uint32_t mtu = m_model.GetConfig().mtu;
    size_t next = 0;
    while (next < order.size()) {
        std::array<uint32_t, PacketBatch::kMost> inBatch{};
        uint32_t swallowed = 0;
        for (; next < order.size() && !m_batch.Full(); ++next) {
            const uint32_t index = m_batch.Count();
            inBatch[index] = order[next];
            AddPacket(m_batch, slot.data, slot.description, slot.blockId, slot.packets, slot.packetPayload,
                      order[next], status);
            if (mtu != 0 && m_batch.BytesOf(index) + kIpAndUdp > mtu) {
                m_batch.DropLast();
                ++swallowed;
            }
        }
        uint32_t firstTime = 0;
        uint32_t again = 0;
        uint32_t tooBig = swallowed;
        uint32_t failed = 0;
        size_t bytes = 0;
        m_batch.Send(m_socket.Get(), [&](uint32_t index, SendResult result) {
            if (result == SendResult::TooBig) {
                ++tooBig;
            } else if (result == SendResult::Failed) {
                ++failed;
            } else {
                bytes += m_batch.BytesOf(index);
                std::vector<bool>::reference onWire = slot.onWire[inBatch[index]];
                ++(onWire ? again : firstTime);
                onWire = true;
            }
        });
        m_counters.Update([&](Counters& counters) {
            counters.packetsSent += firstTime;
            counters.packetsTooBig += tooBig;
            counters.sendErrors += failed;
            counters.bytesSent += bytes;
            if (status == Status::PacketResent)
                counters.packetsResent += firstTime + again;
        });
        // Whatever did not leave at its first turn is missing too, until it is sent again.
        if (status == Status::PacketResent)
            CountMissing(slot, -static_cast<int>(firstTime));
        else if (tooBig + failed > 0)
            CountMissing(slot, static_cast<int>(tooBig + failed));
    }
}

void StreamSender::CountMissing(Slot& slot, int change) {
    if (change == 0)
        return;
    const bool was = slot.missing > 0;
    slot.missing = static_cast<uint32_t>(static_cast<int>(slot.missing) + change);
    const bool is = slot.missing > 0;
    m_counters.Update([&](Counters& counters) {
        counters.packetsMissing += static_cast<uint64_t>(int64_t{change});
        if (was != is)
            counters.framesMissingPackets += is ? 1 : static_cast<uint64_t>(-1);
    });
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto known = std::find_if(m_lossy.rbegin(), m_lossy.rend(),
                                    [&](const LossRecord& record) { return record.serial == slot.serial; });
    if (known != m_lossy.rend()) {
        known->loss.missing = slot.missing;
        return;
    }
    m_lossy.push_back({slot.serial, {slot.blockId, slot.packets, slot.missing}});
    if (m_lossy.size() > kLossRecords)
        m_lossy.pop_front();
}

void StreamSender::ServeResends(std::unique_lock<std::mutex>& lock) {
    const ResendRequest request = m_resends.front();
    m_resends.pop_front();
    lock.unlock();
    Resend(request);
    m_counters.Add(&Counters::resendsServed);
    lock.lock();
}

void StreamSender::Resend(const ResendRequest& request) {
    const Faults faults = m_faults.Get();
    if (faults.silent || faults.streamSilent || faults.ignoreResend || request.channel != 0)
        return;
    const auto found = std::find_if(m_ring.begin(), m_ring.end(), [&](const Slot& slot) {
        return slot.live && slot.blockId == request.blockId;
    });
    if (found == m_ring.end()) {
        SendUnavailable(static_cast<uint16_t>(request.blockId), request.firstPacket, request.lastPacket);
        return;
    }
    Slot& slot = *found;
    // Packets whose first turn is still to come need no second one. "To the end" is asked for with a last
    // packet beyond it.
    const uint32_t end = std::min({slot.attempted, slot.packets, request.lastPacket + 1});
    std::vector<uint32_t> order;
    uint32_t dropped = 0;
    for (uint32_t packet = request.firstPacket; packet < end; ++packet) {
        if (faults.resendsLoseToo &&
            Draw(faults.lossPerMille, slot.blockId, packet, SaltResend + static_cast<uint32_t>(++m_attempts)))
            ++dropped;
        else
            order.push_back(packet);
    }
    m_counters.Update([&](Counters& counters) {
        counters.packetsRequested += order.size() + dropped;
        counters.resendsDropped += dropped;
    });
    SendPackets(slot, order, Status::PacketResent);
}

void StreamSender::SendUnavailable(uint16_t blockId, uint32_t first, uint32_t last) {
    constexpr uint32_t kMostAnswers = 1024; // a request may span millions
    if (last < first || m_connected.port == 0)
        return;
    const uint32_t count = std::min(last - first + 1, kMostAnswers);
    m_counters.Update([&](Counters& counters) {
        counters.packetsRequested += count;
        counters.packetsUnavailable += count;
    });
    for (uint32_t packet = first; packet < first + count; ++packet) {
        PutGvspHeader(m_batch.NextHead(), Status::PacketUnavailable, blockId, PacketFormat::Payload, packet);
        m_batch.Add(kGvspHeaderLength, nullptr, 0);
        if (m_batch.Full() || packet + 1 == first + count)
            m_batch.Send(m_socket.Get(), [](uint32_t, SendResult) {});
    }
}

void StreamSender::SendTestPacket() {
    const StreamSettings settings = m_model.Settings();
    const uint32_t mtu = m_model.GetConfig().mtu;
    if (settings.port == 0 || settings.destination == 0 || m_faults.Get().silent || !Connect(settings))
        return;
    Bytes packet(settings.packetSize - kIpAndUdp);
    PutGvspHeader(packet.data(), Status::Success, 0, PacketFormat::Payload, 0);
    for (size_t at = kGvspHeaderLength; at < packet.size(); ++at)
        packet[at] = static_cast<uint8_t>(at);
    bool tooBig = mtu != 0 && settings.packetSize > mtu;
    bool sent = false;
    for (int attempt = 0; attempt < 2 && !sent && !tooBig;
         ++attempt) { // the first may report an earlier refusal
        sent = send(m_socket.Get(), packet.data(), packet.size(), 0) >= 0;
        tooBig = !sent && errno == EMSGSIZE;
    }
    m_counters.Add(tooBig ? &Counters::packetsTooBig : sent ? &Counters::testPackets : &Counters::sendErrors);
}

} // namespace vcam
