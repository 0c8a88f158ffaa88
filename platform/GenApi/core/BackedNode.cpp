#include "core/BackedNode.h"

#include "core/NodeMap.h"

namespace genapi {

using namespace GenApi_3_0;

BackedNode::BackedNode(NodeMap& map, const NodeRecord& record, const Property* properties,
                       std::uint32_t index)
    : ValueNode(map, record, properties, index) {}

void BackedNode::link(Linker& linker, const Property& property) {
    if (property.id == PropertyId::Value)
        linker.constant(*this, property, m_value);
    else if (property.id == PropertyId::pValue)
        linker.reference(*this, property, m_value);
    else
        ValueNode::link(linker, property);
}

void BackedNode::setConstant(std::int64_t value) {
    m_value = {nullptr, value, true};
}

void BackedNode::linked(Linker& linker) {
    ValueNode::linked(linker);
    if (!m_value.given)
        setFault("it has neither Value nor pValue");
}

void BackedNode::valueChildren(std::vector<Node*>& children) const {
    if (m_value.node != nullptr)
        children.push_back(m_value.node);
}

EAccessMode BackedNode::chainMode(Aspect aspect) {
    return m_value.node != nullptr ? m_value.node->mode(aspect) : RW;
}

void BackedNode::writeBehind(std::int64_t value, bool verify) {
    if (m_value.node != nullptr) {
        m_value.node->writeInteger(value, verify); // which tells all who depend on it
        return;
    }
    m_value.constant = value;
    drop();
    map().changed(*this);
}

} // namespace genapi
