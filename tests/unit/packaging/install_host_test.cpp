// scripts/install-host, for real: in folders of its own (DESTDIR), and on a copy of this system's /etc that
// only the test sees (a mount namespace with an overlay; the network namespace keeps kernel settings out of
// reach).

#include "support/ChildProcess.h"
#include "support/Places.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;
using kolt::test::Finished;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::string installHost = KOLT_SOURCE_DIR "/scripts/install-host";

struct Installed {
    const char* source;
    const char* target;
};
constexpr Installed files[] = {
    {"udev/70-kolt-usb3-vision.rules", "/etc/udev/rules.d/70-kolt-usb3-vision.rules"},
    {"sysctl/70-kolt-capture.conf", "/etc/sysctl.d/70-kolt-capture.conf"},
    {"tmpfiles/kolt-capture.conf", "/etc/tmpfiles.d/kolt-capture.conf"},
};

std::string Read(const fs::path& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

class InstallHost : public testing::Test {
protected:
    void SetUp() override {
        root = fs::path(testing::TempDir()) / ("kolt_install_host_" + std::to_string(getpid()));
        fs::create_directories(root);
    }
    void TearDown() override { fs::remove_all(root); }

    Finished Below(const std::vector<std::string>& arguments) const {
        std::vector<std::string> words = {installHost};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return kolt::test::run(words, {{"DESTDIR", root.string()}});
    }

    /// Runs shell lines where /etc is a copy, /srv is empty and belongs to root, and $I is the script.
    static Finished OnACopy(const std::string& lines) {
        const std::string set =
            "set -e\nI=" + installHost +
            "\nmount -t tmpfs -o mode=755 none /srv\nmkdir /srv/up /srv/work /srv/kolt\n"
            "mount -t overlay none -o lowerdir=/etc,upperdir=/srv/up,workdir=/srv/work /etc\n"
            "mkdir -p /var/cache/ldconfig\nmount -t tmpfs none /var/cache/ldconfig\n";
        return kolt::test::run({"unshare", "--mount", "--net", "bash", "-c", set + lines}, {{"DESTDIR", ""}});
    }

    fs::path root;
};

TEST_F(InstallHost, PutsItsFilesBelowDestdir) {
    const Finished finished = Below({});
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    for (const Installed& file : files) {
        const fs::path target = root.string() + file.target;
        EXPECT_EQ(Read(target), Read(fs::path(KOLT_SOURCE_DIR "/packaging") / file.source)) << target;
        EXPECT_EQ(fs::status(target).permissions(), fs::perms(0644)) << target;
        EXPECT_THAT(finished.output, HasSubstr("installed " + target.string()));
    }
}

TEST_F(InstallHost, TheSecondTimeChangesNothing) {
    Below({});
    const Finished finished = Below({});
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_EQ(finished.output, "");
}

TEST_F(InstallHost, AnOlderFileIsReplaced) {
    Below({});
    const std::string target = root.string() + files[1].target;
    std::ofstream(target) << "old";
    EXPECT_EQ(Below({}).output, "installed " + target + "\n");
    EXPECT_THAT(Read(target), HasSubstr("net.core.rmem_max"));
}

TEST_F(InstallHost, UndoTakesBackWhatWasPutAndNothingElse) {
    Below({});
    const fs::path other = root / "etc/sysctl.d/99-other.conf";
    std::ofstream(other) << "x";
    const Finished finished = Below({"--undo"});
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    for (const Installed& file : files)
        EXPECT_FALSE(fs::exists(root.string() + file.target)) << file.target;
    EXPECT_TRUE(fs::exists(other));
    EXPECT_EQ(Below({"--undo"}).output, "");
}

TEST_F(InstallHost, WrongArgumentsEndWithTheUsage) {
    for (const auto& arguments :
         std::vector<std::vector<std::string>>{{"--und"}, {"x"}, {"--packet-socket"}}) {
        const Finished finished = Below(arguments);
        EXPECT_EQ(finished.exitCode, 2);
        EXPECT_THAT(finished.output, HasSubstr("usage:"));
    }
    EXPECT_THAT(Below({"--help"}).output, AllOf(HasSubstr("--packet-socket FOLDER"), HasSubstr("DESTDIR")));
}

TEST_F(InstallHost, WithoutRootItSaysSoAndDoesNothing) {
    const Finished finished = kolt::test::run({"unshare", "--user", installHost}, {{"DESTDIR", ""}});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.output, HasSubstr("wants root: sudo"));
}

TEST_F(InstallHost, OnTheSystemItself) {
    const Finished finished = OnACopy("$I; echo second; $I; echo undo; $I --undo\n"
                                      "ls /etc/udev/rules.d/70-kolt* /etc/sysctl.d/70-kolt* 2>&1 || true");
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    EXPECT_THAT(finished.output, AllOf(HasSubstr("installed /etc/udev/rules.d/70-kolt-usb3-vision.rules"),
                                       HasSubstr("removed /etc/sysctl.d/70-kolt-capture.conf"),
                                       HasSubstr("stay as they are until the next start"),
                                       HasSubstr("cannot access '/etc/sysctl.d/70-kolt*'")));
}

TEST_F(InstallHost, KernelSettingsThatCannotBeMadeNowAreTold) {
    // In a network namespace these settings do not exist.
    const Finished finished = OnACopy("$I");
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    EXPECT_THAT(finished.output, HasSubstr("receive buffers are not in force before the next start"));
}

TEST_F(InstallHost, ProgramsGetAndLoseTheCapability) {
    const Finished finished = OnACopy(
        "cp /bin/true /srv/kolt/kolt_live\n$I --packet-socket /srv/kolt/\ngetcap /srv/kolt/kolt_live\n"
        "cat /etc/ld.so.conf.d/kolt-capture.conf\necho second\n$I --packet-socket /srv/kolt\n"
        "echo undo\n$I --undo\ngetcap /srv/kolt/kolt_live\ntest ! -e /etc/ld.so.conf.d/kolt-capture.conf");
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    EXPECT_THAT(finished.output,
                AllOf(HasSubstr("/srv/kolt/kolt_live may use packet sockets"),
                      HasSubstr("/srv/kolt/kolt_live cap_net_raw=ep"), HasSubstr("\n/srv/kolt\n"),
                      HasSubstr("kolt_live may no longer use packet sockets")));
    const std::string second = finished.output.substr(finished.output.find("second"));
    EXPECT_THAT(second.substr(0, second.find("undo")), Not(HasSubstr("may use")));
}

TEST_F(InstallHost, AProgramWithTheCapabilityStillFindsItsLibraries) {
    // Such a program does not look beside itself: the lines before --packet-socket show that, those behind it
    // that the system's list makes up for it, also for an ordinary user.
    const Finished finished = OnACopy("B=" KOLT_BIN_DIR "\ncp $B/kolt_live $B/lib*.so /srv/kolt\n"
                                      "U='setpriv --reuid 65534 --regid 65534 --clear-groups'\n"
                                      "setcap cap_net_raw+ep /srv/kolt/kolt_live\n"
                                      "$U /srv/kolt/kolt_live --version || echo before: $?\n"
                                      "$I --packet-socket /srv/kolt\n$U /srv/kolt/kolt_live --version");
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    EXPECT_THAT(finished.output,
                AllOf(HasSubstr("before: 127"), HasSubstr("control  /srv/kolt/libOvCameraControl.so"),
                      HasSubstr("render          /srv/kolt/libOVRender.so")));
}

struct Unsafe {
    const char* name;
    const char* preparation;
    const char* reason;
};
class UnsafeFolders : public InstallHost, public testing::WithParamInterface<Unsafe> {};

TEST_P(UnsafeFolders, AreRefused) {
    const Finished finished = OnACopy("cp /bin/true /srv/kolt/kolt_live\nF=/srv/kolt\n" +
                                      std::string(GetParam().preparation) + "\n$I --packet-socket \"$F\"");
    EXPECT_EQ(finished.exitCode, 1) << finished.output;
    EXPECT_THAT(finished.output, HasSubstr(GetParam().reason));
    EXPECT_THAT(finished.output, Not(HasSubstr("may use packet sockets")));
}

INSTANTIATE_TEST_SUITE_P(
    Table, UnsafeFolders,
    testing::Values(Unsafe{"writable", "chmod 777 /srv/kolt", "/srv/kolt does not belong to root alone"},
                    Unsafe{"somebodys", "chown 1000 /srv/kolt", "/srv/kolt does not belong to root alone"},
                    Unsafe{"below_writable", "chmod 777 /srv", "/srv does not belong to root alone"},
                    Unsafe{"somebodys_file", "touch /srv/kolt/lib.so; chown 1000 /srv/kolt/lib.so",
                           "may be changed by others"},
                    Unsafe{"missing", "F=/srv/none", "/srv/none does not belong to root alone"},
                    Unsafe{"relative", "cd /srv; F=kolt", "kolt is not an absolute path"},
                    Unsafe{"without_programs", "rm /srv/kolt/kolt_live", "none of the programs"}),
    [](const testing::TestParamInfo<Unsafe>& row) { return std::string(row.param.name); });

TEST(HostFiles, TheUdevRuleMatchesTheControlInterfaceOfUsb3Vision) {
    const std::string rule = Read(KOLT_SOURCE_DIR "/packaging/udev/70-kolt-usb3-vision.rules");
    EXPECT_THAT(rule, HasSubstr("\nENV{ID_USB_INTERFACES}==\"*:ef0500:*\", MODE=\"0660\", GROUP=\"plugdev\", "
                                "TAG+=\"uaccess\"\n"));
}

} // namespace
