#include "core/NameIndex.h"

#include <cstring>

namespace genapi {

NameIndex::NameIndex(std::size_t names) {
    std::size_t slots = 16;
    while (slots < names * 2)
        slots *= 2;
    m_slots.resize(slots);
}

std::uint32_t NameIndex::hashOf(std::string_view name) {
    std::uint64_t hash = name.size() * 0x9E3779B97F4A7C15ULL;
    const char* text = name.data();
    std::size_t left = name.size();
    const auto mix = [&hash](std::uint64_t word) {
        hash = (hash ^ word) * 0xFF51AFD7ED558CCDULL;
        hash ^= hash >> 32;
    };
    for (; left >= 8; left -= 8, text += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, text, 8);
        mix(word);
    }
    std::uint64_t rest = 0;
    if (left != 0) // an empty name need not have an address
        std::memcpy(&rest, text, left);
    mix(rest);
    return static_cast<std::uint32_t>(hash ^ (hash >> 29));
}

Node* NameIndex::add(Node& node, std::string_view name) {
    const std::uint32_t hash = hashOf(name);
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = hash & mask;
    for (; m_slots[slot].node != nullptr; slot = (slot + 1) & mask)
        if (m_slots[slot].hash == hash && std::string_view(m_slots[slot].text, m_slots[slot].length) == name)
            return m_slots[slot].node;
    m_slots[slot] = {name.data(), static_cast<std::uint32_t>(name.size()), hash, &node};
    return nullptr;
}

Node* NameIndex::find(std::string_view name) const {
    const std::uint32_t hash = hashOf(name);
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t slot = hash & mask; m_slots[slot].node != nullptr; slot = (slot + 1) & mask)
        if (m_slots[slot].hash == hash && std::string_view(m_slots[slot].text, m_slots[slot].length) == name)
            return m_slots[slot].node;
    return nullptr;
}

} // namespace genapi
