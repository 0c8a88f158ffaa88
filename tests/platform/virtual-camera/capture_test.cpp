// tshark takes the camera's packets apart, independently of all code here, and finds none malformed.
#include "Device/FeatureRegisters.h"
#include "VirtualCamera.h"
#include "arv_client.h"
#include "raw_client.h"
#include "support/ChildProcess.h"
#include "support/NetworkNamespace.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <unistd.h>

namespace {

using namespace kolt::test;
using vcam::VirtualCamera;
namespace feature = vcam::feature;

constexpr const char* kCamera = "127.0.0.11";

// Captures UDP on "lo" of its own network while something happens there.
class Capture {
public:
    Capture() {
        const NamespaceScope scope(network);
        file =
            std::filesystem::temp_directory_path() / ("vcam-capture-" + std::to_string(getpid()) + ".pcapng");
        tshark = std::make_unique<ChildProcess>(std::vector<std::string>{
            "tshark", "-q", "-i", "lo", "-B", "64", "-w", file.string(), "-f", "udp"});
        EXPECT_TRUE(tshark->waitForOutput("Capture started")) << tshark->output();
    }
    ~Capture() {
        tshark.reset();
        std::filesystem::remove(file);
    }
    // Ends the capture when all that was sent before is in the file.
    void Finish() {
        const std::string mark = "end of capture";
        network.call([&mark] {
            RawClient client("127.0.0.99");
            client.Send(Bytes(mark.begin(), mark.end()));
        });
        EXPECT_TRUE(Eventually([this, &mark] {
            std::ifstream stream(file, std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
            return bytes.find(mark) != std::string::npos;
        }));
        tshark->signal(SIGINT);
        EXPECT_TRUE(tshark->waitForExit());
    }
    // One line a packet, its fields as tshark names them; empty where the packet has no such field.
    std::vector<std::map<std::string, std::string>> Dissect(const std::vector<std::string>& fields) {
        std::vector<std::string> arguments = {"tshark", "-n", "-r", file.string(), "-T", "fields"};
        for (const uint16_t port : streamPorts)
            arguments.insert(arguments.end(), {"-d", "udp.port==" + std::to_string(port) + ",gvsp"});
        for (const std::string& field : fields)
            arguments.insert(arguments.end(), {"-e", field});
        const Finished finished = run(arguments);
        EXPECT_EQ(finished.exitCode, 0) << finished.output;
        std::vector<std::map<std::string, std::string>> packets;
        std::istringstream stream(finished.output);
        for (std::string line; std::getline(stream, line);) {
            if (line.rfind("Running as user", 0) == 0) // what it says to root
                continue;
            std::istringstream words(line);
            std::map<std::string, std::string> packet;
            for (const std::string& field : fields)
                std::getline(words, packet[field], '\t');
            packets.push_back(packet);
        }
        return packets;
    }

    NetworkNamespace network;
    std::filesystem::path file;
    std::unique_ptr<ChildProcess> tshark;
    std::vector<uint16_t> streamPorts;
};

vcam::Config CameraConfig() {
    vcam::Config config;
    config.address = kCamera;
    config.sensorWidth = 320;
    config.sensorHeight = 240;
    config.frameRate = 100;
    return config;
}

// Every kind of answer and packet that the camera can give.
void Exercise(VirtualCamera& camera, Capture& capture) {
    RawClient client(kCamera, "127.0.0.1", "lo");
    RawReceiver receiver;
    capture.streamPorts.push_back(receiver.Port());
    client.SendTo("255.255.255.255", RawClient::Command(0x0002, {}, 100, 0x11));
    EXPECT_TRUE(client.Receive(milliseconds(3000)));
    OpenChannel(client, receiver);
    EXPECT_EQ(client.ReadRegisters({0x0000, 0x0004, 0x0934}).status, kOk);
    EXPECT_EQ(client.ReadRegisters({0x0BAD0000}).status, kInvalidAddress);
    EXPECT_EQ(client.ReadMemory(0x0048, 64).status, kOk);
    EXPECT_EQ(client.ReadMemory(0x0001, 64).status, kBadAlignment);
    EXPECT_EQ(client.WriteMemory(0x00E8, {'u', 's', 'e', 'r', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}).status,
              kOk);
    EXPECT_EQ(client.Write(0x0024, 1), kWriteProtect);
    vcam::Faults faults;
    faults.answerDelayMs = 50;
    camera.SetFaults(faults);
    EXPECT_EQ(client.Read(0x0A00), 2u);
    EXPECT_EQ(client.Pendings(), 1u);
    camera.SetFaults({});
    EXPECT_EQ(client.Write(0x0D04, 0xC0000000 | 1500), kOk);
    EXPECT_TRUE(receiver.Packet(milliseconds(3000))) << "test packet";
    const auto take = [&] {
        EXPECT_EQ(
            client.WriteRegisters({{feature::kAcquisitionMode, 2}, {feature::kAcquisitionFrameCount, 3}})
                .status,
            kOk);
        EXPECT_EQ(client.Write(feature::kAcquisitionStart, 1), kOk);
        receiver.CollectUntil([&] { return !camera.IsStreaming(); });
    };
    take();
    client.RequestResend(2, 1, 4);
    client.RequestResend(99, 1, 2);
    receiver.CollectUntil([&] { return camera.GetCounters().resendsServed == 2; });
    EXPECT_EQ(client.Write(feature::kChunkModeActive, 1), kOk);
    EXPECT_EQ(client.Write(feature::kPixelFormat, 0x02180014), kOk);
    take();
    EXPECT_EQ(client.TakeControl(0), kOk);
    const Bytes record = client.Ask(0x0002, {}, 0x11).payload;
    const std::vector<uint8_t> mac(record.begin() + 10, record.begin() + 16);
    EXPECT_EQ(client.Ask(0x0004, RawClient::ForceIp(mac, "127.0.0.12", "255.0.0.0", "0.0.0.0"), 0x11).status,
              kOk);
}

TEST(VirtualCameraCapture, TsharkFindsNothingMalformed) {
    Capture capture;
    capture.network.call([&capture] {
        VirtualCamera camera(CameraConfig());
        camera.Start();
        Exercise(camera, capture);
    });
    capture.Finish();
    constexpr unsigned kWarning = 0x600000;
    std::map<std::string, unsigned> answers, formats, statuses;
    for (auto& packet :
         capture.Dissect({"frame.number", "_ws.malformed", "_ws.expert.severity", "gvcp.ack",
                          "gvcp.bootstrap.manufacturername", "gvcp.bootstrap.serialnumber", "gvsp.format",
                          "gvsp.status", "gvsp.sizex", "gvsp.sizey", "gvsp.pixel"})) {
        EXPECT_EQ(packet["_ws.malformed"], "") << "frame " << packet["frame.number"];
        const std::string& severity = packet["_ws.expert.severity"];
        if (!severity.empty()) {
            EXPECT_LT(std::stoul(severity, nullptr, 0), kWarning) << "frame " << packet["frame.number"];
        }
        ++answers[packet["gvcp.ack"]];
        ++statuses[packet["gvsp.status"]];
        ++formats[packet["gvsp.format"]];
        if (packet["gvcp.ack"] == "0x0003") {
            EXPECT_EQ(packet["gvcp.bootstrap.manufacturername"], "KOLT");
            EXPECT_EQ(packet["gvcp.bootstrap.serialnumber"], "VC000001");
        }
        if (packet["gvsp.format"] == "0x01") {
            EXPECT_EQ(packet["gvsp.sizex"], "320");
            EXPECT_EQ(packet["gvsp.sizey"], "240");
        }
    }
    // and did it see them at all?
    for (const char* answer : {"0x0003", "0x0005", "0x0081", "0x0083", "0x0085", "0x0087", "0x0089"})
        EXPECT_GE(answers[answer], 1u) << answer;
    EXPECT_EQ(formats["0x01"], 6u) << "leaders";
    EXPECT_EQ(formats["0x02"], 6u) << "trailers";
    EXPECT_EQ(statuses["0x0100"], 4u) << "resent";
    EXPECT_EQ(statuses["0x800c"], 2u) << "unavailable";
}

} // namespace
