// The XML against the registers: what it says of an address holds, every reference leads somewhere, and each
// way of breaking it on purpose breaks what it should.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"
#include "Device/XmlFile.h"
#include "VendorRegisters.h"

#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <pugixml.hpp>
#include <set>
#include <zip.h>

namespace {

using namespace vcam;

class Device {
public:
    explicit Device(const Config& config = {}) : model(config, faults, counters) {}
    FaultPanel faults;
    CounterBoard counters;
    DeviceModel model;
};

std::string Xml(Model model) {
    Config config;
    config.model = model;
    return Device(config).model.Xml();
}

bool IsRegister(const std::string& kind) {
    static const std::set<std::string> kinds = {"IntReg", "MaskedIntReg", "FloatReg", "StringReg",
                                                "Register"};
    return kinds.count(kind) != 0;
}

// Texts of the elements that name another node, those of enumeration entries included.
std::vector<std::string> ReferencesOf(const pugi::xml_node& node) {
    std::vector<std::string> references;
    for (const pugi::xml_node element : node) {
        const std::string name = element.name();
        if (name == "EnumEntry") {
            for (const std::string& reference : ReferencesOf(element))
                references.push_back(reference);
        } else if (name.size() > 1 && name[0] == 'p' && name[1] >= 'A' && name[1] <= 'Z') {
            references.push_back(element.child_value());
        }
    }
    return references;
}

class XmlOfModel : public testing::TestWithParam<Model> {
protected:
    void SetUp() override {
        config.model = GetParam();
        device = std::make_unique<Device>(config);
        ASSERT_TRUE(document.load_string(device->model.Xml().c_str()));
        root = document.child("RegisterDescription");
        for (const pugi::xml_node node : root)
            names.insert(node.attribute("Name").value());
    }
    // With every value of every index.
    std::vector<uint32_t> AddressesOf(const pugi::xml_node& node) const {
        std::vector<uint32_t> addresses = {
            static_cast<uint32_t>(std::stoul(node.child_value("Address"), nullptr, 0))};
        for (const pugi::xml_node index : node.children("pIndex")) {
            const std::string value = index.child_value();
            const pugi::xml_node selector =
                root.find_child_by_attribute("Name", value.substr(0, value.size() - 4).c_str());
            std::vector<uint32_t> values;
            for (const pugi::xml_node entry : selector.children("EnumEntry"))
                values.push_back(static_cast<uint32_t>(std::stoul(entry.child_value("Value"))));
            const int last = selector.child("Max").text().as_int(-1);
            for (int number = 0; number <= last; ++number)
                values.push_back(static_cast<uint32_t>(number));
            EXPECT_FALSE(values.empty()) << value;
            const uint32_t stride = index.attribute("Offset").as_uint(0);
            std::vector<uint32_t> all;
            for (const uint32_t address : addresses) {
                for (const uint32_t each : values)
                    all.push_back(address + each * stride);
            }
            addresses = all;
        }
        return addresses;
    }

    Config config;
    std::unique_ptr<Device> device;
    pugi::xml_document document;
    pugi::xml_node root;
    std::set<std::string> names;
};

TEST_P(XmlOfModel, NamesAreUnique) {
    std::set<std::string> seen;
    for (const pugi::xml_node node : root)
        EXPECT_TRUE(seen.insert(node.attribute("Name").value()).second) << node.attribute("Name").value();
}

TEST_P(XmlOfModel, EveryReferenceLeadsToANode) {
    for (const pugi::xml_node node : root) {
        for (const std::string& reference : ReferencesOf(node))
            EXPECT_EQ(names.count(reference), 1u) << node.attribute("Name").value() << " " << reference;
    }
}

TEST_P(XmlOfModel, EveryNodeIsReachedFromRoot) {
    std::set<std::string> reached = {"Root"};
    for (bool grown = true; grown;) {
        grown = false;
        for (const pugi::xml_node node : root) {
            if (reached.count(node.attribute("Name").value()) == 0)
                continue;
            for (const std::string& reference : ReferencesOf(node))
                grown = reached.insert(reference).second || grown;
        }
    }
    EXPECT_EQ(names, reached);
}

// Address, length and access mode as in the register space, for every value of the selectors that lead there.
TEST_P(XmlOfModel, RegistersAreWhereItSays) {
    unsigned checked = 0;
    for (const pugi::xml_node node : root) {
        if (!IsRegister(node.name()) || std::string(node.child_value("pPort")) != "Device")
            continue;
        const std::string name = node.attribute("Name").value();
        const auto length = std::stoul(node.child_value("Length"), nullptr, 0);
        const std::string access = node.child_value("AccessMode");
        // A part of a register may be closed although the rest is open, and a selector's value may lock.
        const bool masked = std::string(node.name()) == "MaskedIntReg";
        const bool locked = root.find_child_by_attribute("Name", name.substr(0, name.size() - 4).c_str())
                                .child("pIsLocked") != nullptr;
        for (const uint32_t at : AddressesOf(node)) {
            Bytes content(length);
            EXPECT_EQ(device->model.Memory().Read(at, content.data(), length), Status::Success)
                << name << " " << at;
            size_t written = 0;
            const Status status = device->model.Memory().Write(at, content.data(), length, written);
            if (access != "RO" && status == Status::WriteProtect) {
                EXPECT_TRUE(locked) << name;
            } else if (access != "RO") {
                EXPECT_EQ(status, Status::Success) << name << ": what is read can be written back";
            } else if (!masked) {
                EXPECT_EQ(status, Status::WriteProtect) << name;
            }
            ++checked;
        }
    }
    EXPECT_GT(checked, GetParam() == Model::Small ? 80u : 1200u);
}

TEST_P(XmlOfModel, ElementsStandInTheOrderOfTheSchema) {
    // A few orders that readers with a schema insist on.
    const std::vector<std::string> order = {"ToolTip",   "Visibility",     "pIsLocked", "EnumEntry",  "Value",
                                            "pValue",    "Address",        "Length",    "AccessMode", "pPort",
                                            "Cachable",  "PollingTime",    "LSB",       "MSB",        "Sign",
                                            "Endianess", "Formula",        "Min",       "Max",        "Inc",
                                            "Unit",      "Representation", "pSelected"};
    for (const pugi::xml_node node : root) {
        size_t last = 0;
        for (const pugi::xml_node element : node) {
            const auto found = std::find(order.begin(), order.end(), element.name());
            if (found == order.end())
                continue;
            const auto rank = static_cast<size_t>(found - order.begin());
            EXPECT_GE(rank, last) << node.attribute("Name").value() << " " << element.name();
            last = rank;
        }
    }
}

TEST_P(XmlOfModel, PixelFormatsFitTheModel) {
    const pugi::xml_node formats = root.find_child_by_attribute("Enumeration", "Name", "PixelFormat");
    unsigned colours = 0, monos = 0;
    for (const pugi::xml_node entry : formats.children("EnumEntry")) {
        const PixelFormat* format =
            FindPixelFormat(static_cast<uint32_t>(std::stoul(entry.child_value("Value"))));
        ASSERT_NE(format, nullptr);
        EXPECT_STREQ(format->name, entry.attribute("Name").value());
        ++(format->layout == Layout::Mono ? monos : colours);
    }
    EXPECT_EQ(monos, 5u);
    EXPECT_EQ(colours, GetParam() == Model::Colour ? 23u : 0u);
}

// What a person reads of each feature.
TEST_P(XmlOfModel, EveryFeatureIsExplained) {
    unsigned checked = 0;
    for (const pugi::xml_node category : root.children("Category")) {
        for (const pugi::xml_node listed : category.children("pFeature")) {
            const pugi::xml_node feature = root.find_child_by_attribute("Name", listed.child_value());
            if (std::string(feature.name()) == "Category")
                continue;
            const std::string name = listed.child_value();
            EXPECT_STRNE(feature.child_value("ToolTip"), "") << name;
            EXPECT_EQ(std::string(feature.child_value("Description")).find(feature.child_value("ToolTip")),
                      0u)
                << name;
            EXPECT_EQ(feature.child_value("DisplayName"), DisplayNameOf(name)) << name;
            ++checked;
        }
    }
    EXPECT_GT(checked, GetParam() == Model::Small ? 60u : 150u);
}

INSTANTIATE_TEST_SUITE_P(Models, XmlOfModel,
                         testing::Values(Model::Colour, Model::Mono, Model::LineScan, Model::Small),
                         [](const auto& test) { return std::string(TraitsOf(test.param).option); });

TEST(FeatureBuilder, NamesAreSplitIntoWords) {
    for (const auto& [name, words] :
         std::vector<std::pair<const char*, const char*>>{{"Width", "Width"},
                                                          {"ExposureTime", "Exposure Time"},
                                                          {"GevSCPSPacketSize", "Gev SCPS Packet Size"},
                                                          {"DeviceID", "Device ID"},
                                                          {"HDRGain", "HDR Gain"},
                                                          {"FrameSpecInfo_Reg", "Frame Spec Info Reg"},
                                                          {"Line0", "Line 0"},
                                                          {"UserSet1", "User Set 1"},
                                                          {"sRGB", "sRGB"},
                                                          {"AOI1", "AOI1"},
                                                          {"OffsetX", "Offset X"},
                                                          {"", ""}})
        EXPECT_EQ(DisplayNameOf(name), words);
}

TEST(XmlDocument, EscapesText) {
    EXPECT_EQ(EscapeXml("a<b>&\"c"), "a&lt;b&gt;&amp;&quot;c");
    Config config;
    config.manufacturer = "A&B";
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(Device(config).model.Xml().c_str()));
    EXPECT_STREQ(document.child("RegisterDescription").attribute("VendorName").value(), "A&B");
}

TEST(VendorRegisters, CountersFollowOneAnother) {
    Device device;
    device.counters.Update([](Counters& counters) {
        counters.framesStarted = 0x0102030405060708;
        counters.forcedAddresses = 9;
    });
    Bytes first(8);
    ASSERT_EQ(device.model.Memory().Read(kVendorCounters, first.data(), 8), Status::Success);
    EXPECT_EQ(first, (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    const uint32_t last = kVendorCounters + sizeof(Counters) - 8;
    Bytes bytes(8);
    ASSERT_EQ(device.model.Memory().Read(last, bytes.data(), 8), Status::Success);
    EXPECT_EQ(bytes, (Bytes{0, 0, 0, 0, 0, 0, 0, 9}));
    EXPECT_LT(last, kVendorLast);
}

TEST(VendorRegisters, FaultsAreSeenOnBothSides) {
    Device device;
    Faults faults;
    faults.lossPerMille = 17;
    faults.denyControl = true;
    device.faults.Set(faults);
    Bytes bytes(4);
    ASSERT_EQ(device.model.Memory().Read(kVendorLossPerMille, bytes.data(), 4), Status::Success);
    EXPECT_EQ(Get32(bytes.data()), 17u);
    ASSERT_EQ(device.model.Memory().Read(kVendorDenyControl, bytes.data(), 4), Status::Success);
    EXPECT_EQ(Get32(bytes.data()), 1u);
    size_t written = 0;
    Put32(bytes.data(), 3);
    ASSERT_EQ(device.model.Memory().Write(kVendorReorderPerMille, bytes.data(), 4, written), Status::Success);
    EXPECT_EQ(device.faults.Get().reorderPerMille, 3u);
    EXPECT_EQ(device.faults.Get().lossPerMille, 17u) << "the others stay";
    EXPECT_EQ(device.model.Memory().Write(kVendorDenyControl, bytes.data(), 4, written),
              Status::InvalidParameter);
}

TEST(VendorRegisters, SilenceEndsByItself) {
    Device device;
    Bytes bytes(4);
    Put32(bytes.data(), 60000);
    size_t written = 0;
    device.model.Memory().Write(kVendorSilenceMs, bytes.data(), 4, written);
    EXPECT_TRUE(device.faults.Silent());
    device.faults.SilenceUntil(Clock::now() - std::chrono::milliseconds(1));
    EXPECT_FALSE(device.faults.Silent());
    Put32(bytes.data(), 0xFFFFFFFF);
    device.model.Memory().Write(kVendorSilenceMs, bytes.data(), 4, written);
    EXPECT_TRUE(device.faults.Get().silent);
}

std::string Unzip(Bytes archive) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_buffer_create(archive.data(), archive.size(), 0, &error);
    zip_t* opened = zip_open_from_source(source, ZIP_RDONLY, &error);
    if (opened == nullptr) {
        zip_source_free(source);
        return "no archive";
    }
    const std::unique_ptr<zip_t, void (*)(zip_t*)> owner(opened, zip_discard);
    zip_file_t* file = zip_fopen_index(opened, 0, 0);
    std::string text;
    char buffer[4096];
    for (zip_int64_t got = 1; file != nullptr && got > 0;) {
        got = zip_fread(file, buffer, sizeof buffer);
        if (got > 0)
            text.append(buffer, static_cast<size_t>(got));
        if (got < 0)
            text = "damaged";
    }
    if (file != nullptr)
        zip_fclose(file);
    return text;
}

TEST(XmlFile, PlainAndZippedCarryTheSameText) {
    const std::string xml = Xml(Model::Colour);
    const XmlFile plain = MakeXmlFile(xml, false, XmlFault::None, 0x20000000);
    EXPECT_EQ(std::string(plain.content.begin(), plain.content.end()), xml);
    char expected[80];
    std::snprintf(expected, sizeof expected, "Local:kolt_virtual_camera.xml;20000000;%zX", xml.size());
    EXPECT_EQ(plain.location, expected);
    const XmlFile zipped = MakeXmlFile(xml, true, XmlFault::None, 0x20000000);
    EXPECT_EQ(Unzip(zipped.content), xml);
    EXPECT_LT(zipped.content.size(), xml.size() / 4);
    EXPECT_NE(zipped.location.find(".zip;20000000;"), std::string::npos);
}

struct BrokenCase {
    XmlFault fault;
    const char* name;
};

TEST(XmlFile, EachFaultBreaksWhatItShould) {
    const std::string xml = Xml(Model::Colour);
    const auto made = [&xml](XmlFault fault) { return MakeXmlFile(xml, false, fault, 0x20000000); };
    const auto parses = [](const XmlFile& file) {
        return bool(pugi::xml_document().load_buffer(file.content.data(), file.content.size()));
    };
    const auto announced = [](const XmlFile& file) {
        return std::stoul(file.location.substr(file.location.rfind(';') + 1), nullptr, 16);
    };
    EXPECT_TRUE(parses(made(XmlFault::None)));
    EXPECT_FALSE(parses(made(XmlFault::Truncated)));
    EXPECT_EQ(announced(made(XmlFault::Truncated)), made(XmlFault::Truncated).content.size());
    EXPECT_FALSE(parses(made(XmlFault::NotXml)));
    const XmlFile huge = made(XmlFault::Huge);
    EXPECT_TRUE(parses(huge));
    EXPECT_GT(huge.content.size(), size_t{24} << 20);
    EXPECT_EQ(made(XmlFault::HttpLocation).location.rfind("http://", 0), 0u);
    EXPECT_EQ(made(XmlFault::NoLocation).location, "");
    EXPECT_GT(announced(made(XmlFault::TooLong)), made(XmlFault::TooLong).content.size() + 1000000);
    const XmlFile badZip = made(XmlFault::BadZip);
    EXPECT_NE(Unzip(badZip.content), xml);
    EXPECT_EQ(std::memcmp(badZip.content.data(), "PK", 2), 0) << "still looks like an archive";
    EXPECT_TRUE(parses(made(XmlFault::Cyclic)));
    const XmlFile cyclic = made(XmlFault::Cyclic);
    EXPECT_NE(std::string(cyclic.content.begin(), cyclic.content.end()).find("<pValue>LoopB</pValue>"),
              std::string::npos);
}

TEST(XmlFile, FaultComesAndGoesInTheRegisters) {
    Device device;
    Faults faults;
    faults.xml = XmlFault::NotXml;
    device.faults.Set(faults);
    device.model.ApplyXmlFault();
    EXPECT_NE(device.model.Memory().GetBytes(feature::kXml)[0], '<');
    device.faults.Set({});
    device.model.ApplyXmlFault();
    EXPECT_EQ(device.model.Memory().GetBytes(feature::kXml)[0], '<');
}

TEST(DeviceModel, RefusesAConfigurationThatMakesNoCamera) {
    const auto with = [](auto change) {
        Config config;
        change(config);
        Device device(config);
    };
    EXPECT_THROW(with([](Config& c) { c.sensorWidth = 60; }), std::invalid_argument);
    EXPECT_THROW(with([](Config& c) { c.sensorWidth = 100; }), std::invalid_argument);
    EXPECT_THROW(with([](Config& c) { c.sensorHeight = 20000; }), std::invalid_argument);
    EXPECT_THROW(with([](Config& c) { c.pixelFormat = 5; }), std::invalid_argument);
    EXPECT_THROW(with([](Config& c) {
                     c.model = Model::Mono;
                     c.pixelFormat = 0x02180014;
                 }),
                 std::invalid_argument);
    EXPECT_THROW(with([](Config& c) { c.frameRate = 0; }), std::invalid_argument);
    EXPECT_THROW(with([](Config& c) { c.serial = ""; }), std::invalid_argument);
    EXPECT_THROW(with([](Config& c) { c.serial = "0123456789ABCDEF"; }), std::invalid_argument);
    EXPECT_NO_THROW(with([](Config& c) { c.serial = "0123456789ABCDE"; }));
}

TEST(DeviceModel, MacFollowsSerialNumberAndAddressUnlessGiven) {
    Config one, two, given;
    two.serial = "VC000002";
    given.mac = {2, 0, 0, 0, 0, 9};
    EXPECT_NE(Device(one).model.Mac(), Device(two).model.Mac());
    two.serial = one.serial;
    EXPECT_EQ(Device(one).model.Mac(), Device(two).model.Mac());
    two.address = "127.0.0.2";
    EXPECT_NE(Device(one).model.Mac(), Device(two).model.Mac());
    EXPECT_EQ(Device(one).model.Mac()[0] & 3, 2) << "locally administered, for one";
    EXPECT_EQ(Device(given).model.Mac(), given.mac);
}

} // namespace
