#pragma once
/// Guards of one operation of a node map and of the recursion inside of it.
#include <cstdint>
#include <string>

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
    enum Step : std::uint16_t {
        Value = 1,
        Write = 2,
        Min = 4,
        Max = 8,
        Inc = 16,
        Mode = 32,
        ModeWithLocks = 64,
        Address = 128,
        Error = 256
    };

    Evaluation(Node& node, Step step, const Written& written = {});
    Evaluation(const Evaluation&) = delete;
    Evaluation& operator=(const Evaluation&) = delete;
    ~Evaluation();

    /// Begins the text of a failure that `node` met: its name, and before it what was asked for first, and of
    /// whom, where that was not `node` itself ("node 'Width' can't be set to 640: node 'WidthReg'").
    static std::string blame(const Node& node);
    /// For what lies outside of all nodes: what was asked for, of `node` too ("node 'Width' can't be set to
    /// 640: node 'WidthReg', ", "node 'WidthReg' can't be read: ").
    static std::string asked(const Node& node);

private:
    static const Evaluation* outermost(const NodeMap& map);
    std::string purpose() const;

    Node& m_node;
    const Evaluation* m_outer;
    Written m_written;
    Step m_step;
};

/// "set to 640", "executed" or, for bytes, "written".
std::string writtenText(Node& node, const Written& written);

/// One write to a node, and after it the question whether the camera took it.
template<class Store>
void performWrite(Node& node, const Written& written, Store store) {
    {
        const Evaluation evaluation(node, Evaluation::Write, written);
        store();
    }
    node.checkError(written);
}

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

template<class T, class Compute>
T Node::cachedRead(T& cached, Reading how, Compute compute) {
    if (valueCached() && !how.ignoreCache)
        return cached;
    checkFault();
    const Evaluation evaluation(*this, Evaluation::Value);
    const CacheScope scope(m_map);
    const T value = compute();
    cached = value;
    m_valueEpoch = scope.cacheable() ? m_map.epoch() : 0;
    return value;
}

} // namespace genapi
