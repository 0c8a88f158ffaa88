// Records, their orders, and the texts made of them.
#include "UI/MainWindow/MsgLog.h"

#include <algorithm>
#include <cstring>
#include <gmock/gmock.h>
#include <ostream>

namespace {

QDateTime At(int millisecond, int second = 7) {
    return {QDate(2026, 3, 9), QTime(8, 5, second, millisecond)};
}

struct TimeRow {
    QDateTime dateTime;
    const char* text;
};
void PrintTo(const TimeRow& row, std::ostream* out) {
    *out << row.text;
}

class TimeText : public testing::TestWithParam<TimeRow> {};

TEST_P(TimeText, HasPartsOfAtLeastTwoDigits) {
    EXPECT_EQ(MsgLogTimeText(GetParam().dateTime).toStdString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Log, TimeText,
    testing::Values(TimeRow{At(0), "2026-03-09 08:05:07.00"}, TimeRow{At(5), "2026-03-09 08:05:07.05"},
                    TimeRow{At(42), "2026-03-09 08:05:07.42"}, TimeRow{At(100), "2026-03-09 08:05:07.100"},
                    TimeRow{At(999), "2026-03-09 08:05:07.999"},
                    TimeRow{{QDate(2026, 12, 31), QTime(23, 59, 59, 10)}, "2026-12-31 23:59:59.10"}));

TEST(LevelWord, IsTheWordOfEachLevel) {
    EXPECT_EQ(MsgLogLevelWord(MESSAGE_LOG_MESSAGE), "Message");
    EXPECT_EQ(MsgLogLevelWord(MESSAGE_LOG_CRITICAL), "Critical");
    EXPECT_EQ(MsgLogLevelWord(MESSAGE_LOG_WARNING), "Warning");
}

TEST(LevelOf, TakesWhatIsNoLevelForAMessage) {
    EXPECT_EQ(MsgLogLevelOf(0), MESSAGE_LOG_MESSAGE);
    EXPECT_EQ(MsgLogLevelOf(1), MESSAGE_LOG_CRITICAL);
    EXPECT_EQ(MsgLogLevelOf(2), MESSAGE_LOG_WARNING);
    for (const int number : {-1, 3, 7, 1 << 30})
        EXPECT_EQ(MsgLogLevelOf(number), MESSAGE_LOG_MESSAGE) << number;
}

TEST(CopyText, IsOneLineToTheCharacter) {
    EXPECT_EQ(MsgLogCopyText("Warning", "KOLT CAPTURE", At(5), "Disk is full.").toStdString(),
              "Level: Warning    Source: KOLT CAPTURE    Time: 2026-03-09 08:05:07.05    Message: Disk is "
              "full.\r\n");
}

std::vector<_STRU_MSG_LOG_> Unsorted() {
    return {{At(2), MESSAGE_LOG_MESSAGE, "c", "apple"},
            {At(3), MESSAGE_LOG_CRITICAL, "a", "Apple"},
            {At(1), MESSAGE_LOG_WARNING, "b", "Zoo"}};
}

QStringList Texts(const std::vector<_STRU_MSG_LOG_>& records) {
    QStringList texts;
    for (const auto& record : records)
        texts << record.text;
    return texts;
}

QStringList TextsAfter(int sort) {
    auto records = Unsorted();
    EXPECT_TRUE(SortMsgLog(records, sort));
    return Texts(records);
}

TEST(Sorting, IsAscendingByEachKey) {
    EXPECT_EQ(TextsAfter(MSG_LOG_SORT_TIME), (QStringList{"Zoo", "apple", "Apple"}));
    EXPECT_EQ(TextsAfter(MSG_LOG_SORT_LEVEL),
              (QStringList{"apple", "Apple", "Zoo"})); // message, critical, warning
    EXPECT_EQ(TextsAfter(MSG_LOG_SORT_SOURCE), (QStringList{"Apple", "Zoo", "apple"}));
    EXPECT_EQ(TextsAfter(MSG_LOG_SORT_TEXT), (QStringList{"Apple", "Zoo", "apple"})); // by code points
}

TEST(Sorting, ByWhatIsNoKeyChangesNothing) {
    for (const int sort : {-1, 4, 100}) {
        auto records = Unsorted();
        EXPECT_FALSE(SortMsgLog(records, sort));
        EXPECT_EQ(Texts(records), Texts(Unsorted()));
    }
}

TEST(Sorting, OfEqualsKeepsEveryRecord) {
    // Their order among each other isn't promised; that none is lost or doubled is.
    std::vector<_STRU_MSG_LOG_> records;
    for (int i = 0; i < 50; ++i)
        records.push_back({At(i), MsgLogLevelOf(i % 3), "s", QString::number(i)});
    ASSERT_TRUE(SortMsgLog(records, MSG_LOG_SORT_LEVEL));
    EXPECT_TRUE(std::is_sorted(records.begin(), records.end(), SortByLogLevel));
    std::vector<int> numbers;
    for (const auto& record : records)
        numbers.push_back(record.text.toInt());
    std::sort(numbers.begin(), numbers.end());
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(numbers.at(static_cast<size_t>(i)), i);
}

TEST(Orders, AreStrict) {
    for (const auto order : {SortByDataTime, SortByLogLevel, SortByLogSource, SortByLogMsg})
        for (const auto& record : Unsorted())
            EXPECT_FALSE(order(record, record));
}

TEST(FixedRecord, HasTheStatedLayout) {
    const FixedMsgLog fixed =
        MakeFixedMsgLog({At(5), MESSAGE_LOG_CRITICAL, "KOLT CAPTURE", QString::fromUtf8("Grüße 相")});
    EXPECT_STREQ(fixed.time.data(), "2026-03-09 08:05:07");
    EXPECT_EQ(fixed.level, 1);
    EXPECT_STREQ(fixed.source.data(), "KOLT CAPTURE");
    EXPECT_EQ(QString::fromLatin1(fixed.text.data()), QString::fromUtf8("Grüße ?"));
}

TEST(FixedRecord, CutsItsTexts) {
    const QString longText(1000, 'x');
    const FixedMsgLog fixed = MakeFixedMsgLog({At(5), MESSAGE_LOG_MESSAGE, longText, longText});
    EXPECT_EQ(std::strlen(fixed.text.data()), 512u);
    EXPECT_EQ(std::strlen(fixed.source.data()), 128u);
    EXPECT_EQ(std::strlen(MakeFixedMsgLog({At(5), MESSAGE_LOG_MESSAGE, "s", QString(512, 'y')}).text.data()),
              512u);
}

TEST(FixedRecord, OfATimeThatIsNoneStaysInItsBounds) {
    const FixedMsgLog fixed = MakeFixedMsgLog({QDateTime(), MESSAGE_LOG_MESSAGE, "s", "t"});
    EXPECT_LT(strnlen(fixed.time.data(), fixed.time.size()), fixed.time.size());
    const FixedMsgLog far =
        MakeFixedMsgLog({QDateTime(QDate(123456, 1, 1), QTime(0, 0)), MESSAGE_LOG_MESSAGE, "s", "t"});
    EXPECT_LT(strnlen(far.time.data(), far.time.size()), far.time.size());
}

} // namespace
