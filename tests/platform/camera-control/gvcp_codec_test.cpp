// The codec against datagrams written out by hand from the protocol's tables.
#include <gtest/gtest.h>

#include "Camera/Boundary/OvStatus.h"
#include "ScriptedCamera.h"
#include "find/DropCounters.h"
#include "find/GvcpCodec.h"
#include "find/Ipv4.h"

namespace kolt::cc {
namespace {

using test::Bytes;
using Command = gvcp::Command;

TEST(GvcpCommand, DiscoveryAsksForAnAnswerAndAllowsItByBroadcast) {
    EXPECT_EQ(discoveryCommand(0x1234), (Bytes{0x42, 0x11, 0x00, 0x02, 0x00, 0x00, 0x12, 0x34}));
    EXPECT_EQ(discoveryCommand(0x1234, false), (Bytes{0x42, 0x01, 0x00, 0x02, 0x00, 0x00, 0x12, 0x34}));
}

TEST(GvcpCommand, ForceIpCarriesMacAddressMaskAndGatewayAtTheirOffsets) {
    const Bytes bytes = forceIpCommand(
        7, {0x0A1B2C3D4E5F, ipv4(192, 168, 1, 9), ipv4(255, 255, 255, 0), ipv4(192, 168, 1, 1)});
    Bytes expected{0x42, 0x11, 0x00, 0x04, 0x00, 0x38, 0x00, 0x07};
    expected.resize(64, 0);
    const auto put = [&](std::size_t at, const Bytes& part) {
        std::copy(part.begin(), part.end(), expected.begin() + 8 + static_cast<std::ptrdiff_t>(at));
    };
    put(2, {0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F});
    put(20, {192, 168, 1, 9});
    put(36, {255, 255, 255, 0});
    put(52, {192, 168, 1, 1});
    EXPECT_EQ(bytes, expected);
}

TEST(GvcpCommand, RegisterAndMemoryCommands) {
    EXPECT_EQ(readRegisterCommand(1, 0xA00), (Bytes{0x42, 1, 0, 0x80, 0, 4, 0, 1, 0, 0, 0x0A, 0}));
    EXPECT_EQ(writeRegisterCommand(2, 0xA00, 0x80000001),
              (Bytes{0x42, 1, 0, 0x82, 0, 8, 0, 2, 0, 0, 0x0A, 0, 0x80, 0, 0, 1}));
    EXPECT_EQ(readMemoryCommand(3, 0x200, 512),
              (Bytes{0x42, 1, 0, 0x84, 0, 8, 0, 3, 0, 0, 2, 0, 0, 0, 2, 0}));
}

struct AckCase {
    const char* name;
    Bytes datagram;
    Expectation expected;
    Verdict verdict;
};

void PrintTo(const AckCase& c, std::ostream* out) {
    *out << c.name;
}

class GvcpAcknowledge : public testing::TestWithParam<AckCase> {};

TEST_P(GvcpAcknowledge, IsJudged) {
    const AckCase& c = GetParam();
    Acknowledge ack;
    const DropCounters before;
    DropCounters counters = before;
    const Verdict verdict = parseAcknowledge(c.datagram.data(), c.datagram.size(), c.expected, ack);
    EXPECT_EQ(verdict, c.verdict);
    counters.count(verdict);
    EXPECT_EQ(counters.total(), c.verdict == Verdict::accepted ? 0U : 1U);
}

const Expectation kReadReg{Command::readRegister, 9};
const Expectation kWriteReg{Command::writeRegister, 9};
const Expectation kDiscovery{Command::discovery, 9};
const Expectation kForceIp{Command::forceIp, 9};
const Expectation kReadMem{Command::readMemory, 9, 0x200, 8};

Bytes memoryAnswer(std::uint32_t address, std::size_t count) {
    Bytes payload;
    test::append32(payload, address);
    payload.resize(4 + count, 0x55);
    return test::acknowledge(0, 0x85, payload, 9);
}

Bytes cut(Bytes bytes, std::size_t by) {
    bytes.resize(bytes.size() - by);
    return bytes;
}

Bytes longer(Bytes bytes) {
    bytes.push_back(0);
    return bytes;
}

const AckCase kAckCases[] = {
    {"empty", {}, kReadReg, Verdict::tooShort},
    {"seven_bytes", {0, 0, 0, 0x81, 0, 4, 0}, kReadReg, Verdict::tooShort},
    {"register", test::acknowledge(0, 0x81, {1, 2, 3, 4}, 9), kReadReg, Verdict::accepted},
    {"register_cut", cut(test::acknowledge(0, 0x81, {1, 2, 3, 4}, 9), 1), kReadReg, Verdict::wrongLength},
    {"register_trailing_byte", longer(test::acknowledge(0, 0x81, {1, 2, 3, 4}, 9)), kReadReg,
     Verdict::wrongLength},
    {"register_two_values", test::acknowledge(0, 0x81, Bytes(8), 9), kReadReg, Verdict::wrongLength},
    {"register_no_value", test::acknowledge(0, 0x81, {}, 9), kReadReg, Verdict::wrongLength},
    {"register_of_another_request", test::acknowledge(0, 0x81, {1, 2, 3, 4}, 8), kReadReg, Verdict::wrongId},
    {"another_acknowledge", test::acknowledge(0, 0x83, {1, 2, 3, 4}, 9), kReadReg, Verdict::wrongCommand},
    {"a_command_echoed", {0x42, 1, 0, 0x80, 0, 4, 0, 9, 0, 0, 0, 0}, kReadReg, Verdict::wrongCommand},
    {"error_without_payload", test::acknowledge(0x8006, 0x81, {}, 9), kReadReg, Verdict::accepted},
    {"error_with_payload", test::acknowledge(0x8003, 0x81, Bytes(4), 9), kReadReg, Verdict::accepted},
    {"error_cut", cut(test::acknowledge(0x8003, 0x81, Bytes(4), 9), 2), kReadReg, Verdict::wrongLength},
    {"write", test::acknowledge(0, 0x83, {0, 0, 0, 1}, 9), kWriteReg, Verdict::accepted},
    {"write_short", test::acknowledge(0, 0x83, {0, 0}, 9), kWriteReg, Verdict::wrongLength},
    {"discovery", test::acknowledge(0, 0x03, Bytes(248), 9), kDiscovery, Verdict::accepted},
    {"discovery_of_a_later_revision", test::acknowledge(0, 0x03, Bytes(256), 9), kDiscovery,
     Verdict::accepted},
    {"discovery_short", test::acknowledge(0, 0x03, Bytes(247), 9), kDiscovery, Verdict::wrongLength},
    {"force_ip", test::acknowledge(0, 0x05, {}, 9), kForceIp, Verdict::accepted},
    {"force_ip_with_payload", test::acknowledge(0, 0x05, Bytes(4), 9), kForceIp, Verdict::wrongLength},
    {"memory", memoryAnswer(0x200, 8), kReadMem, Verdict::accepted},
    {"memory_less_than_asked", memoryAnswer(0x200, 4), kReadMem, Verdict::wrongLength},
    {"memory_more_than_asked", memoryAnswer(0x200, 12), kReadMem, Verdict::wrongLength},
    {"memory_of_another_address", memoryAnswer(0x204, 8), kReadMem, Verdict::wrongId},
    {"pending", test::acknowledge(0, 0x89, {0, 0, 1, 0}, 9), kReadReg, Verdict::accepted},
    {"pending_without_time", test::acknowledge(0, 0x89, {}, 9), kReadReg, Verdict::wrongLength},
    {"pending_of_another_request", test::acknowledge(0, 0x89, {0, 0, 1, 0}, 10), kReadReg, Verdict::wrongId},
};

INSTANTIATE_TEST_SUITE_P(Table, GvcpAcknowledge, testing::ValuesIn(kAckCases),
                         [](const auto& row) { return row.param.name; });

TEST(GvcpAcknowledgeFields, PendingTellsItsTimeAndErrorsTheirStatus) {
    Acknowledge ack;
    Bytes pending = test::acknowledge(0, 0x89, {0xFF, 0xFF, 0x01, 0x02}, 9);
    ASSERT_EQ(parseAcknowledge(pending.data(), pending.size(), kReadReg, ack), Verdict::accepted);
    EXPECT_TRUE(ack.pending);
    EXPECT_EQ(ack.pendingMs, 0x0102);
    Bytes error = test::acknowledge(0x8006, 0x81, {}, 9);
    ASSERT_EQ(parseAcknowledge(error.data(), error.size(), kReadReg, ack), Verdict::accepted);
    EXPECT_FALSE(ack.pending);
    EXPECT_EQ(ack.status, 0x8006);
    // A status without the severity bit is a success with a remark.
    Bytes remark = test::acknowledge(0x0100, 0x81, {1, 2, 3, 4}, 9);
    ASSERT_EQ(parseAcknowledge(remark.data(), remark.size(), kReadReg, ack), Verdict::accepted);
    EXPECT_EQ(ack.status, 0);
    EXPECT_EQ(load32(ack.payload), 0x01020304U);
}

TEST(GvcpStatus, MapsToTheBoundarysCodes) {
    const std::pair<std::uint16_t, std::uint32_t> table[] = {
        {0x0000, OV_STATUS_OK},
        {0x0100, OV_STATUS_OK},
        {0x8001, OV_STATUS_GVCP_NOT_IMPLEMENTED},
        {0x8002, OV_STATUS_INVALID_PARAMETER},
        {0x8003, OV_STATUS_INVALID_ADDRESS},
        {0x8004, OV_STATUS_WRITE_PROTECTED},
        {0x8005, OV_STATUS_INVALID_ADDRESS},
        {0x8006, OV_STATUS_ACCESS_DENIED},
        {0x8007, OV_STATUS_BUSY},
        {0x8008, OV_STATUS_UNKNOWN},
        {0x8009, OV_STATUS_PACKET},
        {0x800A, OV_STATUS_PACKET},
        {0x800B, OV_STATUS_PACKET},
        {0x800C, OV_STATUS_UNKNOWN},
        {0x800D, OV_STATUS_PACKET},
        {0x800E, OV_STATUS_PACKET},
        {0x800F, OV_STATUS_PRECONDITION},
        {0x8FFF, OV_STATUS_UNKNOWN},
        {0xFFFF, OV_STATUS_UNKNOWN},
    };
    for (const auto& [wire, status] : table)
        EXPECT_EQ(statusFromGvcp(wire), status) << std::hex << wire;
}

TEST(GvcpDiscoveryPayload, EveryFieldIsReadAtItsOffset) {
    test::ScriptedIdentity identity;
    identity.mac = 0xA1B2C3D4E5F6;
    identity.ip = "10.1.2.3";
    identity.mask = "255.255.0.0";
    identity.gateway = "10.1.0.1";
    Bytes payload = test::discoveryPayload(identity);
    payload[8] = 0xEE; // reserved half of the MAC's high word
    const DiscoveryAnswer answer = parseDiscoveryPayload(payload.data());
    EXPECT_EQ(answer.versionMajor, 2);
    EXPECT_EQ(answer.versionMinor, 0);
    EXPECT_EQ(answer.deviceMode, 0x80000000U);
    EXPECT_EQ(answer.mac, 0xA1B2C3D4E5F6U);
    EXPECT_EQ(answer.ipConfigOptions, 7U);
    EXPECT_EQ(answer.ipConfigCurrent, 5U);
    EXPECT_EQ(answer.currentIp, ipv4(10, 1, 2, 3));
    EXPECT_EQ(answer.subnetMask, ipv4(255, 255, 0, 0));
    EXPECT_EQ(answer.defaultGateway, ipv4(10, 1, 0, 1));
    EXPECT_EQ(answer.manufacturerName, "Scripted");
    EXPECT_EQ(answer.modelName, "Model-1");
    EXPECT_EQ(answer.deviceVersion, "1.2.3");
    EXPECT_EQ(answer.manufacturerInfo, "info");
    EXPECT_EQ(answer.serialNumber, "S0001");
    EXPECT_EQ(answer.userDefinedName, "left");
}

TEST(GvcpDiscoveryPayload, TextsWithoutTheirNulEndWithTheField) {
    Bytes payload(248, 0xFF);
    const DiscoveryAnswer answer = parseDiscoveryPayload(payload.data());
    EXPECT_EQ(answer.manufacturerName.size(), 32U);
    EXPECT_EQ(answer.modelName.size(), 32U);
    EXPECT_EQ(answer.deviceVersion.size(), 32U);
    EXPECT_EQ(answer.manufacturerInfo.size(), 48U);
    EXPECT_EQ(answer.serialNumber.size(), 16U);
    EXPECT_EQ(answer.userDefinedName.size(), 16U);
}

TEST(Ipv4Text, ParsesFourPartsAndNothingElse) {
    EXPECT_EQ(parseIpv4("1.2.3.4"), ipv4(1, 2, 3, 4));
    EXPECT_EQ(parseIpv4("255.255.255.255"), 0xFFFFFFFFU);
    EXPECT_EQ(parseIpv4("0.0.0.0"), 0U);
    for (const char* wrong : {"", "1.2.3", "1.2.3.", ".1.2.3", "1.2.3.4.5", "1..2.3", "1.2.3.256", "1.2.3.4 ",
                              "a.b.c.d", "1.2.3.-4", "1.2.3.0004"})
        EXPECT_FALSE(parseIpv4(wrong).has_value()) << wrong;
    EXPECT_EQ(toText(ipv4(192, 168, 0, 255)), "192.168.0.255");
}

TEST(Ipv4Rules, MasksAndHostAddresses) {
    EXPECT_TRUE(isProperMask(ipv4(255, 255, 255, 0)));
    EXPECT_TRUE(isProperMask(0xFFFFFFFFU));
    EXPECT_TRUE(isProperMask(0x80000000U));
    EXPECT_FALSE(isProperMask(0));
    EXPECT_FALSE(isProperMask(ipv4(255, 0, 255, 0)));
    EXPECT_FALSE(isProperMask(ipv4(0, 255, 255, 255)));
    EXPECT_TRUE(isHostAddress(ipv4(1, 0, 0, 0)));
    EXPECT_TRUE(isHostAddress(ipv4(223, 255, 255, 255)));
    EXPECT_FALSE(isHostAddress(ipv4(0, 1, 2, 3)));
    EXPECT_FALSE(isHostAddress(ipv4(127, 0, 0, 1)));
    EXPECT_FALSE(isHostAddress(ipv4(224, 0, 0, 1)));
}

} // namespace
} // namespace kolt::cc
