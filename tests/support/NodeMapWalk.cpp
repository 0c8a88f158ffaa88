#include "support/NodeMapWalk.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <set>

#include "GenApi/GenApi.h"

namespace support {

namespace {

using namespace GenApi_3_0;
using GenICam_3_0::gcstring;
using GenICam_3_0::GenericException;

class Walk {
public:
    Walk(INodeMap& map, const WalkOptions& options) : m_map(map), m_options(options) {}

    WalkReport Run() {
        NodeList_t nodes;
        m_map.GetNodes(nodes);
        Expect(nodes.size() == m_map.GetNumNodes(), "GetNumNodes differs from GetNodes");
        m_known.insert(nodes.begin(), nodes.end());
        for (INode* node : nodes) {
            if (m_report.nodes == m_options.maxNodes) {
                break;
            }
            ++m_report.nodes;
            if (node == nullptr) {
                Surprise("null in GetNodes");
                continue;
            }
            m_name = node->GetName().c_str();
            Node(*node);
        }
        return std::move(m_report);
    }

private:
    void Surprise(const std::string& what) {
        if (m_report.surprises.size() < m_options.maxSurprises) {
            m_report.surprises.push_back(m_name + ": " + what);
        }
    }
    void Expect(bool holds, const char* what) {
        if (!holds) {
            Surprise(what);
        }
    }

    // True when the call went through. Only GenericException may come, and its text names the node at fault.
    template<class Call>
    bool Try(const char* what, Call call) {
        try {
            call();
            return true;
        } catch (const GenericException& exception) {
            const std::string text = exception.what();
            const std::size_t end = text.find(" thrown");
            const std::size_t begin = text.rfind(' ', end == std::string::npos ? end : end - 1);
            m_lastException = end == std::string::npos ? "?" : text.substr(begin + 1, end - begin - 1);
            ++m_report.refusals[m_lastException];
            Expect(exception.GetDescription() != nullptr && *exception.GetDescription() != '\0',
                   "no description");
            m_lastText = exception.GetDescription();
            if (!NamesANode(m_lastText)) {
                Surprise(std::string(what) + " failed without naming a node: " + m_lastText);
            }
        } catch (const std::exception& exception) {
            Surprise(std::string(what) + " threw something foreign: " + exception.what());
        } catch (...) {
            Surprise(std::string(what) + " threw something unknown");
        }
        return false;
    }

    bool NamesANode(const std::string& text) const {
        const auto names = [&](const std::string& name) {
            return text.find("node '" + name + "'") != std::string::npos;
        };
        // The fault may lie in a node behind this one.
        return names(m_name) || std::any_of(m_known.begin(), m_known.end(), [&](INode* node) {
                   return node != nullptr && names(node->GetName().c_str());
               });
    }

    template<class List>
    void Members(const char* what, const List& list) {
        for (const auto* member : list) {
            Expect(member != nullptr, what);
        }
    }

    void Node(INode& node) {
        Expect(!m_name.empty(), "no name");
        Expect(m_map.GetNode(node.GetName()) == &node, "GetNode finds another node");
        Expect(m_map.GetNode(node.GetName(true)) == &node, "GetNode doesn't know the full name");
        Expect(node.GetNodeMap() == &m_map, "belongs to another map");
        Expect(node.GetVisibility() >= Beginner && node.GetVisibility() <= Invisible, "no visibility");
        Expect(node.GetDisplayName().size() > 0, "no display name");
        Expect(node.GetPollingTime() >= -1, "strange polling time");
        node.GetToolTip();
        node.GetDescription();
        node.GetEventID();
        node.GetDocuURL();
        node.IsDeprecated();
        node.IsStreamable();
        node.IsFeature();
        node.GetAlias();
        node.GetCastAlias();
        Expect(node.GetNameSpace() == Standard || node.GetNameSpace() == Custom, "no name space");
        Links(node);
        Properties(node);
        Try("GetCachingMode", [&] { Expect(node.GetCachingMode() <= WriteAround, "no caching mode"); });
        Try("IsCachable", [&] { node.IsCachable(); });
        m_mode = NA;
        m_modeKnown = Try("GetAccessMode", [&] { m_mode = node.GetAccessMode(); });
        Expect(m_mode >= NI && m_mode <= RW, "no access mode");
        Selector(node);
        Value(node);
        Interfaces(node);
    }

    void Links(INode& node) {
        NodeList_t list;
        node.GetParents(list);
        Members("null among the parents", list);
        for (const ELinkType link : {ctReadingChildren, ctWritingChildren, ctInvalidatingChildren,
                                     ctDependingNodes, ctTerminalNodes, ctParentNodes}) {
            list.clear();
            if (Try("GetChildren", [&] { node.GetChildren(list, link); })) {
                Members("null among the children", list);
            }
        }
    }

    void Properties(INode& node) {
        GenICam_3_0::gcstring_vector names;
        node.GetPropertyNames(names);
        for (std::size_t i = 0; i < names.size(); ++i) {
            gcstring value;
            gcstring attribute;
            Expect(node.GetProperty(names[i], value, attribute), "a property that it names is missing");
        }
        gcstring value;
        gcstring attribute;
        Expect(!node.GetProperty("NoSuchProperty", value, attribute), "has any property");
    }

    void Selector(INode& node) {
        const CSelectorPtr selector(&node);
        if (!selector) {
            return;
        }
        FeatureList_t selected;
        FeatureList_t selecting;
        selector->GetSelectedFeatures(selected);
        selector->GetSelectingFeatures(selecting);
        Members("null among the selected", selected);
        Members("null among the selecting", selecting);
        Expect(selector->IsSelector() == !selected.empty(), "IsSelector contradicts the list");
        m_report.selections += selected.size();
        for (IValue* value : selected) {
            const CSelectorPtr back(value);
            FeatureList_t those;
            if (back) {
                back->GetSelectingFeatures(those);
            }
            const bool mutual =
                std::any_of(those.begin(), those.end(), [&](IValue* v) { return v->GetNode() == &node; });
            Expect(mutual, "a selected feature doesn't know its selector");
        }
    }

    // What holds for reading a value of any kind by any call.
    template<class Call>
    bool ReadValue(const char* what, Call call) {
        const bool done = Try(what, call);
        if (done) {
            Expect(IsReadable(m_mode) || !m_modeKnown, "gives a value although it can't be read");
        } else if (m_lastException == "AccessException" && IsReadable(m_mode)) {
            Surprise(std::string(what) + " is refused although it can be read: " + m_lastText);
        }
        return done;
    }

    void Value(INode& node) {
        const CValuePtr value(&node);
        if (!value) {
            return;
        }
        Expect(value->GetNode() == &node, "GetNode of the value is another node");
        if (node.GetPrincipalInterfaceType() == intfICategory ||
            node.GetPrincipalInterfaceType() == intfIPort ||
            node.GetPrincipalInterfaceType() == intfICommand) {
            Try("ToString", [&] { value->ToString(); });
            return;
        }
        m_report.readable += IsReadable(m_mode) ? 1 : 0;
        gcstring text;
        if (!ReadValue("ToString", [&] { text = value->ToString(); })) {
            return;
        }
        ++m_report.values;
        value->IsValueCacheValid();
        ReadValue("ToString with IgnoreCache", [&] { value->ToString(false, true); });
        Try("ToString with Verify", [&] { value->ToString(true); });
        if (m_options.write && IsWritable(m_mode)) {
            Try("FromString", [&] { value->FromString(text); });
        }
    }

    void Interfaces(INode& node) {
        if (const CIntegerPtr integer = &node) {
            Integer(*integer);
        }
        if (const CFloatPtr real = &node) {
            Float(*real);
        }
        if (const CBooleanPtr boolean = &node) {
            ReadValue("IBoolean::GetValue", [&] { boolean->GetValue(); });
        }
        if (const CEnumerationPtr enumeration = &node) {
            Enumeration(*enumeration);
        }
        if (const CEnumEntryPtr entry = &node) {
            Try("GetNumericValue", [&] { entry->GetNumericValue(); });
            Expect(entry->GetSymbolic().size() > 0, "no symbol");
            entry->IsSelfClearing();
            Try("GetValue of an entry", [&] { entry->GetValue(); });
        }
        if (const CStringPtr string = &node) {
            std::int64_t length = -1;
            Try("GetMaxLength", [&] {
                length = string->GetMaxLength();
                Expect(length >= 0, "negative length");
            });
            ReadValue("IString::GetValue", [&] { string->GetValue(); });
        }
        if (const CCommandPtr command = &node) {
            Try("IsDone", [&] { command->IsDone(); });
            if (m_options.write && IsWritable(m_mode)) {
                Try("Execute", [&] { command->Execute(); });
            }
        }
        if (const CRegisterPtr reg = &node) {
            Register(*reg);
        }
        if (const CCategoryPtr category = &node) {
            FeatureList_t features;
            category->GetFeatures(features);
            Members("null among the features", features);
            for (IValue* feature : features) {
                Expect(feature == nullptr || feature->GetNode()->IsFeature(),
                       "lists a node that is no feature");
            }
        }
    }

    void Integer(IInteger& integer) {
        Try("GetUnit", [&] { integer.GetUnit(); });
        Try("GetRepresentation",
            [&] { Expect(integer.GetRepresentation() < _UndefinedRepresentation, "no representation"); });
        std::int64_t minimum = 0;
        std::int64_t maximum = 0;
        std::int64_t increment = 0;
        std::int64_t value = 0;
        const bool hasMinimum = Try("GetMin", [&] { minimum = integer.GetMin(); });
        const bool hasMaximum = Try("GetMax", [&] { maximum = integer.GetMax(); });
        const bool hasIncrement = Try("GetInc", [&] { increment = integer.GetInc(); });
        const bool range = hasMinimum && hasMaximum && hasIncrement;
        Expect(!range || increment >= 1, "increment below 1");
        Try("GetIncMode", [&] {
            if (integer.GetIncMode() == listIncrement) {
                integer.GetListOfValidValues();
            }
        });
        if (!ReadValue("IInteger::GetValue", [&] { value = integer.GetValue(); })) {
            return;
        }
        const bool verified = Try("IInteger::GetValue with Verify", [&] { integer.GetValue(true); });
        if (range && verified) {
            Expect(minimum <= value && value <= maximum, "Verify lets a value out of range through");
        }
        if (m_options.write && range && IsWritable(m_mode)) {
            Try("IInteger::SetValue", [&] { integer.SetValue(value); });
            Try("IInteger::SetValue of the minimum", [&] { integer.SetValue(minimum); });
        }
    }

    void Float(IFloat& real) {
        Try("GetUnit", [&] { real.GetUnit(); });
        Try("GetDisplayNotation", [&] { real.GetDisplayNotation(); });
        Try("GetDisplayPrecision", [&] { real.GetDisplayPrecision(); });
        Try("GetRepresentation",
            [&] { Expect(real.GetRepresentation() < _UndefinedRepresentation, "no representation"); });
        double minimum = 0;
        double maximum = 0;
        double value = 0;
        const bool hasMinimum = Try("GetMin", [&] { minimum = real.GetMin(); });
        const bool hasMaximum = Try("GetMax", [&] { maximum = real.GetMax(); });
        Try("HasInc", [&] {
            if (real.HasInc()) {
                real.GetInc();
            }
        });
        if (!ReadValue("IFloat::GetValue", [&] { value = real.GetValue(); })) {
            return;
        }
        const bool verified = Try("IFloat::GetValue with Verify", [&] { real.GetValue(true); });
        if (hasMinimum && hasMaximum && verified && !std::isnan(value)) {
            Expect(minimum <= value && value <= maximum, "Verify lets a value out of range through");
        }
        if (m_options.write && IsWritable(m_mode)) {
            Try("IFloat::SetValue", [&] { real.SetValue(value); });
        }
    }

    void Enumeration(IEnumeration& enumeration) {
        NodeList_t entries;
        enumeration.GetEntries(entries);
        Members("null among the entries", entries);
        m_report.entries += entries.size();
        for (INode* node : entries) {
            const CEnumEntryPtr entry(node);
            Expect(entry.IsValid(), "an entry is no entry");
            if (entry) {
                Expect(enumeration.GetEntryByName(entry->GetSymbolic()) != nullptr,
                       "an entry isn't found by its symbol");
                std::int64_t entryValue = 0;
                if (Try("GetValue of an entry", [&] { entryValue = entry->GetValue(); })) {
                    Expect(enumeration.GetEntry(entryValue) != nullptr, "an entry isn't found by its value");
                }
                Try("GetAccessMode of an entry", [&] { node->GetAccessMode(); });
            }
        }
        StringList_t symbols;
        if (Try("GetSymbolics", [&] { enumeration.GetSymbolics(symbols); })) {
            Expect(symbols.size() <= entries.size(), "more symbols than entries");
        }
        std::int64_t value = 0;
        if (!ReadValue("GetIntValue", [&] { value = enumeration.GetIntValue(); })) {
            return;
        }
        Try("GetCurrentEntry", [&] {
            const IEnumEntry* entry = enumeration.GetCurrentEntry();
            Expect(entry == nullptr || entry->GetValue() == value, "the current entry has another value");
        });
        if (m_options.write && IsWritable(m_mode)) {
            Try("SetIntValue", [&] { enumeration.SetIntValue(value); });
        }
    }

    void Register(IRegister& reg) {
        std::int64_t length = 0;
        if (!Try("GetLength", [&] { length = reg.GetLength(); }) ||
            !Try("GetAddress", [&] { reg.GetAddress(); })) {
            return;
        }
        Expect(length >= 0, "negative length");
        if (length < 0 || length > (1 << 20)) {
            return;
        }
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(length));
        const bool read = ReadValue("IRegister::Get", [&] { reg.Get(bytes.data(), length); });
        if (read && m_options.write && IsWritable(m_mode)) {
            Try("IRegister::Set", [&] { reg.Set(bytes.data(), length); });
        }
    }

    INodeMap& m_map;
    WalkOptions m_options;
    WalkReport m_report;
    std::set<INode*> m_known;
    std::string m_name;
    std::string m_lastException;
    std::string m_lastText;
    EAccessMode m_mode = NA;
    bool m_modeKnown = false; // false: asking for it failed, so nothing is expected of the value
};

} // namespace

WalkReport WalkNodeMap(INodeMap& map, const WalkOptions& options) {
    return Walk(map, options).Run();
}

} // namespace support
