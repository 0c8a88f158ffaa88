// The Debian package of this build: what is in it, that it works where it is installed, and that it goes
// without a trace.
#include "InstalledRoot.h"

#include "support/ChildProcess.h"
#include "support/Places.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

namespace fs = std::filesystem;
using kolt::test::Finished;
using kolt::test::run;
using packaging_test::InACopyOfTheSystem;
using packaging_test::Package;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

std::string Output(const std::vector<std::string>& command) {
    const Finished finished = run(command, {{"LC_ALL", "C.UTF-8"}});
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    return finished.output;
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

/// The value of a line "Name: value" of the package's description.
std::string Field(const std::string& name) {
    std::string text = Output({"dpkg-deb", "--field", Package(), name});
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

const std::string folder = "/usr/lib/kolt-capture";
const char* const programs[] = {"/usr/lib/kolt-capture/KOLT_CAPTURE", "/usr/lib/kolt-capture/kolt_live",
                                "/usr/bin/kolt_virtual_camera"};
const char* const libraries[] = {"libOvCameraControl.so", "libOvMediaKit.so", "libOVRender.so",
                                 "libGenApi_gcc421_v3_0.so", "libGCBase_gcc421_v3_0.so"};

std::vector<std::string> ExpectedFiles() {
    std::vector<std::string> files = {
        "/usr/bin/KOLT_CAPTURE",
        "/usr/bin/kolt_live",
        folder + "/KOLT_en.qm",
        folder + "/qt_zh_CN.qm",
        "/usr/lib/sysctl.d/70-kolt-capture.conf",
        "/usr/lib/tmpfiles.d/kolt-capture.conf",
        "/usr/lib/udev/rules.d/70-kolt-usb3-vision.rules",
        "/usr/share/applications/KOLT_CAPTURE.desktop",
        "/usr/share/doc/kolt-capture/changelog.gz",
        "/usr/share/doc/kolt-capture/copyright",
        "/usr/share/doc/kolt-capture/licences.md",
        "/usr/share/icons/hicolor/scalable/apps/kolt-capture.svg",
        "/usr/share/lintian/overrides/kolt-capture",
        "/usr/share/man/man1/KOLT_CAPTURE.1.gz",
        "/usr/share/man/man1/kolt_live.1.gz",
        "/usr/share/man/man1/kolt_virtual_camera.1.gz",
    };
    for (const char* program : programs)
        files.emplace_back(program);
    for (const char* library : libraries)
        files.push_back(folder + "/" + library);
    for (int size : {16, 24, 32, 48, 64, 128, 256, 512}) {
        const std::string both = std::to_string(size) + "x" + std::to_string(size);
        files.push_back("/usr/share/icons/hicolor/" + both + "/apps/kolt-capture.png");
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// The package's files, unpacked.
class Unpacked : public testing::Test {
protected:
    void SetUp() override {
        root = fs::path(testing::TempDir()) / ("kolt_package_" + std::to_string(getpid()));
        fs::create_directories(root);
        Output({"dpkg-deb", "-x", Package(), root});
    }
    void TearDown() override { fs::remove_all(root); }

    std::string Path(const std::string& file) const { return root.string() + file; }
    std::vector<std::string> Binaries() const {
        std::vector<std::string> files(std::begin(programs), std::end(programs));
        for (const char* library : libraries)
            files.push_back(folder + "/" + library);
        return files;
    }

    fs::path root;
};

TEST(PackageFields, NameVersionAndMachine) {
    EXPECT_EQ(Field("Package"), "kolt-capture");
    EXPECT_EQ(Field("Version"), KOLT_VERSION);
    EXPECT_EQ(Field("Architecture") + "\n", Output({"dpkg", "--print-architecture"}));
    EXPECT_EQ(fs::path(Package()).filename(),
              "kolt-capture_" KOLT_VERSION "_" + Field("Architecture") + ".deb");
    EXPECT_THAT(Field("Description"), StartsWith("client for GigE Vision and USB3 Vision cameras\n"));
}

TEST(PackageFields, WantsWhatItLinksAndWhatItStarts) {
    const std::string depends = Field("Depends");
    for (const char* package : {"libaravis-0.8-0", "libqt5widgets5", "libqt5network5", "libpugixml1v5",
                                "libxcb1", "libjpeg62-turbo", "fonts-inter", "iputils-ping", "procps"})
        EXPECT_THAT(depends, HasSubstr(package));
    EXPECT_THAT(depends, Not(HasSubstr("kolt")));
    EXPECT_THAT(Field("Recommends"), AllOf(HasSubstr("fonts-noto-cjk"), HasSubstr("libegl1")));
}

TEST_F(Unpacked, HoldsTheseFilesAndNoOthers) {
    std::vector<std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(root))
        if (!entry.is_directory())
            found.push_back(entry.path().string().substr(root.string().size()));
    std::sort(found.begin(), found.end());
    EXPECT_THAT(found, ElementsAreArray(ExpectedFiles()));
}

TEST_F(Unpacked, LinksLeadToTheProgramsBesideTheirLibraries) {
    for (const char* name : {"KOLT_CAPTURE", "kolt_live"}) {
        EXPECT_EQ(fs::read_symlink(Path(std::string("/usr/bin/") + name)),
                  "../lib/kolt-capture/" + std::string(name));
        EXPECT_TRUE(fs::is_regular_file(Path(std::string("/usr/bin/") + name)));
    }
}

TEST(PackageFiles, BelongToRootAndCanBeReadByAll) {
    const std::regex wanted("(drwxr-xr-x|-rw-r--r--|-rwxr-xr-x|lrwxrwxrwx) root/root .*");
    const std::set<std::string> executable(std::begin(programs), std::end(programs));
    for (const std::string& line : Lines(Output({"dpkg-deb", "--contents", Package()}))) {
        EXPECT_TRUE(std::regex_match(line, wanted)) << line;
        if (line[0] != '-')
            continue;
        const std::string file = line.substr(line.find(" ./") + 2);
        EXPECT_EQ(line[3] == 'x', executable.count(file) == 1) << line;
    }
}

TEST_F(Unpacked, LibrariesAreFoundBesideThePrograms) {
    for (const std::string& file : Binaries()) {
        const std::string found = Output({"ldd", Path(file)});
        EXPECT_THAT(found, Not(HasSubstr("not found"))) << file;
        for (const char* library : libraries) {
            const size_t at = found.find(std::string("\t") + library);
            if (at == std::string::npos)
                continue;
            EXPECT_THAT(found.substr(at),
                        StartsWith("\t" + std::string(library) + " => " + Path(folder) + "/" + library))
                << file;
        }
    }
}

TEST_F(Unpacked, NothingIsLookedForWhereItWasBuilt) {
    for (const std::string& file : Binaries()) {
        const std::string dynamic = Output({"readelf", "--dynamic", "--wide", Path(file)});
        EXPECT_THAT(dynamic, Not(HasSubstr("(RPATH)"))) << file;
        const size_t at = dynamic.find("(RUNPATH)");
        EXPECT_EQ(at == std::string::npos, file == programs[2]) << file;
        if (at != std::string::npos) {
            EXPECT_THAT(dynamic.substr(at, dynamic.find('\n', at) - at), HasSubstr("[$ORIGIN]")) << file;
        }
    }
}

TEST_F(Unpacked, BinariesAreHardenedAndStripped) {
    for (const std::string& file : Binaries()) {
        const std::string all =
            Output({"readelf", "--wide", "--file-header", "--segments", "--dynamic", Path(file)});
        EXPECT_THAT(all, HasSubstr("DYN (")) << file; // at any address
        EXPECT_THAT(all, HasSubstr("GNU_RELRO")) << file;
        EXPECT_THAT(all, HasSubstr("BIND_NOW")) << file;
        const size_t stack = all.find("GNU_STACK");
        ASSERT_NE(stack, std::string::npos) << file;
        EXPECT_THAT(all.substr(stack, all.find('\n', stack) - stack),
                    AllOf(HasSubstr(" RW "), Not(HasSubstr("RWE"))))
            << file;
        const std::string sections = Output({"readelf", "--wide", "--sections", Path(file)});
        EXPECT_THAT(sections, AllOf(Not(HasSubstr(".debug_info")), Not(HasSubstr(".symtab")))) << file;
    }
}

TEST(PackageBytes, AreTheSameForTheSameSources) {
    const fs::path again = fs::path(testing::TempDir()) / ("kolt_package_again_" + std::to_string(getpid()));
    const Finished finished =
        run({KOLT_SOURCE_DIR "/scripts/package", again}, {{"KOLT_PACKAGE_BUILD", KOLT_BUILD_DIR}});
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    const fs::path second = again / fs::path(Package()).filename();
    EXPECT_EQ(finished.output, second.string() + "\n");
    EXPECT_EQ(run({"cmp", Package(), second}).output, "");
    // No workplace is left beside it.
    EXPECT_EQ(std::distance(fs::directory_iterator(again), fs::directory_iterator()), 1);
    fs::remove_all(again);
}

TEST(PackageBytes, AFailureIsToldAndLeavesNothing) {
    const fs::path out = fs::path(testing::TempDir()) / ("kolt_package_none_" + std::to_string(getpid()));
    const Finished finished =
        run({KOLT_SOURCE_DIR "/scripts/package", out}, {{"KOLT_PACKAGE_BUILD", "/nowhere"}});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.output, HasSubstr("/nowhere/CPackConfig.cmake"));
    EXPECT_TRUE(fs::is_empty(out));
    fs::remove_all(out);
}

TEST(PackageRules, OfTheDistributionAreKept) {
    const Finished finished = run({"lintian", "--allow-root", "--fail-on", "error,warning", Package()});
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
}

TEST(Installed, WorksForAUserAndGoesWithoutATrace) {
    const Finished finished = InACopyOfTheSystem(R"sh(
inside dpkg -i --force-unsafe-io "$P"
inside dpkg -i --force-unsafe-io --no-triggers "$P"
echo "-- libraries"
as_user kolt_live --version
echo "-- live"
as_user kolt_virtual_camera --address 127.0.0.1 --serial PACKED >"$R/tmp/camera" &
camera=$!
until grep -q ready "$R/tmp/camera"; do kill -0 $camera; sleep 0.05; done
as_user kolt_live --camera PACKED --headless 3
kill $camera
wait $camera || true
echo "-- purge"
inside dpkg --purge kolt-capture
echo "-- left"
left_over
inside dpkg-query --status kolt-capture || echo "-- unknown"
)sh");
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    EXPECT_THAT(finished.output,
                AllOf(HasSubstr("camera control  /usr/lib/kolt-capture/libOvCameraControl.so"),
                      HasSubstr("media           /usr/lib/kolt-capture/libOvMediaKit.so"),
                      HasSubstr("render          /usr/lib/kolt-capture/libOVRender.so"),
                      HasSubstr("frames 3 ")));
    EXPECT_THAT(finished.output,
                AllOf(HasSubstr("-- left\ndpkg-query: package 'kolt-capture' is not installed"),
                      HasSubstr("-- unknown")));
}

/// Where the pictures that a test keeps go.
std::string Kept(const std::string& name) {
    const char* given = std::getenv("KOLT_TEST_OUT");
    const fs::path out =
        given == nullptr ? fs::path(testing::TempDir()) / "kolt_package" : fs::path(given) / "package";
    fs::create_directories(out);
    fs::remove(out / name);
    return out / name;
}

TEST(Installed, TheProgramSpeaksAUsersLanguageAndKeepsHisSettings) {
    const std::string picture = Kept("installed-chinese.png");
    const Finished finished = InACopyOfTheSystem("PICTURE=" + picture + "\nSOURCE=" KOLT_SOURCE_DIR R"sh(
inside dpkg -i --force-unsafe-io --no-triggers "$P"
C=/tmp/home/.config/KOLT_CAPTURE
as_user mkdir -p "$C"
printf '[Common]\nLanguage=1\n' | as_user tee "$C/LangConfig.ini" >/dev/null
desktop() {
    set -eu
    setpriv --pdeathsig TERM openbox --sm-disable &
    chroot --userspec=65534:65534 --groups= "$R" env HOME=/tmp/home KOLT_CAPTURE &
    program=$!
    class=$(sed -n 's/^StartupWMClass=//p' "$R/usr/share/applications/KOLT_CAPTURE.desktop")
    window=$(timeout 60 xdotool search --sync --onlyvisible --class "^$class\$" | head -n 1)
    until grep -q qt_zh_CN.qm /proc/$program/maps; do sleep 0.05; done
    echo "-- loaded"
    grep -oE '(/usr/lib/kolt-capture/.*|libqico.so)' /proc/$program/maps | sort -u
    xdotool windowactivate --sync "$window" key alt+F4
    # The question whether to exit is a window of its own.
    until [ "$(xdotool search --onlyvisible --class "^$class\$" | wc -l)" -gt 1 ]; do sleep 0.05; done
    xdotool sleep 0.3
    import -window root "$PICTURE"
    xdotool key Return
    wait $program
}
export -f desktop
export R PICTURE
"$SOURCE/scripts/with-xvfb" bash -c desktop
echo "-- written"
(cd "$R/tmp/home"; find . -user 65534 -type f | sort; find . -path ./.cache -prune -o -type d -name KOLT_CAPTURE -print | sort)
cat "$R$C/LocalConfig.ini"
echo "-- beside the program"
(cd "$R/usr/lib/kolt-capture"; ls)
)sh");
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    ASSERT_THAT(finished.output, AllOf(HasSubstr("-- loaded"), HasSubstr("-- beside the program\n")));
    const std::string loaded = finished.output.substr(finished.output.find("-- loaded"));
    for (const char* library : libraries)
        EXPECT_THAT(loaded, HasSubstr(folder + "/" + library + "\n"));
    EXPECT_THAT(loaded, AllOf(HasSubstr(folder + "/KOLT_en.qm\n"), HasSubstr(folder + "/qt_zh_CN.qm\n"),
                              HasSubstr("libqico.so\n")));
    EXPECT_THAT(loaded, AllOf(HasSubstr("./.config/KOLT_CAPTURE/LocalConfig.ini\n"),
                              HasSubstr("FirstStartClient=false"), HasSubstr("/KOLT_CAPTURE\n")));
    const std::string beside = loaded.substr(loaded.find("-- beside the program\n"));
    EXPECT_THAT(beside,
                AllOf(HasSubstr("KOLT_CAPTURE\n"), Not(HasSubstr("Config.ini")), Not(HasSubstr("Data"))));
    EXPECT_TRUE(fs::exists(picture));
}

TEST(Installed, PurgeTakesTheAdministratorsSettingsAndKeepsPictures) {
    const Finished finished = InACopyOfTheSystem(R"sh(
D="inside dpkg --force-unsafe-io --no-triggers"
F=$R/usr/lib/kolt-capture
used() {
    $D -i "$P"
    touch "$F/LocalConfig.ini" "$F/LangConfig.ini" "$F/FavoriteFeatures.xml"
    mkdir "$F/Data"
    mkdir -p "$R/etc/ld.so.conf.d"
    echo "$1" >"$R/etc/ld.so.conf.d/kolt-capture.conf"
}
used /usr/lib/kolt-capture
echo "-- without pictures"
$D --purge kolt-capture
left_over
used /usr/lib/kolt-capture
echo "-- removed"
$D --remove kolt-capture
left_over
echo "-- purged"
$D --purge kolt-capture
left_over
used /opt/elsewhere
touch "$F/Data/picture.bmp"
echo "-- with a picture"
$D --purge kolt-capture
left_over
)sh");
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    std::vector<std::vector<std::string>> left;
    for (const std::string& line : Lines(finished.output)) {
        if (line.rfind("-- ", 0) == 0)
            left.emplace_back();
        else if (!left.empty() && line[0] == '/')
            left.back().push_back(line);
    }
    ASSERT_EQ(left.size(), 4U) << finished.output;
    EXPECT_THAT(left[0], IsEmpty());
    EXPECT_THAT(left[1],
                testing::UnorderedElementsAre(folder, folder + "/LocalConfig.ini", folder + "/LangConfig.ini",
                                              folder + "/FavoriteFeatures.xml", folder + "/Data"));
    EXPECT_THAT(left[2], IsEmpty());
    EXPECT_THAT(left[3], testing::UnorderedElementsAre("/etc/ld.so.conf.d/kolt-capture.conf", folder,
                                                       folder + "/Data", folder + "/Data/picture.bmp"));
}

TEST(Installed, BelowAnotherRootNothingIsAppliedHere) {
    const Finished finished = InACopyOfTheSystem(R"sh(
mkdir -p "$R/tmp/other/var/lib/dpkg/info" "$R/tmp/other/var/lib/dpkg/updates" "$R/tmp/bin" "$R/run/udev"
touch "$R/tmp/other/var/lib/dpkg/status"
for tool in udevadm sysctl systemd-tmpfiles; do
    printf '#!/bin/sh\necho "applied: %s $*"\n' $tool >"$R/tmp/bin/$tool"
    chmod 755 "$R/tmp/bin/$tool"
done
D="inside env PATH=/tmp/bin:$PATH dpkg --root=/tmp/other --force-script-chrootless --force-depends --force-unsafe-io"
$D -i "$P"
(cd "$R/tmp/other"; find . -name 'KOLT_CAPTURE.desktop')
$D --purge kolt-capture
echo "-- left"
(cd "$R/tmp/other"; find . -iname '*kolt*')
left_over
)sh");
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    EXPECT_THAT(finished.output, AllOf(HasSubstr("./usr/share/applications/KOLT_CAPTURE.desktop"),
                                       Not(HasSubstr("applied:")), testing::EndsWith("-- left\n")));
}

struct Host {
    const char* name;
    const char* tools;  ///< lines that make the tools of the copy
    const char* wanted; ///< what they are asked to do, in order
};
void PrintTo(const Host& host, std::ostream* out) {
    *out << host.name;
}
class HostOf : public testing::TestWithParam<Host> {};

TEST_P(HostOf, IsPreparedAsFarAsItGoes) {
    const Finished finished = InACopyOfTheSystem(
        R"sh(
B=$R/tmp/bin
mkdir "$B" "$R/run/udev" "$R/sys/module" "$R/sys/module/usbcore" "$R/sys/module/usbcore/parameters"
echo 16 >"$R/sys/module/usbcore/parameters/usbfs_memory_mb"
tool() { printf '#!/bin/sh\necho "$(basename $0) $*" >>/tmp/asked\n%s\n' "${2:-}" >"$B/$1"; chmod 755 "$B/$1"; }
)sh" + std::string(GetParam().tools) +
        R"sh(
inside env PATH="/tmp/bin:$PATH" dpkg -i --force-unsafe-io --no-triggers "$P"
echo "-- asked"
cat "$R/tmp/asked"
echo "-- state"
inside dpkg-query -W -f='${db:Status-Status}\n' kolt-capture
)sh");
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    const size_t asked = finished.output.find("-- asked\n") + 9;
    EXPECT_EQ(finished.output.substr(asked), std::string(GetParam().wanted) + "-- state\ninstalled\n");
}

INSTANTIATE_TEST_SUITE_P(
    Table, HostOf,
    testing::Values(
        Host{"usual",
             "tool udevadm; tool systemd-tmpfiles\n"
             "tool sysctl 'case \"$*\" in *rmem_max) echo 212992;; *backlog) echo 1000;; esac'",
             "udevadm control --reload\nudevadm trigger --subsystem-match=usb\n"
             "sysctl -n net.core.rmem_max\nsysctl -q -w net.core.rmem_max=33554432\n"
             "sysctl -n net.core.netdev_max_backlog\nsysctl -q -w net.core.netdev_max_backlog=5000\n"
             "systemd-tmpfiles --create /usr/lib/tmpfiles.d/kolt-capture.conf\n"},
        Host{"larger_already",
             "tool udevadm; tool systemd-tmpfiles\n"
             "tool sysctl 'case \"$*\" in *rmem_max) echo 67108864;; *backlog) echo 5000;; esac'",
             "udevadm control --reload\nudevadm trigger --subsystem-match=usb\n"
             "sysctl -n net.core.rmem_max\nsysctl -n net.core.netdev_max_backlog\n"
             "systemd-tmpfiles --create /usr/lib/tmpfiles.d/kolt-capture.conf\n"},
        Host{"nothing_works", "tool udevadm 'exit 1'; tool systemd-tmpfiles 'exit 1'\ntool sysctl 'exit 255'",
             "udevadm control --reload\nudevadm trigger --subsystem-match=usb\n"
             "sysctl -n net.core.rmem_max\nsysctl -n net.core.netdev_max_backlog\n"
             "systemd-tmpfiles --create /usr/lib/tmpfiles.d/kolt-capture.conf\n"},
        Host{"cannot_be_written",
             "tool udevadm; tool systemd-tmpfiles\n"
             "tool sysctl 'case \"$*\" in -n*) echo 1000;; *) exit 1;; esac'",
             "udevadm control --reload\nudevadm trigger --subsystem-match=usb\n"
             "sysctl -n net.core.rmem_max\nsysctl -q -w net.core.rmem_max=33554432\n"
             "sysctl -n net.core.netdev_max_backlog\nsysctl -q -w net.core.netdev_max_backlog=5000\n"
             "systemd-tmpfiles --create /usr/lib/tmpfiles.d/kolt-capture.conf\n"},
        Host{"without_udev_and_usb",
             "rmdir \"$R/run/udev\"; rm -r \"$R/sys/module\"\n"
             "tool udevadm; tool systemd-tmpfiles; tool sysctl 'echo 1e9'",
             "sysctl -n net.core.rmem_max\nsysctl -q -w net.core.rmem_max=33554432\n"
             "sysctl -n net.core.netdev_max_backlog\nsysctl -q -w net.core.netdev_max_backlog=5000\n"}),
    [](const testing::TestParamInfo<Host>& row) { return std::string(row.param.name); });

} // namespace
