// INode of all nodes: what a node tells of itself.
#include <algorithm>

#include "core/Evaluation.h"
#include "core/Linker.h"
#include "core/Node.h"
#include "core/NodeMap.h"
#include "core/NumberText.h"

namespace genapi {

using namespace GenApi_3_0;
using GenICam_3_0::gcstring;
using GenICam_3_0::gcstring_vector;

namespace {

gcstring toGc(std::string_view text) {
    return {text.data(), text.size()};
}

// Reading is const in the published interface and fills caches inside.
Node& changeable(const Node& node) {
    return const_cast<Node&>(node);
}

bool isReadLink(PropertyId id) {
    return NamesANode(id) && id != PropertyId::pInvalidator && id != PropertyId::pSelected &&
           id != PropertyId::pAlias && id != PropertyId::pCastAlias && id != PropertyId::pError &&
           id != PropertyId::pValueCopy;
}

bool isWriteLink(PropertyId id) {
    return id == PropertyId::pValue || id == PropertyId::pValueCopy || id == PropertyId::pValueIndexed ||
           id == PropertyId::pValueDefault;
}

void addOnce(NodeList_t& list, Node* node) {
    if (node != nullptr && std::find(list.begin(), list.end(), node) == list.end())
        list.push_back(node);
}

template<class Wanted>
void addLinks(const Node& node, NodeList_t& list, Wanted wanted) {
    for (const Property& property : node) {
        if (wanted(property.id))
            addOnce(list, node.map().find(property.text));
        if (property.attributeNamesANode && wanted(PropertyId::pIndex))
            addOnce(list, node.map().find(property.attribute));
    }
}

} // namespace

EAccessMode Node::GetAccessMode() const {
    const Operation operation(m_map);
    return changeable(*this).mode(Aspect::Full);
}

gcstring Node::GetName(bool FullQualified) const {
    if (!FullQualified)
        return toGc(m_name);
    return (GetNameSpace() == Standard ? "Std::" : "Cust::") + std::string(m_name);
}

ENameSpace Node::GetNameSpace() const {
    return text(PropertyId::NameSpace) == "Standard" ? Standard : Custom;
}

EVisibility Node::GetVisibility() const {
    const Operation operation(m_map);
    return Combine(static_cast<EVisibility>(m_visibility), static_cast<EVisibility>(m_imposedVisibility));
}

void Node::InvalidateNode() {
    const Operation operation(m_map);
    invalidate();
}

bool Node::IsCachable() const {
    return IsCacheable(GetCachingMode());
}

EYesNo Node::IsAccessModeCacheable() const {
    const Operation operation(m_map);
    const CacheScope scope(m_map);
    changeable(*this).mode(Aspect::Full);
    return scope.cacheable() ? Yes : No;
}

ECachingMode Node::GetCachingMode() const {
    const Operation operation(m_map);
    ECachingMode mode = WriteThrough;
    for (const Node* node : changeable(*this).withValueChildren())
        mode = CombineCachingMode(mode, node->ownCachingMode());
    return mode;
}

int64_t Node::GetPollingTime() const {
    return pollingTime();
}

gcstring Node::GetToolTip() const {
    return toGc(text(PropertyId::ToolTip));
}
gcstring Node::GetDescription() const {
    return toGc(text(PropertyId::Description));
}

gcstring Node::GetDisplayName() const {
    const std::string_view given = text(PropertyId::DisplayName);
    return toGc(given.empty() ? m_name : given);
}

gcstring Node::GetDeviceName() const {
    return m_map.deviceName();
}

void Node::GetChildren(NodeList_t& Children, ELinkType LinkType) const {
    Children.clear();
    switch (LinkType) {
    case ctParentNodes:
        GetParents(Children);
        break;
    case ctReadingChildren:
        addLinks(*this, Children, isReadLink);
        break;
    case ctWritingChildren:
        addLinks(*this, Children, isWriteLink);
        break;
    case ctInvalidatingChildren:
        addLinks(*this, Children, [](PropertyId id) { return id == PropertyId::pInvalidator; });
        break;
    case ctDependingNodes: {
        const Operation operation(m_map);
        for (Node* node : m_map.dependents(changeable(*this)))
            Children.push_back(node);
        break;
    }
    case ctTerminalNodes: {
        NodeList_t all{&changeable(*this)};
        for (std::size_t i = 0; i < all.size(); ++i) {
            const std::size_t known = all.size();
            const Node& node = static_cast<const Node&>(*all[i]);
            addLinks(node, all, isWriteLink);
            NodeList_t further;
            addLinks(node, further, isWriteLink);
            if (known == all.size() && further.empty())
                Children.push_back(all[i]);
        }
        break;
    }
    }
}

void Node::GetParents(NodeList_t& Parents) const {
    Parents.clear();
    const auto [begin, end] = m_map.referrers(*this);
    for (const NodeMap::Referrer* referrer = begin; referrer != end; ++referrer)
        if (Parents.empty() || Parents.back() != referrer->node) // those of one node lie side by side
            Parents.push_back(referrer->node);
}

CallbackHandleType Node::RegisterCallback(CNodeCallback* pCallback) {
    if (pCallback == nullptr)
        throw INVALID_ARGUMENT_EXCEPTION("%s: no callback is given", label().c_str());
    std::shared_ptr<CNodeCallback> callback(pCallback);
    const Operation operation(m_map);
    rare().callbacks.push_back(std::move(callback));
    m_map.countCallback(1);
    return pCallback;
}

bool Node::DeregisterCallback(CallbackHandleType hCallback) {
    std::shared_ptr<CNodeCallback> ended; // destroyed behind the lock: its end may call back into the map
    const Operation operation(m_map);
    if (!m_rare)
        return false;
    auto& callbacks = m_rare->callbacks;
    const auto found = std::find_if(callbacks.begin(), callbacks.end(), [hCallback](const auto& callback) {
        return callback.get() == hCallback;
    });
    if (found == callbacks.end())
        return false;
    ended = std::move(*found);
    callbacks.erase(found);
    m_map.countCallback(-1);
    return true;
}

INodeMap* Node::GetNodeMap() const {
    return &m_map;
}

gcstring Node::GetEventID() const {
    return toGc(text(PropertyId::EventID));
}

bool Node::IsStreamable() const {
    bool streamable = false;
    return parseBoolean(text(PropertyId::Streamable), streamable) && streamable;
}

void Node::GetPropertyNames(gcstring_vector& PropertyNames) const {
    PropertyNames.clear();
    bool seen[256] = {};
    for (const Property& property : *this) {
        bool& known = seen[static_cast<std::size_t>(property.id)];
        if (!known)
            PropertyNames.push_back(toGc(PropertyName(property.id)));
        known = true;
    }
}

bool Node::GetProperty(const gcstring& PropertyName, gcstring& ValueStr, gcstring& AttributeStr) const {
    const PropertyId id = PropertyFromName(PropertyName.str());
    bool found = false;
    std::string values;
    std::string attributes;
    for (const Property& property : *this) {
        if (property.id != id || id == PropertyId::Unknown)
            continue;
        if (found) {
            values += '\t';
            attributes += '\t';
        }
        found = true;
        values += property.text;
        attributes += property.attribute;
    }
    if (!found)
        return false;
    ValueStr = std::move(values);
    AttributeStr =
        attributes.find_first_not_of('\t') == std::string::npos ? gcstring() : gcstring(attributes);
    return true;
}

void Node::ImposeAccessMode(EAccessMode ImposedAccessMode) {
    if (ImposedAccessMode < NI || ImposedAccessMode > RW)
        throw INVALID_ARGUMENT_EXCEPTION("%s: %d is no access mode", label().c_str(),
                                         static_cast<int>(ImposedAccessMode));
    const Operation operation(m_map);
    m_imposed = static_cast<std::uint8_t>(ImposedAccessMode);
    drop();
    m_map.changed(*this);
}

void Node::ImposeVisibility(EVisibility ImposedVisibility) {
    if (ImposedVisibility < Beginner || ImposedVisibility > Invisible)
        throw INVALID_ARGUMENT_EXCEPTION("%s: %d is no visibility", label().c_str(),
                                         static_cast<int>(ImposedVisibility));
    const Operation operation(m_map);
    m_imposedVisibility = static_cast<std::uint8_t>(ImposedVisibility);
}

Node* Node::neighbour(PropertyId id) const {
    const std::string_view name = text(id);
    return name.empty() ? nullptr : m_map.find(name);
}

INode* Node::GetAlias() const {
    return neighbour(PropertyId::pAlias);
}
INode* Node::GetCastAlias() const {
    return neighbour(PropertyId::pCastAlias);
}
gcstring Node::GetDocuURL() const {
    return toGc(text(PropertyId::DocuURL));
}

bool Node::IsDeprecated() const {
    bool deprecated = false;
    return parseBoolean(text(PropertyId::IsDeprecated), deprecated) && deprecated;
}

EInterfaceType Node::GetPrincipalInterfaceType() const {
    return interfaceType();
}

bool Node::IsFeature() const {
    return m_isFeature;
}

} // namespace genapi
