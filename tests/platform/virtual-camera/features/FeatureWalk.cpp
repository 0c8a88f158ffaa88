#include "FeatureWalk.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>

namespace kolt::test {

using namespace GenApi_3_0;
using GenICam_3_0::AccessException;
using GenICam_3_0::GenericException;
using GenICam_3_0::OutOfRangeException;

namespace {

constexpr std::int64_t kMostSelections = 6; // of an integer selector with many values: both ends and some

class Walk {
public:
    explicit Walk(FeatureRig& rig) : m_rig(rig) {
        m_bits["FrameSpecInfo_Reg"] = rig.model.Traits().colour ? 0x1FF : 0x1EF;
    }

    FeatureWalkReport Run() {
        Category(*m_rig.Node("Root"));
        return std::move(m_report);
    }

private:
    void Fault(const std::string& what) { m_report.faults.push_back(m_name + m_context + ": " + what); }
    void Expect(bool holds, const std::string& what) {
        if (!holds)
            Fault(what);
    }

    void Category(INode& node) {
        FeatureList_t features;
        CCategoryPtr(&node)->GetFeatures(features);
        for (IValue* feature : features) {
            INode& child = *feature->GetNode();
            if (child.GetPrincipalInterfaceType() == intfICategory)
                Category(child);
            else
                Feature(child);
        }
    }

    void Feature(INode& node) {
        m_name = node.GetName().c_str();
        m_context.clear();
        const vcam::RegisterMemory& memory = m_rig.model.Memory();
        const std::map<std::uint32_t, vcam::Bytes> before = memory.Contents();
        try {
            Select(node, SelectorsOf(node));
        } catch (const GenericException& exception) {
            Fault(std::string("unexpected: ") + exception.what());
        }
        // As it was, so that no feature meets what another left behind.
        m_rig.model.Memory().Restore(before);
        m_rig.stream.acquiring = false;
        m_rig.faults.Set({});
        m_rig.map._InvalidateNodes();
    }

    // The selectors of a feature, those of its selectors first.
    std::vector<INode*> SelectorsOf(INode& node) {
        std::vector<INode*> all;
        FeatureList_t selecting;
        if (const CSelectorPtr selector = &node)
            selector->GetSelectingFeatures(selecting);
        for (IValue* value : selecting) {
            for (INode* deeper : SelectorsOf(*value->GetNode()))
                Add(all, deeper);
            Add(all, value->GetNode());
        }
        return all;
    }
    static void Add(std::vector<INode*>& all, INode* node) {
        if (std::find(all.begin(), all.end(), node) == all.end())
            all.push_back(node);
    }

    static std::vector<std::int64_t> ValuesOf(INode& selector) {
        std::vector<std::int64_t> values;
        if (const CEnumerationPtr enumeration = &selector) {
            NodeList_t entries;
            enumeration->GetEntries(entries);
            for (INode* entry : entries) {
                if (IsAvailable(entry->GetAccessMode()))
                    values.push_back(CEnumEntryPtr(entry)->GetValue());
            }
            return values;
        }
        const CIntegerPtr integer(&selector);
        const std::int64_t low = integer->GetMin();
        const std::int64_t high = integer->GetMax();
        const std::int64_t step = std::max<std::int64_t>(1, (high - low) / (kMostSelections - 1));
        for (std::int64_t value = low; value <= high; value += step)
            values.push_back(value);
        if (values.back() != high)
            values.push_back(high);
        return values;
    }

    void Select(INode& node, std::vector<INode*> selectors) {
        if (selectors.empty()) {
            ++m_report.contexts;
            Visit(node);
            return;
        }
        INode& selector = *selectors.front();
        selectors.erase(selectors.begin());
        if (!IsWritable(selector.GetAccessMode()))
            return Select(node, selectors);
        const std::string context = m_context;
        for (const std::int64_t value : ValuesOf(selector)) {
            m_context = context + " at " + selector.GetName().c_str() + "=" + std::to_string(value);
            m_rig.Set(selector.GetName().c_str(), value);
            Select(node, selectors);
        }
        m_context = context;
    }

    void Visit(INode& node) {
        const EAccessMode mode = node.GetAccessMode();
        if (mode == NI) {
            m_report.notImplemented.insert(m_name);
            return;
        }
        if (mode == NA)
            return;
        m_report.visited.insert(m_name);
        m_node = &node;
        m_writable = IsWritable(mode);
        switch (node.GetPrincipalInterfaceType()) {
        case intfIInteger:
            return Integer(*CIntegerPtr(&node));
        case intfIFloat:
            return Float(*CFloatPtr(&node));
        case intfIBoolean:
            return Boolean(*CBooleanPtr(&node));
        case intfIEnumeration:
            return Enumeration(*CEnumerationPtr(&node));
        case intfICommand:
            return Command(*CCommandPtr(&node));
        case intfIString:
            return String(*CStringPtr(&node));
        case intfIRegister:
            return Register(*CRegisterPtr(&node));
        default:
            Fault("a feature of a kind that no client expects");
        }
    }

    // The register in which the feature's value lies, or null (behind a formula).
    INode* Behind() const {
        INode* node = m_node;
        for (CRegisterPtr found(node); !found; found = node) {
            GenICam_3_0::gcstring name;
            GenICam_3_0::gcstring attribute;
            if (!node->GetProperty("pValue", name, attribute))
                return nullptr;
            node = m_rig.Node(name.c_str());
        }
        return node;
    }
    vcam::Bytes Raw() const {
        const CRegisterPtr reg(Behind());
        vcam::Bytes bytes(static_cast<std::size_t>(reg->GetLength()));
        m_rig.port.Read(bytes.data(), reg->GetAddress(), reg->GetLength());
        return bytes;
    }
    static std::int64_t Property(INode& node, const char* name, std::int64_t fallback) {
        GenICam_3_0::gcstring text;
        GenICam_3_0::gcstring attribute;
        return node.GetProperty(name, text, attribute) ? std::stoll(text.c_str()) : fallback;
    }
    // The integer in the register, by arithmetic of our own.
    std::int64_t RawInteger() const {
        INode& node = *Behind();
        const vcam::Bytes bytes = Raw();
        std::uint64_t value = 0;
        for (const std::uint8_t byte : bytes)
            value = value << 8 | byte;
        const std::int64_t low = Property(node, "LSB", -1);
        if (low >= 0) { // bit 0 is the most significant
            const std::int64_t high = Property(node, "MSB", -1);
            const std::uint64_t mask = (std::uint64_t{1} << (low - high + 1)) - 1;
            return static_cast<std::int64_t>(value >> (31 - low) & mask);
        }
        GenICam_3_0::gcstring sign;
        GenICam_3_0::gcstring attribute;
        node.GetProperty("Sign", sign, attribute);
        return sign == "Signed" && bytes.size() == 4 ? static_cast<std::int32_t>(value)
                                                     : static_cast<std::int64_t>(value);
    }

    template<class Exception>
    static const char* Name() {
        return std::is_same<Exception, OutOfRangeException>::value ? "OutOfRangeException thrown"
               : std::is_same<Exception, AccessException>::value   ? "AccessException thrown"
                                                                   : "Exception thrown";
    }
    template<class Exception>
    void Refused(const std::string& what, const std::function<void()>& write) {
        const vcam::Bytes before = Behind() != nullptr ? Raw() : vcam::Bytes();
        try {
            write();
            return Fault(what + " is taken");
        } catch (const GenericException& exception) {
            ++m_report.refusals;
            const bool meant = std::string(exception.what()).find(Name<Exception>()) != std::string::npos;
            if (!meant)
                Fault(what + " fails otherwise: " + exception.what());
        }
        if (Behind() != nullptr && m_restless.count(m_name) == 0)
            Expect(Raw() == before, what + " is refused and changes the register all the same");
    }
    // What the XML forbids the register refuses too.
    void RegisterRefuses(const std::string& what, std::int64_t value) {
        INode* behind = Behind();
        GenICam_3_0::gcstring kind;
        if (behind == nullptr || Property(*behind, "LSB", -1) >= 0 || !m_ownRange)
            return;
        const CRegisterPtr reg(behind);
        const vcam::Status status =
            m_rig.Poke(static_cast<std::uint32_t>(reg->GetAddress()), static_cast<std::uint32_t>(value));
        Expect(status != vcam::Status::Success, what + " is taken by the register");
        ++m_report.refusals;
    }
    // Features whose registers belong to the standard's own part take what it allows.
    bool InMakersPart() const {
        INode* behind = Behind();
        return behind != nullptr && CRegisterPtr(behind)->GetAddress() >= 0xA000;
    }

    void Integer(IInteger& integer) {
        m_ownRange = InMakersPart();
        const std::int64_t value = integer.GetValue(false, true);
        ++m_report.reads;
        if (Behind() != nullptr)
            Expect(value == RawInteger(), "differs from the register");
        const std::int64_t low = integer.GetMin();
        const std::int64_t high = integer.GetMax();
        const std::int64_t step = integer.GetInc();
        Expect(low <= high && step >= 1, "has no sensible range");
        Expect(low <= value && value <= high, "lies outside of its range");
        if (!m_writable) {
            if (m_node->GetAccessMode() == RO)
                Refused<AccessException>("a write", [&] { integer.SetValue(value); });
            return;
        }
        const std::int64_t middle = low + (high - low) / 2 / step * step;
        for (const std::int64_t wanted : {low, high, middle, value})
            WriteInteger(integer, wanted);
        if (high < INT64_MAX - step)
            Refused<OutOfRangeException>("more than the maximum", [&] { integer.SetValue(high + step); });
        if (low > INT64_MIN + step)
            Refused<OutOfRangeException>("less than the minimum", [&] { integer.SetValue(low - step); });
        if (step > 1)
            Refused<OutOfRangeException>("a value between two steps", [&] { integer.SetValue(low + 1); });
        if (high < INT32_MAX - step)
            RegisterRefuses("more than the maximum", high + step);
        if (step > 1)
            RegisterRefuses("a value between two steps", low + 1);
    }
    void WriteInteger(IInteger& integer, std::int64_t wanted) {
        if (wanted < integer.GetMin() || wanted > integer.GetMax())
            return; // the range moved with the value before
        integer.SetValue(wanted);
        ++m_report.writes;
        if (m_orders.count(m_name) != 0)
            return;
        const auto bits = m_bits.find(m_name);
        const std::int64_t kept = bits == m_bits.end() ? wanted : wanted & bits->second;
        Expect(integer.GetValue() == kept, "reads " + std::to_string(integer.GetValue()) + " after " +
                                               std::to_string(wanted) + " was written");
        if (Behind() != nullptr)
            Expect(RawInteger() == kept, "the register has not what was written");
    }

    double RawReal() const {
        const std::uint64_t bits = vcam::Get64(Raw().data());
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    void Float(IFloat& real) {
        const double value = real.GetValue(false, true);
        ++m_report.reads;
        Expect(std::abs(value - RawReal()) < 0.01, "differs from the register"); // temperatures wander
        Expect(real.GetMin() <= value && value <= real.GetMax(), "lies outside of its range");
        if (!m_writable) {
            if (m_node->GetAccessMode() == RO)
                Refused<AccessException>("a write", [&] { real.SetValue(value); });
            return;
        }
        for (const double wanted : {real.GetMin(), real.GetMax(), value}) {
            real.SetValue(wanted);
            ++m_report.writes;
            Expect(real.GetValue() == wanted && RawReal() == wanted, "is not what was written");
        }
        const double high = real.GetMax();
        const double low = real.GetMin();
        Refused<OutOfRangeException>("more than the maximum", [&] { real.SetValue(high * 1.01 + 1); });
        Refused<OutOfRangeException>("less than the minimum", [&] { real.SetValue(low - 1); });
        for (const double wrong : {high * 1.01 + 1, low - 1, std::nan("")}) {
            std::uint64_t bits = 0;
            std::memcpy(&bits, &wrong, sizeof bits);
            vcam::Bytes bytes(8);
            vcam::Put64(bytes.data(), bits);
            std::size_t written = 0;
            const auto address = static_cast<std::uint32_t>(CRegisterPtr(Behind())->GetAddress());
            Expect(m_rig.model.Memory().Write(address, bytes.data(), 8, written) ==
                       vcam::Status::InvalidParameter,
                   "the register takes " + std::to_string(wrong));
            ++m_report.refusals;
        }
    }

    void Boolean(IBoolean& boolean) {
        m_ownRange = InMakersPart();
        const bool value = boolean.GetValue(false, true);
        ++m_report.reads;
        Expect((RawInteger() != 0) == value, "differs from the register");
        if (!m_writable) {
            if (m_node->GetAccessMode() == RO)
                Refused<AccessException>("a write", [&] { boolean.SetValue(!value); });
            return;
        }
        for (const bool wanted : {!value, value}) {
            boolean.SetValue(wanted);
            ++m_report.writes;
            Expect(boolean.GetValue() == wanted && (RawInteger() != 0) == wanted, "is not what was written");
        }
        RegisterRefuses("2", 2);
    }

    void Enumeration(IEnumeration& enumeration) {
        m_ownRange = InMakersPart();
        const std::int64_t value = enumeration.GetIntValue(false, true);
        ++m_report.reads;
        Expect(value == RawInteger(), "differs from the register");
        Expect(enumeration.GetCurrentEntry() != nullptr, "has a value that is no entry's");
        if (!m_writable) {
            if (m_node->GetAccessMode() == RO)
                Refused<AccessException>("a write", [&] { enumeration.SetIntValue(value); });
            return;
        }
        NodeList_t entries;
        enumeration.GetEntries(entries);
        for (INode* node : entries) {
            const CEnumEntryPtr entry(node);
            const std::string symbol = entry->GetSymbolic().c_str();
            if (!IsAvailable(node->GetAccessMode())) {
                Refused<GenericException>(symbol, [&] { enumeration.FromString(symbol.c_str()); });
                RegisterRefuses(symbol, entry->GetValue());
                continue;
            }
            if (!IsWritable(m_node->GetAccessMode()))
                return; // the entry before has locked it
            if (m_stubborn.count(m_name) != 0 && entry->GetValue() != 1)
                continue;
            enumeration.FromString(symbol.c_str());
            ++m_report.writes;
            Expect(enumeration.GetIntValue() == entry->GetValue() && RawInteger() == entry->GetValue(),
                   symbol + " is not what was written");
        }
        Refused<GenericException>("an unknown entry", [&] { enumeration.FromString("NoSuchEntry"); });
        Refused<GenericException>("an unknown value", [&] { enumeration.SetIntValue(4711); });
        RegisterRefuses("an unknown value", 4711);
        if (m_stubborn.count(m_name) == 0)
            enumeration.SetIntValue(value);
    }

    void Command(ICommand& command) {
        if (!m_writable)
            return Refused<AccessException>("execution", [&] { command.Execute(); });
        const unsigned tests = m_rig.stream.testPackets;
        command.Execute();
        ++m_report.writes;
        Expect(command.IsDone(), "isn't done at once");
        Expect(m_name != "GevSCPSFireTestPacket" || m_rig.stream.testPackets == tests + 1, "sends nothing");
        m_rig.stream.acquiring = false;
        m_rig.model.TakeResetRequest();
    }

    void String(IString& string) {
        const std::string value = string.GetValue(false, true).c_str();
        ++m_report.reads;
        const vcam::Bytes raw = Raw();
        Expect(value == std::string(raw.begin(), std::find(raw.begin(), raw.end(), std::uint8_t{0})),
               "differs from the register");
        const std::int64_t length = string.GetMaxLength();
        Expect(length == static_cast<std::int64_t>(raw.size()), "has another length than the register");
        if (!m_writable)
            return Refused<AccessException>("a write", [&] { string.SetValue("x"); });
        for (const std::string& wanted : {std::string("x"), std::string(), std::string(15, 'y'), value}) {
            string.SetValue(wanted.c_str());
            ++m_report.writes;
            Expect(string.GetValue() == wanted.c_str(), "is not what was written");
        }
        const std::string tooLong(static_cast<std::size_t>(length) + 1, 'z');
        Refused<GenericException>("a text too long", [&] { string.SetValue(tooLong.c_str()); });
    }

    void Register(IRegister& reg) {
        const std::int64_t length = reg.GetLength();
        vcam::Bytes bytes(static_cast<std::size_t>(length));
        reg.Get(bytes.data(), length);
        ++m_report.reads;
        Expect(bytes == Raw(), "differs from the register");
        std::reverse(bytes.begin(), bytes.begin() + 4); // another value of 12 bits stays one
        bytes[0] = bytes[1] = bytes[2] = 0;
        reg.Set(bytes.data(), length);
        ++m_report.writes;
        Expect(bytes == Raw(), "is not what was written");
    }

    FeatureRig& m_rig;
    FeatureWalkReport m_report;
    std::string m_name;
    std::string m_context;
    INode* m_node = nullptr;
    bool m_writable = false;
    bool m_ownRange = false;
    // They wander between two reads.
    std::map<std::string, std::int64_t> m_bits; // of features that keep only some
    const std::set<std::string> m_restless = {"DeviceTemperature"};
    // What is written to them is an order, and gone at once.
    const std::set<std::string> m_orders = {"GevSCPSFireTestPacketBit"};
    // One region is always on: switching it off is refused, and tested by itself.
    const std::set<std::string> m_stubborn = {"RegionMode"};
};

} // namespace

FeatureWalkReport WalkFeatures(FeatureRig& rig) {
    return Walk(rig).Run();
}

} // namespace kolt::test
