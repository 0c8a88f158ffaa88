// The small parts: marks in buffers, spans, sizes, texts.
#include <algorithm>
#include <cstring>
#include <numeric>
#include <tuple>
#include <vector>

#include <arpa/inet.h>
#include <arv.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "Camera/Boundary/OvStatus.h"
#include "Waiting.h"
#include "device/AlignedSpan.h"
#include "device/FrameStream.h"
#include "device/GigeDevice.h"
#include "device/Log.h"
#include "device/ReceiveBuffer.h"
#include "device/Statuses.h"
#include "gvsp/FrameBuffer.h"

namespace kolt::cc {
namespace {

TEST(MarkedPlacesTest, KnowsWhichPlacesWereFilledAndClearsTheOthers) {
    const MarkedPlaces places(100, processFrameMark());
    for (const std::size_t length : {1U, 15U, 16U, 99U, 100U, 101U, 104U, 350U, 400U}) {
        std::vector<std::uint8_t> memory(length, 0x55);
        places.write(memory.data(), length);
        EXPECT_EQ(places.count(length), (length + 99) / 100);
        EXPECT_EQ(places.countMarked(memory.data(), length), places.count(length)) << length;
        std::vector<std::uint8_t> copy(length, 0xEE);
        places.copyFilled(copy.data(), memory.data(), length);
        EXPECT_EQ(copy, std::vector<std::uint8_t>(length, 0))
            << "nothing of the former content at " << length;
        for (std::size_t filled = 0; filled < places.count(length); ++filled) {
            const std::size_t at = filled * 100;
            std::memset(memory.data() + at, 0x77, std::min<std::size_t>(100, length - at));
            EXPECT_FALSE(places.isMarked(memory.data(), length, filled));
            EXPECT_EQ(places.countMarked(memory.data(), length), places.count(length) - filled - 1);
        }
        places.copyFilled(copy.data(), memory.data(), length);
        EXPECT_EQ(copy, memory);
    }
}

TEST(MarkedPlacesTest, APlaceSmallerThanTheMarkIsMarkedAsFarAsItGoes) {
    const MarkedPlaces places(4, processFrameMark());
    std::vector<std::uint8_t> memory(10, 0);
    places.write(memory.data(), memory.size());
    EXPECT_EQ(places.countMarked(memory.data(), memory.size()), 3U);
    EXPECT_FALSE(std::equal(memory.begin(), memory.end(), std::vector<std::uint8_t>(10, 0).begin()));
}

TEST(FrameMemoryTest, IsAlignedAndWholeAndRefusesTheImpossible) {
    constexpr std::size_t kHuge = std::size_t{2} << 20;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{1001}, kHuge / 2 - 1,
                                   kHuge / 2, std::size_t{1920} * 1080, kHuge, kHuge + 1, 5 * kHuge + 4097}) {
        const FrameMemory memory(size);
        ASSERT_NE(memory.data(), nullptr) << size;
        EXPECT_EQ(memory.size(), size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory.data()) % (size < kHuge / 2 ? 4096 : kHuge), 0U)
            << size;
        std::memset(memory.data(), 1, size); // to the last byte
    }
    EXPECT_EQ(FrameMemory(~std::size_t{0}).data(), nullptr);
    EXPECT_EQ(FrameMemory(~std::size_t{0} / 4).data(), nullptr);
}

TEST(FrameMemoryTest, GoesBackToTheSystem) {
    constexpr std::size_t kSize = std::size_t{50} << 20;
    const std::size_t before = kolt::test::residentKilobytes();
    {
        const FrameMemory memory(kSize);
        std::memset(memory.data(), 1, kSize);
        EXPECT_GT(kolt::test::residentKilobytes(), before + kSize / 1024 / 2);
    }
    EXPECT_LT(kolt::test::residentKilobytes(), before + kSize / 1024 / 2);
}

TEST(AlignedSpanTest, CoversTheWantedBytes) {
    const std::vector<std::tuple<std::uint64_t, std::size_t, std::uint64_t, std::size_t, std::size_t>> rows{
        {0, 4, 0, 4, 0}, {1, 1, 0, 4, 1},     {3, 2, 0, 8, 3},
        {4, 5, 4, 8, 0}, {6, 512, 4, 516, 2}, {0xFFFFFFFF, 1, 0xFFFFFFFC, 4, 3},
    };
    for (const auto& [address, length, first, all, skip] : rows) {
        const AlignedSpan span = alignedAround(address, length);
        EXPECT_EQ(span.address, first);
        EXPECT_EQ(span.length, all);
        EXPECT_EQ(span.skip, skip);
        EXPECT_EQ(span.isExact(length), skip == 0 && all == length);
    }
}

TEST(FittingSizeTest, FollowsWhatTheCameraSaysAndSends) {
    const auto size = [](std::size_t payload, std::size_t announced, std::size_t received,
                         std::size_t buffers, bool unfit) {
        SizeSigns signs;
        signs.payload = payload;
        signs.announced = announced;
        signs.received = received;
        signs.buffers = buffers;
        signs.unfit = unfit;
        return fittingSize(signs);
    };
    EXPECT_EQ(size(1000, 0, 1000, 1000, false), 1000U) << "as it should be";
    EXPECT_EQ(size(1000, 0, 600, 1000, false), 1000U) << "frames of changing length";
    EXPECT_EQ(size(600, 0, 600, 1000, false), 600U) << "smaller frames";
    EXPECT_EQ(size(600, 0, 800, 1000, false), 800U) << "never below what really comes";
    EXPECT_EQ(size(4000, 0, 1000, 1000, true), 4000U) << "grown, and said so";
    EXPECT_EQ(size(1000, 3000, 1000, 1000, true), 3000U) << "grown, as the leader says";
    EXPECT_EQ(size(1000, 900, 1000, 1000, true), 2000U) << "grown, and nobody says how much";
    EXPECT_EQ(size(0, 5000, 700, 1000, false), 700U)
        << "the announcement alone is no sign: compressed frames";
    EXPECT_EQ(size(std::size_t{1} << 40, 0, 0, 1000, true), std::size_t{1} << 30) << "within reason";
}

TEST(SchemaVersion, DecidesBetweenRegistersAndMemory) {
    EXPECT_TRUE(wantsRegisterAccess("<?xml?><RegisterDescription SchemaMajorVersion=\"1\" "
                                    "SchemaMinorVersion=\"0\" SchemaSubMinorVersion=\"1\">"));
    EXPECT_FALSE(wantsRegisterAccess(
        "<?xml?>\n<RegisterDescription a='1' SchemaMinorVersion='1'\n SchemaMajorVersion='1'>"));
    EXPECT_FALSE(
        wantsRegisterAccess("<RegisterDescription SchemaMajorVersion=\"2\" SchemaMinorVersion=\"0\">"));
    EXPECT_FALSE(
        wantsRegisterAccess("<RegisterDescription>SchemaMajorVersion=\"1\" SchemaMinorVersion=\"0\""));
    EXPECT_FALSE(wantsRegisterAccess(""));
    EXPECT_FALSE(wantsRegisterAccess("<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion="));
    EXPECT_FALSE(wantsRegisterAccess("<RegisterDescription SchemaMinorVersion=\"99999999999999999999\""));
}

TEST(LogLevels, AreWords) {
    EXPECT_EQ(parseLogLevel(nullptr), LogLevel::off);
    EXPECT_EQ(parseLogLevel(""), LogLevel::off);
    EXPECT_EQ(parseLogLevel("loud"), LogLevel::off);
    EXPECT_EQ(parseLogLevel("error"), LogLevel::error);
    EXPECT_EQ(parseLogLevel("info"), LogLevel::info);
    EXPECT_EQ(parseLogLevel("debug"), LogLevel::debug);
}

TEST(Statuses, OfAravisErrors) {
    const std::vector<std::pair<int, std::uint32_t>> rows{
        {ARV_DEVICE_ERROR_PROTOCOL_ERROR_NOT_IMPLEMENTED, OV_STATUS_GVCP_NOT_IMPLEMENTED},
        {ARV_DEVICE_ERROR_PROTOCOL_ERROR_INVALID_PARAMETER, OV_STATUS_INVALID_PARAMETER},
        {ARV_DEVICE_ERROR_PROTOCOL_ERROR_INVALID_ADDRESS, OV_STATUS_INVALID_ADDRESS},
        {ARV_DEVICE_ERROR_PROTOCOL_ERROR_BAD_ALIGNMENT, OV_STATUS_INVALID_ADDRESS},
        {ARV_DEVICE_ERROR_PROTOCOL_ERROR_WRITE_PROTECT, OV_STATUS_WRITE_PROTECTED},
        {ARV_DEVICE_ERROR_PROTOCOL_ERROR_ACCESS_DENIED, OV_STATUS_ACCESS_DENIED},
        {ARV_DEVICE_ERROR_NOT_CONTROLLER, OV_STATUS_ACCESS_DENIED},
        {ARV_DEVICE_ERROR_PROTOCOL_ERROR_BUSY, OV_STATUS_BUSY},
        {ARV_DEVICE_ERROR_PROTOCOL_ERROR, OV_STATUS_PACKET},
        {ARV_DEVICE_ERROR_TIMEOUT, OV_STATUS_NETWORK},
        {ARV_DEVICE_ERROR_NOT_CONNECTED, OV_STATUS_NETWORK},
        {ARV_DEVICE_ERROR_NOT_FOUND, OV_STATUS_NETWORK},
        {ARV_DEVICE_ERROR_TRANSFER_ERROR, OV_STATUS_NETWORK},
        {ARV_DEVICE_ERROR_WRONG_FEATURE, OV_STATUS_NOT_SUPPORTED},
        {ARV_DEVICE_ERROR_FEATURE_NOT_FOUND, OV_STATUS_NOT_SUPPORTED},
        {ARV_DEVICE_ERROR_NO_STREAM_CHANNEL, OV_STATUS_NOT_SUPPORTED},
        {ARV_DEVICE_ERROR_INVALID_PARAMETER, OV_STATUS_INVALID_PARAMETER},
        {ARV_DEVICE_ERROR_GENICAM_NOT_FOUND, OV_STATUS_GENICAM_GENERIC},
        {ARV_DEVICE_ERROR_UNKNOWN, OV_STATUS_UNKNOWN},
    };
    for (const auto& [code, status] : rows) {
        GError* error = g_error_new_literal(ARV_DEVICE_ERROR, code, "test");
        EXPECT_EQ(statusFromError(error), status) << code;
        g_error_free(error);
    }
    EXPECT_EQ(statusFromError(nullptr), OV_STATUS_OK);
    GError* io = g_error_new_literal(G_IO_ERROR, G_IO_ERROR_FAILED, "test");
    EXPECT_EQ(statusFromError(io), OV_STATUS_NETWORK);
    g_error_free(io);
    GError* other = g_error_new_literal(g_quark_from_static_string("another"), 1, "test");
    EXPECT_EQ(statusFromError(other), OV_STATUS_GENICAM_GENERIC);
    g_error_free(other);

    EXPECT_TRUE(isAnswer(OV_STATUS_OK));
    EXPECT_TRUE(isAnswer(OV_STATUS_ACCESS_DENIED));
    EXPECT_FALSE(isAnswer(OV_STATUS_NETWORK));
    EXPECT_FALSE(isAnswer(OV_STATUS_PRECONDITION));
}

TEST(ReceiveBuffer, IsEnlargedOnTheSocketOfThatPortAlone) {
    EXPECT_EQ(receiveBufferFor(1000), std::size_t{8} << 20);
    EXPECT_EQ(receiveBufferFor(5 << 20), std::size_t{20} << 20);
    EXPECT_EQ(receiveBufferFor(~std::size_t{0}), std::size_t{128} << 20);
    int sockets[2];
    std::uint16_t ports[2];
    for (int index = 0; index < 2; ++index) {
        sockets[index] = socket(AF_INET, SOCK_DGRAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        ASSERT_EQ(bind(sockets[index], reinterpret_cast<sockaddr*>(&address), length), 0);
        ASSERT_EQ(getsockname(sockets[index], reinterpret_cast<sockaddr*>(&address), &length), 0);
        ports[index] = ntohs(address.sin_port);
    }
    const auto room = [&](int index) {
        int bytes = 0;
        socklen_t length = sizeof bytes;
        getsockopt(sockets[index], SOL_SOCKET, SO_RCVBUF, &bytes, &length);
        return bytes;
    };
    const int before = room(1);
    EXPECT_TRUE(enlargeReceiveBuffer(ports[0], static_cast<std::size_t>(before) + 100000));
    EXPECT_GT(room(0), before);
    EXPECT_EQ(room(1), before);
    close(sockets[0]);
    EXPECT_FALSE(enlargeReceiveBuffer(ports[0], 1 << 20));
    close(sockets[1]);
}

} // namespace
} // namespace kolt::cc
