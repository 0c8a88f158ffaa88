#include "find/DiscoverySettings.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>

#include "find/Ipv4.h"

namespace kolt::cc {

namespace {

std::vector<std::string> words(std::string_view list) {
    std::vector<std::string> result;
    std::size_t begin = 0;
    while ((begin = list.find_first_not_of(", \t", begin)) != std::string_view::npos) {
        const std::size_t end = std::min(list.find_first_of(", \t", begin), list.size());
        result.emplace_back(list.substr(begin, end - begin));
        begin = end;
    }
    return result;
}

std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

struct Shared {
    std::mutex mutex; // guards settings
    DiscoverySettings settings =
        parseDiscoverySettings(environment("OV_CC_INTERFACES"), environment("OV_CC_ADDRESSES"));
};

Shared& shared() {
    static Shared instance;
    return instance;
}

} // namespace

bool DiscoverySettings::allows(const std::string& interfaceName) const {
    return interfaces.empty() ||
           std::find(interfaces.begin(), interfaces.end(), interfaceName) != interfaces.end();
}

DiscoverySettings parseDiscoverySettings(std::string_view interfaces, std::string_view addresses) {
    DiscoverySettings settings;
    settings.interfaces = words(interfaces);
    for (const std::string& word : words(addresses)) {
        if (const auto address = parseIpv4(word))
            settings.addresses.push_back(*address);
    }
    return settings;
}

DiscoverySettings discoverySettings() {
    Shared& state = shared();
    const std::lock_guard<std::mutex> lock(state.mutex);
    return state.settings;
}

void setDiscoverySettings(DiscoverySettings settings) {
    Shared& state = shared();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.settings = std::move(settings);
}

} // namespace kolt::cc
