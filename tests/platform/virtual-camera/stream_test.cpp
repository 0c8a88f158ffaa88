// The camera as an Aravis client sees it: features, streams in all formats, losses with and without resend,
// chunks.
#include "Picture/WebScene.h"
#include "VirtualCamera.h"
#include "arv_client.h"
#include "eventually.h"
#include "pixel_reader.h"
#include "support/LoopbackAddress.h"

#include <atomic>
#include <cmath>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

namespace {

using namespace kolt::test;

constexpr uint32_t kWidth = 320;
constexpr uint32_t kHeight = 240;

vcam::Config SmallCamera(unsigned index) {
    vcam::Config config;
    config.address = LoopbackAddress(index);
    config.sensorWidth = kWidth;
    config.sensorHeight = kHeight;
    config.frameRate = 100;
    return config;
}

struct Rig {
    explicit Rig(const vcam::Config& config) : camera(config) {
        camera.Start();
        client = std::make_unique<ArvClient>(camera.Address());
    }
    vcam::VirtualCamera camera;
    std::unique_ptr<ArvClient> client;
};

TEST(VirtualCameraWithAravis, Mono8ArrivesWholeAndInOrder) {
    Rig rig(SmallCamera(0));
    ASSERT_TRUE(rig.client->Controls());
    rig.client->StartStream();
    uint32_t last = 0;
    for (int i = 0; i < 30; ++i) {
        const ArvFrame frame = rig.client->Next();
        ASSERT_EQ(frame.status, ARV_BUFFER_STATUS_SUCCESS);
        EXPECT_EQ(frame.pixelFormat, 0x01080001u);
        EXPECT_EQ(frame.width, kWidth);
        EXPECT_EQ(frame.height, kHeight);
        uint32_t number = 0;
        ASSERT_TRUE(vcam::ReadFrameNumber(frame.pixels.data(), kWidth, kWidth, kHeight, number));
        EXPECT_GT(number, last);
        EXPECT_EQ(number, frame.id);
        last = number;
    }
    rig.client->StopStream();
    EXPECT_GE(rig.camera.GetCounters().framesCompleted, 30u);
    EXPECT_EQ(rig.camera.GetCounters().packetsMissing, 0u);
}

// The first whole frame; a starved client may lose packets, and then a frame is held back for seconds.
ArvFrame NextWhole(ArvClient& client) {
    constexpr int kMost = 12; // more than the buffers hold
    ArvFrame frame;
    for (int i = 0; i < kMost && frame.status != ARV_BUFFER_STATUS_SUCCESS; ++i)
        frame = client.Next();
    return frame;
}

// All formats in turn on one camera, with region, mirrors and exposure, so that the patches are told right
// there too.
TEST(VirtualCameraWithAravis, EveryFormatShowsThePatches) {
    Rig rig(SmallCamera(0));
    unsigned turn = 0;
    for (const FormatFacts& format : AllFormats()) {
        rig.client->SetText("PixelFormat", format.name);
        rig.client->SetBool("ReverseX", turn % 2 != 0);
        rig.client->SetBool("ReverseY", turn % 3 == 1);
        rig.client->SetFloat("ExposureTime", turn % 4 == 3 ? 2000.0 : 4000.0);
        rig.client->SetInt("OffsetX", 0);
        rig.client->SetInt("Width", turn % 5 == 4 ? 160 : 320);
        if (turn % 5 == 4)
            rig.client->SetInt("OffsetX", 64);
        ++turn;
        EXPECT_EQ(rig.client->GetInt("PayloadSize"),
                  rig.client->GetInt("Width") * kHeight * ((format.code >> 16) & 0xFF) / 8);
        rig.client->StartStream(3);
        const ArvFrame frame = NextWhole(*rig.client);
        const std::vector<vcam::Patch> patches = rig.camera.Patches();
        rig.client->StopStream();
        ASSERT_EQ(frame.status, ARV_BUFFER_STATUS_SUCCESS) << format.name;
        EXPECT_EQ(frame.pixelFormat, format.code);
        EXPECT_GE(patches.size(), 3u);
        for (const vcam::Patch& patch : patches) {
            const Colour expected{double(patch.red), double(patch.green), double(patch.blue)};
            for (uint32_t dy = 0; dy < 2; ++dy) { // four neighbours: each colour of a Bayer tile
                for (uint32_t dx = 0; dx < 2; ++dx) {
                    const PixelReading reading =
                        ReadPixel(format, frame.pixels, frame.width, patch.x + patch.width / 2 + dx,
                                  patch.y + patch.height / 2 + dy);
                    EXPECT_LE(Difference(reading, expected), 3.0) << format.name << " " << patch.name;
                }
            }
        }
    }
}

TEST(VirtualCameraWithAravis, ZippedXmlIsRead) {
    vcam::Config config = SmallCamera(0);
    config.zippedXml = true;
    Rig rig(config);
    EXPECT_EQ(rig.client->GetInt("Width"), kWidth);
    size_t length = 0;
    const char* xml = arv_device_get_genicam_xml(rig.client->Device(), &length);
    EXPECT_EQ(std::string(xml, length), rig.camera.Xml());
}

TEST(VirtualCameraWithAravis, FeaturesReadAndWrite) {
    Rig rig(SmallCamera(0));
    ArvClient& c = *rig.client;
    EXPECT_EQ(c.GetText("DeviceVendorName"), "KOLT");
    EXPECT_EQ(c.GetText("DeviceSerialNumber"), "VC000001");
    c.SetText("DeviceUserID", "bench");
    EXPECT_EQ(c.GetText("DeviceUserID"), "bench");
    c.SetInt("Width", 160);
    c.SetInt("OffsetX", 100);
    EXPECT_EQ(c.GetInt("OffsetX"), 100);
    EXPECT_EQ(c.GetInt("WidthMax"), 320);
    c.SetFloat("ExposureTime", 1234.5);
    EXPECT_EQ(c.GetFloat("ExposureTime"), 1234.5);
    c.SetFloat("AcquisitionFrameRate", 25);
    EXPECT_NEAR(c.GetFloat("ResultingFrameRate"), 25, 1e-9);
    c.SetFloat("ExposureTime", 100000);
    EXPECT_NEAR(c.GetFloat("ResultingFrameRate"), 10, 1e-9) << "the exposure takes longer";
    c.SetText("PixelFormat", "RGB8Packed");
    EXPECT_EQ(c.GetText("PixelSize"), "Bpp24");
    c.SetText("TriggerSelector", "AcquisitionStart");
    c.SetText("TriggerMode", "On");
    c.SetText("TriggerSelector", "FrameStart");
    EXPECT_EQ(c.GetText("TriggerMode"), "Off") << "each trigger has settings of its own";
    c.SetText("TriggerSelector", "AcquisitionStart");
    EXPECT_EQ(c.GetText("TriggerMode"), "On");
    EXPECT_GT(c.GetFloat("DeviceTemperature"), 20);
    c.SetInt("GevSCPSPacketSize", 9000);
    EXPECT_EQ(c.Register(0x0D04) & 0xFFFF, 9000u);
    EXPECT_NE(c.Register(0x0D04) & 0x40000000, 0u) << "the other bits of the register stay";
    EXPECT_EQ(c.GetInt("GevTimestampTickFrequency"), 1000000000);
    c.SetInt("VcamLossPerMille", 3);
    EXPECT_EQ(rig.camera.GetFaults().lossPerMille, 3u);
}

TEST(VirtualCameraWithAravis, AutomaticExposureFindsTheScene) {
    Rig rig(SmallCamera(0));
    ArvClient& c = *rig.client;
    const auto greyOf = [&](const ArvFrame& frame) {
        const vcam::Patch grey = rig.camera.Patches().back();
        return frame.pixels.at((grey.y + grey.height / 2) * kWidth + grey.x + grey.width / 2);
    };
    c.SetFloat("ExposureTime", 500);
    c.StartStream();
    const ArvFrame dark = c.Next();
    ASSERT_EQ(dark.status, ARV_BUFFER_STATUS_SUCCESS);
    EXPECT_NEAR(greyOf(dark), 12, 1);
    c.SetText("ExposureAuto", "Once");
    EXPECT_TRUE(Eventually([&c] {
        c.Next();
        return c.GetText("ExposureAuto") == "Off";
    }));
    EXPECT_NEAR(c.GetFloat("ExposureTime"), 4000.0, 40.0);
    ArvFrame right;
    for (int i = 0; i < 12; ++i) // those that waited in the client's buffers first
        right = c.Next();
    ASSERT_EQ(right.status, ARV_BUFFER_STATUS_SUCCESS);
    EXPECT_NEAR(greyOf(right), 100, 1);

    c.SetText("ExposureAuto", "Continuous");
    EXPECT_EQ(c.TryWriteRegister(0x10228, 0), ARV_DEVICE_ERROR_PROTOCOL_ERROR_WRITE_PROTECT)
        << "ExposureTime";
    c.SetFloat("Gain", 6.0206);
    EXPECT_TRUE(Eventually([&c] {
        c.Next();
        return std::abs(c.GetFloat("ExposureTime") - 2000) < 50;
    }));
    EXPECT_EQ(c.GetText("ExposureAuto"), "Continuous");
}

TEST(VirtualCameraWithAravis, AutomaticGainMakesUpForAShortExposure) {
    Rig rig(SmallCamera(0));
    ArvClient& c = *rig.client;
    c.SetFloat("ExposureTime", 1000);
    c.SetText("GainAuto", "Continuous");
    c.StartStream();
    EXPECT_TRUE(Eventually([&c] {
        c.Next();
        return std::abs(c.GetFloat("Gain") - 12.0412) < 0.2;
    }));
}

TEST(VirtualCameraWithAravis, CompressedPicturesArrive) {
    Rig rig(SmallCamera(0));
    ArvClient& c = *rig.client;
    size_t sizes[2] = {};
    for (const int good : {0, 1}) {
        c.SetText("ImageCompressionMode", "JPEG");
        c.SetInt("ImageCompressionQuality", good == 1 ? 95 : 30);
        c.StartStream();
        for (int i = 0; i < 3; ++i) {
            const ArvFrame frame = c.Next();
            ASSERT_EQ(frame.status, ARV_BUFFER_STATUS_SUCCESS);
            const size_t end = frame.pixels.size();
            ASSERT_GT(end, 1000u);
            EXPECT_EQ(frame.pixels[0] << 8 | frame.pixels[1], 0xFFD8) << "start of image";
            EXPECT_EQ(frame.pixels[end - 2] << 8 | frame.pixels[end - 1], 0xFFD9) << "end of image";
            sizes[good] = end;
        }
        c.StopStream();
    }
    EXPECT_LT(sizes[0] * 2, sizes[1]) << "quality costs";
    EXPECT_LT(sizes[1], kWidth * kHeight);
    c.SetText("ImageCompressionMode", "Off");
    c.StartStream();
    EXPECT_EQ(c.Next().pixels.size(), kWidth * kHeight);
    c.StopStream();
    // A picture so small that its JPEG is longer than itself still fits into PayloadSize.
    c.SetText("ImageCompressionMode", "JPEG");
    c.SetInt("ImageCompressionQuality", 100);
    c.SetInt("Width", 16);
    c.SetInt("Height", 16);
    c.StartStream();
    const ArvFrame tiny = c.Next();
    EXPECT_EQ(tiny.status, ARV_BUFFER_STATUS_SUCCESS);
    EXPECT_GT(tiny.pixels.size(), 16u * 16);
}

uint8_t GreyOf(const vcam::VirtualCamera& camera, const ArvFrame& frame) {
    const vcam::Patch grey = camera.Patches().back();
    return frame.pixels.at((grey.y + grey.height / 2) * frame.width + grey.x + grey.width / 2);
}

TEST(VirtualCameraWithAravis, HdrSetsTakeTurns) {
    Rig rig(SmallCamera(0));
    ArvClient& c = *rig.client;
    const int shutters[] = {500, 1000, 2000, 4000};
    for (int set = 0; set < 4; ++set) {
        c.SetInt("HDRSelector", set);
        c.SetInt("HDRShutter", shutters[set]);
    }
    c.SetBool("HDREnable", true);
    c.StartStream();
    for (int i = 0; i < 12; ++i) {
        const ArvFrame frame = c.Next();
        ASSERT_EQ(frame.status, ARV_BUFFER_STATUS_SUCCESS);
        const auto set = static_cast<size_t>((frame.id - 1) % 4);
        EXPECT_NEAR(GreyOf(rig.camera, frame), 100 * shutters[set] / 4000, 2) << frame.id;
    }
}

TEST(VirtualCameraWithAravis, FactsStandInTheFirstPixels) {
    Rig rig(SmallCamera(0));
    ArvClient& c = *rig.client;
    c.SetInt("FrameSpecInfo_Reg", 0x1E4); // exposure, frame number, trigger count, lines, region
    c.SetInt("Width", 160);
    c.SetInt("OffsetX", 16);
    c.SetText("TriggerMode", "On");
    c.SetText("TriggerSource", "Line1");
    c.SetFloat("ExposureTime", 1500);
    c.StartStream();
    rig.camera.SetLine(2, true);
    for (uint32_t number = 1; number <= 3; ++number) {
        rig.camera.FireLine(1);
        const ArvFrame frame = c.Next();
        ASSERT_EQ(frame.status, ARV_BUFFER_STATUS_SUCCESS);
        const auto word = [&frame](size_t at) {
            const uint8_t* p = frame.pixels.data() + at;
            return uint32_t{p[0]} | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
        };
        EXPECT_EQ(word(0), 1500u) << "exposure";
        EXPECT_EQ(word(4), number);
        EXPECT_EQ(word(8), number) << "triggers";
        EXPECT_EQ(word(12) & 0xFF, 4u) << "Line2 is high";
        EXPECT_EQ(word(16), 16u | 1) << "offset x with the mark of the first form";
        EXPECT_EQ(word(20), 160u | 240u << 16);
    }
}

TEST(VirtualCameraWithAravis, LineScanFramesFollowOneAnotherLineByLine) {
    vcam::Config config = SmallCamera(0);
    config.model = vcam::Model::LineScan;
    config.sensorWidth = 640;
    Rig rig(config);
    ArvClient& c = *rig.client;
    c.SetInt("Height", 100);
    c.StartStream();
    uint32_t next = 0;
    for (int i = 0; i < 3; ++i) {
        const ArvFrame frame = c.Next();
        ASSERT_EQ(frame.status, ARV_BUFFER_STATUS_SUCCESS);
        ASSERT_EQ(frame.height, 100u);
        for (uint32_t y = 0; y < frame.height; ++y, ++next) {
            uint32_t line = 0;
            ASSERT_TRUE(
                vcam::ReadLineNumber(frame.pixels.data() + size_t{y} * frame.width, frame.width, line))
                << y;
            EXPECT_EQ(line, next);
        }
    }
}

// The exposure that a pulse takes shows in the frame, and lies between what passed at the least and at the
// most.
TEST(VirtualCameraWithAravis, PulseAtALineIsTheExposure) {
    Rig rig(SmallCamera(0));
    ArvClient& c = *rig.client;
    c.SetText("TriggerMode", "On");
    c.SetText("TriggerSource", "Line0");
    c.SetText("ExposureMode", "TriggerWidth");
    c.SetInt("FrameSpecInfo_Reg", 4);
    c.StartStream();
    using Clock = std::chrono::steady_clock;
    const auto micros = [](Clock::duration time) {
        return std::chrono::duration<double, std::micro>(time).count();
    };
    const Clock::time_point before = Clock::now();
    rig.camera.SetLine(0, true);
    const Clock::time_point high = Clock::now();
    std::this_thread::sleep_until(high + std::chrono::milliseconds(5));
    const Clock::time_point stillHigh = Clock::now();
    rig.camera.SetLine(0, false);
    const Clock::time_point after = Clock::now();
    const ArvFrame frame = c.Next();
    ASSERT_EQ(frame.status, ARV_BUFFER_STATUS_SUCCESS);
    const double exposure = frame.pixels[0] | frame.pixels[1] << 8 | frame.pixels[2] << 16;
    EXPECT_GE(exposure, micros(stillHigh - high) - 1);
    EXPECT_LE(exposure, micros(after - before) + 1);
}

// The frames that an Aravis client failed to complete are those that the camera's books say.
TEST(VirtualCameraWithAravis, LossWithoutResendIsWhatTheCameraSays) {
    vcam::Config config = SmallCamera(0);
    config.faults.lossPerMille = 5;
    config.faults.losePayloadOnly = true;
    Rig rig(config);
    rig.client->SetText("AcquisitionMode", "MultiFrame");
    rig.client->SetInt("AcquisitionFrameCount", 60);
    rig.client->StartStream(80, false);
    unsigned whole = 0, broken = 0;
    for (int i = 0; i < 60; ++i) {
        const ArvFrame frame = rig.client->Next();
        if (frame.status == ARV_BUFFER_STATUS_SUCCESS)
            ++whole;
        else if (frame.status == ARV_BUFFER_STATUS_MISSING_PACKETS ||
                 frame.status == ARV_BUFFER_STATUS_TIMEOUT)
            ++broken;
    }
    EXPECT_TRUE(Eventually([&rig] { return !rig.camera.IsStreaming(); }));
    const vcam::Counters counters = rig.camera.GetCounters();
    EXPECT_EQ(counters.framesCompleted, 60u);
    EXPECT_GT(counters.framesMissingPackets, 0u);
    EXPECT_EQ(broken, counters.framesMissingPackets);
    EXPECT_EQ(whole, 60 - counters.framesMissingPackets);
    EXPECT_EQ(counters.packetsResent, 0u);
}

TEST(VirtualCameraWithAravis, ResendRepairsEveryFrame) {
    vcam::Config config = SmallCamera(0);
    config.faults.lossPerMille = 5;
    config.seed = 3;
    Rig rig(config);
    rig.client->SetText("AcquisitionMode", "MultiFrame");
    rig.client->SetInt("AcquisitionFrameCount", 60);
    rig.client->StartStream(80, true);
    for (int i = 0; i < 60; ++i)
        EXPECT_EQ(rig.client->Next().status, ARV_BUFFER_STATUS_SUCCESS) << i;
    EXPECT_TRUE(Eventually([&rig] { return !rig.camera.IsStreaming(); }));
    // A packet is counted after it was sent again: the client may have the frame by then.
    EXPECT_TRUE(Eventually([&rig] { return rig.camera.GetCounters().packetsMissing == 0; }));
    const vcam::Counters counters = rig.camera.GetCounters();
    EXPECT_GT(counters.packetsDropped, 0u);
    EXPECT_GT(counters.packetsResent, 0u);
}

TEST(VirtualCameraWithAravis, ChunksAreParsed) {
    Rig rig(SmallCamera(0));
    GError* error = nullptr;
    const Ref<ArvChunkParser> parser(arv_device_create_chunk_parser(rig.client->Device()));
    rig.client->SetBool("ChunkModeActive", true);
    rig.client->SetFloat("Gain", 6.5);
    rig.client->StartStream();
    for (int i = 0; i < 3; ++i) {
        const ArvFrame frame = rig.client->Next();
        ASSERT_EQ(frame.status, ARV_BUFFER_STATUS_SUCCESS);
        ASSERT_TRUE(arv_buffer_has_chunks(frame.buffer.get()));
        EXPECT_EQ(
            arv_chunk_parser_get_integer_value(parser.get(), frame.buffer.get(), "ChunkFrameID", &error),
            static_cast<gint64>(frame.id));
        EXPECT_EQ(
            arv_chunk_parser_get_integer_value(parser.get(), frame.buffer.get(), "ChunkTimestamp", &error),
            static_cast<gint64>(frame.timestamp));
        EXPECT_EQ(arv_chunk_parser_get_float_value(parser.get(), frame.buffer.get(), "ChunkGain", &error),
                  6.5);
        EXPECT_EQ(
            arv_chunk_parser_get_float_value(parser.get(), frame.buffer.get(), "ChunkExposureTime", &error),
            4000.0);
        EXPECT_EQ(error, nullptr);
    }
}

TEST(VirtualCameraWithAravis, SecondClientGetsNoControl) {
    Rig rig(SmallCamera(0));
    ArvClient second(rig.camera.Address());
    EXPECT_TRUE(rig.client->Controls());
    EXPECT_FALSE(second.Controls());
    EXPECT_EQ(second.TryWriteRegister(0x0D08, 1), ARV_DEVICE_ERROR_PROTOCOL_ERROR_ACCESS_DENIED);
    EXPECT_EQ(second.GetInt("Width"), kWidth);
}

TEST(VirtualCameraWithAravis, SlowAnswersAreWaitedFor) {
    Rig rig(SmallCamera(0));
    vcam::Faults faults;
    faults.answerDelayMs = 700; // above Aravis's time-out of 500 ms
    rig.camera.SetFaults(faults);
    EXPECT_EQ(rig.client->Register(0x0A00), 2u);
    EXPECT_GE(rig.camera.GetCounters().pendingAnswers, 1u);
}

TEST(VirtualCameraWithAravis, DeadCameraLosesItsClient) {
    Rig rig(SmallCamera(0));
    rig.client->StartStream();
    ASSERT_EQ(rig.client->Next().status, ARV_BUFFER_STATUS_SUCCESS);
    // Not on the stack: ThreadSanitizer doesn't see GLib hand it to the thread that sets it.
    static std::atomic<bool> lost;
    lost = false;
    g_signal_connect(
        rig.client->Device(), "control-lost",
        G_CALLBACK(+[](ArvDevice*, gpointer flag) { *static_cast<std::atomic<bool>*>(flag) = true; }), &lost);
    vcam::Faults faults;
    faults.silent = true;
    rig.camera.SetFaults(faults);
    EXPECT_TRUE(Eventually([] { return lost.load(); }));
    rig.camera.SetFaults({}); // so that the client's good-bye is not waited for
    rig.client->AbandonStream();
}

TEST(VirtualCameraWithAravis, PacketSizeIsNegotiatedDownToTheNarrowPath) {
    vcam::Config config = SmallCamera(0);
    config.mtu = 3000;
    Rig rig(config);
    GError* error = nullptr;
    arv_gv_device_set_packet_size_adjustment(ARV_GV_DEVICE(rig.client->Device()),
                                             ARV_GV_PACKET_SIZE_ADJUSTMENT_ALWAYS);
    const guint size = arv_gv_device_auto_packet_size(ARV_GV_DEVICE(rig.client->Device()), &error);
    ASSERT_EQ(error, nullptr);
    EXPECT_LE(size, 3000u);
    EXPECT_GE(size, 2900u);
    EXPECT_GT(rig.camera.GetCounters().testPackets, 0u);
    EXPECT_GT(rig.camera.GetCounters().packetsTooBig, 0u);
}

TEST(VirtualCameraWithAravis, SeveralCamerasStreamAtOnce) {
    std::vector<std::unique_ptr<Rig>> rigs;
    for (unsigned i = 0; i < 4; ++i) {
        vcam::Config config = SmallCamera(i);
        config.serial = "VC00001" + std::to_string(i);
        config.frameRate = 30;
        rigs.push_back(std::make_unique<Rig>(config));
    }
    for (const auto& rig : rigs)
        rig->client->StartStream();
    for (int i = 0; i < 10; ++i) {
        for (const auto& rig : rigs)
            EXPECT_EQ(rig->client->Next().status, ARV_BUFFER_STATUS_SUCCESS);
    }
}

// Each must end in an error of the client, not in its end or the camera's.
class BrokenXml : public testing::TestWithParam<vcam::XmlFault> {};

TEST_P(BrokenXml, DoesNotHurtTheCamera) {
    vcam::Config config = SmallCamera(0);
    config.faults.xml = GetParam();
    vcam::VirtualCamera camera(config);
    camera.Start();
    try {
        const ArvClient client(camera.Address());
    } catch (const std::runtime_error&) { // Aravis may refuse it
    }
    vcam::Faults healed;
    camera.SetFaults(healed);
    EXPECT_TRUE(Eventually([&camera] { return !camera.IsControlled(); }));
    ArvClient again(camera.Address());
    EXPECT_TRUE(again.Controls());
    EXPECT_EQ(again.GetInt("Width"), kWidth) << "sound again for whoever comes next";
}

INSTANTIATE_TEST_SUITE_P(Kinds, BrokenXml,
                         testing::Values(vcam::XmlFault::Truncated, vcam::XmlFault::HttpLocation,
                                         vcam::XmlFault::BadZip, vcam::XmlFault::NoLocation));

} // namespace
