// The plain values that decide how a picture looks: what tells two apart, HDR's turns, and the block of
// facts.
#include "Camera/EmbeddedImageInfo.h"
#include "Picture/EmbeddedBlock.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using vcam::FrameFacts;
using vcam::LookupTable;
using vcam::PictureSettings;

TEST(PictureSettings, EachFieldTellsTwoApart) {
    struct Row {
        const char* field;
        std::function<void(PictureSettings&)> change;
    };
    const Row rows[] = {
        {"width", [](auto& s) { s.width = 8; }},
        {"height", [](auto& s) { s.height = 8; }},
        {"offsetX", [](auto& s) { s.offsetX = 2; }},
        {"offsetY", [](auto& s) { s.offsetY = 2; }},
        {"binningHorizontal", [](auto& s) { s.binningHorizontal = 2; }},
        {"binningVertical", [](auto& s) { s.binningVertical = 2; }},
        {"reverseX", [](auto& s) { s.reverseX = true; }},
        {"reverseY", [](auto& s) { s.reverseY = true; }},
        {"pixelFormat", [](auto& s) { s.pixelFormat = 0x01080001; }},
        {"testPattern", [](auto& s) { s.testPattern = vcam::TestPattern::White; }},
        {"exposure", [](auto& s) { s.exposure += 1; }},
        {"gain", [](auto& s) { s.gain = 0.1; }},
        {"blackLevel", [](auto& s) { s.blackLevel = 1; }},
        {"red balance", [](auto& s) { s.balance[0] = 1; }},
        {"green balance", [](auto& s) { s.balance[1] = 1; }},
        {"blue balance", [](auto& s) { s.balance[2] = 1; }},
        {"hueEnable", [](auto& s) { s.hueEnable = true; }},
        {"hue", [](auto& s) { s.hue = 1; }},
        {"saturationEnable", [](auto& s) { s.saturationEnable = true; }},
        {"saturation", [](auto& s) { s.saturation = 1; }},
        {"gammaEnable", [](auto& s) { s.gammaEnable = true; }},
        {"gammaCurve", [](auto& s) { s.gammaCurve = vcam::GammaCurve::Srgb; }},
        {"gamma", [](auto& s) { s.gamma = 2; }},
        {"lookupEnable", [](auto& s) { s.lookupEnable = true; }},
        {"lookup", [](auto& s) { s.lookup = std::make_shared<LookupTable>(); }},
        {"sharpnessEnable", [](auto& s) { s.sharpnessEnable = true; }},
        {"sharpness", [](auto& s) { s.sharpness = 1; }},
        {"hdrEnable", [](auto& s) { s.hdrEnable = true; }},
        {"exposure of a set", [](auto& s) { s.hdr[3].exposure = 1; }},
        {"gain of a set", [](auto& s) { s.hdr[1].gain = 1; }},
        {"embedded", [](auto& s) { s.embedded = 1; }},
    };
    EXPECT_EQ(PictureSettings(), PictureSettings());
    for (const Row& row : rows) {
        PictureSettings changed;
        row.change(changed);
        EXPECT_NE(changed, PictureSettings()) << row.field;
        EXPECT_EQ(changed, PictureSettings(changed)) << row.field;
    }
}

TEST(PictureSettings, TablesAreComparedByWhatTheyHold) {
    PictureSettings a;
    PictureSettings b;
    a.lookup = std::make_shared<LookupTable>(vcam::IdentityLookup());
    b.lookup = std::make_shared<LookupTable>(vcam::IdentityLookup());
    EXPECT_EQ(a, b);
    LookupTable other = vcam::IdentityLookup();
    other[1023] = 7;
    b.lookup = std::make_shared<LookupTable>(other);
    EXPECT_NE(a, b);
}

TEST(PictureSettings, IdentityTableSpansTheWholeRange) {
    const LookupTable table = vcam::IdentityLookup();
    EXPECT_EQ(table.front(), 0);
    EXPECT_EQ(table.back(), vcam::kMostLookupValue);
    for (size_t i = 0; i < table.size(); ++i)
        EXPECT_EQ(table[i] >> 2, static_cast<int>(i));
}

TEST(PictureSettings, HdrSetsTakeTurns) {
    PictureSettings settings;
    settings.exposure = 111;
    settings.gain = 1;
    for (uint32_t set = 0; set < vcam::kHdrSets; ++set)
        settings.hdr[set] = {1000.0 * (set + 1), 2.0 * set};
    for (const uint32_t number : {0u, 1u, 5u, 0xFFFFFFFFu})
        EXPECT_EQ(vcam::SettingsOfFrame(settings, number), settings) << "off";
    settings.hdrEnable = true;
    for (const uint32_t number : {0u, 1u, 2u, 3u, 4u, 5u, 4094u, 0xFFFFFFFFu}) {
        const PictureSettings of = vcam::SettingsOfFrame(settings, number);
        EXPECT_EQ(of.exposure, 1000.0 * (number % 4 + 1)) << number;
        EXPECT_EQ(of.gain, 2.0 * (number % 4)) << number;
        EXPECT_FALSE(of.hdrEnable);
        EXPECT_EQ(of, vcam::SettingsOfFrame(settings, number + 4)) << "a painted picture serves again";
    }
}

/* The block. Bytes by hand first, then what a client's decoder makes of them. */

PictureSettings Settings(uint32_t selection) {
    PictureSettings s;
    s.width = 1928;
    s.height = 0x1234;
    s.offsetX = 0x0ABC;
    s.offsetY = 0x0DE5;
    s.exposure = 70000.4;
    s.gain = 12.3456;
    s.blackLevel = 300;
    s.balance = {1500, 1024, 2047};
    s.embedded = selection;
    return s;
}

FrameFacts Facts() {
    FrameFacts facts;
    // 3 s beyond one turn of 32, cycle 7999, and 100 us into it
    facts.timestamp = 35ull * 1000000000 + 7999ull * 125000 + 100000;
    facts.number = 0x01020304;
    facts.triggers = 258;
    facts.inputs = 0x05;
    facts.outputs = 0x82;
    return facts;
}

std::vector<uint8_t> Block(const PictureSettings& settings, size_t room = 64) {
    std::vector<uint8_t> block(room, 0xEE);
    block.resize(vcam::WriteEmbeddedBlock(settings, Facts(), block.data(), block.size()));
    return block;
}

TEST(EmbeddedBlock, BytesOfEachFact) {
    const uint32_t stamp = 3u << 27 | 7999u << 14 | 2457u; // 100 of 125 us are 2457.6 of 3072 ticks
    const auto byte = [](uint32_t word, int index) { return static_cast<uint8_t>(word >> 8 * index); };
    const std::vector<uint8_t> expected[] = {
        {byte(stamp, 0), byte(stamp, 1), byte(stamp, 2), byte(stamp, 3)},
        {0x3A, 0x30, 0, 0},                // 12346
        {0x70, 0x11, 0x01, 0},             // 70000
        {0x2C, 0x01, 0, 0},                // 300
        {0xDC, 0x05, 0, 4, 0xFF, 7, 0, 0}, // 1500, 1024, 2047
        {4, 3, 2, 1},
        {2, 1, 0, 0},
        {5, 0x82, 0, 0},
        {0xBD, 0x0A, 0xE5, 0x0D, 0x88, 0x07, 0x34, 0x12},
    };
    std::vector<uint8_t> all;
    for (uint32_t fact = 0; fact < vcam::kFrameFacts; ++fact) {
        EXPECT_EQ(Block(Settings(1u << fact)), expected[fact]) << "fact " << fact;
        EXPECT_EQ(vcam::EmbeddedBytes(1u << fact), expected[fact].size()) << "fact " << fact;
        all.insert(all.end(), expected[fact].begin(), expected[fact].end());
    }
    EXPECT_EQ(Block(Settings(0x1FF)), all);
    EXPECT_EQ(vcam::EmbeddedBytes(0x1FF), 44u);
}

TEST(EmbeddedBlock, NothingSelectedWritesNothing) {
    EXPECT_TRUE(Block(Settings(0)).empty());
    EXPECT_TRUE(Block(Settings(0xFFFFFE00)).empty()) << "bits without a fact";
}

TEST(EmbeddedBlock, ClientReadsWhatTheCameraMeant) {
    for (uint32_t selection = 0; selection < 0x200; ++selection) { // every choice of facts
        const std::vector<uint8_t> block = Block(Settings(selection));
        ASSERT_EQ(block.size(), vcam::EmbeddedBytes(selection));
        const _EMBEDDED_IMAGE_INFO_ info = DecodeEmbeddedBlock(block.data(), block.size(), selection);
        const auto value = [&](unsigned bit, uint32_t expected) {
            return (selection >> bit & 1) != 0 ? expected : 0;
        };
        ASSERT_EQ(info.secondCount, value(0, 3)) << selection;
        ASSERT_EQ(info.cycleCount, value(0, 7999)) << selection;
        ASSERT_EQ(info.cycleOffset, value(0, 2457)) << selection;
        ASSERT_FLOAT_EQ(info.gain, (selection & 2) != 0 ? 12.346f : 0.0f) << selection;
        ASSERT_EQ(info.exposure, static_cast<float>(value(2, 70000))) << selection;
        ASSERT_EQ(info.brightness, value(3, 300)) << selection;
        ASSERT_EQ(info.red, value(4, 1500)) << selection;
        ASSERT_EQ(info.green, value(4, 1024)) << selection;
        ASSERT_EQ(info.blue, value(4, 2047)) << selection;
        ASSERT_EQ(info.frameNumber, value(5, 0x01020304)) << selection;
        ASSERT_EQ(info.triggerCount, value(6, 258)) << selection;
        ASSERT_EQ(info.input, value(7, 5)) << selection;
        ASSERT_EQ(info.output, value(7, 0x82)) << selection;
        ASSERT_EQ(info.offsetX, value(8, 0x0ABC)) << selection;
        ASSERT_EQ(info.offsetY, value(8, 0x0DE5)) << selection;
        ASSERT_EQ(info.width, value(8, 1928)) << selection;
        ASSERT_EQ(info.height, value(8, 0x1234)) << selection;
    }
}

TEST(EmbeddedBlock, RegionInBothForms) {
    struct Row {
        uint32_t offsetX, offsetY, width, height;
        uint32_t readOffsetX;
        bool packed;
    };
    const Row rows[] = {
        {0, 0, 1920, 1080, 0, false},   {65534, 65535, 65534, 65535, 65534, false},
        {7, 9, 640, 480, 6, false},     {0, 0, 4095, 65535, 0, true},
        {4094, 4095, 1, 1, 4094, true}, {0x123, 0x456, 0x789, 0xABC, 0x122, true},
    };
    for (const Row& row : rows) {
        PictureSettings settings = Settings(1u << 8);
        settings.offsetX = row.offsetX;
        settings.offsetY = row.offsetY;
        settings.width = row.width;
        settings.height = row.height;
        const std::vector<uint8_t> block = Block(settings);
        EXPECT_EQ((block.at(0) & 1) == 0, row.packed);
        const _EMBEDDED_IMAGE_INFO_ info = DecodeEmbeddedBlock(block.data(), block.size(), 1u << 8);
        EXPECT_EQ(info.offsetX, row.readOffsetX) << "an odd offset has no place in either form";
        EXPECT_EQ(info.offsetY, row.offsetY);
        EXPECT_EQ(info.width, row.width);
        EXPECT_EQ(info.height, row.height);
    }
}

TEST(EmbeddedBlock, NegativeValuesKeepTheirSign) {
    PictureSettings settings = Settings(1u << 1 | 1u << 3);
    settings.gain = -1.5;
    settings.blackLevel = -20;
    const std::vector<uint8_t> block = Block(settings);
    const _EMBEDDED_IMAGE_INFO_ info = DecodeEmbeddedBlock(block.data(), block.size(), settings.embedded);
    EXPECT_FLOAT_EQ(info.gain, -1.5f);
    EXPECT_EQ(static_cast<int32_t>(info.brightness), -20);
}

TEST(EmbeddedBlock, StaysWithinASmallPicture) {
    for (size_t room = 0; room < 44; ++room) {
        const std::vector<uint8_t> block = Block(Settings(0x1FF), room);
        EXPECT_LE(block.size(), room);
        const std::vector<uint8_t> whole = Block(Settings(0x1FF));
        EXPECT_TRUE(std::equal(block.begin(), block.end(), whole.begin()));
    }
    EXPECT_EQ(Block(Settings(0x1FF), 23).size(), 16u) << "no part of a fact";
}

} // namespace
