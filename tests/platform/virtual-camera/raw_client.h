// GVCP and GVSP byte by byte, written out here and not shared with the camera, so that both can't be wrong in
// the same way.
#ifndef KOLT_TESTS_VCAM_RAW_CLIENT_H
#define KOLT_TESTS_VCAM_RAW_CLIENT_H

#include "eventually.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kolt::test {

using Bytes = std::vector<uint8_t>;
using std::chrono::milliseconds;

constexpr uint16_t kOk = 0x0000;
constexpr uint16_t kNotImplemented = 0x8001;
constexpr uint16_t kInvalidParameter = 0x8002;
constexpr uint16_t kInvalidAddress = 0x8003;
constexpr uint16_t kWriteProtect = 0x8004;
constexpr uint16_t kBadAlignment = 0x8005;
constexpr uint16_t kAccessDenied = 0x8006;
constexpr uint16_t kInvalidHeader = 0x800E;

uint16_t Be16(const Bytes& bytes, size_t at);
uint32_t Be32(const Bytes& bytes, size_t at);
uint64_t Be64(const Bytes& bytes, size_t at);
void Push16(Bytes& bytes, uint32_t value);
void Push32(Bytes& bytes, uint32_t value);
uint32_t Ip(const std::string& dotted);

struct Answer {
    uint16_t status = 0xFFFF; // nothing came
    uint16_t code = 0;
    uint16_t id = 0;
    Bytes payload;
    uint32_t from = 0; // address
    bool Came() const { return status != 0xFFFF || code != 0; }
};

// One UDP socket of its own.
class RawClient {
public:
    // Bound to `local` ("" for any), and to an interface when one is named.
    explicit RawClient(const std::string& camera, const std::string& local = "",
                       const std::string& interface = "");
    ~RawClient();
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    uint16_t Port() const;
    void SendTo(const std::string& address, const Bytes& datagram);
    void Send(const Bytes& datagram) { SendTo(m_camera, datagram); }
    std::optional<Answer> Receive(milliseconds timeout);
    std::optional<Bytes> ReceiveBytes(milliseconds timeout, uint32_t* from = nullptr);

    // Command with a fresh id, and its answer; PENDING_ACKs are counted and waited through.
    Answer Ask(uint16_t code, const Bytes& payload, uint8_t flags = 0x01,
               milliseconds timeout = milliseconds(10000));
    Answer ReadRegisters(const std::vector<uint32_t>& addresses);
    Answer WriteRegisters(const std::vector<std::pair<uint32_t, uint32_t>>& writes);
    Answer ReadMemory(uint32_t address, uint16_t count);
    Answer WriteMemory(uint32_t address, const Bytes& data);
    uint32_t Read(uint32_t address); // fails the test unless answered
    uint64_t Read64(uint32_t address);
    uint16_t Write(uint32_t address, uint32_t value); // the status
    uint16_t TakeControl(uint32_t value = 2) { return Write(0x0A00, value); }
    void RequestResend(uint16_t block, uint32_t first, uint32_t last);
    unsigned Pendings() const { return m_pendings; }

    static Bytes Command(uint16_t code, const Bytes& payload, uint16_t id, uint8_t flags = 0x01);
    static Bytes ForceIp(const std::vector<uint8_t>& mac, const std::string& address, const std::string& mask,
                         const std::string& gateway);

private:
    std::string m_camera;
    int m_socket = -1;
    uint16_t m_nextId = 1;
    unsigned m_pendings = 0;
};

// Takes the packets of a stream and sorts them into frames.
struct RawFrame {
    Bytes leader, trailer;             // whole packets, empty: lost
    std::map<uint32_t, Bytes> payload; // by packet id, without the header
    uint32_t trailerId = 0;
    unsigned copies = 0;   // packets that came more than once
    unsigned resent = 0;   // with the status of a resent packet
    unsigned disorder = 0; // packets with a lower id than the one before
    std::set<uint32_t> unavailable;
    size_t Packets() const { return payload.size() + (leader.empty() ? 0 : 1) + (trailer.empty() ? 0 : 1); }
};

class RawReceiver {
public:
    explicit RawReceiver(const std::string& address = "127.0.0.1");
    ~RawReceiver();
    RawReceiver(const RawReceiver&) = delete;
    RawReceiver& operator=(const RawReceiver&) = delete;
    uint16_t Port() const;
    std::optional<Bytes> Packet(milliseconds timeout);
    // Takes packets until none came for `quiet`, or `enough` says so.
    template<class Enough>
    void Collect(milliseconds quiet, Enough enough) {
        while (auto packet = Packet(quiet)) {
            Sort(*packet);
            if (enough())
                return;
        }
    }
    // Takes packets until `done`, and then those that are here already: a packet on loopback arrives as it is
    // sent.
    template<class Done>
    void CollectUntil(Done done) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        for (bool last = false; !last && std::chrono::steady_clock::now() < deadline;) {
            last = done();
            while (auto packet = Packet(milliseconds(last ? 0 : 5)))
                Sort(*packet);
        }
    }
    void Sort(const Bytes& packet);
    std::map<uint16_t, RawFrame> frames; // by block id
    unsigned testPackets = 0;

private:
    int m_socket = -1;
    uint16_t m_lastBlock = 0;
    uint32_t m_lastPacket = 0;
};

// Control, stream channel to `receiver`, packet size.
void OpenChannel(RawClient& client, const RawReceiver& receiver, uint32_t packetSize = 1500);

} // namespace kolt::test

#endif
