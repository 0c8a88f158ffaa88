#pragma once
#include "core/Linker.h"
#include "core/ValueNode.h"

namespace genapi {

/// A feature in front of one integer, which stands in the XML or in another node: what Boolean, Command and
/// Enumeration share.
class BackedNode : public ValueNode {
public:
    BackedNode(NodeMap& map, const NodeRecord& record, const Property* properties, std::uint32_t index);

    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    void valueChildren(std::vector<Node*>& children) const override;

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;

    /// Null when the integer stands in the XML.
    Node* behind() const { return m_value.node; }
    std::int64_t readBehind(Reading how) {
        return m_value.node != nullptr ? m_value.node->readInteger(how) : m_value.constant;
    }
    void writeBehind(std::int64_t value, bool verify);
    /// For a value that the XML gives in a way of its own.
    void setConstant(std::int64_t value);

private:
    IntegerSource m_value;
};

} // namespace genapi
