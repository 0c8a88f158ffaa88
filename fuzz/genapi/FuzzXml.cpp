#include "genapi/FuzzXml.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "GenApi/GenApi.h"
#include "support/MemoryPort.h"
#include "support/NodeMapWalk.h"

namespace fuzz {

namespace {

using namespace GenApi_3_0;
using GenICam_3_0::GenericException;

constexpr std::uint64_t kMaxAccesses = 20000;

void Explore(INodeMap& map, const std::string& memory) {
    support::MemoryPort port;
    port.Record(false);
    port.Store(0, std::vector<std::uint8_t>(memory.begin(), memory.end()));
    std::uint64_t accesses = 0;
    port.OnAccess([&](bool, std::int64_t, std::int64_t length) {
        if (++accesses > kMaxAccesses || length > 4096) {
            throw RUNTIME_EXCEPTION("the port has had enough");
        }
    });
    NodeList_t nodes;
    map.GetNodes(nodes);
    for (INode* node : nodes) {
        if (node->GetPrincipalInterfaceType() == intfIPort) {
            map.Connect(&port, node->GetName());
        }
    }
    support::WalkOptions options;
    options.write = true;
    options.maxNodes = 400;
    const support::WalkReport report = support::WalkNodeMap(map, options);
    for (const std::string& surprise : report.surprises) {
        std::fprintf(stderr, "surprise: %s\n", surprise.c_str());
    }
    if (!report.surprises.empty()) {
        std::abort();
    }
    map.ParseSwissKnifes(nullptr);
    try {
        map.Poll(1000);
    } catch (const GenericException&) {
        // What blocks a node's polling can be as wrong as anything.
    }
    map.InvalidateNodes();
}

void Try(EContentType_t type, const void* data, std::size_t size, const std::string& memory) {
    INodeMap* map = nullptr;
    try {
        map = CNodeMapFactory(type, data, size).CreateNodeMap("Device");
    } catch (const GenericException& error) {
        if (error.GetDescription()[0] == '\0') {
            std::abort();
        }
        return;
    }
    const CNodeMapRef hold(map, "Device");
    Explore(*map, memory);
}

// Takes choices from the input, 0 when it has run out.
class Choices {
public:
    Choices(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
    std::size_t Next(std::size_t below) {
        if (m_at == m_size) {
            return 0;
        }
        return m_data[m_at++] % below;
    }
    std::string Rest() const { return {m_data + m_at, m_data + m_size}; }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_at = 0;
};

const char* const kKinds[] = {"Integer",  "IntReg",      "MaskedIntReg", "IntSwissKnife", "IntConverter",
                              "Float",    "FloatReg",    "SwissKnife",   "Converter",     "Boolean",
                              "Command",  "Enumeration", "StringReg",    "String",        "Register",
                              "Category", "Port",        "StructReg"};
const char* const kReferences[] = {
    "pValue",        "pMin",    "pMax",   "pInc",         "pIsImplemented", "pIsAvailable",  "pIsLocked",
    "pAddress",      "pIndex",  "pPort",  "pInvalidator", "pSelected",      "pFeature",      "pValueCopy",
    "pCommandValue", "pLength", "pAlias", "pCastAlias",   "pValueDefault",  "pBlockPolling", "pError"};
const char* const kNumbers[] = {
    "0",  "1",   "-1",    "4",  "8",   "16", "0x7FFFFFFFFFFFFFFF", "-9223372036854775808", "0xFFFFFFFF", "31",
    "63", "1.5", "1e300", "64", "255", "abc"};
const char* const kNumeric[] = {
    "Value",    "Min",          "Max",         "Inc",          "Address",
    "Length",   "LSB",          "MSB",         "Bit",          "OnValue",
    "OffValue", "CommandValue", "PollingTime", "ValueDefault", "DisplayPrecision"};
const char* const kWords[] = {"<AccessMode>RW</AccessMode>",
                              "<AccessMode>RO</AccessMode>",
                              "<AccessMode>WO</AccessMode>",
                              "<Cachable>NoCache</Cachable>",
                              "<Cachable>WriteAround</Cachable>",
                              "<Sign>Signed</Sign>",
                              "<Endianess>BigEndian</Endianess>",
                              "<Slope>Automatic</Slope>",
                              "<Slope>Decreasing</Slope>",
                              "<Slope>Varying</Slope>",
                              "<ImposedAccessMode>RO</ImposedAccessMode>",
                              "<ImposedAccessMode>WO</ImposedAccessMode>",
                              "<Streamable>Yes</Streamable>",
                              "<Representation>IPV4Address</Representation>",
                              "<Representation>MACAddress</Representation>",
                              "<Representation>HexNumber</Representation>"};
const char* const kFormulas[] = {"A",       "A + B",  "A / B",   "A ? B : 1", "B.Max", "A.Min << B",
                                 "A * 1.5", "A ** B", "SQRT(A)", "FROM",      "TO / A"};

std::string NodeName(Choices& choices, std::size_t count) {
    const std::size_t number = choices.Next(count + 1);
    return number == count ? "Device" : "N" + std::to_string(number);
}

std::string Property(Choices& choices, std::size_t count) {
    const auto element = [](const std::string& name, const std::string& text) {
        return "<" + name + ">" + text + "</" + name + ">";
    };
    switch (choices.Next(8)) {
    case 0:
    case 1:
        return element(kReferences[choices.Next(std::size(kReferences))], NodeName(choices, count));
    case 2:
        return element(kNumeric[choices.Next(std::size(kNumeric))],
                       kNumbers[choices.Next(std::size(kNumbers))]);
    case 3:
        return kWords[choices.Next(std::size(kWords))];
    case 4: {
        static const char* const kNames[] = {"A", "B", "B.Max", "A.Min", "A.Inc", "B.Entry.E1"};
        return "<pVariable Name=\"" + std::string(kNames[choices.Next(6)]) + "\">" +
               NodeName(choices, count) + "</pVariable>";
    }
    case 5: {
        static const char* const kElements[] = {"Formula", "FormulaTo", "FormulaFrom"};
        return element(kElements[choices.Next(3)], kFormulas[choices.Next(std::size(kFormulas))]);
    }
    case 6: {
        const std::string name = "E" + std::to_string(choices.Next(4));
        return "<EnumEntry Name=\"" + name + "\"><Value>" + kNumbers[choices.Next(6)] + "</Value>" +
               (choices.Next(2) == 0 ? "" : element("pIsAvailable", NodeName(choices, count))) +
               "</EnumEntry>";
    }
    default:
        return choices.Next(2) == 0
                   ? "<pValueIndexed Index=\"" + std::string(kNumbers[choices.Next(4)]) + "\">" +
                         NodeName(choices, count) + "</pValueIndexed>"
                   : "<Address>" + std::to_string(4 * choices.Next(16)) +
                         "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>";
    }
}

std::string Graph(Choices& choices) {
    const std::size_t count = 1 + choices.Next(24);
    std::string xml =
        "<RegisterDescription ModelName=\"G\" VendorName=\"G\" StandardNameSpace=\"None\" "
        "SchemaMajorVersion=\"1\" "
        "SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"0\" "
        "SubMinorVersion=\"0\" ProductGuid=\"1\" VersionGuid=\"1\">";
    for (std::size_t i = 0; i < count; ++i) {
        const std::string kind = kKinds[choices.Next(std::size(kKinds))];
        std::string inside;
        for (std::size_t properties = choices.Next(9); properties > 0; --properties) {
            inside += Property(choices, count);
        }
        const std::string name = "N" + std::to_string(i);
        if (kind == "StructReg") {
            xml += "<StructReg Comment=\"S\">" + inside + "<StructEntry Name=\"" + name + "\"><Bit>" +
                   kNumbers[choices.Next(11)] + "</Bit></StructEntry></StructReg>";
        } else {
            xml += "<" + kind + " Name=\"" + name + "\">" + inside + "</" + kind + ">";
        }
    }
    return xml + "<Port Name=\"Device\"/></RegisterDescription>";
}

} // namespace

void FuzzXml(const std::uint8_t* data, std::size_t size) {
    Try(ContentType_Xml, data, size, {data, data + std::min<std::size_t>(size, 4096)});
}

void FuzzZippedXml(const std::uint8_t* data, std::size_t size) {
    Try(ContentType_ZippedXml, data, size, {data, data + std::min<std::size_t>(size, 4096)});
}

void FuzzGraph(const std::uint8_t* data, std::size_t size) {
    Choices choices(data, size);
    const std::string xml = Graph(choices);
    if (std::getenv("KOLT_FUZZ_SHOW") != nullptr) {
        std::fprintf(stderr, "%s\n", xml.c_str());
    }
    Try(ContentType_Xml, xml.data(), xml.size(), choices.Rest());
}

} // namespace fuzz
