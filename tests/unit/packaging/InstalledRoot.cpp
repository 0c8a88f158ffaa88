#include "InstalledRoot.h"

#include <filesystem>
#include <stdexcept>

namespace packaging_test {

std::string Package() {
    std::string found;
    for (const auto& entry : std::filesystem::directory_iterator(KOLT_PACKAGE_DIR)) {
        if (entry.path().extension() != ".deb")
            continue;
        if (!found.empty())
            throw std::runtime_error("several packages in " KOLT_PACKAGE_DIR);
        found = entry.path();
    }
    if (found.empty())
        throw std::runtime_error("no package in " KOLT_PACKAGE_DIR
                                 ": run the tests with ctest, which makes it");
    return found;
}

kolt::test::Finished InACopyOfTheSystem(const std::string& lines) {
    // The copy's folder is made and named outside, where it can be taken away again behind the mounts.
    static const char prepare[] = R"(
set -eu
mount -t tmpfs -o mode=755 none "$T"
mkdir "$T/up" "$T/work" "$T/root"
mount -t overlay none -o "lowerdir=/,upperdir=$T/up,workdir=$T/work" "$T/root"
R=$T/root
mount --bind /proc "$R/proc"
mount --bind /dev "$R/dev"
mount -t tmpfs none "$R/run"
mount -t tmpfs -o mode=1777 none "$R/tmp"
ip link set lo up
P=/tmp/package.deb
cp "$PACKAGE" "$R$P"
mkdir -m 777 "$R/tmp/home"
inside() { env -u HOME chroot "$R" env HOME=/root "$@"; }
as_user() { chroot --userspec=65534:65534 --groups= "$R" env HOME=/tmp/home "$@"; }
left_over() {
    (cd "$T/up"; find . -mindepth 1 | while read -r entry; do
        [ -d "$entry" ] && [ -d "/$entry" ] || echo "${entry#.}"
    done) | grep -vE '^/(var/(log|cache|lib/dpkg)/|usr/share/(icons/hicolor/icon-theme|applications/mimeinfo)\.cache)' |
        grep -vE '^/etc/ld.so.cache$' || true
}
)";
    return kolt::test::run(
        {"bash", "-c",
         "T=$(mktemp -d) || exit 99\nexport T\n"
         "unshare --mount --net bash -c \"$LINES_TO_RUN\"\nstatus=$?\nrmdir \"$T\"\nexit $status"},
        {{"PACKAGE", Package()}, {"LINES_TO_RUN", prepare + lines}});
}

} // namespace packaging_test
