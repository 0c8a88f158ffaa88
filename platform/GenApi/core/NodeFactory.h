#pragma once
#include <memory_resource>

#include "core/Node.h"

namespace genapi {

/// A node of the record's kind, in the arena's memory; whoever asked for it ends it.
Node* createNode(NodeMap& map, std::pmr::memory_resource& arena, const NodeRecord& record,
                 const Property* properties, std::uint32_t index);

} // namespace genapi
