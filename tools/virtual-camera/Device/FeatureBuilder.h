// Declares a feature once: its register with initial value, access and checks, and its nodes in the XML. What
// a feature says of its range or its lock holds on both sides, so that XML and registers can't disagree.
#ifndef VCAM_DEVICE_FEATUREBUILDER_H
#define VCAM_DEVICE_FEATUREBUILDER_H

#include "Device/XmlDocument.h"
#include "Registers/RegisterMemory.h"

namespace vcam {

// Checks for hooks.
using Check = std::function<Status(const Bytes& proposed)>;
Check InRange(uint32_t low, uint32_t high, uint32_t step = 1);
Check InRangeF(double low, double high);
Check OneOf(std::vector<uint32_t> values);
// All of them; the first refusal counts.
Check All(std::vector<Check> checks);
// Refuses as write protected while the condition holds.
Check ProtectedWhile(std::function<bool()> condition);

// The name of a feature as people write it: "ExposureTime" is "Exposure Time".
std::string DisplayNameOf(const std::string& name);

class FeatureBuilder;

// A feature's two nodes (the same one where the register is the feature, as with strings) and its registers:
// one, or one for each value of its selectors.
class Feature {
public:
    Feature(FeatureBuilder& build, XmlNode& face, XmlNode& behind, uint32_t address, bool owned)
        : m_build(&build), m_face(&face), m_register(&behind), m_addresses{address}, m_owned(owned) {}

    // A line, and what there is to say beyond it.
    Feature& Tip(const std::string& text, const std::string& description = "");
    Feature& Visible(const std::string& level) { // Expert, Guru, Invisible
        return Face("Visibility", level);
    }
    Feature& Unit(const std::string& unit) { return Face("Unit", unit); }
    // Linear, Logarithmic, PureNumber, HexNumber, IPV4Address, MACAddress
    Feature& As(const std::string& representation) { return Face("Representation", representation); }
    Feature& Face(const std::string& element, const std::string& text) {
        m_face->Add(element, text);
        return *this;
    }
    // Bounds in the XML, and in the registers if they were made with the feature.
    Feature& Range(int64_t low, int64_t high, int64_t step = 1);
    Feature& RangeF(double low, double high);
    // May not be written while TLParamsLocked is set, nor while frames are acquired.
    Feature& Locked();
    // May not be written while the node is not 0; `condition` says the same to the registers.
    Feature& LockedIf(const std::string& node, std::function<bool()> condition = {});
    Feature& ImplementedIf(const std::string& node) { return Face("pIsImplemented", node); }
    Feature& AvailableIf(const std::string& node) { return Face("pIsAvailable", node); }
    // One register for each value of the selector, 0 to count - 1, `stride` apart. All get the initial value
    // of the first. To be called before what concerns the registers; a second call adds a dimension.
    Feature& Per(const std::string& selector, uint32_t count, uint32_t stride);
    // Changes by itself: no cache; polled when a time is given.
    Feature& Volatile(int64_t pollingMs = 0);
    // What changes when this other feature is written.
    Feature& ChangesWith(std::initializer_list<const char*> features);
    // Belongs to the settings that user sets keep and feature files carry.
    Feature& Setting();
    Feature& Refuse(const Check& check);
    Feature& OnWrite(const std::function<void()>& written);

    XmlNode& Node() { return *m_face; }
    XmlNode& RegisterNode() { return *m_register; }
    const std::vector<uint32_t>& Addresses() const { return m_addresses; }

private:
    FeatureBuilder* m_build;
    XmlNode* m_face;
    XmlNode* m_register;
    std::vector<uint32_t> m_addresses;
    bool m_owned; // the registers were made with the feature
};

struct EnumValue {
    const char* name;
    uint32_t value;
    const char* implementedIf = nullptr; // nodes; nullptr: always
    const char* availableIf = nullptr;
};

class FeatureBuilder {
public:
    // `idle` refuses what may not be written while frames are acquired.
    FeatureBuilder(RegisterMemory& memory, XmlDocument& xml, Check idle)
        : m_memory(memory), m_xml(xml), m_idle(std::move(idle)) {}

    RegisterMemory& Memory() { return m_memory; }
    XmlDocument& Xml() { return m_xml; }
    const Check& Idle() const { return m_idle; }
    // Features made from now on are listed there; empty: nowhere.
    void Category(const std::string& name) { m_category = name; }
    // Whether settings are brought back by UserSetLoad.
    void UserSets(bool has) { m_userSets = has; }
    bool HasUserSets() const { return m_userSets; }
    // Addresses of all settings so far.
    const std::vector<uint32_t>& Settings() const { return m_settings; }
    void AddSetting(uint32_t address) { m_settings.push_back(address); }

    Feature Integer(const std::string& name, uint32_t address, uint32_t initial, Access access,
                    RegisterHooks hooks = {});
    Feature Float(const std::string& name, uint32_t address, double initial, Access access,
                  RegisterHooks hooks = {});
    Feature Boolean(const std::string& name, uint32_t address, bool initial, Access access,
                    RegisterHooks hooks = {});
    // A write of what is not among the entries is refused.
    Feature Enumeration(const std::string& name, uint32_t address, uint32_t initial, Access access,
                        const std::vector<EnumValue>& entries, RegisterHooks hooks = {});
    // A write of 1 executes; the register reads 0 again.
    Feature Command(const std::string& name, uint32_t address, std::function<void()> execute);
    Feature String(const std::string& name, uint32_t address, uint32_t length, const std::string& initial,
                   Access access, RegisterHooks hooks = {});

    // The XML alone, for registers that are defined already.
    Feature IntegerNodes(const std::string& name, uint32_t address, Access access, uint32_t length = 4);
    // Some bits of a register that is defined already; bit 0 is the least significant.
    Feature MaskedInteger(const std::string& name, uint32_t address, Access access, unsigned lowBit,
                          unsigned highBit);
    Feature MaskedBoolean(const std::string& name, uint32_t address, Access access, unsigned bit);
    Feature StringNode(const std::string& name, uint32_t address, uint32_t length, Access access);
    // A node that is a register itself: "IntReg" or "Register".
    Feature BareRegister(const std::string& kind, const std::string& name, uint32_t address, uint32_t length,
                         Access access);
    // An integer whose value is another node's (a formula, or the register of another feature).
    Feature IntegerOf(const std::string& name, const std::string& node);
    // An <IntSwissKnife>; variables as pairs of name and node.
    XmlNode& Formula(const std::string& name,
                     const std::vector<std::pair<std::string, std::string>>& variables,
                     const std::string& expression);

private:
    XmlNode& RegisterNode(const std::string& kind, const std::string& name, uint32_t address, uint32_t length,
                          Access access);
    XmlNode& FaceNode(const std::string& kind, const std::string& name);
    Feature Masked(const std::string& kind, const std::string& name, uint32_t address, Access access,
                   unsigned lowBit, unsigned highBit);

    RegisterMemory& m_memory;
    XmlDocument& m_xml;
    Check m_idle;
    std::string m_category;
    bool m_userSets = false;
    std::vector<uint32_t> m_settings;
};

} // namespace vcam

#endif
