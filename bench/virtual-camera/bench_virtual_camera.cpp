// How fast the virtual camera sends, beside a plain loop of sendmmsg with the same packets; how steadily it
// keeps a frame rate; and what an idle one costs.
#include "Device/BootstrapRegisters.h"
#include "Device/FeatureRegisters.h"
#include "Network/Socket.h"
#include "VirtualCamera.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using namespace vcam;

constexpr uint32_t kLoopback = 0x7F000001;
constexpr const char* kCamera = "127.0.0.91";
constexpr size_t kFrame = size_t{1920} * 1080;
constexpr auto kRun = std::chrono::milliseconds(1500);
constexpr int kRounds = 5;

double Seconds(Clock::duration d) {
    return std::chrono::duration<double>(d).count();
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double CpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Takes packets from a port and throws them away, so that the sender's work ends in a reader as it would for
// a client.
class Sink {
public:
    Sink() : m_socket(OpenUdp(kLoopback, 0, "", false)), m_end(eventfd(0, EFD_CLOEXEC)) {
        const int size = 8 << 20;
        setsockopt(m_socket.Get(), SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
        m_thread = std::thread([this] { Run(); });
    }
    ~Sink() {
        const uint64_t one = 1;
        if (write(m_end.Get(), &one, sizeof one) < 0)
            std::perror("write");
        m_thread.join();
    }
    uint16_t Port() const { return PortOf(m_socket.Get()); }
    std::vector<Clock::time_point> TakeLeaders() {
        std::vector<Clock::time_point> taken;
        m_leaders.swap(taken);
        return taken;
    }

private:
    void Run() {
        constexpr unsigned kBatch = 64;
        std::vector<std::array<uint8_t, 16>> heads(kBatch);
        std::array<iovec, kBatch> vectors{};
        std::array<mmsghdr, kBatch> messages{};
        for (unsigned i = 0; i < kBatch; ++i) {
            vectors[i] = {heads[i].data(), heads[i].size()}; // the rest of a packet is cut off, not copied
            messages[i].msg_hdr.msg_iov = &vectors[i];
            messages[i].msg_hdr.msg_iovlen = 1;
        }
        std::array<pollfd, 2> watched = {pollfd{m_end.Get(), POLLIN, 0}, pollfd{m_socket.Get(), POLLIN, 0}};
        while (poll(watched.data(), watched.size(), -1) >= 0 && watched[0].revents == 0) {
            const int got = recvmmsg(m_socket.Get(), messages.data(), kBatch, MSG_DONTWAIT, nullptr);
            const Clock::time_point now = Clock::now();
            for (int i = 0; i < got; ++i) {
                if (heads[static_cast<size_t>(i)][4] == 1)
                    m_leaders.push_back(now);
            }
        }
    }

    Descriptor m_socket;
    Descriptor m_end;
    std::vector<Clock::time_point> m_leaders; // read only when no camera sends
    std::thread m_thread;
};

double PlainSendmmsg(uint16_t port, size_t packetSize) {
    const Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const sockaddr_in to = ToSockaddr({kLoopback, port});
    if (connect(socket.Get(), reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0)
        return 0;
    const std::vector<uint8_t> frames(kFrame * 32);
    const size_t payload = packetSize - 36;
    constexpr size_t kBatch = 64;
    std::array<std::array<uint8_t, 8>, kBatch> heads{};
    std::array<std::array<iovec, 2>, kBatch> vectors{};
    std::array<mmsghdr, kBatch> messages{};
    double bytes = 0;
    size_t at = 0;
    const Clock::time_point start = Clock::now();
    while (Clock::now() - start < kRun) {
        for (size_t i = 0; i < kBatch; ++i) {
            if (at + payload > frames.size())
                at = 0;
            vectors[i][0] = {heads[i].data(), heads[i].size()};
            vectors[i][1] = {const_cast<uint8_t*>(frames.data()) + at, payload};
            messages[i].msg_hdr.msg_iov = vectors[i].data();
            messages[i].msg_hdr.msg_iovlen = 2;
            at += payload;
        }
        const int sent = sendmmsg(socket.Get(), messages.data(), kBatch, 0);
        bytes += std::max(0, sent) * static_cast<double>(payload + 8);
    }
    return bytes / Seconds(Clock::now() - start) / 1e6;
}

void Open(VirtualCamera& camera, uint16_t port, uint32_t packetSize) {
    camera.WriteRegister(bootstrap::kStreamDestination, kLoopback);
    camera.WriteRegister(bootstrap::kStreamHostPort, port);
    camera.WriteRegister(bootstrap::kStreamPacketSize, packetSize);
    camera.WriteRegister(feature::kAcquisitionStart, 1);
}

double Camera(uint16_t port, uint32_t packetSize) {
    Config config;
    config.address = kCamera;
    config.unpaced = true;
    VirtualCamera camera(config);
    camera.Start();
    Open(camera, port, packetSize);
    while (camera.GetCounters().framesCompleted < 40) // each picture of the ring has been painted
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const Clock::time_point start = Clock::now();
    const uint64_t before = camera.GetCounters().bytesSent;
    std::this_thread::sleep_for(kRun);
    const double bytes = static_cast<double>(camera.GetCounters().bytesSent - before);
    return bytes / Seconds(Clock::now() - start) / 1e6;
}

void Throughput() {
    Sink sink;
    std::printf("%-12s %16s %16s %8s\n", "packet size", "camera MB/s", "sendmmsg MB/s", "ratio");
    for (const uint32_t packetSize : {1500u, 9000u}) {
        std::vector<double> camera;
        std::vector<double> plain;
        for (int round = 0; round < kRounds; ++round) {
            plain.push_back(PlainSendmmsg(sink.Port(), packetSize));
            camera.push_back(Camera(sink.Port(), packetSize));
        }
        std::printf("%-12u %16.0f %16.0f %8.2f\n", packetSize, Median(camera), Median(plain),
                    Median(camera) / Median(plain));
    }
}

void Pacing() {
    std::printf("\n%-12s %10s %16s %16s %10s\n", "asked fps", "got fps", "median off, us", "worst off, us",
                "CPU %");
    for (const double rate : {30.0, 120.0}) {
        Sink sink;
        Config config;
        config.address = kCamera;
        config.frameRate = rate;
        config.sensorWidth = 640;
        config.sensorHeight = 480;
        VirtualCamera camera(config);
        camera.Start();
        Open(camera, sink.Port(), 9000);
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const double cpu = CpuSeconds();
        std::this_thread::sleep_for(std::chrono::seconds(3));
        const double used = (CpuSeconds() - cpu) / 3;
        camera.Stop();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        const auto leaders = sink.TakeLeaders();
        std::vector<double> off;
        for (size_t i = 1; i < leaders.size(); ++i)
            off.push_back(std::abs(Seconds(leaders[i] - leaders[i - 1]) - 1 / rate) * 1e6);
        const double got =
            static_cast<double>(leaders.size() - 1) / Seconds(leaders.back() - leaders.front());
        std::printf("%-12.0f %10.3f %16.1f %16.1f %10.2f\n", rate, got, Median(off),
                    *std::max_element(off.begin(), off.end()), used * 100);
    }
}

void Idle() {
    Config config;
    config.address = kCamera;
    VirtualCamera camera(config);
    camera.Start();
    const double before = CpuSeconds();
    std::this_thread::sleep_for(std::chrono::seconds(2));
    std::printf("\nidle camera: %.4f %% of a core\n", (CpuSeconds() - before) / 2 * 100);
}

} // namespace

int main() {
    Throughput();
    Pacing();
    Idle();
    return 0;
}
