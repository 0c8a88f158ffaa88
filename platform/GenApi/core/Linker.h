#pragma once
/// Turns the names in a description into nodes and numbers, once all nodes are there, and collects who
/// depends on whom.
#include <cstdint>
#include <utility>
#include <vector>

#include "core/Node.h"

namespace genapi {

class PortNode;

/// A number that stands in the XML or that another node has.
template<class T>
struct Source {
    Node* node = nullptr;
    T constant = T();
    bool given = false;

    T get(Reading how = {}) const;
};
using IntegerSource = Source<std::int64_t>;
using FloatSource = Source<double>;

template<>
inline std::int64_t Source<std::int64_t>::get(Reading how) const {
    return node != nullptr ? node->checkedInteger(how) : constant;
}
template<>
inline double Source<double>::get(Reading how) const {
    return node != nullptr ? node->checkedFloat(how) : constant;
}

class Linker {
public:
    explicit Linker(NodeMap& map) : m_map(map) {}

    /// The node that a property names; what it names wrongly becomes `from`'s fault and gives null. A change
    /// of the named node concerns `from` from now on.
    Node* number(Node& from, const Property& property);
    Node* text(Node& from, const Property& property);
    PortNode* port(Node& from, const Property& property);
    /// Null when there is no such node, which is nobody's fault.
    Node* ifThere(std::string_view name) const;

    /// The property's own text as number or word; one that isn't becomes `from`'s fault.
    void constant(Node& from, const Property& property, IntegerSource& source);
    void constant(Node& from, const Property& property, FloatSource& source);
    void reference(Node& from, const Property& property, IntegerSource& source);
    void reference(Node& from, const Property& property, FloatSource& source);
    std::int64_t integer(Node& from, const Property& property);
    bool yesNo(Node& from, const Property& property);
    GenApi_3_0::EAccessMode accessMode(Node& from, const Property& property);
    GenApi_3_0::EVisibility visibility(Node& from, const Property& property);

    void depends(Node& dependent, Node& source);
    /// The XML says that a change of `source` makes `dependent` old: all that it stands on has to be read
    /// anew.
    void invalidates(Node& source, Node& dependent);

    /// Gives the map its edges. Throws RuntimeException when there are absurdly many.
    void finish();

private:
    struct Edge {
        std::uint32_t source;
        std::uint32_t dependent;
    };

    [[gnu::cold]] void badText(Node& from, const Property& property, const char* wanted);
    [[gnu::cold]] void badName(Node& from, const Property& property, const Node* named, const char* wanted);
    void add(std::uint32_t source, std::uint32_t dependent);
    void addDeclared();

    NodeMap& m_map;
    std::vector<Edge> m_edges;
    std::vector<std::pair<Node*, Node*>> m_declared;
};

constexpr std::uint32_t declaredEdge = 0x80000000U;

} // namespace genapi
