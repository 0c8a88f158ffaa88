#pragma once
/// Boolean and Command: features in front of one integer with two meanings.
#include "GenApi/IBoolean.h"
#include "GenApi/ICommand.h"
#include "core/BackedNode.h"

namespace genapi {

class BooleanNode final : public BackedNode, public GenApi_3_0::IBoolean {
public:
    BooleanNode(NodeMap& map, const NodeRecord& record, const Property* properties, std::uint32_t index);

    // IBoolean.
    void SetValue(bool Value, bool Verify) override;
    bool GetValue(bool Verify, bool IgnoreCache) const override;

    void* interfaceOf(GenApi_3_0::EInterfaceType type) override {
        return type == GenApi_3_0::intfIBoolean ? static_cast<GenApi_3_0::IBoolean*>(this)
                                                : BackedNode::interfaceOf(type);
    }
    GenApi_3_0::EInterfaceType interfaceType() const override { return GenApi_3_0::intfIBoolean; }
    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;

    // As a number 1 or 0, whatever stands behind it.
    std::int64_t readInteger(Reading how) override;
    double readFloat(Reading how) override { return static_cast<double>(readInteger(how)); }
    void writeInteger(std::int64_t value, bool verify) override;
    void writeFloat(double value, bool verify) override { writeInteger(value != 0 ? 1 : 0, verify); }
    std::int64_t minInteger() override { return 0; }
    std::int64_t maxInteger() override { return 1; }
    std::int64_t incInteger() override { return 1; }
    double minFloat() override { return 0; }
    double maxFloat() override { return 1; }
    double incFloat() override { return 0; }

protected:
    std::string toText(bool verify, Reading how) override;
    void fromText(const std::string& text, bool verify) override;

private:
    void write(bool on, bool verify);

    // Only of a node behind; a number in the XML is 1 or 0.
    std::int64_t m_on = 1;
    std::int64_t m_off = 0;
};

class CommandNode final : public BackedNode, public GenApi_3_0::ICommand {
public:
    using BackedNode::BackedNode;

    // ICommand.
    void Execute(bool Verify) override;
    bool IsDone(bool Verify) override;

    void* interfaceOf(GenApi_3_0::EInterfaceType type) override {
        return type == GenApi_3_0::intfICommand ? static_cast<GenApi_3_0::ICommand*>(this)
                                                : BackedNode::interfaceOf(type);
    }
    GenApi_3_0::EInterfaceType interfaceType() const override { return GenApi_3_0::intfICommand; }
    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    /// A command that runs is asked whether it has finished.
    void poll() override;

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;
    /// "1" while it runs.
    std::string toText(bool verify, Reading how) override;
    /// "1" executes it, "0" does nothing.
    void fromText(const std::string& text, bool verify) override;

private:
    bool done();
    void execute(bool verify);

    IntegerSource m_command;
    bool m_running = false; // executed, and not yet seen to be done
};

} // namespace genapi
