// That the checks of the catalogues find what they are for.
#include "Catalogue.h"

#include <QFile>
#include <QTemporaryDir>
#include <gmock/gmock.h>
#include <ostream>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Gaps, AreMissingUnfinishedAndUnusedTexts) {
    const Catalogue wanted = {{{"A", "one"}, {"", "unfinished"}},
                              {{"A", "two"}, {"", "unfinished"}},
                              {{"B", "one"}, {"", "unfinished"}},
                              {{"B", "two"}, {"", "unfinished"}}};
    const Catalogue present = {{{"A", "one"}, {"一", ""}},
                               {{"A", "two"}, {"二", "unfinished"}},
                               {{"B", "one"}, {"", ""}},
                               {{"C", "one"}, {"一", ""}}};
    EXPECT_THAT(FindGaps(wanted, present), ElementsAre("unfinished: A: \"two\"", "unfinished: B: \"one\"",
                                                       "missing: B: \"two\"", "no longer used: C: \"one\""));
    EXPECT_THAT(FindGaps(present, {}), testing::SizeIs(4));
    EXPECT_THAT(FindGaps({}, {}), IsEmpty());
}

struct FaultRow {
    const char* source;
    const char* translation;
    const char* fault; // null: none
};
void PrintTo(const FaultRow& row, std::ostream* out) {
    *out << row.source << " -> " << row.translation;
}

class Faults : public testing::TestWithParam<FaultRow> {};

TEST_P(Faults, AreFound) {
    const FaultRow& row = GetParam();
    const QStringList faults = FindFaults(QString::fromUtf8(row.source), QString::fromUtf8(row.translation));
    if (row.fault)
        EXPECT_THAT(faults, ElementsAre(row.fault)) << faults.join('\n').toStdString();
    else
        EXPECT_THAT(faults, IsEmpty()) << faults.join('\n').toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    Translations, Faults,
    testing::Values(
        FaultRow{"Range: %1 to %2", "范围：%1 到 %2", nullptr},
        FaultRow{"Range: %1 to %2", "范围：%1 到", "other placeholders"},
        FaultRow{"Range: %1 to %2", "范围：%1 到 %1", "other placeholders"},
        FaultRow{"%2 of %1", "%1 的 %2", nullptr}, FaultRow{" OK ", " 确定 ", nullptr},
        FaultRow{" OK ", "确定 ", "other blanks at the start"},
        FaultRow{" OK ", " 确定", "other blanks at the end"},
        FaultRow{"Model:       ", "型号：     ", nullptr},
        FaultRow{"Model:       ", "型号：", "other blanks at the end"},
        FaultRow{"Done\n", "完成", "other blanks at the end"},
        FaultRow{"<b>Name</b>", "<b>名称</b>", nullptr}, FaultRow{"<b>Name</b>", "名称", "other tags"},
        FaultRow{"&Open", "打开(&O)", nullptr}, FaultRow{"&Open", "打开", "other mnemonic"},
        FaultRow{"Open", "打开(&O)", "other mnemonic"},
        FaultRow{"&Open", "&O 打开", "mnemonic not in brackets behind the text"},
        FaultRow{"Time:", "时间:", "punctuation of half width"}, FaultRow{"Time:", "时间：", nullptr},
        FaultRow{"At 12:30", "在 12:30", nullptr}, FaultRow{"Failed.(%1)", "失败。（%1）", nullptr},
        FaultRow{"Failed.", "失败。IP 地址。", nullptr},
        FaultRow{"Failed(%1)", "失败(%1)", "punctuation of half width"},
        FaultRow{"A (*.a);;B (*.b)", "甲 (*.a);;乙 (*.b)", nullptr},
        FaultRow{"A;B", "甲;乙", "punctuation of half width"},
        FaultRow{"All files (*)", "所有文件(*)", nullptr}, FaultRow{"More...", "更多...", nullptr},
        FaultRow{"IP address", "IP地址", "no blank between Han and Latin"},
        FaultRow{"IP address", "IP 地址", nullptr}, FaultRow{"Failed.", "失败", "a sentence without its end"},
        FaultRow{"Failed.", "失败。", nullptr}));

TEST(TheTerms, AreReadFromTheTable) {
    QTemporaryDir folder;
    QFile page(folder.filePath("page.md"));
    ASSERT_TRUE(page.open(QIODevice::WriteOnly));
    page.write("| before | 之前 |\n## Terms\n\n| English | Chinese |\n|---|---|\n| camera | 相机 |\n| "
               "interface | 接口/网卡 |\n");
    page.close();
    const Terms terms = ReadTerms(page.fileName());
    ASSERT_EQ(terms.size(), 2u);
    EXPECT_EQ(terms[0].first, "camera");
    EXPECT_THAT(terms[1].second, ElementsAre("接口", "网卡"));
}

TEST(TheTerms, AreLookedForAsWholeWords) {
    const Terms terms = {{"camera", {"相机"}}, {"log", {"日志"}}, {"interface", {"接口", "网卡"}}};
    EXPECT_THAT(FindForeignTerms(terms, "Camera lost", "摄像机已断开"), ElementsAre("camera isn't 相机"));
    EXPECT_THAT(FindForeignTerms(terms, "Camera lost", "相机已断开"), IsEmpty());
    EXPECT_THAT(FindForeignTerms(terms, "Logical error", "逻辑错误"), IsEmpty());
    EXPECT_THAT(FindForeignTerms(terms, "Interface", "网卡"), IsEmpty());
    EXPECT_THAT(FindForeignTerms(terms, "Interface", "界面"), ElementsAre("interface isn't 接口 or 网卡"));
}

TEST(ReadingACatalogue, KeepsStatesAndFailsOnAFileThatIsNone) {
    QTemporaryDir folder;
    QFile file(folder.filePath("c.ts"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<?xml version=\"1.0\"?><TS><context><name>C</name><message><source>a &amp; b</source>"
               "<translation type=\"unfinished\">x</translation></message></context></TS>");
    file.close();
    const Catalogue catalogue = ReadCatalogue(file.fileName());
    ASSERT_EQ(catalogue.size(), 1u);
    EXPECT_EQ(catalogue.at({"C", "a & b"}).type, "unfinished");
    EXPECT_EQ(catalogue.at({"C", "a & b"}).translation, "x");

    ASSERT_TRUE(file.resize(80));
    EXPECT_THROW(ReadCatalogue(file.fileName()), std::runtime_error);
    EXPECT_THROW(ReadCatalogue(folder.filePath("none.ts")), std::runtime_error);
}

} // namespace
