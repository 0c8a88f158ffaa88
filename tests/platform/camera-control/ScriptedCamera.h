// A GVCP peer that a test scripts byte by byte, for what no well-behaved camera does. It shares no code with
// the client under test and serves one UDP address on a thread of its own.
#ifndef KOLT_TESTS_SCRIPTED_CAMERA_H
#define KOLT_TESTS_SCRIPTED_CAMERA_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kolt::test {

using Bytes = std::vector<std::uint8_t>;

struct ScriptedIdentity {
    std::uint64_t mac = 0x020000000001;
    std::string ip = "127.0.0.1"; // as told in the record
    std::string mask = "255.0.0.0";
    std::string gateway = "0.0.0.0";
    std::string manufacturer = "Scripted";
    std::string model = "Model-1";
    std::string version = "1.2.3";
    std::string info = "info";
    std::string serial = "S0001";
    std::string userName = "left";
    std::uint32_t ipOptions = 0x7;
    std::uint32_t ipCurrent = 0x5;
};

// The 248 bytes that a camera tells of itself, written from the published register map.
Bytes discoveryPayload(const ScriptedIdentity& identity);

// An acknowledge: status, code, payload, id.
Bytes acknowledge(std::uint16_t status, std::uint16_t code, const Bytes& payload, std::uint16_t id);

std::uint16_t word16(const Bytes& bytes, std::size_t offset);
std::uint32_t word32(const Bytes& bytes, std::size_t offset);
void append32(Bytes& bytes, std::uint32_t value);

class ScriptedCamera {
public:
    // What to send back for a datagram, each element a datagram of its own.
    using Script = std::function<std::vector<Bytes>(const Bytes& request)>;

    // Listens at address:port in the namespace of the calling thread. "0.0.0.0" also hears broadcasts;
    // interfaceName confines it to one card. Port 0: any free one.
    ScriptedCamera(const std::string& address, std::uint16_t port, Script script,
                   const std::string& interfaceName = "");
    ~ScriptedCamera();
    ScriptedCamera(const ScriptedCamera&) = delete;
    ScriptedCamera& operator=(const ScriptedCamera&) = delete;

    std::uint16_t port() const { return port_; }
    // Requests received so far, and how many of one command code.
    unsigned received() const { return received_; }
    unsigned received(std::uint16_t command) const;
    // Answers leave from another socket (another source port) from now on.
    void answerFromForeignPort(bool on) { foreign_ = on; }
    // Answers go to 255.255.255.255 instead of back to the asker.
    void answerByBroadcast(bool on) { broadcast_ = on; }

    // Time between the answers to one request.
    void pauseBetweenAnswers(unsigned milliseconds) { pauseMs_ = milliseconds; }

    // An obedient camera: discovery, registers from the map (others give "invalid address"), memory from the
    // map of blocks.
    static Script obedient(const ScriptedIdentity& identity,
                           std::map<std::uint32_t, std::uint32_t> registers = {},
                           std::map<std::uint32_t, Bytes> memory = {});

private:
    void serve();

    int fd_ = -1;
    int foreignFd_ = -1;
    int stopFd_ = -1;
    std::uint16_t port_ = 0;
    Script script_;
    std::atomic<unsigned> received_{0};
    std::atomic<unsigned> pauseMs_{0};
    std::atomic<bool> foreign_{false};
    std::atomic<bool> broadcast_{false};
    mutable std::mutex mutex_; // guards perCommand_
    std::map<std::uint16_t, unsigned> perCommand_;
    std::thread thread_;
};

} // namespace kolt::test

#endif
