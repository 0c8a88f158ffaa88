#include "Common/QFunction.h"

#include <QObject>
#include <QVector>
#include <gtest/gtest.h>
#include <ostream>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(Addresses, TextToNumber) {
    EXPECT_EQ(QFunction::GetIP(QString("192.168.1.20")), 0xC0A80114u);
    EXPECT_EQ(QFunction::GetIP(QString("0.0.0.0")), 0u);
    EXPECT_EQ(QFunction::GetIP(QString()), 0u);
    EXPECT_EQ(QFunction::GetIP(QString("10.1")), 0x0A010000u);
    EXPECT_EQ(QFunction::GetIP(QString("255.255.255.255")), 0xFFFFFFFFu);
}

TEST(Addresses, NumberToText) {
    EXPECT_EQ(QFunction::GetIP(0xC0A80114u), "192.168.1.20");
    EXPECT_EQ(QFunction::GetIP(0u), "0.0.0.0");
    EXPECT_EQ(QFunction::GetIP(0xFFFFFFFFu), "255.255.255.255");
}

TEST(Addresses, MacIsOfTheLower48Bits) {
    EXPECT_EQ(QFunction::GetMacAddr(0x0A1B2C3D4E5Full), "0A:1B:2C:3D:4E:5F");
    EXPECT_EQ(QFunction::GetMacAddr(0xFFFF0A1B2C3D4E5Full), "0A:1B:2C:3D:4E:5F");
    EXPECT_EQ(QFunction::GetMacAddr(0), "00:00:00:00:00:00");
}

struct AddressRow {
    const char* text;
    bool address;
    bool mask;
};

void PrintTo(const AddressRow& row, std::ostream* out) {
    *out << row.text;
}

class AddressCheck : public testing::TestWithParam<AddressRow> {};

TEST_P(AddressCheck, Row) {
    EXPECT_EQ(QFunction::CheckIPAddress(GetParam().text), GetParam().address) << GetParam().text;
    EXPECT_EQ(QFunction::CheckSubNetMask(GetParam().text), GetParam().mask) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    All, AddressCheck,
    testing::Values(AddressRow{"1.2.3.256", false, false}, AddressRow{"0.1.2.3", false, true},
                    AddressRow{"127.0.0.1", false, true}, AddressRow{"224.0.0.1", false, true},
                    AddressRow{"1..2.3", false, false}, AddressRow{"223.255.255.255", true, true},
                    AddressRow{"1.0.0.0", true, true}, AddressRow{"255.0.255.0", false, true},
                    AddressRow{"0.0.0.0", false, true}, AddressRow{"", false, false},
                    AddressRow{"1.2.3", false, false}, AddressRow{"1.2.3.4.5", false, false},
                    AddressRow{"1.2.3.", false, false}, AddressRow{"1.2.3.a", false, false},
                    AddressRow{"1.2.3.-4", false, false}, AddressRow{" 1.2.3.4", false, false},
                    AddressRow{"1.2.3.99999999999999999999", false, false},
                    AddressRow{"001.002.003.004", true, true}));

TEST(Numbers, OnlyAsciiDigits) {
    EXPECT_TRUE(QFunction::CheckIsNumber("0123456789"));
    EXPECT_TRUE(QFunction::CheckIsNumber("")) << "an empty text is a number";
    EXPECT_FALSE(QFunction::CheckIsNumber("12 "));
    EXPECT_FALSE(QFunction::CheckIsNumber("-1"));
    EXPECT_FALSE(QFunction::CheckIsNumber(QString::fromUtf8("\xD9\xA1"))) << "Arabic-Indic digit one";
}

TEST(Numbers, HexIsLowerCaseAndUnsigned) {
    EXPECT_EQ(QFunction::Int2HexNumberQString(255), "0xff");
    EXPECT_EQ(QFunction::Int2HexNumberQString(0), "0x0");
    EXPECT_EQ(QFunction::Int2HexNumberQString(-1), "0xffffffff");
}

TEST(Numbers, FloatGetsAnEpsilon) {
    EXPECT_FLOAT_EQ(QFunction::QString2Float("1.5"), 1.5f);
    EXPECT_EQ(QFunction::QString2Float("0"), 1e-08f);
    EXPECT_EQ(QFunction::QString2Float("x"), 1e-08f);
}

TEST(Text, IllegalCharactersGo) {
    QString text = "a%b/c:d?e>f\\g'h\"i*j<k|l.m";
    QFunction::RemoveIllegalChar(text);
    EXPECT_EQ(text, "abcdefghijkl.m");
}

TEST(Text, BytesToText) {
    EXPECT_EQ(QFunction::CharsToQString("camera", 6), "camera");
    EXPECT_EQ(QFunction::CharsToQString("camera", 3), "cam");
    EXPECT_EQ(QFunction::CharsToQString("camera", 0), "");
    EXPECT_EQ(QFunction::CharsToQString("camera", -1), "");
    EXPECT_EQ(QFunction::CharsToQString(nullptr, 4), "");
    EXPECT_EQ(QFunction::CharsToQString("ab\0cd", 5), "ab") << "up to the first zero";
}

TEST(Text, AShorterTextAfterALongerOneHasNoTail) {
    EXPECT_EQ(QFunction::CharsToQString("abcdefgh", 8), "abcdefgh");
    EXPECT_EQ(QFunction::CharsToQString("xyz", 3), "xyz");
    EXPECT_EQ(QFunction::CharsToQString("12345678", 8), "12345678");
}

TEST(Text, LongestTextIs0x800000Bytes) {
    const std::string longest(0x800000, 'k');
    EXPECT_EQ(QFunction::CharsToQString(longest.c_str(), 0x800000).size(), 0x800000);
    EXPECT_EQ(QFunction::CharsToQString(longest.c_str(), 0x800001).size(), 0);
}

TEST(Text, TextToBytes) {
    char buffer[129] = {};
    QFunction::QStringToChars("line 3", buffer, 129);
    EXPECT_STREQ(buffer, "line 3");

    char stopped[129] = {};
    QFunction::QStringToChars("abcabc", stopped, 'b');
    EXPECT_STREQ(stopped, "ab") << "the third value is the stop character";

    char kept[8] = {'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x'};
    QFunction::QStringToChars("ab", kept, 129);
    EXPECT_EQ(kept[2], 'x') << "no terminator is added";

    char small[5] = {};
    QFunction::QStringToChars("0123456789", small, 129);
    EXPECT_STREQ(small, "0123") << "never past the buffer, and a cleared buffer stays terminated";
    QFunction::QStringToChars("abc", nullptr, 129, 4);
}

struct ErrorRow {
    int code;
    const char* text;
};

const ErrorRow kErrors[] = {
    {-1, "Operation failed."},
    {-2, "Application memory failed."},
    {-3, "Startup thread failed."},
    {-4, "Null pointer return."},
    {-5, "Failed to create the device."},
    {-6, "Failed to connect the camera."},
    {-7, "Failed to get the XML file."},
    {-8, "Failed to get the frame data."},
    {-9, "Failed to start capturing."},
    {-10, "Failed to stop capturing."},
    {-11, "Failed to get TL proxy."},
    {-12, "Failed to generate node mapping."},
    {-13, "Failed to display the image in the specified region of selected window."},
    {-14, "Failed to get the color."},
    {-15, "Failed to get the device information."},
    {-16, "Opening XML file failed."},
    {-17, "The live view is not enabled."},
    {-18, "Pixel format is not supported."},
    {-19, "Saving picture failed."},
    {-20, "Pixel format is not supported."},
    {-21, "Failed to create handle of stream media library."},
    {-22, "The device is unreachable. Please modify its IP address with IP configurator."},
    {-23, "Please ensure that device is inserted in the USB 3.0 port of the PC."},
    {-24, "No frame data."},
    {-25, "File operation failed.Please make sure HDD is not full."},
    {-26, "Invalid path."},
    {-27, "No permission."},
    {-28, "No support image format."},
    {-50, "Incorrect or invalid handle."},
    {-51, "Not supported."},
    {-52, "Buffer is full.The resolution is not supported."},
    {-53, "Calling function error."},
    {-54, "Incorrect parameters."},
    {-55, "Failed to get the resource.."},
    {-56, "Network error. Please modify the camera IP address with IP configurator to ensure the camera is "
          "reachable."},
    {-57, "No data."},
    {-58, "Precondition error or the running environment has changed. Please ensure that the device is not "
          "in use."},
    {-59, "Packet error."},
    {-60, "Version error. Please ensure the driver version and SDK version match exactly."},
    {-61,
     "IP address conflicted. Please check whether there is camera with the same IP address in the subnet."},
    {-70, "GenIcam: General error."},
    {-71, "GenIcam: Invalid parameter."},
    {-72, "GenIcam: Parameter is out of range."},
    {-73, "GenIcam: Attribute error."},
    {-74, "GenIcam: Running environment error."},
    {-75, "GenIcam: Logical error."},
    {-76, "GenIcam: Access permission error."},
    {-77, "GenIcam: Timeout."},
    {-78, "GenIcam: Transforming error."},
    {-100, "Not supported."},
    {-101, "Invalid address."},
    {-102, "The address is read only."},
    {-103, "Failed to get the permission. The device is in use."},
    {-104, "Failed to connect the camera. Network error."},
    {-105, "Unknown error. Failed to connect the camera."},
    {-106, "Operation failed."},
    {0, "Operation failed."},
    {1, "Operation failed."},
    {2147483647, "Operation failed."},
    {-29, "Operation failed."},
};

TEST(Errors, EveryCodeHasItsText) {
    for (const ErrorRow& row : kErrors)
        EXPECT_EQ(QFunction::GenerateCameraOperateError(row.code), row.text) << row.code;
}

TEST(Errors, StatusesMapToCodes) {
    const std::pair<uint32_t, int> rows[] = {{0x80000000, -50},
                                             {0x80000001, -51},
                                             {0x80000002, -52},
                                             {0x80000003, -53},
                                             {0x80000004, -54},
                                             {0x80000006, -55},
                                             {0x80000007, -57},
                                             {0x80000008, -58},
                                             {0x80000009, -60},
                                             {0x800000FF, -105},
                                             {0x80000100, -70},
                                             {0x80000101, -71},
                                             {0x80000102, -72},
                                             {0x80000103, -73},
                                             {0x80000104, -74},
                                             {0x80000105, -75},
                                             {0x80000106, -76},
                                             {0x80000107, -77},
                                             {0x80000108, -78},
                                             {0x80000200, -100},
                                             {0x80000201, -101},
                                             {0x80000202, -102},
                                             {0x80000203, -103},
                                             {0x80000204, -104},
                                             {0x80000205, -59},
                                             {0x80000206, -56},
                                             {0x80000221, -61},
                                             // Not in the table.
                                             {0x80000005, -105},
                                             {0x80000010, -105},
                                             {0x80000222, -105},
                                             {0, -105},
                                             {1, -105},
                                             {0xFFFFFFFF, -105}};
    for (const auto& [status, code] : rows)
        EXPECT_EQ(QFunction::GenerateORVErrCode(status), code) << std::hex << status;
}

TEST(CameraIds, CountUpFromOneAndAreNeverGivenTwice) {
    const long first = QFunction::GetCameraIDIndex();
    EXPECT_GE(first, 1);
    std::vector<std::thread> threads;
    std::vector<std::vector<long>> ids(4);
    for (auto& list : ids)
        threads.emplace_back([&list] {
            for (int i = 0; i < 1000; ++i)
                list.push_back(QFunction::GetCameraIDIndex());
        });
    for (auto& thread : threads)
        thread.join();
    std::set<long> all;
    for (const auto& list : ids)
        all.insert(list.begin(), list.end());
    EXPECT_EQ(all.size(), 4000u);
    EXPECT_EQ(*all.rbegin(), first + 4000);
}

TEST(Signals, LogAndStatusBarCross) {
    QVector<QString> seen;
    QObject receiver;
    QObject::connect(QFunction::Instance(), &QFunction::SigShowMessage, &receiver,
                     [&](int level, const QString& source, const QString& text) {
                         seen << QString("%1|%2|%3").arg(level).arg(source, text);
                     });
    QObject::connect(
        QFunction::Instance(), &QFunction::SigShowStatusBarMsg, &receiver,
        [&](const QString& text, int timeout) { seen << QString("%1|%2").arg(text).arg(timeout); });
    QFunction::Instance()->InsertMessageLog(MESSAGE_LOG_WARNING, "KOLT CAPTURE", "hello");
    QFunction::Instance()->ShowStatusBarMsg("ready", 3000);
    ASSERT_EQ(seen.size(), 2);
    EXPECT_EQ(seen[0], "2|KOLT CAPTURE|hello");
    EXPECT_EQ(seen[1], "ready|3000");
    QFunction::Release();
    EXPECT_NE(QFunction::Instance(), nullptr);
    QFunction::Release();
    QFunction::Release();
}

TEST(Messages, GoToThePresenter) {
    QString shown;
    QFunction::SetMessagePresenter([&shown](QWidget* parent, const QString& message, const QString& detail,
                                            const QString& title, int kind) {
        shown = QString("%1|%2|%3|%4|%5").arg(parent == nullptr).arg(message, detail, title).arg(kind);
    });
    QFunction::ShowMessage(nullptr, "No camera.", "Check the cable.", "Hint", MESSAGE_WARNING);
    EXPECT_EQ(shown, "1|No camera.|Check the cable.|Hint|2");
    QFunction::SetMessagePresenter({});
    QFunction::ShowMessage(nullptr, "a", "b", "c", MESSAGE_ERROR);
    EXPECT_EQ(shown, "1|No camera.|Check the cable.|Hint|2") << "without a presenter nothing happens";
}

} // namespace
