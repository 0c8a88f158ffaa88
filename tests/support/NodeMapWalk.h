// Tries everything that can be read of every node of a map, as a feature tree and a curious user would.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "GenApi/INodeMap.h"

namespace support {

struct WalkReport {
    std::size_t nodes = 0;
    std::size_t readable = 0; // nodes with a value whose access mode lets them be read
    std::size_t values = 0;   // of these, how many gave one
    std::size_t entries = 0;
    std::size_t selections = 0;
    std::map<std::string, std::size_t> refusals; // "AccessException" and so on: how often a call threw it
    // What a correct node map never does: other exceptions, texts without the node's name, values of nodes
    // that can't be read, access refused for nodes that can, null pointers in lists, lists that contradict
    // one another, ranges that are upside down although all of it could be read.
    std::vector<std::string> surprises;
};

struct WalkOptions {
    bool write = false; // also writes back each value that was read, and executes commands
    std::size_t maxNodes = ~std::size_t{0};
    std::size_t maxSurprises = 20;
};

WalkReport WalkNodeMap(GenApi_3_0::INodeMap& map, const WalkOptions& options = {});

} // namespace support
