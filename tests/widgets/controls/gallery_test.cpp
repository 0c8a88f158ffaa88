// The gallery photographs every page at the three scales; no text is clipped in either language.

#include "support/ChildProcess.h"
#include "support/Places.h"

#include <QDir>
#include <QImage>
#include <gmock/gmock.h>

struct Shot {
    const char* language;
    const char* scale;
};

class Gallery : public testing::TestWithParam<Shot> {
protected:
    static QString Folder() { return qEnvironmentVariable("KOLT_TEST_OUT", "test-out") + "/gallery"; }
};

TEST_P(Gallery, IsShownWholeAndSharp) {
    const auto [language, scale] = GetParam();
    const auto finished = kolt::test::run({KOLT_BIN_DIR "/kolt_gallery", "--screenshot-dir",
                                           Folder().toStdString(), "--language", language, "--scale", scale});
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    const auto size = [&](const char* name) {
        return QImage(Folder() + QString("/%1-%2-%3.png").arg(name, language, scale)).size();
    };
    const double factor = QString(scale).toDouble();
    EXPECT_EQ(size("buttons").height(), qRound(620 * factor));
    EXPECT_EQ(size("dialog-form"), QSize(qRound(374 * factor), qRound(206 * factor)));
    for (const char* name :
         {"choices", "fields", "lists", "pictures", "colours", "message-information", "message-question",
          "message-warning", "message-error", "message-details", "hint-adjust", "notice-saved", "about",
          "file-save", "file-open", "file-folder", "main-window", "main-window-ubuntu"})
        EXPECT_FALSE(size(name).isEmpty()) << name;
}

INSTANTIATE_TEST_SUITE_P(Scales, Gallery,
                         testing::Values(Shot{"en", "1"}, Shot{"en", "1.5"}, Shot{"en", "2"}, Shot{"zh", "1"},
                                         Shot{"zh", "1.5"}));

TEST(GalleryProgram, TellsItsOptions) {
    const auto finished = kolt::test::run({KOLT_BIN_DIR "/kolt_gallery", "--help"});
    EXPECT_EQ(finished.exitCode, 0);
    for (const char* option : {"--screenshot-dir", "--language", "--scale"})
        EXPECT_THAT(finished.output, testing::HasSubstr(option));
}

TEST(GalleryProgram, SaysThatAFolderCannotBeWritten) {
    const auto finished = kolt::test::run({KOLT_BIN_DIR "/kolt_gallery", "--screenshot-dir", "/proc/none"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.output, testing::HasSubstr("can't write"));
}
