#pragma once
/// From a node's name to the node: a hash table that is filled once and then only read, by any thread.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace genapi {

class Node;

class NameIndex {
public:
    explicit NameIndex(std::size_t names);

    /// The node that the name has already, or null after the name was added.
    Node* add(Node& node, std::string_view name);
    Node* find(std::string_view name) const;

private:
    struct Slot {
        const char* text = nullptr;
        std::uint32_t length = 0;
        std::uint32_t hash = 0;
        Node* node = nullptr;
    };

    static std::uint32_t hashOf(std::string_view name);

    std::vector<Slot> m_slots; // a power of two, at most half of them used
};

} // namespace genapi
