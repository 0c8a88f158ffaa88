#pragma once
/// Bytes at an address of a port: what IntReg, FloatReg, StringReg, Register and their kin share.
#include <chrono>
#include <memory>
#include <vector>

#include "GenApi/IRegister.h"
#include "core/Linker.h"
#include "core/ValueNode.h"

namespace genapi {

class PortNode;

class RegisterNode : public ValueNode, public GenApi_3_0::IRegister {
public:
    RegisterNode(NodeMap& map, const NodeRecord& record, const Property* properties, std::uint32_t index);
    ~RegisterNode() override;

    // IRegister.
    void Set(const uint8_t* pBuffer, int64_t Length, bool Verify) override;
    void Get(uint8_t* pBuffer, int64_t Length, bool Verify, bool IgnoreCache) override;
    int64_t GetLength() override;
    int64_t GetAddress() override;

    void* interfaceOf(GenApi_3_0::EInterfaceType type) override {
        return type == GenApi_3_0::intfIRegister ? static_cast<GenApi_3_0::IRegister*>(this)
                                                 : ValueNode::interfaceOf(type);
    }
    GenApi_3_0::EInterfaceType interfaceType() const override { return GenApi_3_0::intfIRegister; }
    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    GenApi_3_0::ECachingMode ownCachingMode() const override { return m_caching; }
    void addSharers(std::vector<Node*>& nodes) const override;

    /// Whether the register, as it was last read, holds some of these bytes.
    bool holdsBytesOf(std::int64_t address, std::int64_t length) const;
    /// Another register wrote these bytes through: what this one holds of them is what was written.
    void patch(std::int64_t address, const std::uint8_t* bytes, std::int64_t length);

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;
    bool valueCacheValid() const override { return bytesValid(); }

    std::int64_t length();
    std::int64_t address();
    /// All bytes of the register, from the cache where that is allowed. Valid until the next access to the
    /// register.
    const std::uint8_t* bytes(Reading how, std::int64_t length);
    /// Writes all of the register, or its beginning.
    void writeBytes(const std::uint8_t* bytes, std::int64_t length);
    /// False when the XML declares the register write-only.
    bool mayRead() const { return m_access != GenApi_3_0::WO; }
    GenApi_3_0::EEndianess endianess() const { return m_endianess; }

    std::string toText(bool verify, Reading how) override;
    void fromText(const std::string& text, bool verify) override;

private:
    using Clock = std::chrono::steady_clock;

    // One part of an address that isn't known before it is used: a node's value, times a step.
    struct Part {
        Node* node = nullptr;
        IntegerSource step;
        bool stepIsLength = false;
    };

    void linkIndex(Linker& linker, const Property& property);
    bool bytesValid() const;
    bool mayCache(std::int64_t length) const;
    std::uint8_t* storage(std::int64_t length);
    void writeFailed(std::int64_t address, std::int64_t length);
    /// `whole`: all of the register was written.
    void writeDone(std::int64_t address, const std::uint8_t* bytes, std::int64_t length, bool whole);

    PortNode* m_port = nullptr;
    IntegerSource m_length;
    std::int64_t m_fixedAddress = 0;
    std::unique_ptr<std::vector<Part>> m_parts; // null when the address is fixed
    // What was read last, and from where. Valid as Node::m_bytesEpoch says.
    std::int64_t m_heldAddress = 0;
    std::int64_t m_heldLength = 0;
    std::unique_ptr<std::uint8_t[]> m_large;
    std::int64_t m_largeSize = 0;
    Clock::time_point m_readAt;
    std::int64_t m_pollingTime = -1; // milliseconds
    std::uint8_t m_small[8] = {};
    GenApi_3_0::ECachingMode m_caching = GenApi_3_0::WriteThrough;
    GenApi_3_0::EAccessMode m_access = GenApi_3_0::RO;
    GenApi_3_0::EEndianess m_endianess = GenApi_3_0::LittleEndian;
};

/// A plain Register: bytes without a meaning of their own.
class PlainRegisterNode final : public RegisterNode {
public:
    using RegisterNode::RegisterNode;
};

} // namespace genapi
