// The camera's codec against bytes written out by hand, and the rules of its control channel.
#include "Network/ControlChannel.h"
#include "Protocol/GvcpCodec.h"
#include "Protocol/GvspCodec.h"

#include <gtest/gtest.h>

namespace {

using namespace vcam;

TEST(GvcpCodec, TakesACommandApart) {
    const Bytes datagram = {0x42, 0x11, 0x00, 0x84, 0x00, 0x08, 0x12, 0x34,
                            0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x01, 0x00};
    GvcpCommand command;
    ASSERT_TRUE(ParseCommand(datagram.data(), datagram.size(), command));
    EXPECT_EQ(command.code, CommandCode::ReadMemory);
    EXPECT_EQ(command.requestId, 0x1234);
    EXPECT_TRUE(command.WantsAnswer());
    EXPECT_TRUE(command.AllowsBroadcastAnswer());
    const auto read = ParseReadMemory(command);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->address, 0x200u);
    EXPECT_EQ(read->count, 0x100u);
}

TEST(GvcpCodec, RefusesWhatIsNoCommand) {
    const Bytes good = {0x42, 0x01, 0x00, 0x02, 0x00, 0x00, 0x00, 0x01};
    GvcpCommand command;
    ASSERT_TRUE(ParseCommand(good.data(), good.size(), command));
    Bytes wrongKey = good;
    wrongKey[0] = 0x43;
    EXPECT_FALSE(ParseCommand(wrongKey.data(), wrongKey.size(), command));
    EXPECT_FALSE(ParseCommand(good.data(), 7, command));
    EXPECT_FALSE(ParseCommand(good.data(), 0, command));
    Bytes longer = good;
    longer[5] = 4; // promises four bytes that are not there
    EXPECT_FALSE(ParseCommand(longer.data(), longer.size(), command));
}

TEST(GvcpCodec, RefusesPayloadsOfAnotherLength) {
    const Bytes data(600);
    const auto ofLength = [&data](size_t length, uint8_t flags = 1) {
        GvcpCommand command;
        command.flags = flags;
        command.payload = data.data();
        command.payloadLength = length;
        return command;
    };
    for (const size_t length : {0, 55, 57})
        EXPECT_FALSE(ParseForceIp(ofLength(length))) << length;
    EXPECT_TRUE(ParseForceIp(ofLength(56)));
    for (const size_t length : {0, 3, 6, 544})
        EXPECT_FALSE(ParseReadRegister(ofLength(length))) << length;
    EXPECT_EQ(ParseReadRegister(ofLength(540))->size(), 135u);
    for (const size_t length : {0, 4, 12, 544})
        EXPECT_FALSE(ParseWriteRegister(ofLength(length))) << length;
    EXPECT_EQ(ParseWriteRegister(ofLength(536))->size(), 67u);
    for (const size_t length : {0, 4, 12})
        EXPECT_FALSE(ParseReadMemory(ofLength(length))) << length;
    for (const size_t length : {0, 4, 541})
        EXPECT_FALSE(ParseWriteMemory(ofLength(length))) << length;
    for (const size_t length : {0, 11, 13, 20})
        EXPECT_FALSE(ParsePacketResend(ofLength(length, 0))) << length;
    EXPECT_TRUE(ParsePacketResend(ofLength(12, 0)));
    EXPECT_TRUE(ParsePacketResend(ofLength(20, 0x10))) << "with block ids of 64 bits";
    EXPECT_FALSE(ParsePacketResend(ofLength(12, 0x10)));
}

TEST(GvcpCodec, ReadsTheFieldsOfForceIp) {
    Bytes payload(56);
    payload[2] = 0xAA;
    payload[7] = 0xBB;
    payload[20] = 10;
    payload[23] = 7;
    payload[36] = 0xFF;
    payload[52] = 10;
    payload[55] = 1;
    GvcpCommand command;
    command.payload = payload.data();
    command.payloadLength = payload.size();
    const auto request = ParseForceIp(command);
    ASSERT_TRUE(request);
    EXPECT_EQ(request->mac, (std::array<uint8_t, 6>{0xAA, 0, 0, 0, 0, 0xBB}));
    EXPECT_EQ(request->address, 0x0A000007u);
    EXPECT_EQ(request->mask, 0xFF000000u);
    EXPECT_EQ(request->gateway, 0x0A000001u);
}

TEST(GvcpCodec, ReadsTheFieldsOfAResendRequest) {
    const Bytes payload = {0, 0, 0x12, 0x34, 0xFF, 0, 0, 5, 0, 0, 1, 0};
    GvcpCommand command;
    command.payload = payload.data();
    command.payloadLength = payload.size();
    const auto request = ParsePacketResend(command);
    ASSERT_TRUE(request);
    EXPECT_EQ(request->blockId, 0x1234u);
    EXPECT_EQ(request->firstPacket, 5u) << "packet ids have 24 bits";
    EXPECT_EQ(request->lastPacket, 256u);
}

TEST(GvcpCodec, WritesAnswers) {
    EXPECT_EQ(EncodeAnswer(Status::AccessDenied, 0x0081, 0x0102, {9, 8, 7, 6}),
              (Bytes{0x80, 0x06, 0x00, 0x81, 0x00, 0x04, 0x01, 0x02, 9, 8, 7, 6}));
    EXPECT_EQ(EncodeWriteAnswer(Status::Success, CommandCode::WriteRegister, 3, 2),
              (Bytes{0, 0, 0x00, 0x83, 0, 4, 0, 3, 0, 0, 0, 2}));
    EXPECT_EQ(EncodePending(7, 1000), (Bytes{0, 0, 0x00, 0x89, 0, 4, 0, 7, 0, 0, 0x03, 0xE8}));
}

TEST(GvspCodec, WritesLeaderPayloadHeaderAndTrailer) {
    FrameDescription frame;
    frame.timestamp = 0x0102030405060708;
    frame.pixelFormat = 0x01080001;
    frame.width = 640;
    frame.height = 480;
    frame.offsetX = 16;
    frame.offsetY = 32;
    Bytes leader(64, 0xEE);
    ASSERT_EQ(PutLeader(leader.data(), Status::Success, 0x0203, frame), 44u);
    leader.resize(44);
    EXPECT_EQ(leader, (Bytes{0, 0, 2, 3, 1, 0,    0, 0, 0, 0,    0, 1, 1, 2,  3, 4, 5, 6,  7, 8, 1, 8,
                             0, 1, 0, 0, 2, 0x80, 0, 0, 1, 0xE0, 0, 0, 0, 16, 0, 0, 0, 32, 0, 0, 0, 0}));
    Bytes header(8);
    PutGvspHeader(header.data(), Status::PacketResent, 1, PacketFormat::Payload, 0x012345);
    EXPECT_EQ(header, (Bytes{1, 0, 0, 1, 3, 1, 0x23, 0x45}));
    Bytes trailer(64, 0xEE);
    ASSERT_EQ(PutTrailer(trailer.data(), Status::Success, 1, 9, frame), 16u);
    trailer.resize(16);
    EXPECT_EQ(trailer, (Bytes{0, 0, 0, 1, 2, 0, 0, 9, 0, 0, 0, 1, 0, 0, 1, 0xE0}));
    frame.chunkBytes = 0x1000;
    frame.chunkLayout = 5;
    trailer.assign(64, 0xEE);
    ASSERT_EQ(PutTrailer(trailer.data(), Status::Success, 1, 9, frame), 24u);
    trailer.resize(24);
    EXPECT_EQ(trailer,
              (Bytes{0, 0, 0, 1, 2, 0, 0, 9, 0, 0, 0x40, 1, 0, 0, 1, 0xE0, 0, 0, 0x10, 0, 0, 0, 0, 5}));
}

TEST(GvspCodec, BlockIdsNeverAreZero) {
    EXPECT_EQ(BlockIdOfFrame(0), 1);
    EXPECT_EQ(BlockIdOfFrame(65534), 65535);
    EXPECT_EQ(BlockIdOfFrame(65535), 1);
}

TEST(GvspCodec, ChunksEndWithIdAndLength) {
    Bytes data = {1, 2};
    AppendChunk(data, 0x1001, {7, 8, 9, 10});
    EXPECT_EQ(data, (Bytes{1, 2, 7, 8, 9, 10, 0, 0, 0x10, 1, 0, 0, 0, 4}));
}

class ControlChannelTest : public testing::Test {
protected:
    using Clock = ControlChannel::Clock;
    const Peer one{1, 1000}, two{1, 1001};
    const Clock::time_point start{};
    ControlChannel channel;
};

TEST_F(ControlChannelTest, FreeChannelIsReadByAllAndWrittenByNobody) {
    EXPECT_TRUE(channel.MayRead(one));
    EXPECT_FALSE(channel.MayWrite(one));
    EXPECT_FALSE(channel.Deadline(std::chrono::seconds(1)));
}

TEST_F(ControlChannelTest, ControlKeepsOthersFromWriting) {
    EXPECT_EQ(channel.Claim(one, 2, start), Status::Success);
    EXPECT_EQ(channel.Value(), 2u);
    EXPECT_TRUE(channel.MayWrite(one));
    EXPECT_FALSE(channel.MayWrite(two)) << "another port of the same host is another application";
    EXPECT_TRUE(channel.MayRead(two));
    EXPECT_EQ(channel.Claim(two, 2, start), Status::AccessDenied);
    EXPECT_EQ(channel.Claim(two, 0, start), Status::AccessDenied) << "nor may they take it away";
}

TEST_F(ControlChannelTest, ExclusiveKeepsOthersFromReading) {
    EXPECT_EQ(channel.Claim(one, 1, start), Status::Success);
    EXPECT_EQ(channel.Value(), 1u);
    EXPECT_TRUE(channel.MayRead(one));
    EXPECT_FALSE(channel.MayRead(two));
    EXPECT_EQ(channel.Claim(one, 2, start), Status::Success) << "the owner may step down";
    EXPECT_TRUE(channel.MayRead(two));
    EXPECT_EQ(channel.Claim(one, 3, start), Status::Success);
    EXPECT_EQ(channel.Value(), 1u) << "exclusive wins over control";
}

TEST_F(ControlChannelTest, ReleaseFreesIt) {
    channel.Claim(one, 1, start);
    EXPECT_EQ(channel.Claim(one, 0, start), Status::Success);
    EXPECT_FALSE(channel.Owner());
    EXPECT_EQ(channel.Claim(two, 2, start), Status::Success);
}

TEST_F(ControlChannelTest, OnlyTheOwnerKeepsItAlive) {
    channel.Claim(one, 2, start);
    const auto second = std::chrono::seconds(1);
    EXPECT_EQ(channel.Deadline(second), start + second);
    channel.Heard(two, start + second / 2);
    EXPECT_EQ(channel.Deadline(second), start + second);
    channel.Heard(one, start + second / 2);
    EXPECT_EQ(channel.Deadline(second), start + second / 2 + second);
}

} // namespace
