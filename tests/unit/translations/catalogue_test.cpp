// The catalogues as they are: complete, well-formed, in the words of the field, and what is beside the
// program.
#include "Catalogue.h"
#include "support/ChildProcess.h"
#include "support/Places.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTranslator>
#include <gmock/gmock.h>

namespace {

const QString kFolder = KOLT_SOURCE_DIR "/resources/translations";
const QString kClient = kFolder + "/KOLT_zh_CN.ts";
const QString kQt = kFolder + "/qt_zh_CN.ts";

std::string AsText(const QStringList& lines) {
    return lines.join('\n').toStdString();
}

TEST(Catalogues, EveryTextOfTheSourcesIsTranslatedAndNoOther) {
    QTemporaryDir folder;
    const QString copy = folder.filePath("copy.ts");
    ASSERT_TRUE(QFile::copy(kClient, copy));
    const auto update = kolt::test::run({KOLT_SOURCE_DIR "/scripts/translate", copy.toStdString()});
    ASSERT_EQ(update.exitCode, 0) << update.output;
    // A class with texts and without Q_OBJECT would look them up under its base's name.
    EXPECT_EQ(update.output, copy.toStdString() + ": 0 unfinished\n");

    const Catalogue wanted = ReadCatalogue(copy);
    EXPECT_GT(wanted.size(), 50u);
    EXPECT_EQ(AsText(FindGaps(wanted, ReadCatalogue(kClient))), "")
        << "scripts/translate, then fill in what is unfinished";
}

TEST(Catalogues, QtsTextsAreTranslated) {
    const Catalogue qt = ReadCatalogue(kQt);
    EXPECT_GT(qt.size(), 50u);
    EXPECT_EQ(AsText(FindGaps(qt, qt)), "");
}

TEST(Catalogues, PlaceholdersEdgesAndPunctuationAreRight) {
    for (const QString& path : {kClient, kQt}) {
        for (const auto& [key, entry] : ReadCatalogue(path)) {
            EXPECT_EQ(AsText(FindFaults(key.second, entry.translation)), "")
                << key.first.toStdString() << ": \"" << key.second.toStdString() << "\" -> \""
                << entry.translation.toStdString() << "\"";
        }
    }
}

TEST(Catalogues, TermsAreThoseOfTheField) {
    const Terms terms = ReadTerms(kFolder + "/README.md");
    EXPECT_GT(terms.size(), 20u);
    for (const auto& [key, entry] : ReadCatalogue(kClient)) {
        EXPECT_EQ(AsText(FindForeignTerms(terms, key.second, entry.translation)), "")
            << key.first.toStdString() << ": \"" << key.second.toStdString() << "\" -> \""
            << entry.translation.toStdString() << "\"";
    }
}

void ExpectSame(const QString& catalogue, const QString& qm) {
    QTranslator translator;
    ASSERT_TRUE(translator.load(qm)) << qm.toStdString();
    for (const auto& [key, entry] : ReadCatalogue(catalogue)) {
        EXPECT_EQ(translator.translate(key.first.toUtf8(), key.second.toUtf8()).toStdString(),
                  entry.translation.toStdString());
    }
}

TEST(Catalogues, AreBesideTheProgramUnderTheirNames) {
    ExpectSame(kClient, KOLT_BIN_DIR "/KOLT_en.qm");
    ExpectSame(kQt, KOLT_BIN_DIR "/qt_zh_CN.qm");
}

} // namespace
