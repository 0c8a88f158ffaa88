#include "core/PortNode.h"

#include <algorithm>

#include "core/Evaluation.h"
#include "core/Linker.h"
#include "core/NumberText.h"
#include "core/PortFailure.h"
#include "core/RegisterNode.h"

namespace genapi {

using namespace GenApi_3_0;

void PortNode::Read(void* pBuffer, int64_t Address, int64_t Length) {
    const Operation operation(map());
    requireReadable();
    checkRange(pBuffer, Address, Length);
    read(*this, pBuffer, Address, Length);
}

void PortNode::Write(const void* pBuffer, int64_t Address, int64_t Length) {
    const Operation operation(map());
    requireWritable();
    checkRange(pBuffer, Address, Length);
    write(*this, pBuffer, Address, Length);
    std::vector<RegisterNode*> touched;
    overlapping(Address, Length, touched);
    for (RegisterNode* node : touched) {
        node->drop();
        map().changed(*node);
    }
}

EYesNo PortNode::GetSwapEndianess() {
    return m_swapEndianess ? Yes : No;
}

void PortNode::SetPortImpl(IPort* pPort) {
    const Operation operation(map());
    m_port = pPort;
    watch();
    map().invalidateAll();
}

void PortNode::link(Linker& linker, const Property& property) {
    if (property.id == PropertyId::SwapEndianess)
        m_swapEndianess = linker.yesNo(*this, property);
    else
        Node::link(linker, property);
}

void PortNode::addRegister(RegisterNode& node) {
    m_moving.push_back(&node);
}

void PortNode::addRegister(RegisterNode& node, std::int64_t address, std::int64_t length) {
    m_fixed.push_back({address, address + length, 0, &node});
}

void PortNode::sortRegisters() {
    std::stable_sort(m_fixed.begin(), m_fixed.end(),
                     [](const Range& left, const Range& right) { return left.address < right.address; });
    std::int64_t furthest = INT64_MIN;
    for (Range& range : m_fixed) {
        furthest = std::max(furthest, range.end);
        range.furthestEnd = furthest;
    }
}

void PortNode::overlapping(std::int64_t address, std::int64_t length,
                           std::vector<RegisterNode*>& found) const {
    const std::int64_t end = address + length;
    auto range = std::lower_bound(m_fixed.begin(), m_fixed.end(), end,
                                  [](const Range& left, std::int64_t bound) { return left.address < bound; });
    while (range != m_fixed.begin()) {
        --range;
        if (range->furthestEnd <= address)
            break;
        if (range->end > address)
            found.push_back(range->node);
    }
    for (RegisterNode* node : m_moving)
        if (node->holdsBytesOf(address, length))
            found.push_back(node);
}

void PortNode::checkRange(const void* buffer, std::int64_t address, std::int64_t length) const {
    if (buffer == nullptr || address < 0 || length < 0 || address > INT64_MAX - length)
        throw INVALID_ARGUMENT_EXCEPTION("%s: %lld bytes at address %lld can't be accessed", label().c_str(),
                                         static_cast<long long>(length), static_cast<long long>(address));
}

void PortNode::requireConnected() const {
    if (m_port == nullptr)
        throw ACCESS_EXCEPTION("%s: no port is connected to it", label().c_str());
}

namespace {

/// "node 'Width' can't be read: node 'WidthReg', reading 4 bytes at address 0x100: ".
std::string accessText(const Node& asking, const char* access, std::int64_t address, std::int64_t length) {
    return Evaluation::asked(asking) + access + ' ' + std::to_string(length) +
           (length == 1 ? " byte" : " bytes") + " at address " + formatInteger(address, HexNumber) + ": ";
}

} // namespace

void PortNode::read(const Node& asking, void* buffer, std::int64_t address, std::int64_t length) {
    requireConnected();
    try {
        m_port->Read(buffer, address, length);
    } catch (const std::exception& failure) {
        rethrowWith(failure, accessText(asking, "reading", address, length));
    }
}

void PortNode::write(const Node& asking, const void* buffer, std::int64_t address, std::int64_t length) {
    requireConnected();
    try {
        m_port->Write(buffer, address, length);
    } catch (const std::exception& failure) {
        rethrowWith(failure, accessText(asking, "writing", address, length));
    }
    checkError({});
}

bool PortNode::watch() {
    EAccessMode mode = NI;
    if (m_port != nullptr) {
        try {
            mode = m_port->GetAccessMode();
        } catch (...) {
            mode = NA; // a port that can't tell its own mode can't be used now
        }
    }
    if (mode == m_portMode)
        return false;
    m_portMode = mode;
    return true;
}

EAccessMode PortNode::chainMode(Aspect) {
    return m_portMode;
}

} // namespace genapi
