// What stands beside the programs: the entry of the desktop's menu, the manual pages, the icon.
#include "support/ChildProcess.h"
#include "support/Places.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

namespace fs = std::filesystem;
using kolt::test::Finished;
using kolt::test::run;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

const std::string desktopFile = KOLT_SOURCE_DIR "/packaging/desktop/KOLT_CAPTURE.desktop";

std::string Read(const std::string& path) {
    std::ifstream file(path);
    EXPECT_TRUE(file) << path;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::map<std::string, std::string> DesktopEntry() {
    std::map<std::string, std::string> entry;
    std::istringstream lines(Read(desktopFile));
    for (std::string line; std::getline(lines, line);)
        if (const size_t at = line.find('='); at != std::string::npos)
            entry[line.substr(0, at)] = line.substr(at + 1);
    return entry;
}

TEST(DesktopEntry, IsValid) {
    const Finished finished = run({"desktop-file-validate", desktopFile});
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_EQ(finished.output, ""); // no hints either
}

TEST(DesktopEntry, StartsTheProgramUnderItsIcon) {
    const auto entry = DesktopEntry();
    EXPECT_EQ(entry.at("Exec"), "KOLT_CAPTURE");
    EXPECT_EQ(entry.at("TryExec"), "KOLT_CAPTURE");
    EXPECT_EQ(entry.at("Terminal"), "false");
    EXPECT_TRUE(fs::exists(KOLT_SOURCE_DIR "/packaging/icons/256x256/" + entry.at("Icon") + ".png"));
}

TEST(DesktopEntry, SpeaksBothLanguages) {
    const auto entry = DesktopEntry();
    for (const char* key : {"Name", "GenericName", "Comment", "Keywords"}) {
        EXPECT_NE(entry.at(key), "") << key;
        EXPECT_NE(entry.at(std::string(key) + "[zh_CN]"), "") << key;
    }
    for (const char* key : {"GenericName", "Comment"})
        EXPECT_NE(entry.at(key), entry.at(std::string(key) + "[zh_CN]")) << key;
}

/// Every "--option" that begins a line of the text.
std::set<std::string> Options(const std::string& text, const std::string& before) {
    std::set<std::string> found;
    const std::regex option("(^|\n)" + before + "(--[a-z0-9-]+)");
    for (std::sregex_iterator at(text.begin(), text.end(), option), end; at != end; ++at)
        found.insert((*at)[2]);
    return found;
}

class ManualPage : public testing::TestWithParam<const char*> {
protected:
    std::string Path() const { return std::string(KOLT_SOURCE_DIR "/packaging/man/") + GetParam() + ".1"; }
};

TEST_P(ManualPage, CanBeShownWithoutAComplaint) {
    const Finished finished = run({"man", "--warnings", "-E", "UTF-8", "-l", Path()},
                                  {{"LC_ALL", "C.UTF-8"}, {"MANWIDTH", "80"}, {"MANROFFSEQ", ""}});
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_THAT(finished.output,
                AllOf(HasSubstr(GetParam()), Not(HasSubstr("warning")), Not(HasSubstr("error:"))));
    EXPECT_THAT(finished.output,
                AllOf(HasSubstr("NAME\n"), HasSubstr("SYNOPSIS\n"), HasSubstr("SEE ALSO\n")));
    EXPECT_THAT(Read(Path()), HasSubstr("\"KOLT CAPTURE " KOLT_VERSION "\""));
}

INSTANTIATE_TEST_SUITE_P(Programs, ManualPage,
                         testing::Values("KOLT_CAPTURE", "kolt_live", "kolt_virtual_camera"),
                         [](const auto& row) { return std::string(row.param); });

class ManualPageOfATool : public ManualPage {};

TEST_P(ManualPageOfATool, TellsTheOptionsThatTheToolTells) {
    const Finished help = run({std::string(KOLT_BIN_DIR "/") + GetParam(), "--help"});
    ASSERT_EQ(help.exitCode, 0) << help.output;
    const std::set<std::string> options = Options(help.output, "  ");
    EXPECT_GT(options.size(), 10U);
    const std::string page = std::regex_replace(Read(Path()), std::regex(R"(\\-)"), "-");
    EXPECT_EQ(Options(page, R"(\\fB)"), options);
}

INSTANTIATE_TEST_SUITE_P(Programs, ManualPageOfATool, testing::Values("kolt_live", "kolt_virtual_camera"),
                         [](const auto& row) { return std::string(row.param); });

TEST(Changelog, BeginsWithThisVersion) {
    EXPECT_THAT(Read(KOLT_SOURCE_DIR "/packaging/debian/changelog"),
                testing::StartsWith("kolt-capture (" KOLT_VERSION ") "));
}

TEST(Copyright, IsThatOfTheLicence) {
    const std::string licence = Read(KOLT_SOURCE_DIR "/LICENSE");
    EXPECT_THAT(Read(KOLT_SOURCE_DIR "/packaging/debian/copyright"),
                HasSubstr(licence.substr(licence.find("Copyright (c)"))));
}

class MaintainerScript : public testing::TestWithParam<const char*> {};

TEST_P(MaintainerScript, IsPlainShell) {
    const Finished finished =
        run({"shellcheck", "--shell=sh", std::string(KOLT_SOURCE_DIR "/packaging/debian/") + GetParam()});
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
}

INSTANTIATE_TEST_SUITE_P(Scripts, MaintainerScript, testing::Values("postinst", "postrm"),
                         [](const auto& row) { return std::string(row.param); });

} // namespace
