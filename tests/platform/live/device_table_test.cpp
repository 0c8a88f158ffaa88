#include "DeviceTable.h"

#include "Records.h"

#include <gmock/gmock.h>

#include <sstream>

using live::DeviceTable;
using live_test::Gige;
using live_test::Usb;
using testing::HasSubstr;

namespace {

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

TEST(DeviceTable, NoCamera) {
    EXPECT_EQ(DeviceTable({}), "0 cameras\n");
}

TEST(DeviceTable, HasEveryFieldOfAGigeRecord) {
    live::DeviceRecord record = Gige("10.0.0.11", "S1", "left");
    record.transport.gige.defaultGateway = live_test::Ip("10.0.0.254");
    const std::string text = DeviceTable({{record, true}});
    EXPECT_THAT(text, testing::StartsWith("1 camera\n"));
    for (const char* field :
         {"VC-1", "S1", "left", "10.0.0.11", "255.255.255.0", "10.0.0.254", "0C:1D:AA:BB:00:01", "10.0.0.1",
          "persistent+link-local", "free", "Zelkovant", "1.2", "a good camera"})
        EXPECT_THAT(text, HasSubstr(field));
    EXPECT_THAT(text, testing::Not(HasSubstr("USB3")));
}

TEST(DeviceTable, HasEveryFieldOfAUsbRecord) {
    const std::string text = DeviceTable({{Usb("U1", "top"), false}});
    for (const char* field : {"UC-2", "U1", "top", "2bdf:0001", "3.1", "in use", "Vendor", "Maker", "Family",
                              "3.4", "2BDF00000001"})
        EXPECT_THAT(text, HasSubstr(field));
    EXPECT_THAT(text, testing::Not(HasSubstr("GigE")));
}

TEST(DeviceTable, NumbersCountThroughBothTables) {
    const std::string text =
        DeviceTable({{Gige("10.0.0.1", "S1"), true}, {Usb("U2"), true}, {Gige("10.0.0.3", "S3"), true}});
    EXPECT_THAT(text, HasSubstr("\n1  VC-1   S1"));
    EXPECT_THAT(text, HasSubstr("\n2  UC-2   U2"));
    EXPECT_THAT(text, HasSubstr("\n3  VC-1   S3"));
}

TEST(DeviceTable, AccessInWords) {
    EXPECT_THAT(DeviceTable({{Gige("10.0.0.1", "S1"), false}}), HasSubstr("in use"));
    EXPECT_THAT(DeviceTable({{Gige("10.9.0.1", "S1"), false}}), HasSubstr("other subnet"));
    live::DeviceRecord boot = Usb("U1");
    boot.transport.usb3.controlInEndpoint = 0;
    EXPECT_THAT(DeviceTable({{boot, false}}), HasSubstr("boot loader"));
}

TEST(DeviceTable, ColumnsStandBelowEachOtherAlsoWithWideCharacters) {
    const auto lines = Lines(DeviceTable({{Gige("10.0.0.11", "S1", "\xE7\x9B\xB8\xE6\x9C\xBA"), true},
                                          {Gige("10.0.0.12", "S22", "abcd"), true}}));
    ASSERT_EQ(lines.size(), 6U);
    const auto column = [](const std::string& line, const char* text) {
        return live::TerminalWidth(line.substr(0, line.find(text)));
    };
    EXPECT_EQ(column(lines[3], "IP "), column(lines[4], "10.0.0.11"));
    EXPECT_EQ(column(lines[4], "10.0.0.11"), column(lines[5], "10.0.0.12"));
}

TEST(DeviceTable, EmptyFieldsAreDashes) {
    live::DeviceRecord record = live::RemoteRecord(live_test::Ip("10.0.0.5"));
    EXPECT_THAT(DeviceTable({{record, false}}), HasSubstr("1  -      -       -"));
}

TEST(DeviceTable, IpConfiguration) {
    EXPECT_EQ(live::IpConfigText(0), "-");
    EXPECT_EQ(live::IpConfigText(2), "DHCP");
    EXPECT_EQ(live::IpConfigText(7), "persistent+DHCP+link-local");
}

TEST(TerminalWidth, CountsColumns) {
    EXPECT_EQ(live::TerminalWidth(""), 0U);
    EXPECT_EQ(live::TerminalWidth("abc"), 3U);
    EXPECT_EQ(live::TerminalWidth("\xC3\xA4"), 1U);
    EXPECT_EQ(live::TerminalWidth("\xE7\x9B\xB8"), 2U);
    EXPECT_EQ(live::TerminalWidth("\xF0\xA0\x80\x80"), 2U);
}

} // namespace
