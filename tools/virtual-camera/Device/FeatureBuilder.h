// Declares a feature once: its register with initial value, access and checks, and its nodes in the XML.
#ifndef VCAM_DEVICE_FEATUREBUILDER_H
#define VCAM_DEVICE_FEATUREBUILDER_H

#include "Device/XmlDocument.h"
#include "Registers/RegisterMemory.h"

namespace vcam {

// A feature's two nodes (the same one where the register is the feature, as with strings).
class Feature {
public:
    Feature(XmlNode& face, XmlNode& behind) : m_face(&face), m_register(&behind) {}

    Feature& Tip(const std::string& text) { return Face("ToolTip", text); }
    Feature& Visible(const std::string& level) {
        return Face("Visibility", level);
    } // Expert, Guru, Invisible
    Feature& Unit(const std::string& unit) { return Face("Unit", unit); }
    Feature& Face(const std::string& element, const std::string& text) {
        m_face->Add(element, text);
        return *this;
    }
    Feature& Range(int64_t low, int64_t high, int64_t step = 1) {
        m_face->Add("Min", low).Add("Max", high).Add("Inc", step);
        return *this;
    }
    Feature& RangeF(double low, double high) {
        m_face->AddFloat("Min", low).AddFloat("Max", high);
        return *this;
    }
    // May not be written while TLParamsLocked is set.
    Feature& Locked() { return Face("pIsLocked", "TLParamsLocked"); }
    // Changes by itself: no cache; polled when a time is given.
    Feature& Volatile(int64_t pollingMs = 0) {
        m_register->Add("Cachable", "NoCache");
        if (pollingMs > 0)
            m_register->Add("PollingTime", pollingMs);
        return *this;
    }
    XmlNode& Node() { return *m_face; }
    XmlNode& RegisterNode() { return *m_register; }

private:
    XmlNode* m_face;
    XmlNode* m_register;
};

struct EnumValue {
    const char* name;
    uint32_t value;
};

class FeatureBuilder {
public:
    FeatureBuilder(RegisterMemory& memory, XmlDocument& xml) : m_memory(memory), m_xml(xml) {}

    RegisterMemory& Memory() { return m_memory; }
    XmlDocument& Xml() { return m_xml; }
    // Features made from now on are listed there; empty: nowhere.
    void Category(const std::string& name) { m_category = name; }

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
    Feature StringNode(const std::string& name, uint32_t address, uint32_t length, Access access);
    // An <IntSwissKnife>; variables as pairs of name and node.
    XmlNode& Formula(const std::string& name,
                     const std::vector<std::pair<std::string, std::string>>& variables,
                     const std::string& expression);

private:
    XmlNode& RegisterNode(const std::string& kind, const std::string& name, uint32_t address, uint32_t length,
                          Access access);
    XmlNode& FaceNode(const std::string& kind, const std::string& name);

    RegisterMemory& m_memory;
    XmlDocument& m_xml;
    std::string m_category;
};

// Checks for hooks.
using Check = std::function<Status(const Bytes& proposed)>;
Check InRange(uint32_t low, uint32_t high, uint32_t step = 1);
Check InRangeF(double low, double high);
Check OneOf(std::vector<uint32_t> values);
// All of them; the first refusal counts.
Check All(std::vector<Check> checks);

} // namespace vcam

#endif
