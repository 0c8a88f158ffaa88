#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/stat.h>

#include "support/NetworkNamespace.h"

namespace kolt::test {
namespace {

ino_t currentNamespace() {
    struct stat info {};
    EXPECT_EQ(::stat("/proc/thread-self/ns/net", &info), 0);
    return info.st_ino;
}

TEST(NetworkNamespace, ScopesAndCallsAreInsideAndEndOutside) {
    const ino_t home = currentNamespace();
    const NetworkNamespace network;
    ino_t inside = 0;
    network.call([&] { inside = currentNamespace(); });
    EXPECT_NE(inside, home);
    EXPECT_EQ(currentNamespace(), home);
    {
        const NamespaceScope scope(network);
        EXPECT_EQ(currentNamespace(), inside);
    }
    EXPECT_EQ(currentNamespace(), home);
}

TEST(NetworkNamespace, HandsOnExceptionsAndExitCodes) {
    const NetworkNamespace network;
    EXPECT_THROW(network.call([] { throw std::logic_error("x"); }), std::logic_error);
    EXPECT_EQ(network.command({"false"}), 1);
    EXPECT_EQ(network.command({"kolt-no-such-program"}), -1);
    EXPECT_THROW(network.ip("link set nothing0 up"), std::runtime_error);
}

TEST(NetworkNamespace, ACableCarriesPackets) {
    const NetworkNamespace left;
    const NetworkNamespace right;
    NetworkNamespace::cable(left, "kl0", "192.168.5.1/24", right, "kr0", "192.168.5.2/24");
    EXPECT_EQ(left.command({"sh", "-c", "ping -c 1 -W 5 192.168.5.2 >/dev/null"}), 0);
    EXPECT_EQ(right.command({"sh", "-c", "ping -c 1 -W 5 192.168.5.1 >/dev/null"}), 0);
}

} // namespace
} // namespace kolt::test
