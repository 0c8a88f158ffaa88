#include "Protocol/GvcpCodec.h"

#include <algorithm>

namespace vcam {

namespace {
constexpr uint8_t kCommandKey = 0x42;
}

bool ParseCommand(const uint8_t* datagram, size_t length, GvcpCommand& command) {
    if (length < kGvcpHeaderLength || datagram[0] != kCommandKey)
        return false;
    const size_t payloadLength = Get16(datagram + 4);
    if (payloadLength > length - kGvcpHeaderLength)
        return false;
    command.flags = datagram[1];
    command.code = static_cast<CommandCode>(Get16(datagram + 2));
    command.requestId = Get16(datagram + 6);
    command.payload = datagram + kGvcpHeaderLength;
    command.payloadLength = payloadLength;
    return true;
}

std::optional<ForceIpRequest> ParseForceIp(const GvcpCommand& command) {
    if (command.payloadLength != 56)
        return std::nullopt;
    ForceIpRequest request;
    std::copy_n(command.payload + 2, 6, request.mac.begin());
    request.address = Get32(command.payload + 20);
    request.mask = Get32(command.payload + 36);
    request.gateway = Get32(command.payload + 52);
    return request;
}

std::optional<std::vector<uint32_t>> ParseReadRegister(const GvcpCommand& command) {
    if (command.payloadLength == 0 || command.payloadLength % 4 != 0 ||
        command.payloadLength > kGvcpMaxPayload)
        return std::nullopt;
    std::vector<uint32_t> addresses;
    for (size_t at = 0; at < command.payloadLength; at += 4)
        addresses.push_back(Get32(command.payload + at));
    return addresses;
}

std::optional<std::vector<RegisterWrite>> ParseWriteRegister(const GvcpCommand& command) {
    if (command.payloadLength == 0 || command.payloadLength % 8 != 0 ||
        command.payloadLength > kGvcpMaxPayload)
        return std::nullopt;
    std::vector<RegisterWrite> writes;
    for (size_t at = 0; at < command.payloadLength; at += 8)
        writes.push_back({Get32(command.payload + at), Get32(command.payload + at + 4)});
    return writes;
}

std::optional<MemoryRead> ParseReadMemory(const GvcpCommand& command) {
    if (command.payloadLength != 8)
        return std::nullopt;
    return MemoryRead{Get32(command.payload), Get16(command.payload + 6)};
}

std::optional<MemoryWrite> ParseWriteMemory(const GvcpCommand& command) {
    if (command.payloadLength <= 4 || command.payloadLength > kGvcpMaxPayload)
        return std::nullopt;
    return MemoryWrite{Get32(command.payload), command.payload + 4, command.payloadLength - 4};
}

std::optional<ResendRequest> ParsePacketResend(const GvcpCommand& command) {
    ResendRequest request;
    if (command.HasExtendedIds()) {
        if (command.payloadLength != 20)
            return std::nullopt;
        request.blockId = Get64(command.payload + 12);
        request.firstPacket = Get32(command.payload + 4);
        request.lastPacket = Get32(command.payload + 8);
    } else {
        if (command.payloadLength != 12)
            return std::nullopt;
        request.blockId = Get16(command.payload + 2);
        request.firstPacket = Get32(command.payload + 4) & 0xFFFFFF;
        request.lastPacket = Get32(command.payload + 8) & 0xFFFFFF;
    }
    request.channel = Get16(command.payload);
    return request;
}

Bytes EncodeAnswer(Status status, uint16_t answerCode, uint16_t requestId, const Bytes& payload) {
    Bytes datagram(kGvcpHeaderLength + payload.size());
    Put16(datagram.data(), static_cast<uint16_t>(status));
    Put16(datagram.data() + 2, answerCode);
    Put16(datagram.data() + 4, static_cast<uint16_t>(payload.size()));
    Put16(datagram.data() + 6, requestId);
    std::copy(payload.begin(), payload.end(), datagram.begin() + kGvcpHeaderLength);
    return datagram;
}

Bytes EncodeWriteAnswer(Status status, CommandCode command, uint16_t requestId, uint16_t written) {
    Bytes payload(4);
    Put16(payload.data() + 2, written);
    return EncodeAnswer(status, AnswerCode(command), requestId, payload);
}

Bytes EncodePending(uint16_t requestId, uint16_t milliseconds) {
    Bytes payload(4);
    Put16(payload.data() + 2, milliseconds);
    return EncodeAnswer(Status::Success, AnswerCode(CommandCode::Pending), requestId, payload);
}

} // namespace vcam
