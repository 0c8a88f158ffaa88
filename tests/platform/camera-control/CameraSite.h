// A network with scripted cameras behind one interface of a host, all in namespaces of the test.
#ifndef KOLT_TESTS_CAMERA_SITE_H
#define KOLT_TESTS_CAMERA_SITE_H

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ScriptedCamera.h"
#include "support/NetworkNamespace.h"

namespace kolt::test {

// The far end of a cable to the host. Each camera has a network card (and so a MAC) of its own on it.
class CameraSite {
public:
    // The host gets an interface of this name with this address ("10.1.0.1/24").
    CameraSite(const NetworkNamespace& host, const std::string& hostInterface, const std::string& hostAddress)
        : number_(next()) {
        NetworkNamespace::cable(host, hostInterface, hostAddress, network_, trunk(), "");
        // Each card speaks for its own address alone, as separate cameras do.
        if (network_.command({"sh", "-c", "echo 1 > /proc/sys/net/ipv4/conf/all/arp_ignore"}) != 0)
            throw std::runtime_error("arp_ignore");
    }

    // A camera with a card that has this address ("10.1.0.5/24"); it hears broadcasts and its own address.
    ScriptedCamera& add(const std::string& address, ScriptedCamera::Script script) {
        const std::string card = addHost(address);
        const NamespaceScope inside(network_);
        cameras_.push_back(
            std::make_unique<ScriptedCamera>("0.0.0.0", std::uint16_t{3956}, std::move(script), card));
        return *cameras_.back();
    }

    // A card with this address and nobody behind it: some computer. Cards are called "mv0", "mv1" and so on.
    std::string addHost(const std::string& address) {
        const std::string card = "mv" + std::to_string(cards_++);
        network_.ip("link add link " + trunk() + " name " + card + " type macvlan mode bridge");
        network_.ip("address add " + address + " broadcast + dev " + card);
        network_.ip("link set " + card + " up");
        return card;
    }

    // An obedient one; its record tells the card's address.
    ScriptedCamera& add(const std::string& address, ScriptedIdentity identity) {
        identity.ip = address.substr(0, address.find('/'));
        return add(address, ScriptedCamera::obedient(identity));
    }

    NetworkNamespace& network() { return network_; }

private:
    static int next() {
        static std::atomic<int> count{0};
        return count++;
    }
    std::string trunk() const { return "trunk" + std::to_string(number_); }

    int number_;
    int cards_ = 0;
    NetworkNamespace network_;
    std::list<std::unique_ptr<ScriptedCamera>> cameras_;
};

} // namespace kolt::test

#endif
