#pragma once
/// All nodes of one camera: loading, names, the lock, dependencies and what follows from a change.
#include <atomic>
#include <deque>
#include <memory_resource>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "GenApi/IDestroy.h"
#include "GenApi/IDeviceInfo.h"
#include "GenApi/INodeMap.h"
#include "core/Description.h"
#include "core/NameIndex.h"
#include "core/Node.h"

namespace genapi {

class Evaluation;
class PortNode;
class RegisterNode;

class NodeMap final : public GenApi_3_0::INodeMap,
                      public GenApi_3_0::IDeviceInfo,
                      public GenApi_3_0::IDestroy {
public:
    NodeMap(Description description, std::string deviceName);
    NodeMap(const NodeMap&) = delete;
    NodeMap& operator=(const NodeMap&) = delete;
    ~NodeMap() override;

    // INodeMap.
    void GetNodes(GenApi_3_0::NodeList_t& Nodes) const override;
    GenApi_3_0::INode* GetNode(const GenICam_3_0::gcstring& Name) const override;
    void InvalidateNodes() const override;
    bool Connect(GenApi_3_0::IPort* pPort, const GenICam_3_0::gcstring& PortName) const override;
    bool Connect(GenApi_3_0::IPort* pPort) const override;
    GenICam_3_0::gcstring GetDeviceName() const override;
    void Poll(int64_t ElapsedTime) override;
    GenApi_3_0::CLock& GetLock() const override { return m_lock; }
    uint64_t GetNumNodes() const override { return m_nodes.size(); }
    bool ParseSwissKnifes(GenICam_3_0::gcstring_vector* pErrors) const override;
    // IDeviceInfo.
    GenICam_3_0::gcstring GetModelName() override;
    GenICam_3_0::gcstring GetVendorName() override;
    GenICam_3_0::gcstring GetToolTip() override;
    GenICam_3_0::gcstring GetStandardNameSpace() override;
    void GetGenApiVersion(GenICam_3_0::Version_t& Version, uint16_t& Build) override;
    void GetSchemaVersion(GenICam_3_0::Version_t& Version) override;
    void GetDeviceVersion(GenICam_3_0::Version_t& Version) override;
    GenICam_3_0::gcstring GetProductGuid() override;
    GenICam_3_0::gcstring GetVersionGuid() override;
    // IDestroy. Holds are counted: one for whoever made the map, one more for each addHold.
    void Destroy() override;
    void addHold() { m_holds.fetch_add(1, std::memory_order_relaxed); }

    // What never changes after loading; no lock needed.
    Node* find(std::string_view name) const { return m_names.find(name); }
    const std::vector<Node*>& nodes() const { return m_nodes; }
    const std::string& deviceName() const { return m_deviceName; }
    /// The nodes whose XML names this one, in the XML's order, each once for each property that does. Worked
    /// out for all nodes at the first call, which any thread may make.
    struct Referrer {
        Node* node;
        PropertyId property;
    };
    std::pair<const Referrer*, const Referrer*> referrers(const Node& node) const;

    // The inside, under the lock.
    std::uint32_t epoch() const { return m_epoch; }
    std::uint32_t modeEpoch() const { return m_modeEpoch; }
    void markUncacheable() { m_uncacheable = true; }
    /// Something about `node` changed: all that depends on it forgets what it knows, and callbacks are due.
    /// What the node itself has read stays, unless it is among those that its own change invalidates.
    void changed(Node& node);
    /// The same for several at once.
    void changed(const std::vector<Node*>& nodes);
    /// All caches of all nodes.
    void invalidateAll();
    bool hasCallbacks() const { return m_callbackCount > 0; }
    void countCallback(int by) { m_callbackCount += by; }
    /// All nodes that changed() would reach, without the node itself.
    std::vector<Node*> dependents(Node& node);

private:
    friend class Operation;
    friend class Evaluation;
    friend class CacheScope;
    friend class Linker;
    friend class Node;

    void enter();
    void leave() noexcept;
    void runCallbacks(std::vector<std::shared_ptr<GenApi_3_0::CNodeCallback>>& ran) noexcept;
    void noteChange(Node& node);
    void watchPorts();
    void createNodes();
    void findReferrers() const;

    Description m_description;
    std::string m_deviceName;
    std::pmr::monotonic_buffer_resource m_arena; // the nodes, one after the other
    std::vector<Node*> m_nodes;
    NameIndex m_names;
    std::deque<std::string> m_faults;
    std::vector<PortNode*> m_ports;
    std::vector<Node*> m_polled;
    // Whom a change of node i concerns: m_edges[m_firstEdge[i]] up to m_edges[m_firstEdge[i + 1]], each an
    // index of a node, with the top bit for a declared invalidator.
    std::vector<std::uint32_t> m_firstEdge;
    std::vector<std::uint32_t> m_edges;
    std::atomic<int> m_holds{1};
    mutable std::once_flag m_referrersFound;
    // Those of node i: m_referrers[m_firstReferrer[i]] up to m_referrers[m_firstReferrer[i + 1]].
    mutable std::vector<std::size_t> m_firstReferrer;
    mutable std::vector<Referrer> m_referrers;

    mutable GenApi_3_0::CLock m_lock;      // guards all below, and all that changes in nodes
    std::vector<std::int64_t> m_sincePoll; // by m_polled: milliseconds
    std::vector<Node*> m_walk;
    std::vector<Node*> m_pendingCallbacks;
    std::uint32_t m_epoch = 1;
    std::uint32_t m_modeEpoch = 1;
    std::uint32_t m_visit = 0;
    int m_nesting = 0;
    const Evaluation* m_evaluation = nullptr; // the innermost one under way
    int m_depth = 0;
    int m_steps = 0; // evaluations since the operation began
    int m_callbackCount = 0;
    bool m_uncacheable = false;
};

} // namespace genapi
