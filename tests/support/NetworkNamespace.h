// Network namespaces for tests: a network of its own in which a test may broadcast as it likes without a
// packet leaving the machine.
//
// A namespace here has no name and no mount: it lives as long as its object (or a socket made in it) and goes
// with the process, also when that crashes. Making one wants CAP_SYS_ADMIN; without it the constructor
// throws, so that the test fails with the reason.
#ifndef KOLT_TESTS_SUPPORT_NETWORK_NAMESPACE_H
#define KOLT_TESTS_SUPPORT_NETWORK_NAMESPACE_H

#include <functional>
#include <string>
#include <vector>

namespace kolt::test {

class NetworkNamespace {
public:
    // A new namespace in which "lo" is up and nothing else is.
    NetworkNamespace();
    ~NetworkNamespace();
    NetworkNamespace(const NetworkNamespace&) = delete;
    NetworkNamespace& operator=(const NetworkNamespace&) = delete;

    // Runs work on a thread of its own inside the namespace and waits for it; what it throws is thrown here.
    // Threads and sockets that it makes stay in the namespace.
    void call(const std::function<void()>& work) const;

    // Runs a program inside the namespace and gives its exit code (-1: it couldn't be started or was killed).
    // The first word is looked up in PATH.
    int command(const std::vector<std::string>& arguments) const;

    // As command, for set-up: throws when the exit code isn't 0. The words of the line are separated by
    // blanks.
    void ip(const std::string& arguments) const; // runs "ip <arguments>"

    // A name for this namespace that "ip ... netns <name>" takes, in this process and its children.
    std::string path() const;

    // A pair of virtual network cards that are joined by a cable, one in each namespace, up, with these
    // addresses
    // ("192.168.7.1/24"; empty: none). Names have at most 15 characters.
    static void cable(const NetworkNamespace& a, const std::string& nameA, const std::string& addressA,
                      const NetworkNamespace& b, const std::string& nameB, const std::string& addressB);

private:
    friend class NamespaceScope;
    int fd_ = -1;
};

// Moves the calling thread into a namespace until the scope ends. Threads started meanwhile stay there.
class NamespaceScope {
public:
    explicit NamespaceScope(const NetworkNamespace& target);
    ~NamespaceScope();
    NamespaceScope(const NamespaceScope&) = delete;
    NamespaceScope& operator=(const NamespaceScope&) = delete;

private:
    int home_ = -1;
};

} // namespace kolt::test

#endif
