#pragma once
/// Guards of one operation of a node map and of the recursion inside of it.
#include "core/NodeMap.h"

namespace genapi {

/// One operation of the published interface: takes the map's lock, and at its end runs the callbacks of the
/// nodes that it changed. Operations nest, when a port or a callback comes back into the map.
class Operation {
public:
    explicit Operation(NodeMap& map) : m_map(map) { m_map.enter(); }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation() { m_map.leave(); }

private:
    NodeMap& m_map;
};

/// One step of a node's evaluation. Throws RuntimeException with the node's name when the same step of the
/// same node is under way already, and when the XML makes nodes depend on one another in a chain without a
/// reasonable end.
class Evaluation {
public:
    enum Step : std::uint8_t {
        Value = 1,
        Write = 2,
        Min = 4,
        Max = 8,
        Inc = 16,
        Mode = 32,
        ModeWithLocks = 64,
        Address = 128
    };

    Evaluation(Node& node, Step step);
    Evaluation(const Evaluation&) = delete;
    Evaluation& operator=(const Evaluation&) = delete;
    ~Evaluation();

private:
    Node& m_node;
    std::uint8_t m_step;
};

/// Finds out whether what is evaluated inside of it may be cached: something that must be read anew each
/// time, or that grows old, may not.
class CacheScope {
public:
    explicit CacheScope(NodeMap& map) : m_map(map), m_outer(map.m_uncacheable) { map.m_uncacheable = false; }
    CacheScope(const CacheScope&) = delete;
    CacheScope& operator=(const CacheScope&) = delete;
    ~CacheScope() { m_map.m_uncacheable |= m_outer; }
    bool cacheable() const { return !m_map.m_uncacheable; }

private:
    NodeMap& m_map;
    bool m_outer;
};

} // namespace genapi
