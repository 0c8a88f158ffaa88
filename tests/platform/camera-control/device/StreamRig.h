// An open virtual camera, ready to stream.
#ifndef KOLT_TESTS_CAMERA_CONTROL_STREAM_RIG_H
#define KOLT_TESTS_CAMERA_CONTROL_STREAM_RIG_H

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "CameraRig.h"
#include "GenApi/GenApi.h"

namespace kolt::test {

// Of smallCamera().
constexpr std::uint32_t kWidth = 320;
constexpr std::uint32_t kHeight = 240;

inline std::uint32_t numberIn(const Fetched& frame) {
    std::uint32_t number = 0;
    EXPECT_TRUE(vcam::ReadFrameNumber(frame.pixels.data(), frame.info.width, frame.info.width,
                                      frame.info.height, number));
    return number;
}

// The two ways by which a stream is received.
enum class Road { plainSocket, packetSocket };

inline std::string roadName(const testing::TestParamInfo<Road>& info) {
    return info.param == Road::plainSocket ? "PlainSocket" : "PacketSocket";
}

// Tests derive from this and run over both.
class StreamRig : public testing::TestWithParam<Road> {
protected:
    explicit StreamRig(const vcam::Config& config = smallCamera()) : camera_(config) {
        camera_.Start();
        handle_ = std::make_unique<Handle>(recordOf(camera_.Address()));
        EXPECT_EQ(handle_->open(), OV_STATUS_OK);
        EXPECT_EQ(OVX_CC_SetOption(*handle_, OVX_OPTION_PACKET_SOCKET, isPacketSocket() ? 1 : 0),
                  OV_STATUS_OK);
    }
    static bool isPacketSocket() { return GetParam() == Road::packetSocket; }
    void start() { ASSERT_EQ(OV_CC_StartGrabbing(*handle_), OV_STATUS_OK); }
    void stop() { ASSERT_EQ(OV_CC_StopGrabbing(*handle_), OV_STATUS_OK); }
    void setFaults(const std::function<void(vcam::Faults&)>& change) {
        vcam::Faults faults = camera_.GetFaults();
        change(faults);
        camera_.SetFaults(faults);
    }
    // The camera ends by itself after so many frames, and `map_` is its node map from then on.
    void limitFrames(std::uint32_t count) {
        std::uint32_t length = 0;
        OV_XML_GetGenICamXML(*handle_, nullptr, 0, &length);
        std::string xml(length, '\0');
        ASSERT_EQ(
            OV_XML_GetGenICamXML(*handle_, reinterpret_cast<std::uint8_t*>(xml.data()), length, &length),
            OV_STATUS_OK);
        map_._LoadXMLFromString(xml.c_str());
        map_._Connect(&handle_->port(), "Device");
        GenApi_3_0::CEnumerationPtr(map_._GetNode("AcquisitionMode"))->FromString("MultiFrame");
        GenApi_3_0::CIntegerPtr(map_._GetNode("AcquisitionFrameCount"))->SetValue(count);
    }
    // What both sides have counted, for messages.
    std::string story() const {
        const OVX_CC_STATISTICS ours = handle_->statistics();
        const vcam::Counters theirs = camera_.GetCounters();
        const auto text = [](const char* name, std::uint64_t value) {
            return std::string(name) + ' ' + std::to_string(value) + ", ";
        };
        return text("buffer size", ours.bufferSize) + text("exchanges", ours.bufferExchanges) +
               text("complete", ours.completeFrames) + text("incomplete", ours.incompleteFrames) +
               text("unfit", ours.unfitFrames) + text("vanished", ours.vanishedFrames) +
               text("unbuffered", ours.unbufferedFrames) + text("delivered", ours.deliveredFrames) +
               text("received", ours.receivedPackets) + text("late", ours.latePackets) +
               text("duplicated", ours.duplicatedPackets) + text("errors", ours.errorPackets) +
               text("requested", ours.resendRequests) + text("resent", ours.resentPackets) +
               text("lost", ours.lostPackets) + "camera: " + text("frames", theirs.framesStarted) +
               text("completed", theirs.framesCompleted) + text("aborted", theirs.framesAborted) +
               text("sent", theirs.packetsSent) + text("dropped", theirs.packetsDropped) +
               text("missing", theirs.packetsMissing) + text("resent", theirs.packetsResent) +
               text("unavailable", theirs.packetsUnavailable) + text("send errors", theirs.sendErrors) +
               text("heartbeats expired", theirs.heartbeatsExpired);
    }
    // All of a limited acquisition.
    std::vector<Fetched> fetchAll(std::uint32_t count) {
        std::vector<Fetched> frames;
        while (frames.size() < count) {
            Fetched frame = fetch(*handle_, 3000);
            if (frame.status != OV_STATUS_OK) {
                ADD_FAILURE() << "status 0x" << std::hex << frame.status << std::dec << " after "
                              << frames.size() << " frames; " << story();
                break;
            }
            frames.push_back(std::move(frame));
        }
        return frames;
    }

    vcam::VirtualCamera camera_;
    std::unique_ptr<Handle> handle_;
    GenApi_3_0::CNodeMapRef map_{"Device"};
};

} // namespace kolt::test

#endif
