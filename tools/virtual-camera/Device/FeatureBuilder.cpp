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

Check ProtectedWhile(std::function<bool()> condition) {
    return [condition = std::move(condition)](const Bytes&) {
        return condition() ? Status::WriteProtect : Status::Success;
    };
}

std::string DisplayNameOf(const std::string& name) {
    const auto upper = [&name](size_t i) { return i < name.size() && name[i] >= 'A' && name[i] <= 'Z'; };
    const auto lower = [&name](size_t i) { return i < name.size() && name[i] >= 'a' && name[i] <= 'z'; };
    const auto digit = [&name](size_t i) { return i < name.size() && name[i] >= '0' && name[i] <= '9'; };
    std::string words;
    for (size_t i = 0; i < name.size(); ++i) {
        const bool begins =
            i > 1 && upper(i) && (lower(i - 1) || digit(i - 1) || (upper(i - 1) && lower(i + 1)));
        const bool counts = i > 0 && digit(i) && lower(i - 1);
        if ((begins || counts) && words.back() != ' ')
            words += ' ';
        words += name[i] == '_' ? ' ' : name[i];
    }
    return words;
}

Feature& Feature::Tip(const std::string& text, const std::string& description) {
    Face("ToolTip", text);
    return Face("Description", description.empty() ? text : text + " " + description);
}

Feature& Feature::Range(int64_t low, int64_t high, int64_t step) {
    m_face->Add("Min", low).Add("Max", high).Add("Inc", step);
    if (m_owned && low < 0) { // two's complement
        m_register->Replace("Sign", "Signed");
        return Refuse([=](const Bytes& proposed) {
            const auto value = static_cast<int32_t>(Get32(proposed.data()));
            return value >= low && value <= high && (value - low) % step == 0 ? Status::Success
                                                                              : Status::InvalidParameter;
        });
    }
    if (m_owned)
        Refuse(InRange(static_cast<uint32_t>(low), static_cast<uint32_t>(high), static_cast<uint32_t>(step)));
    return *this;
}

Feature& Feature::RangeF(double low, double high) {
    m_face->AddFloat("Min", low).AddFloat("Max", high);
    return m_owned ? Refuse(InRangeF(low, high)) : *this;
}

Feature& Feature::Locked() {
    Face("pIsLocked", "TLParamsLocked");
    return m_owned ? Refuse(m_build->Idle()) : *this;
}

Feature& Feature::LockedIf(const std::string& node, std::function<bool()> condition) {
    Face("pIsLocked", node);
    return m_owned && condition ? Refuse(ProtectedWhile(std::move(condition))) : *this;
}

Feature& Feature::Per(const std::string& selector, uint32_t count, uint32_t stride) {
    m_build->Xml().Find(selector)->Add("pSelected", m_face->Name());
    m_register->Index(selector + "_Val", stride);
    RegisterMemory& memory = m_build->Memory();
    const std::vector<uint32_t> first = m_addresses;
    for (uint32_t copy = 1; copy < count; ++copy) {
        for (const uint32_t address : first) {
            memory.DefineCopy(address, address + copy * stride);
            m_addresses.push_back(address + copy * stride);
        }
    }
    return *this;
}

Feature& Feature::Volatile(int64_t pollingMs) {
    m_register->Add("Cachable", "NoCache");
    if (pollingMs > 0)
        m_register->Add("PollingTime", pollingMs);
    return *this;
}

Feature& Feature::ChangesWith(std::initializer_list<const char*> features) {
    for (const char* feature : features)
        m_register->Add("pInvalidator", feature);
    return *this;
}

Feature& Feature::Setting() {
    Face("Streamable", "Yes");
    if (!m_build->HasUserSets())
        return *this;
    m_register->Add("pInvalidator", "UserSetLoad");
    for (const uint32_t address : m_addresses)
        m_build->AddSetting(address);
    return *this;
}

Feature& Feature::Refuse(const Check& check) {
    for (const uint32_t address : m_addresses)
        m_build->Memory().AddHooks(address, {{}, check, {}});
    return *this;
}

Feature& Feature::OnWrite(const std::function<void()>& written) {
    for (const uint32_t address : m_addresses)
        m_build->Memory().AddHooks(address, {{}, {}, written});
    return *this;
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
    return m_xml.Node(kind, name).Add("DisplayName", DisplayNameOf(name));
}

Feature FeatureBuilder::IntegerNodes(const std::string& name, uint32_t address, Access access,
                                     uint32_t length) {
    XmlNode& face = FaceNode("Integer", name).Add("pValue", name + "_Val");
    XmlNode& behind = RegisterNode("IntReg", name + "_Val", address, length, access);
    behind.Add("Sign", "Unsigned").Add("Endianess", "BigEndian");
    return {*this, face, behind, address, false};
}

Feature FeatureBuilder::Integer(const std::string& name, uint32_t address, uint32_t initial, Access access,
                                RegisterHooks hooks) {
    m_memory.Define32(address, initial, access, std::move(hooks));
    const Feature made = IntegerNodes(name, address, access);
    return {*this, *m_xml.Find(name), *m_xml.Find(name + "_Val"), made.Addresses().front(), true};
}

Feature FeatureBuilder::Float(const std::string& name, uint32_t address, double initial, Access access,
                              RegisterHooks hooks) {
    m_memory.DefineDouble(address, initial, access, std::move(hooks));
    XmlNode& face = FaceNode("Float", name).Add("pValue", name + "_Val");
    XmlNode& behind =
        RegisterNode("FloatReg", name + "_Val", address, 8, access).Add("Endianess", "BigEndian");
    return {*this, face, behind, address, true};
}

Feature FeatureBuilder::Boolean(const std::string& name, uint32_t address, bool initial, Access access,
                                RegisterHooks hooks) {
    hooks.check = All({OneOf({0, 1}), hooks.check});
    m_memory.Define32(address, initial ? 1 : 0, access, std::move(hooks));
    XmlNode& face =
        FaceNode("Boolean", name).Add("pValue", name + "_Val").Add("OnValue", 1).Add("OffValue", 0);
    XmlNode& behind = RegisterNode("IntReg", name + "_Val", address, 4, access);
    behind.Add("Sign", "Unsigned").Add("Endianess", "BigEndian");
    return {*this, face, behind, address, true};
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
    for (const EnumValue& entry : entries) {
        XmlNode& node = face.Entry(entry.name, entry.value).Add("DisplayName", DisplayNameOf(entry.name));
        if (entry.implementedIf != nullptr)
            node.Add("pIsImplemented", entry.implementedIf);
        if (entry.availableIf != nullptr)
            node.Add("pIsAvailable", entry.availableIf);
    }
    XmlNode& behind = RegisterNode("IntReg", name + "_Val", address, 4, access);
    behind.Add("Sign", "Unsigned").Add("Endianess", "BigEndian");
    return {*this, face, behind, address, true};
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
    return {*this, face, behind, address, true};
}

Feature FeatureBuilder::BareRegister(const std::string& kind, const std::string& name, uint32_t address,
                                     uint32_t length, Access access) {
    if (!m_category.empty())
        m_xml.List(m_category, name);
    XmlNode& node = RegisterNode(kind, name, address, length, access);
    node.Add("DisplayName", DisplayNameOf(name));
    if (kind == "IntReg")
        node.Add("Sign", "Unsigned").Add("Endianess", "BigEndian");
    return {*this, node, node, address, false};
}

Feature FeatureBuilder::StringNode(const std::string& name, uint32_t address, uint32_t length,
                                   Access access) {
    return BareRegister("StringReg", name, address, length, access);
}

Feature FeatureBuilder::String(const std::string& name, uint32_t address, uint32_t length,
                               const std::string& initial, Access access, RegisterHooks hooks) {
    m_memory.DefineString(address, length, initial, access, std::move(hooks));
    return StringNode(name, address, length, access);
}

Feature FeatureBuilder::Masked(const std::string& kind, const std::string& name, uint32_t address,
                               Access access, unsigned lowBit, unsigned highBit) {
    XmlNode& face = FaceNode(kind, name).Add("pValue", name + "_Val");
    XmlNode& behind = RegisterNode("MaskedIntReg", name + "_Val", address, 4, access);
    // Bits are counted from the most significant one in a big-endian register.
    behind.Add("LSB", 31 - static_cast<int64_t>(lowBit)).Add("MSB", 31 - static_cast<int64_t>(highBit));
    behind.Add("Sign", "Unsigned").Add("Endianess", "BigEndian");
    return {*this, face, behind, address, false};
}

Feature FeatureBuilder::MaskedInteger(const std::string& name, uint32_t address, Access access,
                                      unsigned lowBit, unsigned highBit) {
    return Masked("Integer", name, address, access, lowBit, highBit);
}

Feature FeatureBuilder::MaskedBoolean(const std::string& name, uint32_t address, Access access,
                                      unsigned bit) {
    Feature made = Masked("Boolean", name, address, access, bit, bit);
    made.Node().Add("OnValue", 1).Add("OffValue", 0);
    return made;
}

Feature FeatureBuilder::IntegerOf(const std::string& name, const std::string& node) {
    XmlNode& face = FaceNode("Integer", name).Add("pValue", node);
    return {*this, face, face, 0, false};
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
