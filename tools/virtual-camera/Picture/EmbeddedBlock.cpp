#include "Picture/EmbeddedBlock.h"

#include <algorithm>
#include <cmath>

namespace vcam {

namespace {

constexpr uint64_t kNanosPerSecond = 1000000000;
constexpr uint64_t kNanosPerCycle = 125000;
constexpr uint64_t kTicksPerCycle = 3072; // 24.576 MHz

using Field = std::array<uint8_t, 8>;

bool Selected(uint32_t selection, uint32_t fact) {
    return ((selection >> fact) & 1) != 0;
}

size_t FieldBytes(FrameFact fact) {
    return fact == FrameFact::WhiteBalance || fact == FrameFact::Region ? 8 : 4;
}

void PutLittle16(uint8_t* to, uint32_t value) {
    to[0] = static_cast<uint8_t>(value);
    to[1] = static_cast<uint8_t>(value >> 8);
}

void PutLittle32(uint8_t* to, uint32_t value) {
    PutLittle16(to, value);
    PutLittle16(to + 2, value >> 16);
}

uint32_t Whole(double value) {
    return static_cast<uint32_t>(static_cast<int64_t>(std::llround(value)));
}

uint32_t TimestampWord(uint64_t nanos) {
    const uint64_t seconds = nanos / kNanosPerSecond % 32;
    const uint64_t within = nanos % kNanosPerSecond;
    const uint64_t cycle = within / kNanosPerCycle;
    const uint64_t offset = within % kNanosPerCycle * kTicksPerCycle / kNanosPerCycle;
    return static_cast<uint32_t>(seconds << 27 | cycle << 14 | offset);
}

void PutRegion(const PictureSettings& s, Field& field) {
    if ((s.width & 1) == 0) {
        PutLittle16(&field[0], s.offsetX | 1);
        PutLittle16(&field[2], s.offsetY);
        PutLittle16(&field[4], s.width);
        PutLittle16(&field[6], s.height);
        return;
    }
    PutLittle16(&field[0], (s.offsetX & 0xFFE) | (s.offsetY & 0xF) << 12);
    field[2] = static_cast<uint8_t>(s.offsetY >> 4);
    PutLittle16(&field[4], (s.width & 0xFFF) | (s.height & 0xF) << 12);
    field[6] = static_cast<uint8_t>(s.height >> 4);
    field[7] = static_cast<uint8_t>(s.height >> 12 & 0xF);
}

Field FieldOf(FrameFact fact, const PictureSettings& s, const FrameFacts& facts) {
    Field field{};
    switch (fact) {
    case FrameFact::Timestamp:
        PutLittle32(field.data(), TimestampWord(facts.timestamp));
        break;
    case FrameFact::Gain:
        PutLittle32(field.data(), Whole(s.gain * 1000));
        break;
    case FrameFact::Exposure:
        PutLittle32(field.data(), Whole(s.exposure));
        break;
    case FrameFact::Brightness:
        PutLittle32(field.data(), static_cast<uint32_t>(s.blackLevel));
        break;
    case FrameFact::WhiteBalance:
        PutLittle16(&field[0], s.balance[0]);
        PutLittle16(&field[2], s.balance[1]);
        PutLittle32(&field[4], s.balance[2]);
        break;
    case FrameFact::FrameNumber:
        PutLittle32(field.data(), facts.number);
        break;
    case FrameFact::TriggerCount:
        PutLittle32(field.data(), facts.triggers);
        break;
    case FrameFact::Lines:
        field[0] = facts.inputs;
        field[1] = facts.outputs;
        break;
    case FrameFact::Region:
        PutRegion(s, field);
        break;
    }
    return field;
}

} // namespace

size_t EmbeddedBytes(uint32_t selection) {
    size_t bytes = 0;
    for (uint32_t fact = 0; fact < kFrameFacts; ++fact)
        bytes += Selected(selection, fact) ? FieldBytes(static_cast<FrameFact>(fact)) : 0;
    return bytes;
}

size_t WriteEmbeddedBlock(const PictureSettings& settings, const FrameFacts& facts, uint8_t* picture,
                          size_t size) {
    size_t at = 0;
    for (uint32_t index = 0; index < kFrameFacts; ++index) {
        if (!Selected(settings.embedded, index))
            continue;
        const auto fact = static_cast<FrameFact>(index);
        const size_t length = FieldBytes(fact);
        if (length > size - at)
            break;
        const Field field = FieldOf(fact, settings, facts);
        std::copy_n(field.begin(), length, picture + at);
        at += length;
    }
    return at;
}

} // namespace vcam
