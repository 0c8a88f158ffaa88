#include "support/GenICamXmlGenerator.h"

#include "support/RegisterXml.h"

#include <cstdio>
#include <cstring>
#include <string_view>

namespace support {

namespace {

constexpr std::size_t kFeaturesPerCategory = 30;
constexpr std::uint32_t kSelectorEntries = 4;

const char* const kNouns[] = {"Sensor",     "Line",   "Timer",   "Counter", "Encoder", "Strobe",
                              "Sequencer",  "Lens",   "Cooling", "Shading", "Region",  "Event",
                              "Decimation", "Output", "Stream",  "Clock"};
const char* const kAspects[] = {"Level",   "Delay",     "Duration", "Offset", "Width", "Threshold",
                                "Divider", "Count",     "Source",   "Mode",   "Rate",  "Polarity",
                                "Target",  "Tolerance", "Phase",    "Limit"};

class Writer : private RegisterXml {
public:
    explicit Writer(const GenICamXmlOptions& options)
        : RegisterXml(options.bigEndian), m_options(options), m_random(options.seed * 2654435761U + 12345U) {}

    GeneratedCamera Run();

private:
    struct Category {
        std::size_t number = 0;
        std::string name;
        std::string selector; // an Enumeration
        std::string mask;     // IntReg with the bits of what is implemented and available
        std::uint64_t maskAddress = 0;
        std::vector<std::string> members;
        std::vector<std::string> selected;
    };

    std::uint32_t Random(std::uint32_t below);
    void Head();
    void Tail(const std::vector<Category>& categories);
    void BeginCategory(Category& category, std::size_t number);
    void EndCategory(Category& category);
    void Selector(Category& category);

    GeneratedFeature& Feature(Category& category, const char* aspect, FeatureKind kind);
    // The optional conditions of a feature, into the XML and into its record.
    void Conditions(Category& category, GeneratedFeature& feature, bool mayBeMissing);
    void AddFeature(Category& category, std::uint32_t kind);
    void PlainInteger(Category& category);
    void LimitedInteger(Category& category);
    void SelectedInteger(Category& category);
    void IndexedInteger(Category& category);
    void ConvertedInteger(Category& category);
    void ComputedInteger(Category& category);
    void MaskedPair(Category& category);
    void ConvertedFloat(Category& category);
    void RegisterFloat(Category& category);
    void ComputedFloat(Category& category);
    void Enumeration(Category& category);
    void Boolean(Category& category);
    void Command(Category& category);
    void String(Category& category);
    void RawRegister(Category& category);

    GenICamXmlOptions m_options;
    std::uint32_t m_random;
    GeneratedCamera m_camera;
};

std::uint32_t Writer::Random(std::uint32_t below) {
    m_random = m_random * 1664525U + 1013904223U;
    return (m_random >> 8) % below;
}

void Writer::Head() {
    m_xml += "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
             "<RegisterDescription ModelName=\"Generated\" VendorName=\"Kolt\" ToolTip=\"Generated camera\" "
             "StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" "
             "SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"0\" SubMinorVersion=\"0\" "
             "ProductGuid=\"5C1E3A52-7A3B-4E68-9C11-0B6D7D1A2F01\" "
             "VersionGuid=\"5C1E3A52-7A3B-4E68-9C11-0B6D7D1A2F02\" "
             "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n";
    // Both are 0: parameters are not locked, and nothing is running.
    IntReg("TLParamsLockedReg", 4, 0);
    Open("Integer", "TLParamsLocked");
    Describe("TLParamsLocked", 3);
    Line("pValue", "TLParamsLockedReg");
    Line("Min", "0");
    Line("Max", "1");
    Close("Integer");
    IntReg("PixelSizeReg", 4, 8, "RO");
}

void Writer::Tail(const std::vector<Category>& categories) {
    Open("Port", "Device");
    Close("Port");
    m_xml += "<Category Name=\"Root\" NameSpace=\"Standard\">\n";
    for (const Category& category : categories) {
        Line("pFeature", category.name);
    }
    Line("pFeature", "TransportLayerControl");
    Close("Category");
    Open("Category", "TransportLayerControl");
    Line("pFeature", "TLParamsLocked");
    Close("Category");
    m_xml += "</RegisterDescription>\n";
}

void Writer::Selector(Category& category) {
    category.selector = category.name + "Selector";
    IntReg(category.selector + "Reg", 4, 0);
    Open("Enumeration", category.selector);
    Describe(category.selector, 0);
    for (std::uint32_t i = 0; i < kSelectorEntries; ++i) {
        const std::string entry = category.name + "Channel" + std::to_string(i);
        m_xml += "<EnumEntry Name=\"" + entry + "\">\n";
        Line("ToolTip", "Channel " + std::to_string(i) + " of " + category.name);
        Line("Value", i);
        Close("EnumEntry");
    }
    Line("pValue", category.selector + "Reg");
    for (const std::string& name : category.selected) {
        Line("pSelected", name);
    }
    Close("Enumeration");
    m_camera.features.push_back(
        {category.selector, FeatureKind::Enumeration, false, true, true, {}, category.selector + "Reg"});
    category.members.push_back(category.selector);
}

void Writer::BeginCategory(Category& category, std::size_t number) {
    category.number = number;
    category.name = std::string(kNouns[number % std::size(kNouns)]) + std::to_string(number);
    category.selector = category.name + "Selector";
    category.mask = category.name + "Mask";
    // Bits 0 to 3: implemented; 4 to 7: available. Bits 3 and 7 are off, so those features are missing.
    IntReg(category.mask, 4, 0x77, "RO", false, category.selector + "Reg");
    for (std::uint32_t bit = 0; bit < 8; ++bit) {
        Open("IntSwissKnife", category.mask + std::to_string(bit));
        Variable("MASK", category.mask);
        Line("Formula", "(MASK &gt;&gt; " + std::to_string(bit) + ") &amp; 1");
        Close("IntSwissKnife");
    }
}

void Writer::EndCategory(Category& category) {
    Selector(category);
    Open("Category", category.name);
    Describe(category.name, 0);
    for (const std::string& member : category.members) {
        Line("pFeature", member);
    }
    Close("Category");
}

GeneratedFeature& Writer::Feature(Category& category, const char* aspect, FeatureKind kind) {
    const std::string name = category.name + kAspects[Random(std::size(kAspects))] + aspect +
                             std::to_string(m_camera.features.size());
    category.members.push_back(name);
    m_camera.features.push_back({name, kind, false, true, true, {}, {}});
    return m_camera.features.back();
}

void Writer::Conditions(Category& category, GeneratedFeature& feature, bool mayBeMissing) {
    // One feature in four has a condition of each kind; one in about a hundred is missing for it.
    if (Random(4) == 0) {
        const std::uint32_t bit = mayBeMissing && Random(8) == 0 ? 3 : Random(3);
        feature.implemented = bit != 3;
        Line("pIsImplemented", category.mask + std::to_string(bit));
    }
    if (Random(4) == 0) {
        const std::uint32_t bit = mayBeMissing && Random(8) == 0 ? 7 : 4 + Random(3);
        feature.available = bit != 7;
        Line("pIsAvailable", category.mask + std::to_string(bit));
    }
    if (Random(5) == 0) {
        feature.locked = true;
        Line("pIsLocked", "TLParamsLocked");
    }
}

void Writer::PlainInteger(Category& category) {
    GeneratedFeature& feature = Feature(category, "Int", FeatureKind::Integer);
    feature.valueRegister = feature.name + "Reg";
    const std::size_t length = Random(3) == 0 ? 8 : Random(3) == 0 ? 2 : 4;
    IntReg(feature.valueRegister, length, 16 * (1 + Random(60)), "RW", Random(3) == 0);
    Open("Integer", feature.name);
    Describe(feature.name, Random(3));
    Conditions(category, feature, true);
    Line("Streamable", "Yes");
    Line("pValue", feature.valueRegister);
    Line("Min", "0");
    Line("Max", "4096");
    Line("Inc", "16");
    Line("Unit", "Pixel");
    Line("Representation", "Linear");
    Close("Integer");
}

void Writer::LimitedInteger(Category& category) {
    GeneratedFeature& feature = Feature(category, "Range", FeatureKind::Integer);
    feature.valueRegister = feature.name + "Reg";
    IntReg(feature.valueRegister, 4, 100 + Random(100));
    IntReg(feature.name + "MinReg", 4, Random(100), "RO", false, category.selector + "Reg");
    IntReg(feature.name + "MaxReg", 4, 1000 + Random(1000), "RO", false, category.selector + "Reg");
    Open("Integer", feature.name);
    Describe(feature.name, Random(3));
    Conditions(category, feature, true);
    Line("pInvalidator", category.selector + "Reg");
    Line("Streamable", "Yes");
    Line("pValue", feature.valueRegister);
    Line("pMin", feature.name + "MinReg");
    Line("pMax", feature.name + "MaxReg");
    Line("Representation", "PureNumber");
    Close("Integer");
}

void Writer::SelectedInteger(Category& category) {
    GeneratedFeature& feature = Feature(category, "Selected", FeatureKind::Integer);
    feature.selector = category.selector;
    category.selected.push_back(feature.name);
    const std::uint64_t base = Allocate(std::size_t{8} * kSelectorEntries);
    for (std::uint32_t i = 0; i < kSelectorEntries; ++i) {
        Store(base + 8 * i, 4, 10 * i + 1);
    }
    Open("IntReg", feature.name);
    Describe(feature.name, 1);
    m_xml += "<pIndex Offset=\"8\">" + category.selector + "</pIndex>\n";
    Register(base, 4, "RW");
    SignAndEndianess(false);
    Close("IntReg");
}

void Writer::IndexedInteger(Category& category) {
    GeneratedFeature& feature = Feature(category, "Computed", FeatureKind::Integer);
    feature.selector = category.selector;
    category.selected.push_back(feature.name);
    const std::uint64_t base = Allocate(std::size_t{4} * kSelectorEntries);
    for (std::uint32_t i = 0; i < kSelectorEntries; ++i) {
        Store(base + 4 * i, 4, 7 * i + 2);
    }
    Open("IntSwissKnife", feature.name + "Address");
    Variable("SEL", category.selector);
    char formula[40];
    std::snprintf(formula, sizeof formula, "0x%llX + SEL * 4", static_cast<unsigned long long>(base));
    Line("Formula", formula);
    Close("IntSwissKnife");
    Open("IntReg", feature.name + "Reg");
    Line("pAddress", feature.name + "Address");
    Line("Length", "4");
    Line("AccessMode", "RW");
    Line("pPort", "Device");
    SignAndEndianess(false);
    Close("IntReg");
    Open("Integer", feature.name);
    Describe(feature.name, 1);
    Line("pInvalidator", category.selector);
    Line("pValue", feature.name + "Reg");
    Line("Min", "0");
    Line("Max", "255");
    Close("Integer");
}

void Writer::ConvertedInteger(Category& category) {
    GeneratedFeature& feature = Feature(category, "Steps", FeatureKind::Integer);
    feature.valueRegister = feature.name + "Reg";
    IntReg(feature.valueRegister, 4, 1 + Random(200));
    Open("IntConverter", feature.name);
    Describe(feature.name, 1);
    Conditions(category, feature, false);
    Line("FormulaTo", "FROM / 25");
    Line("FormulaFrom", "TO * 25");
    Line("pValue", feature.valueRegister);
    Line("Slope", "Increasing");
    Close("IntConverter");
}

void Writer::ComputedInteger(Category& category) {
    GeneratedFeature& feature = Feature(category, "Total", FeatureKind::Integer);
    const std::string a = feature.name + "FactorReg";
    IntReg(a, 4, 1 + Random(1000), "RO");
    Open("IntSwissKnife", feature.name);
    Describe(feature.name, Random(3));
    Variable("FACTOR", a);
    Variable("SIZE", "PixelSizeReg");
    Line("Formula", "(FACTOR &lt;= 500) ? FACTOR * SIZE / 8 : (FACTOR &amp; 0xFF) + 500");
    Line("Unit", "Byte");
    Close("IntSwissKnife");
}

void Writer::MaskedPair(Category& category) {
    const std::uint64_t address = Allocate(4);
    Store(address, 4, m_bigEndian ? 0x00A50017 : 0x001700A5);
    for (int half = 0; half < 2; ++half) {
        GeneratedFeature& feature = Feature(category, "Field", FeatureKind::Integer);
        Open("MaskedIntReg", feature.name);
        Describe(feature.name, 2);
        Register(address, 4, "RW");
        // Bit 0 is the most significant one of a big-endian register, and the least significant one of the
        // other.
        const std::uint64_t low = half == 0 ? 0 : 16;
        Line("LSB", m_bigEndian ? low + 15 : low);
        Line("MSB", m_bigEndian ? low : low + 15);
        SignAndEndianess(half != 0);
        Close("MaskedIntReg");
        feature.valueRegister = feature.name;
    }
}

void Writer::ConvertedFloat(Category& category) {
    GeneratedFeature& feature = Feature(category, "Time", FeatureKind::Float);
    feature.valueRegister = feature.name + "Raw";
    IntReg(feature.valueRegister, 4, 100 + Random(100000));
    Open("Converter", feature.name);
    Describe(feature.name, Random(2));
    Conditions(category, feature, true);
    Line("FormulaTo", "FROM * 10");
    Line("FormulaFrom", "TO / 10.0");
    Line("pValue", feature.valueRegister);
    Line("Unit", "us");
    Line("Representation", "Linear");
    Line("DisplayNotation", "Fixed");
    Line("DisplayPrecision", "1");
    Line("Slope", "Increasing");
    Close("Converter");
}

void Writer::RegisterFloat(Category& category) {
    GeneratedFeature& feature = Feature(category, "Gain", FeatureKind::Float);
    feature.valueRegister = feature.name + "Reg";
    const bool isDouble = Random(2) == 0;
    const double value = 0.25 * Random(100);
    std::uint64_t bits = 0;
    if (isDouble) {
        std::memcpy(&bits, &value, 8);
    } else {
        const float single = static_cast<float>(value);
        std::memcpy(&bits, &single, 4);
    }
    const std::size_t length = isDouble ? 8 : 4;
    const std::uint64_t address = Allocate(length);
    // On this little-endian machine the first four bytes of the 64 bits are the single's.
    Store(address, length, bits);
    Open("FloatReg", feature.valueRegister);
    Register(address, length, "RW");
    Endianess();
    Close("FloatReg");
    Open("Float", feature.name);
    Describe(feature.name, Random(2));
    Conditions(category, feature, true);
    Line("pValue", feature.valueRegister);
    Line("Min", "0");
    Line("Max", "48.0");
    Line("Unit", "dB");
    Line("Representation", "Logarithmic");
    Close("Float");
}

void Writer::ComputedFloat(Category& category) {
    GeneratedFeature& feature = Feature(category, "Temperature", FeatureKind::Float);
    const std::string raw = feature.name + "Raw";
    const std::uint64_t address = Allocate(4);
    Store(address, 4, 400 + Random(200));
    Open("IntReg", raw);
    Register(address, 4, "RO");
    Line("Cachable", "NoCache");
    Line("PollingTime", "1000");
    SignAndEndianess(false);
    Close("IntReg");
    Open("SwissKnife", feature.name);
    Describe(feature.name, 1);
    Variable("RAW", raw);
    Line("Formula", "RAW / 10.0 - 12.5");
    Line("Unit", "C");
    Close("SwissKnife");
}

void Writer::Enumeration(Category& category) {
    GeneratedFeature& feature = Feature(category, "Enum", FeatureKind::Enumeration);
    feature.valueRegister = feature.name + "Reg";
    const std::uint32_t entries = 2 + Random(11);
    IntReg(feature.valueRegister, 4, Random(entries));
    Open("Enumeration", feature.name);
    Describe(feature.name, Random(3));
    Conditions(category, feature, true);
    for (std::uint32_t i = 0; i < entries; ++i) {
        m_xml += "<EnumEntry Name=\"Choice" + std::to_string(i) + "\">\n";
        Line("ToolTip", "Choice " + std::to_string(i));
        // The entry that the register holds must be there; the last one may be missing.
        if (i + 1 == entries && entries > 3 && Random(2) == 0) {
            Store(m_next - 4, 4, 0);
            Line("pIsImplemented", category.mask + "3");
        }
        Line("Value", i);
        Close("EnumEntry");
    }
    Line("pValue", feature.valueRegister);
    Line("PollingTime", "2000");
    Close("Enumeration");
}

void Writer::Boolean(Category& category) {
    GeneratedFeature& feature = Feature(category, "Enable", FeatureKind::Boolean);
    feature.valueRegister = feature.name + "Reg";
    const std::uint64_t address = Allocate(4);
    Store(address, 4, Random(2) == 0 ? 0xFFFFFFFF : 0);
    Open("MaskedIntReg", feature.valueRegister);
    Register(address, 4, "RW");
    Line("Bit", Random(32));
    SignAndEndianess(false);
    Close("MaskedIntReg");
    Open("Boolean", feature.name);
    Describe(feature.name, Random(2));
    Conditions(category, feature, true);
    Line("pValue", feature.valueRegister);
    Line("OnValue", "1");
    Line("OffValue", "0");
    Close("Boolean");
}

void Writer::Command(Category& category) {
    GeneratedFeature& feature = Feature(category, "Execute", FeatureKind::Command);
    feature.valueRegister = feature.name + "Reg";
    IntReg(feature.valueRegister, 4, 0);
    Open("Command", feature.name);
    Describe(feature.name, Random(2));
    Conditions(category, feature, false);
    Line("pValue", feature.valueRegister);
    Line("CommandValue", "1");
    Line("PollingTime", "100");
    Close("Command");
}

void Writer::String(Category& category) {
    GeneratedFeature& feature = Feature(category, "Text", FeatureKind::String);
    const std::uint64_t address = Allocate(32);
    const std::string text = "Text " + std::to_string(m_camera.features.size());
    std::memcpy(&m_memory[address], text.data(), text.size());
    Open("StringReg", feature.name);
    Describe(feature.name, 0);
    Register(address, 32, "RW");
    Close("StringReg");
    feature.valueRegister = feature.name;
}

void Writer::RawRegister(Category& category) {
    GeneratedFeature& feature = Feature(category, "Block", FeatureKind::Register);
    const std::uint64_t address = Allocate(64);
    for (std::size_t i = 0; i < 64; ++i) {
        m_memory[address + i] = static_cast<std::uint8_t>(i * 3);
    }
    Open("Register", feature.name);
    Describe(feature.name, 2);
    Register(address, 64, "RW");
    Close("Register");
    feature.valueRegister = feature.name;
}

void Writer::AddFeature(Category& category, std::uint32_t kind) {
    using Method = void (Writer::*)(Category&);
    // In the shares that cameras have: many integers and enumerations, few strings and raw registers.
    static const Method kMix[] = {
        &Writer::PlainInteger,   &Writer::Enumeration,      &Writer::ConvertedFloat,
        &Writer::Boolean,        &Writer::LimitedInteger,   &Writer::Enumeration,
        &Writer::RegisterFloat,  &Writer::SelectedInteger,  &Writer::MaskedPair,
        &Writer::Enumeration,    &Writer::PlainInteger,     &Writer::ComputedInteger,
        &Writer::Command,        &Writer::ConvertedFloat,   &Writer::IndexedInteger,
        &Writer::Boolean,        &Writer::ConvertedInteger, &Writer::Enumeration,
        &Writer::ComputedFloat,  &Writer::PlainInteger,     &Writer::String,
        &Writer::LimitedInteger, &Writer::Enumeration,      &Writer::Boolean,
        &Writer::RawRegister,    &Writer::SelectedInteger,  &Writer::Command,
        &Writer::PlainInteger,
    };
    (this->*kMix[kind % std::size(kMix)])(category);
}

GeneratedCamera Writer::Run() {
    m_xml.reserve(m_options.features * 800 + 4096);
    // The methods hold references to the feature that they write.
    m_camera.features.reserve(m_options.features + 2 * kFeaturesPerCategory);
    Head();
    std::vector<Category> categories;
    while (m_camera.features.size() < m_options.features) {
        categories.emplace_back();
        Category& category = categories.back();
        BeginCategory(category, categories.size() - 1);
        for (std::uint32_t i = 0; category.members.size() + 1 < kFeaturesPerCategory &&
                                  m_camera.features.size() + 1 < m_options.features;
             ++i) {
            AddFeature(category, i);
        }
        EndCategory(category);
    }
    Tail(categories);
    m_camera.xml = std::move(m_xml);
    m_camera.memory = std::move(m_memory);
    return std::move(m_camera);
}

} // namespace

GeneratedCamera GenerateGenICamXml(const GenICamXmlOptions& options) {
    return Writer(options).Run();
}

} // namespace support
