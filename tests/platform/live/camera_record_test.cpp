#include "CameraRecord.h"

#include "Records.h"

#include <gtest/gtest.h>

using live::CameraText;
using live::IpFromText;
using live_test::Gige;
using live_test::Usb;

namespace {

std::string Text(const std::string& field) {
    return CameraText(field.data(), field.size());
}

TEST(CameraText, EndsAtTheFirstNul) {
    EXPECT_EQ(Text(std::string("abc\0def", 7)), "abc");
}

TEST(CameraText, EndsAtTheFieldWhenThereIsNoNul) {
    const char field[4] = {'a', 'b', 'c', 'd'};
    EXPECT_EQ(CameraText(field, sizeof field), "abcd");
}

TEST(CameraText, KeepsUtf8) {
    EXPECT_EQ(Text("Kamera \xC3\xA4\xE7\x9B\xB8\xF0\x9F\x93\xB7"),
              "Kamera \xC3\xA4\xE7\x9B\xB8\xF0\x9F\x93\xB7");
}

TEST(CameraText, ConvertsGb18030) {
    EXPECT_EQ(Text("\xCF\xE0\xBB\xFA 1"), "\xE7\x9B\xB8\xE6\x9C\xBA 1");
}

TEST(CameraText, ReplacesWhatIsNeither) {
    EXPECT_EQ(Text("a\xFF\xFF"
                   "b"),
              "a??b");
}

TEST(CameraText, OverlongAndSurrogateFormsAreNotUtf8) {
    EXPECT_EQ(Text("\xC0\xAF").find('/'), std::string::npos);
    EXPECT_NE(Text("\xED\xA0\x80"), "\xED\xA0\x80");
    EXPECT_NE(Text("\xF4\x90\x80\x80"), "\xF4\x90\x80\x80");
}

TEST(CameraText, NeverSendsControlsToTheTerminal) {
    EXPECT_EQ(Text("a\x1B[2Jb\nc\x7F"), "a?[2Jb?c?");
    EXPECT_EQ(Text("a\xC2\x9B"
                   "2Jb"),
              "a?2Jb"); // the one-character form of Esc [
}

TEST(CameraText, LosesTrailingSpaces) {
    EXPECT_EQ(Text("a b  "), "a b");
    EXPECT_EQ(Text("   "), "");
}

TEST(Ip, BothWays) {
    EXPECT_EQ(IpFromText("192.168.0.255"), 0xC0A800FFU);
    EXPECT_EQ(live::IpText(0xC0A800FF), "192.168.0.255");
    EXPECT_EQ(IpFromText("0.0.0.0"), 0U);
}

TEST(Ip, RefusesEverythingElse) {
    for (const char* text : {"", "1", "1.2.3", "1.2.3.", "1.2.3.4.", "1.2.3.4.5", "1.2.3.256", "1..2.3",
                             "a.2.3.4", " 1.2.3.4", "1.2.3.4 ", "1.2.3.-4", "1.2.3.0004", "+1.2.3.4"})
        EXPECT_EQ(IpFromText(text), std::nullopt) << text;
}

TEST(CameraRecord, Mac) {
    EXPECT_EQ(live::MacText(Gige("10.0.0.2", "S1")), "0C:1D:AA:BB:00:01");
}

TEST(CameraRecord, TitleTellsHowItIsReached) {
    EXPECT_EQ(live::TitleOf(Gige("10.0.0.2", "S1")), "VC-1 S1 (10.0.0.2)");
    EXPECT_EQ(live::TitleOf(Usb("U1")), "UC-2 U1 (USB)");
    EXPECT_EQ(live::TitleOf(live::RemoteRecord(live_test::Ip("1.2.3.4"))), "1.2.3.4");
}

TEST(CameraRecord, ForeignSubnetByTheCamerasMask) {
    EXPECT_FALSE(live::OnForeignSubnet(Gige("10.0.0.2", "S1", "", "10.0.0.1")));
    EXPECT_TRUE(live::OnForeignSubnet(Gige("10.0.1.2", "S1", "", "10.0.0.1")));
    EXPECT_FALSE(live::OnForeignSubnet(Usb("U1")));
    EXPECT_FALSE(live::OnForeignSubnet(live::RemoteRecord(live_test::Ip("1.2.3.4"))));
}

TEST(CameraRecord, TheMacTellsCamerasApart) {
    EXPECT_TRUE(live::SameCamera(Gige("10.0.0.2", "S1"), Gige("10.0.9.9", "S1", "", "10.0.9.1")));
    EXPECT_FALSE(live::SameCamera(Gige("10.0.0.2", "S1", "", "10.0.0.1", 1),
                                  Gige("10.0.0.2", "S1", "", "10.0.0.1", 2)));
    EXPECT_TRUE(live::SameCamera(live::RemoteRecord(live_test::Ip("10.0.0.2")), Gige("10.0.0.2", "S1")));
    EXPECT_TRUE(live::SameCamera(Usb("U1"), Usb("U1", "other name")));
    EXPECT_FALSE(live::SameCamera(Usb("U1"), Usb("U2")));
    EXPECT_FALSE(live::SameCamera(Usb("U1"), Gige("10.0.0.2", "U1")));
}

} // namespace
