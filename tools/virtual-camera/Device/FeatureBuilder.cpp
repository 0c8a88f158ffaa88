#include "Device/FeatureBuilder.h"

#include <algorithm>
#include <cstring>

namespace vcam {

namespace {

const char* AccessText(Access access) {
    switch (access) {
    case Access::ReadOnly:
        return "RO";
    case Access::WriteOnly:
        return "WO";
    case Access::ReadWrite:
        break;
    }
    return "RW";
}

} // namespace

Check InRange(uint32_t low, uint32_t high, uint32_t step) {
    return [=](const Bytes& proposed) {
        const uint32_t value = Get32(proposed.data());
        return value >= low && value <= high && (value - low) % step == 0 ? Status::Success
                                                                          : Status::InvalidParameter;
    };
}

Check InRangeF(double low, double high) {
    return [=](const Bytes& proposed) {
        const uint64_t bits = Get64(proposed.data());
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value >= low && value <= high ? Status::Success
                                             : Status::InvalidParameter; // not a number: refused
    };
}

Check OneOf(std::vector<uint32_t> values) {
    return [values = std::move(values)](const Bytes& proposed) {
        return std::find(values.begin(), values.end(), Get32(proposed.data())) != values.end()
                   ? Status::Success
                   : Status::InvalidParameter;
    };
}

Check All(std::vector<Check> checks) {
    return [checks = std::move(checks)](const Bytes& proposed) {
        for (const Check& check : checks) {
            const Status status = check ? check(proposed) : Status::Success;
            if (status != Status::Success)
                return status;
        }
        return Status::Success;
    };
}

XmlNode& FeatureBuilder::RegisterNode(const std::string& kind, const std::string& name, uint32_t address,
                                      uint32_t length, Access access) {
    return m_xml.Node(kind, name)
        .Add("Address", Hex(address))
        .Add("Length", length)
        .Add("AccessMode", AccessText(access))
        .Add("pPort", "Device");
}

XmlNode& FeatureBuilder::FaceNode(const std::string& kind, const std::string& name) {
    if (!m_category.empty())
        m_xml.List(m_category, name);
    return m_xml.Node(kind, name);
}

Feature FeatureBuilder::IntegerNodes(const std::string& name, uint32_t address, Access access,
                                     uint32_t length) {
    XmlNode& face = FaceNode("Integer", name).Add("pValue", name + "_Val");
    XmlNode& behind = RegisterNode("IntReg", name + "_Val", address, length, access);
    behind.Add("Sign", "Unsigned").Add("Endianess", "BigEndian");
    return {face, behind};
}

Feature FeatureBuilder::Integer(const std::string& name, uint32_t address, uint32_t initial, Access access,
                                RegisterHooks hooks) {
    m_memory.Define32(address, initial, access, std::move(hooks));
    return IntegerNodes(name, address, access);
}

Feature FeatureBuilder::Float(const std::string& name, uint32_t address, double initial, Access access,
                              RegisterHooks hooks) {
    m_memory.DefineDouble(address, initial, access, std::move(hooks));
    XmlNode& face = FaceNode("Float", name).Add("pValue", name + "_Val");
    XmlNode& behind =
        RegisterNode("FloatReg", name + "_Val", address, 8, access).Add("Endianess", "BigEndian");
    return {face, behind};
}

Feature FeatureBuilder::Boolean(const std::string& name, uint32_t address, bool initial, Access access,
                                RegisterHooks hooks) {
    hooks.check = All({OneOf({0, 1}), hooks.check});
    m_memory.Define32(address, initial ? 1 : 0, access, std::move(hooks));
    XmlNode& face =
        FaceNode("Boolean", name).Add("pValue", name + "_Val").Add("OnValue", 1).Add("OffValue", 0);
    XmlNode& behind = RegisterNode("IntReg", name + "_Val", address, 4, access);
    behind.Add("Sign", "Unsigned").Add("Endianess", "BigEndian");
    return {face, behind};
}

Feature FeatureBuilder::Enumeration(const std::string& name, uint32_t address, uint32_t initial,
                                    Access access, const std::vector<EnumValue>& entries,
                                    RegisterHooks hooks) {
    std::vector<uint32_t> values;
    values.reserve(entries.size());
    for (const EnumValue& entry : entries)
        values.push_back(entry.value);
    hooks.check = All({OneOf(std::move(values)), hooks.check});
    m_memory.Define32(address, initial, access, std::move(hooks));
    XmlNode& face = FaceNode("Enumeration", name).Add("pValue", name + "_Val");
    for (const EnumValue& entry : entries)
        face.Entry(entry.name, entry.value);
    XmlNode& behind = RegisterNode("IntReg", name + "_Val", address, 4, access);
    behind.Add("Sign", "Unsigned").Add("Endianess", "BigEndian");
    return {face, behind};
}

Feature FeatureBuilder::Command(const std::string& name, uint32_t address, std::function<void()> execute) {
    RegisterHooks hooks;
    RegisterMemory* memory = &m_memory;
    hooks.written = [memory, address, execute = std::move(execute)] {
        const bool wanted = memory->Get32(address) != 0;
        memory->Set32(address, 0);
        if (wanted)
            execute();
    };
    m_memory.Define32(address, 0, Access::ReadWrite, std::move(hooks));
    XmlNode& face = FaceNode("Command", name).Add("pValue", name + "_Val").Add("CommandValue", 1);
    XmlNode& behind = RegisterNode("IntReg", name + "_Val", address, 4, Access::ReadWrite);
    behind.Add("Cachable", "NoCache").Add("Sign", "Unsigned").Add("Endianess", "BigEndian");
    return {face, behind};
}

Feature FeatureBuilder::StringNode(const std::string& name, uint32_t address, uint32_t length,
                                   Access access) {
    if (!m_category.empty())
        m_xml.List(m_category, name);
    XmlNode& node = RegisterNode("StringReg", name, address, length, access);
    return {node, node};
}

Feature FeatureBuilder::String(const std::string& name, uint32_t address, uint32_t length,
                               const std::string& initial, Access access, RegisterHooks hooks) {
    m_memory.DefineString(address, length, initial, access, std::move(hooks));
    return StringNode(name, address, length, access);
}

Feature FeatureBuilder::MaskedInteger(const std::string& name, uint32_t address, Access access,
                                      unsigned lowBit, unsigned highBit) {
    XmlNode& face = FaceNode("Integer", name).Add("pValue", name + "_Val");
    XmlNode& behind = RegisterNode("MaskedIntReg", name + "_Val", address, 4, access);
    // Bits are counted from the most significant one in a big-endian register.
    behind.Add("LSB", 31 - static_cast<int64_t>(lowBit)).Add("MSB", 31 - static_cast<int64_t>(highBit));
    behind.Add("Sign", "Unsigned").Add("Endianess", "BigEndian");
    return {face, behind};
}

XmlNode& FeatureBuilder::Formula(const std::string& name,
                                 const std::vector<std::pair<std::string, std::string>>& variables,
                                 const std::string& expression) {
    XmlNode& node = m_xml.Node("IntSwissKnife", name);
    for (const auto& [variable, target] : variables)
        node.Variable(variable, target);
    return node.Add("Formula", expression);
}

} // namespace vcam
