#pragma once
/// Sequences of nodes and of numbers, as the interface hands them out. They hold pointers that the node map
/// owns.
#include <cstddef>
#include <vector>

#include "Base/GCStringVector.h"

namespace GenApi_3_0 {

class INode;
class IValue;

using node_vector = std::vector<INode*>;
using value_vector = std::vector<IValue*>;
using NodeList_t = node_vector;
using FeatureList_t = value_vector;
using StringList_t = GenICam_3_0::gcstring_vector;
using int64_autovector_t = std::vector<int64_t>;
using double_autovector_t = std::vector<double>;

} // namespace GenApi_3_0
