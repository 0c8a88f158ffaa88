#include "support/NetworkNamespace.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <exception>
#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace kolt::test {

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

int openOwnNamespace() {
    const int fd = ::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        fail("open the thread's network namespace");
    return fd;
}

void enter(int fd) {
    if (::setns(fd, CLONE_NEWNET) != 0)
        fail("enter a network namespace");
}

// Runs work on a new thread and hands on what it throws.
void onThread(const std::function<void()>& work) {
    std::exception_ptr failure;
    std::thread thread([&] {
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
    });
    thread.join();
    if (failure)
        std::rethrow_exception(failure);
}

int run(const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t child = 0;
    // The child is made by the calling thread and so begins in that thread's namespace.
    const int error = ::posix_spawnp(&child, argv[0], nullptr, nullptr, argv.data(), environ);
    if (error != 0)
        return -1;
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// The kernel tells of a new link with a delay of up to a second; until then the card counts as not running.
void awaitLink(const std::string& name) {
    const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        fail("make a socket");
    ifreq request{};
    name.copy(request.ifr_name, IFNAMSIZ - 1);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    bool running = false;
    while (!running && std::chrono::steady_clock::now() < deadline) {
        running = ::ioctl(fd, SIOCGIFFLAGS, &request) == 0 && (request.ifr_flags & IFF_RUNNING) != 0;
        if (!running)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ::close(fd);
    if (!running)
        throw std::runtime_error("no link on " + name);
}

} // namespace

NetworkNamespace::NetworkNamespace() {
    onThread([this] {
        if (::unshare(CLONE_NEWNET) != 0)
            fail("make a network namespace (wants root)");
        fd_ = openOwnNamespace();
    });
    ip("link set lo up");
}

NetworkNamespace::~NetworkNamespace() {
    if (fd_ >= 0)
        ::close(fd_);
}

void NetworkNamespace::call(const std::function<void()>& work) const {
    onThread([&] {
        enter(fd_);
        work();
    });
}

int NetworkNamespace::command(const std::vector<std::string>& arguments) const {
    int result = -1;
    call([&] { result = run(arguments); });
    return result;
}

void NetworkNamespace::ip(const std::string& arguments) const {
    std::vector<std::string> words{"ip"};
    std::istringstream stream(arguments);
    for (std::string word; stream >> word;)
        words.push_back(word);
    if (command(words) != 0)
        throw std::runtime_error("failed: ip " + arguments);
}

std::string NetworkNamespace::path() const {
    return "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(fd_);
}

void NetworkNamespace::cable(const NetworkNamespace& a, const std::string& nameA, const std::string& addressA,
                             const NetworkNamespace& b, const std::string& nameB,
                             const std::string& addressB) {
    // The kernel reports a link at once only where the two ends have different numbers, else within a second;
    // two new namespaces count from the same number.
    static std::atomic<int> next{100};
    const int index = next.fetch_add(2);
    a.ip("link add " + nameA + " index " + std::to_string(index) + " type veth peer name " + nameB +
         " index " + std::to_string(index + 1) + " netns " + b.path());
    const auto raise = [](const NetworkNamespace& side, const std::string& name, const std::string& address) {
        if (!address.empty())
            side.ip("address add " + address + " broadcast + dev " + name);
        side.ip("link set " + name + " up");
    };
    raise(a, nameA, addressA);
    raise(b, nameB, addressB);
    a.call([&] { awaitLink(nameA); });
    b.call([&] { awaitLink(nameB); });
}

NamespaceScope::NamespaceScope(const NetworkNamespace& target) : home_(openOwnNamespace()) {
    enter(target.fd_);
}

NamespaceScope::~NamespaceScope() {
    // Staying in a foreign network would make every later test wrong.
    if (::setns(home_, CLONE_NEWNET) != 0)
        std::terminate();
    ::close(home_);
}

} // namespace kolt::test
