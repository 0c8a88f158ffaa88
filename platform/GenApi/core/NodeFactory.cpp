#include "core/NodeFactory.h"

#include <new>

#include "core/ComputedNodes.h"
#include "core/EnumerationNode.h"
#include "core/NumberNodes.h"
#include "core/PortNode.h"
#include "core/RegisterNumbers.h"
#include "core/SwitchNodes.h"
#include "core/TextNodes.h"

namespace genapi {

namespace {

template<class T>
Node* create(NodeMap& map, std::pmr::memory_resource& arena, const NodeRecord& record,
             const Property* properties, std::uint32_t index) {
    return new (arena.allocate(sizeof(T), alignof(T))) T(map, record, properties, index);
}

using Create = Node* (*)(NodeMap&, std::pmr::memory_resource&, const NodeRecord&, const Property*,
                         std::uint32_t);

Create creatorOf(NodeKind kind) {
    switch (kind) {
    case NodeKind::Category:
        return create<CategoryNode>;
    case NodeKind::Integer:
        return create<IntegerNode>;
    case NodeKind::IntReg:
    case NodeKind::MaskedIntReg:
    case NodeKind::StructEntry:
        return create<IntRegNode>;
    case NodeKind::IntSwissKnife:
        return create<IntSwissKnifeNode>;
    case NodeKind::IntConverter:
        return create<IntConverterNode>;
    case NodeKind::Float:
        return create<FloatNode>;
    case NodeKind::FloatReg:
        return create<FloatRegNode>;
    case NodeKind::SwissKnife:
        return create<SwissKnifeNode>;
    case NodeKind::Converter:
        return create<ConverterNode>;
    case NodeKind::Boolean:
        return create<BooleanNode>;
    case NodeKind::Command:
        return create<CommandNode>;
    case NodeKind::Enumeration:
        return create<EnumerationNode>;
    case NodeKind::EnumEntry:
        return create<EnumEntryNode>;
    case NodeKind::StringReg:
        return create<StringRegNode>;
    case NodeKind::String:
        return create<StringNode>;
    case NodeKind::Register:
        return create<PlainRegisterNode>;
    case NodeKind::Port:
        return create<PortNode>;
    case NodeKind::Node:
    case NodeKind::ConfRom:
    case NodeKind::TextDesc:
    case NodeKind::IntKey:
    case NodeKind::AdvFeatureLock:
    case NodeKind::SmartFeature:
    case NodeKind::DcamLock:
        break;
    }
    return create<Node>;
}

} // namespace

Node* createNode(NodeMap& map, std::pmr::memory_resource& arena, const NodeRecord& record,
                 const Property* properties, std::uint32_t index) {
    return creatorOf(record.kind)(map, arena, record, properties, index);
}

} // namespace genapi
