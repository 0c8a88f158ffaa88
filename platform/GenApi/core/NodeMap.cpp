#include "core/NodeMap.h"

#include <algorithm>
#include <exception>

#include "core/Evaluation.h"
#include "core/Linker.h"
#include "core/NodeFactory.h"
#include "core/PortNode.h"

namespace genapi {

using namespace GenApi_3_0;
using GenICam_3_0::gcstring;
using GenICam_3_0::gcstring_vector;
using GenICam_3_0::Version_t;

namespace {

constexpr int maxCallbackRounds = 16; // of callbacks whose own writes call back again

gcstring toGc(std::string_view text) {
    return {text.data(), text.size()};
}

Version_t toVersion(const std::uint16_t (&parts)[3]) {
    Version_t version;
    version.Major = parts[0];
    version.Minor = parts[1];
    version.SubMinor = parts[2];
    return version;
}

bool sameText(const Property* left, const Property* right, std::uint32_t count) {
    return std::equal(left, left + count, right, [](const Property& a, const Property& b) {
        return a.id == b.id && a.text == b.text && a.attribute == b.attribute;
    });
}

} // namespace

// Loading

NodeMap::NodeMap(Description description, std::string deviceName)
    : m_description(std::move(description))
    , m_deviceName(std::move(deviceName))
    , m_arena(m_description.nodes().size() * 256 + 1024)
    , m_names(m_description.nodes().size()) {
    try {
        createNodes();
        Linker linker(*this);
        for (Node* node : m_nodes) {
            for (const Property& property : *node)
                node->link(linker, property);
            node->linked(linker);
        }
        linker.finish();
        for (PortNode* port : m_ports)
            port->sortRegisters();
    } catch (...) {
        for (Node* node : m_nodes)
            node->~Node();
        throw;
    }
}

NodeMap::~NodeMap() {
    for (Node* node : m_nodes)
        node->~Node();
}

void NodeMap::createNodes() {
    m_nodes.reserve(m_description.nodes().size());
    for (const NodeRecord& record : m_description.nodes()) {
        const Property* properties = m_description.properties(record);
        if (Node* other = m_names.find(record.name)) {
            const auto count = static_cast<std::uint32_t>(other->end() - other->begin());
            if (other->kind() != record.kind || count != record.propertyCount ||
                !sameText(other->begin(), properties, count))
                other->setFault("the XML defines it twice, in different ways");
            continue;
        }
        Node* node =
            createNode(*this, m_arena, record, properties, static_cast<std::uint32_t>(m_nodes.size()));
        m_nodes.push_back(node);
        m_names.add(*node, node->name());
        if (node->kind() == NodeKind::Port)
            m_ports.push_back(static_cast<PortNode*>(node));
        if (node->pollingTime() > 0)
            m_polled.push_back(node);
    }
    m_sincePoll.assign(m_polled.size(), 0);
}

// Operations

void NodeMap::enter() {
    m_lock.Lock();
    if (m_nesting++ == 0) {
        m_steps = 0;
        watchPorts();
    }
}

void NodeMap::watchPorts() {
    for (PortNode* port : m_ports)
        if (port->watch())
            ++m_modeEpoch;
}

void NodeMap::leave() noexcept {
    if (m_nesting > 1 || m_pendingCallbacks.empty()) {
        --m_nesting;
        m_lock.Unlock();
        return;
    }
    std::vector<std::shared_ptr<CNodeCallback>> ran;
    runCallbacks(ran);
    --m_nesting;
    m_lock.Unlock();
    for (const std::shared_ptr<CNodeCallback>& callback : ran) {
        try {
            (*callback)(cbPostOutsideLock);
        } catch (...) { // NOLINT(bugprone-empty-catch): one listener must not keep the others from hearing
        }
    }
}

void NodeMap::runCallbacks(std::vector<std::shared_ptr<CNodeCallback>>& ran) noexcept {
    try {
        for (int round = 0; round < maxCallbackRounds && !m_pendingCallbacks.empty(); ++round) {
            const std::size_t before = ran.size();
            for (Node* node : m_pendingCallbacks) {
                node->m_pending = false;
                if (node->m_rare)
                    ran.insert(ran.end(), node->m_rare->callbacks.begin(), node->m_rare->callbacks.end());
            }
            m_pendingCallbacks.clear();
            for (std::size_t i = before; i < ran.size(); ++i) {
                m_steps = 0; // what a callback does is an operation of its own
                try {
                    (*ran[i])(cbPostInsideLock);
                } catch (...) { // NOLINT(bugprone-empty-catch): as above
                }
            }
        }
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): what could be told has been told
    }
    for (Node* node : m_pendingCallbacks)
        node->m_pending = false;
    m_pendingCallbacks.clear();
}

void NodeMap::noteChange(Node& node) {
    if (node.m_pending || !node.m_rare || node.m_rare->callbacks.empty())
        return;
    m_pendingCallbacks.push_back(&node);
    node.m_pending = true;
}

void NodeMap::changed(Node& node) {
    changed(std::vector<Node*>{&node});
}

void NodeMap::changed(const std::vector<Node*>& nodes) {
    ++m_visit;
    m_walk.assign(nodes.begin(), nodes.end());
    for (Node* node : nodes) {
        node->m_visit = m_visit;
        noteChange(*node);
    }
    for (std::size_t i = 0; i < m_walk.size(); ++i) {
        const std::uint32_t from = m_walk[i]->index();
        for (std::uint32_t edge = m_firstEdge[from]; edge != m_firstEdge[from + 1]; ++edge) {
            Node& dependent = *m_nodes[m_edges[edge] & ~declaredEdge];
            if (dependent.m_visit != m_visit) {
                dependent.m_visit = m_visit;
                dependent.drop();
                noteChange(dependent);
                m_walk.push_back(&dependent);
            } else if ((m_edges[edge] & declaredEdge) != 0) {
                dependent.drop(); // the XML says that the change makes the node's own value old as well
            }
        }
    }
}

std::vector<Node*> NodeMap::dependents(Node& node) {
    ++m_visit;
    node.m_visit = m_visit;
    std::vector<Node*> found{&node};
    for (std::size_t i = 0; i < found.size(); ++i) {
        const std::uint32_t from = found[i]->index();
        for (std::uint32_t edge = m_firstEdge[from]; edge != m_firstEdge[from + 1]; ++edge) {
            Node* dependent = m_nodes[m_edges[edge] & ~declaredEdge];
            if (dependent->m_visit == m_visit)
                continue;
            dependent->m_visit = m_visit;
            found.push_back(dependent);
        }
    }
    found.erase(found.begin());
    return found;
}

void NodeMap::findReferrers() const {
    std::vector<std::pair<std::uint32_t, Referrer>> all;
    const auto add = [&](Node* from, PropertyId id, std::string_view name) {
        if (const Node* named = find(name))
            all.push_back({named->index(), {from, id}});
    };
    for (Node* node : m_nodes)
        for (const Property& property : *node) {
            if (NamesANode(property.id))
                add(node, property.id, property.text);
            if (property.attributeNamesANode)
                add(node, PropertyId::pIndex, property.attribute);
        }
    std::stable_sort(all.begin(), all.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    m_firstReferrer.assign(m_nodes.size() + 1, 0);
    m_referrers.reserve(all.size());
    for (const auto& [named, referrer] : all) {
        ++m_firstReferrer[named + 1];
        m_referrers.push_back(referrer);
    }
    for (std::size_t i = 1; i < m_firstReferrer.size(); ++i)
        m_firstReferrer[i] += m_firstReferrer[i - 1];
}

std::pair<const NodeMap::Referrer*, const NodeMap::Referrer*> NodeMap::referrers(const Node& node) const {
    std::call_once(m_referrersFound, [this] { findReferrers(); });
    const Referrer* const all = m_referrers.data();
    return {all + m_firstReferrer[node.index()], all + m_firstReferrer[node.index() + 1]};
}

void NodeMap::invalidateAll() {
    ++m_epoch;
    ++m_modeEpoch;
    if (hasCallbacks())
        for (Node* node : m_nodes)
            noteChange(*node);
}

// INodeMap

void NodeMap::GetNodes(NodeList_t& Nodes) const {
    Nodes.assign(m_nodes.begin(), m_nodes.end());
}

INode* NodeMap::GetNode(const gcstring& Name) const {
    std::string_view name = Name.str();
    if (Node* node = find(name))
        return node;
    for (const auto& [prefix, space] : {std::pair<std::string_view, ENameSpace>{"Std::", Standard},
                                        std::pair<std::string_view, ENameSpace>{"Cust::", Custom}})
        if (name.substr(0, prefix.size()) == prefix) {
            Node* node = find(name.substr(prefix.size()));
            return node != nullptr && node->GetNameSpace() == space ? node : nullptr;
        }
    return nullptr;
}

void NodeMap::InvalidateNodes() const {
    auto& self = const_cast<NodeMap&>(*this);
    const Operation operation(self);
    self.invalidateAll();
}

bool NodeMap::Connect(IPort* pPort, const gcstring& PortName) const {
    Node* node = find(PortName.str());
    if (node == nullptr || node->kind() != NodeKind::Port)
        return false;
    static_cast<PortNode*>(node)->SetPortImpl(pPort);
    return true;
}

bool NodeMap::Connect(IPort* pPort) const {
    return Connect(pPort, "Device");
}

gcstring NodeMap::GetDeviceName() const {
    return m_deviceName;
}

void NodeMap::Poll(int64_t ElapsedTime) {
    if (ElapsedTime < 0)
        throw INVALID_ARGUMENT_EXCEPTION("a poll after %lld ms lies in the past",
                                         static_cast<long long>(ElapsedTime));
    std::exception_ptr failure;
    for (std::size_t i = 0; i < m_polled.size(); ++i) {
        const Operation operation(*this); // for one node only: whoever waits for the lock gets it in between
        Node& node = *m_polled[i];
        std::int64_t& since = m_sincePoll[i];
        since = since > INT64_MAX - ElapsedTime ? INT64_MAX : since + ElapsedTime;
        if (since < node.pollingTime())
            continue;
        since = 0;
        try {
            node.poll();
        } catch (...) { // the others are polled all the same
            failure = std::current_exception();
        }
    }
    if (failure)
        std::rethrow_exception(failure);
}

bool NodeMap::ParseSwissKnifes(gcstring_vector* pErrors) const {
    bool good = true;
    for (Node* node : m_nodes) {
        const Operation operation(const_cast<NodeMap&>(*this));
        if (node->compile())
            continue;
        good = false;
        if (pErrors != nullptr)
            pErrors->push_back(toGc(node->name()));
    }
    return good;
}

// IDeviceInfo

gcstring NodeMap::GetModelName() {
    return toGc(m_description.device().modelName);
}
gcstring NodeMap::GetVendorName() {
    return toGc(m_description.device().vendorName);
}
gcstring NodeMap::GetToolTip() {
    return toGc(m_description.device().toolTip);
}
gcstring NodeMap::GetStandardNameSpace() {
    return toGc(m_description.device().standardNameSpace);
}
gcstring NodeMap::GetProductGuid() {
    return toGc(m_description.device().productGuid);
}
gcstring NodeMap::GetVersionGuid() {
    return toGc(m_description.device().versionGuid);
}

void NodeMap::GetGenApiVersion(Version_t& Version, uint16_t& Build) {
    Version = Version_t{};
    Version.Major = 3;
    Build = 0;
}

void NodeMap::GetSchemaVersion(Version_t& Version) {
    Version = toVersion(m_description.device().schemaVersion);
}
void NodeMap::GetDeviceVersion(Version_t& Version) {
    Version = toVersion(m_description.device().deviceVersion);
}

// IDestroy

void NodeMap::Destroy() {
    if (m_holds.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete this;
}

} // namespace genapi
