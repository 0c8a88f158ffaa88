#pragma once
/// The road to the camera, as a node: hands on to the port that is connected to it.
#include <functional>
#include <vector>

#include "GenApi/IPort.h"
#include "core/Node.h"

namespace genapi {

class RegisterNode;

class PortNode final : public Node, public GenApi_3_0::IPortConstruct {
public:
    using Node::Node;

    GenApi_3_0::EAccessMode GetAccessMode() const override { return Node::GetAccessMode(); }
    void Read(void* pBuffer, int64_t Address, int64_t Length) override;
    void Write(const void* pBuffer, int64_t Address, int64_t Length) override;
    GenApi_3_0::EYesNo GetSwapEndianess() override;
    void SetPortImpl(GenApi_3_0::IPort* pPort) override;

    GenApi_3_0::EInterfaceType interfaceType() const override { return GenApi_3_0::intfIPort; }
    void link(Linker& linker, const Property& property) override;

    /// Registers are told once, after linking; those whose address is fixed come with it.
    void addRegister(RegisterNode& node);
    void addRegister(RegisterNode& node, std::int64_t address, std::int64_t length);
    /// Before the first use, after all registers were told.
    void sortRegisters();

    /// For `asking`, a register or the port itself. What the connected port throws of the published
    /// exceptions keeps its class, file and line, and its text gets the names of the nodes before it; another
    /// std::exception becomes a RuntimeException. Whatever else it throws passes as it is.
    void read(const Node& asking, void* buffer, std::int64_t address, std::int64_t length);
    void write(const Node& asking, const void* buffer, std::int64_t address, std::int64_t length);
    /// Asks the connected port for its mode, once for each operation; true when it is another than before.
    bool watch();
    /// The registers whose bytes lie, at least in part, in a range of addresses.
    void overlapping(std::int64_t address, std::int64_t length, std::vector<RegisterNode*>& found) const;

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;

private:
    struct Range {
        std::int64_t address;
        std::int64_t end;
        std::int64_t furthestEnd; // of this and all before it
        RegisterNode* node;
    };

    void requireConnected() const;
    void checkRange(const void* buffer, std::int64_t address, std::int64_t length) const;

    GenApi_3_0::IPort* m_port = nullptr;
    GenApi_3_0::EAccessMode m_portMode = GenApi_3_0::NI;
    bool m_swapEndianess = false;
    std::vector<Range> m_fixed; // by address
    std::vector<RegisterNode*> m_moving;
};

} // namespace genapi
