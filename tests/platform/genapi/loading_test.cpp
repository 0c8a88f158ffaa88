// How an XML comes in: from memory and files, zipped, merged, padded, in other encodings; and what is
// refused.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

#include <unistd.h>

#include "platform/genapi/NodeMapFixture.h"

namespace {

using namespace genapi_test;

std::string loadError(const std::string& xml) {
    return thrown([&] {
        CNodeMapRef ref;
        ref._LoadXMLFromString(xml);
    });
}

std::int64_t valueOf(CNodeMapRef& ref, const char* name) {
    return CIntegerPtr(ref._GetNode(name))->GetValue();
}

const char* const kX = "<Integer Name=\"X\"><Value>4</Value></Integer>";

// A file in a folder of its own, gone at the end.
class TemporaryFile {
public:
    TemporaryFile(const std::string& name, const std::string& bytes) {
        char folder[] = "/tmp/kolt-genapi-XXXXXX";
        m_folder = ::mkdtemp(folder);
        m_path = m_folder + "/" + name;
        std::ofstream(m_path, std::ios::binary) << bytes;
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        std::remove(m_path.c_str());
        ::rmdir(m_folder.c_str());
    }
    const std::string& path() const { return m_path; }
    const std::string& folder() const { return m_folder; }
    std::string read() const {
        std::ifstream file(m_path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

private:
    std::string m_folder;
    std::string m_path;
};

TEST(Loading, FromMemoryAndFromAFile) {
    const std::string xml = wrapXml(kX);
    CNodeMapRef ref("Name");
    ref._LoadXMLFromString(xml);
    EXPECT_EQ(4, valueOf(ref, "X"));
    const TemporaryFile file("camera.xml", xml);
    ref._LoadXMLFromFile(file.path());
    EXPECT_EQ(4, valueOf(ref, "X"));
    EXPECT_STREQ("Name", ref._GetDeviceName().c_str());
    EXPECT_EQ("RuntimeException: the XML file '/nowhere/x.xml' can't be opened: No such file or directory",
              thrown([&] { ref._LoadXMLFromFile("/nowhere/x.xml"); }));
    EXPECT_THROW(ref._LoadXMLFromFile("/tmp"), RuntimeException);
    EXPECT_EQ(4, valueOf(ref, "X")); // the map held so far stays when another can't be loaded
}

TEST(Loading, TheFactoryIsCopiedAndTellsWhetherItHasAnXml) {
    CNodeMapFactory factory;
    EXPECT_FALSE(factory.IsLoaded());
    EXPECT_THROW(factory.CreateNodeMap(), LogicalErrorException);
    EXPECT_THROW(factory.AddInjectionData(factory), LogicalErrorException);
    const std::string xml = wrapXml(kX);
    factory = CNodeMapFactory(ContentType_Xml, xml.data(), xml.size());
    EXPECT_TRUE(factory.IsLoaded());
    CNodeMapRef one(factory.CreateNodeMap("One"));
    CNodeMapRef two(CNodeMapFactory(factory).CreateNodeMap("Two"));
    CIntegerPtr(one._GetNode("X"))->SetValue(9);
    EXPECT_EQ(4, valueOf(two, "X"));
    EXPECT_THROW(CNodeMapFactory(ContentType_Xml, nullptr, 4), InvalidArgumentException);
    EXPECT_THROW(CNodeMapFactory(ContentType_Xml, xml.data(), 0), InvalidArgumentException);
}

TEST(Loading, PaddingBehindTheXmlIsNothing) {
    CNodeMapRef ref;
    ref._LoadXMLFromString(wrapXml(kX) + std::string(37, '\0'));
    EXPECT_EQ(4, valueOf(ref, "X"));
    ref._LoadXMLFromString(wrapXml(kX) + std::string(" \r\n\0\0\n", 6));
    EXPECT_EQ(4, valueOf(ref, "X"));
}

std::string widen(const std::string& text, bool big, int bytes) {
    std::string wide;
    for (const char c : text)
        for (int i = 0; i < bytes; ++i)
            wide += i == (big ? bytes - 1 : 0) ? c : '\0';
    return wide;
}

TEST(Loading, OtherEncodingsAreUnderstood) {
    const std::string nodes = std::string(kX) + "<String Name=\"S\"><Value>\xB5s</Value></String>";
    std::string latin = wrapXml(nodes);
    latin.replace(latin.find("utf-8"), 5, "iso-8859-1");
    std::string plain = wrapXml(kX);
    plain.erase(0, plain.find('\n') + 1);
    const std::string bom = "\xEF\xBB\xBF";
    const std::string rows[] = {bom + plain,
                                widen(plain, false, 2),
                                widen(plain, true, 2),
                                "\xFF\xFE" + widen(plain, false, 2),
                                "\xFE\xFF" + widen(plain, true, 2),
                                widen(plain, false, 4),
                                widen(plain, true, 4),
                                latin};
    for (const std::string& xml : rows) {
        CNodeMapRef ref;
        ref._LoadXMLFromString(xml);
        EXPECT_EQ(4, valueOf(ref, "X"));
        EXPECT_STREQ("Vendor", ref._GetVendorName().c_str());
        if (&xml == &rows[7]) {
            EXPECT_STREQ("\xC2\xB5s", CStringPtr(ref._GetNode("S"))->GetValue().c_str());
        }
    }
}

TEST(Loading, BothSchemaVersionsAreUnderstood) {
    for (const char* minor : {"0", "1"}) {
        CNodeMapRef ref;
        ref._LoadXMLFromString(wrapXml(kX, minor));
        EXPECT_EQ(4, valueOf(ref, "X"));
        GenICam_3_0::Version_t version;
        ref._GetSchemaVersion(version);
        EXPECT_EQ(minor[0] - '0', version.Minor);
    }
    std::string two = wrapXml(kX);
    two.replace(two.find("SchemaMajorVersion=\"1\""), 22, "SchemaMajorVersion=\"2\"");
    EXPECT_EQ("RuntimeException: the XML follows schema 2.1; known are 1.0 and 1.1", loadError(two));
    two = wrapXml(kX, "one");
    EXPECT_EQ("RuntimeException: the XML's SchemaMinorVersion is 'one', which is no version number",
              loadError(two));
}

TEST(Loading, GroupsCommentsCdataAndPrefixesAreSeenThrough) {
    Map map("<!-- c --><Group Comment=\"G\"><Group Comment=\"H\"><Integer Name=\"X\"><!-- in "
            "--><Value>4</Value></Integer>"
            "</Group></Group><String Name=\"S\"><Value><![CDATA[a<b]]></Value></String>"
            "<g:Integer xmlns:g=\"urn:x\" Name=\"P\"><g:Value>5</g:Value></g:Integer>"
            "<Unheard Name=\"U\"><Of>1</Of></Unheard><Integer Name=\"Y\"><Unheard>1</Unheard><Value> 6 "
            "</Value></Integer>");
    EXPECT_EQ(4, map.integer("X")->GetValue());
    EXPECT_STREQ("a<b", map.string("S")->GetValue().c_str());
    EXPECT_EQ(5, map.integer("P")->GetValue());
    EXPECT_EQ(6, map.integer("Y")->GetValue());
    EXPECT_EQ(nullptr, map.ref()._GetNode("U"));
}

// Zipped

std::string zipped(const std::string& name, const std::string& xml, const std::string& otherFirst = {}) {
    const TemporaryFile source(name, xml);
    std::string command = "cd " + source.folder() + " && ";
    if (!otherFirst.empty())
        command += "echo nothing > " + otherFirst + " && zip -q -X archive.zip " + otherFirst + " && rm " +
                   otherFirst + " && ";
    command += "zip -q -X archive.zip " + name;
    EXPECT_EQ(0, std::system(command.c_str()));
    const std::string path = source.folder() + "/archive.zip";
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::remove(path.c_str());
    return bytes;
}

TEST(LoadingZipped, FromMemoryAndFromAFile) {
    const std::string zip = zipped("camera.xml", wrapXml(kX));
    CNodeMapRef ref;
    ref._LoadXMLFromZIPData(zip.data(), zip.size());
    EXPECT_EQ(4, valueOf(ref, "X"));
    const TemporaryFile file("camera.zip", zip);
    ref._LoadXMLFromZIPFile(file.path());
    EXPECT_EQ(4, valueOf(ref, "X"));
}

TEST(LoadingZipped, TheFileThatIsAnXmlCounts) {
    const std::string withReadme = zipped("camera.XML", wrapXml(kX), "readme.txt");
    CNodeMapRef ref;
    ref._LoadXMLFromZIPData(withReadme.data(), withReadme.size());
    EXPECT_EQ(4, valueOf(ref, "X"));
    const std::string otherName = zipped("camera.bin", wrapXml(kX));
    ref._LoadXMLFromZIPData(otherName.data(), otherName.size());
    EXPECT_EQ(4, valueOf(ref, "X"));
}

TEST(LoadingZipped, DamageIsNoticedWhereverItIs) {
    std::string body;
    for (int i = 0; i < 200; ++i)
        body += "<Integer Name=\"N" + std::to_string(i) + "\"><Value>" + std::to_string(i * i) +
                "</Value></Integer>";
    const std::string zip = zipped("camera.xml", wrapXml(body));
    CNodeMapRef ref;
    EXPECT_THROW(ref._LoadXMLFromZIPData("no archive", 10), RuntimeException);
    for (std::size_t cut = 1; cut < zip.size(); cut += zip.size() / 40)
        EXPECT_THROW(ref._LoadXMLFromZIPData(zip.data(), cut), RuntimeException) << cut;
    const std::size_t dataBegin = 40; // the local header and the name end here
    for (std::size_t at = dataBegin; at < dataBegin + 1000; at += 97) {
        std::string damaged = zip;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
        EXPECT_THROW(ref._LoadXMLFromZIPData(damaged.data(), damaged.size()), RuntimeException) << at;
    }
    EXPECT_EQ(nullptr, ref._Ptr);
}

// Merged

TEST(LoadingMerged, LaysOneXmlOverAnother) {
    CNodeMapRef ref;
    ref._LoadXMLFromStringInject(
        wrapXml("<Category Name=\"Root\"><pFeature>X</pFeature></Category>"
                "<Integer Name=\"X\"><ToolTip>Kept</ToolTip><Value>1</Value><Max>10</Max></Integer>"),
        wrapXml("<Category Name=\"Root\"><pFeature>X</pFeature><pFeature>New</pFeature></Category>"
                "<Integer Name=\"X\"><Value>5</Value></Integer><Integer "
                "Name=\"New\"><Value>7</Value></Integer>"));
    EXPECT_EQ(5, valueOf(ref, "X"));
    EXPECT_EQ(10, CIntegerPtr(ref._GetNode("X"))->GetMax());
    EXPECT_STREQ("Kept", ref._GetNode("X")->GetToolTip().c_str());
    EXPECT_EQ(7, valueOf(ref, "New"));
    FeatureList_t features;
    CCategoryPtr(ref._GetNode("Root"))->GetFeatures(features);
    EXPECT_EQ(2U, features.size());
}

TEST(LoadingMerged, ThePriorityDecides) {
    struct Row {
        const char* target;
        const char* injected;
        std::int64_t value;
        std::int64_t max;
    };
    const Row rows[] = {{"1", "0", 1, 10},
                        {"0", "-1", 1, 10},
                        {"0", "1", 5, INT64_MAX},
                        {"-1", "0", 5, INT64_MAX},
                        {"1", "1", 5, 10}};
    for (const Row& row : rows) {
        CNodeMapRef ref;
        ref._LoadXMLFromStringInject(wrapXml("<Integer Name=\"X\" MergePriority=\"" +
                                             std::string(row.target) +
                                             "\"><Value>1</Value><Max>10</Max></Integer>"),
                                     wrapXml("<Integer Name=\"X\" MergePriority=\"" +
                                             std::string(row.injected) + "\"><Value>5</Value></Integer>"));
        EXPECT_EQ(row.value, valueOf(ref, "X")) << row.target << row.injected;
        EXPECT_EQ(row.max, CIntegerPtr(ref._GetNode("X"))->GetMax());
    }
}

TEST(LoadingMerged, EntriesAndKindsAreReplaced) {
    const TemporaryFile target(
        "target.xml",
        wrapXml("<Enumeration Name=\"E\"><EnumEntry Name=\"A\"><Value>1</Value></EnumEntry>"
                "<Value>1</Value></Enumeration><Integer Name=\"K\"><Value>1</Value></Integer>"));
    const TemporaryFile inject(
        "inject.xml", wrapXml("<Enumeration Name=\"E\"><EnumEntry Name=\"B\"><Value>2</Value></EnumEntry>"
                              "</Enumeration><Float Name=\"K\"><Value>0.5</Value></Float>"));
    CNodeMapRef ref;
    ref._LoadXMLFromFileInject(target.path(), inject.path());
    gcstring_vector symbolics;
    CEnumerationPtr(ref._GetNode("E"))->GetSymbolics(symbolics);
    EXPECT_EQ((gcstring_vector{"A", "B"}), symbolics);
    EXPECT_EQ(0.5, CFloatPtr(ref._GetNode("K"))->GetValue());
}

// Refused

TEST(BadXml, IsRefusedWithAReason) {
    const std::string good = wrapXml(kX);
    EXPECT_EQ("RuntimeException: the XML is empty", loadError(std::string(5, '\0')));
    EXPECT_EQ("RuntimeException: the XML is empty", loadError(" \n"));
    EXPECT_EQ(
        "RuntimeException: the XML is no camera description: its root is <html>, not <RegisterDescription>",
        loadError("<html><body/></html>"));
    EXPECT_EQ("RuntimeException: the XML is not well formed: ", loadError("not an XML").substr(0, 46));
    EXPECT_EQ("RuntimeException: a <Integer> in the XML has no name (at byte ",
              loadError(wrapXml("<Integer><Value>1</Value></Integer>")).substr(0, 62));
    EXPECT_EQ(
        "RuntimeException: a <EnumEntry> in the XML has no name",
        loadError(wrapXml("<Enumeration Name=\"E\"><EnumEntry><Value>1</Value></EnumEntry></Enumeration>"))
            .substr(0, 54));
}

TEST(BadXml, CutOffAnywhereIsRefused) {
    const std::string good = wrapXml(
        "<Enumeration Name=\"E\"><EnumEntry Name=\"A\"><Value>1</Value></EnumEntry>"
        "<Value>1</Value></Enumeration><!-- c --><String Name=\"S\"><Value><![CDATA[x]]></Value></String>");
    const std::size_t end = good.find_last_not_of('\n');
    for (std::size_t cut = 1; cut < end; ++cut)
        EXPECT_EQ("RuntimeException", loadError(good.substr(0, cut)).substr(0, 16)) << cut;
}

TEST(BadXml, GroupsWithoutEndAreRefused) {
    std::string deep;
    for (int i = 0; i < 100000; ++i)
        deep += "<Group>";
    for (int i = 0; i < 100000; ++i)
        deep += "</Group>";
    EXPECT_EQ("RuntimeException: the XML nests groups deeper than 64", loadError(wrapXml(deep)));
    std::string elements;
    for (int i = 0; i < 100000; ++i)
        elements += "<a>";
    for (int i = 0; i < 100000; ++i)
        elements += "</a>";
    EXPECT_EQ("", loadError(wrapXml("<Integer Name=\"X\">" + elements + "<Value>1</Value></Integer>")));
}

// Dependencies that multiply are counted before memory is taken for them.
TEST(BadXml, AStructureThatMultipliesIsRefused) {
    std::string body = "<StructReg>" + registerAt("0");
    for (int i = 0; i < 3000; ++i)
        body += "<pInvalidator>X</pInvalidator>";
    for (int i = 0; i < 3000; ++i)
        body += "<StructEntry Name=\"N" + std::to_string(i) + "\"><Bit>0</Bit></StructEntry>";
    const std::string error = loadError(wrapXml(kX + body + "</StructReg>"));
    EXPECT_EQ("RuntimeException: node 'N", error.substr(0, 25));
    EXPECT_NE(std::string::npos, error.find("more than 4000000 properties"));
}

TEST(BadXml, InvalidatorsThatMultiplyAreRefused) {
    std::string body = "<Integer Name=\"Wide\"><pIndex>X</pIndex>";
    for (int i = 0; i < 5000; ++i)
        body +=
            "<pValueIndexed Index=\"" + std::to_string(i) + "\">I" + std::to_string(i) + "</pValueIndexed>";
    for (int i = 0; i < 4000; ++i)
        body += "<pInvalidator>X</pInvalidator>";
    body += "</Integer>";
    for (int i = 0; i < 5000; ++i)
        body += "<Integer Name=\"I" + std::to_string(i) + "\"><Value>1</Value></Integer>";
    EXPECT_EQ("RuntimeException: node 'X': the XML has more than 16000000 dependencies up to here",
              loadError(wrapXml(kX + body)));
}

TEST(BadXml, ANodeDefinedTwiceCannotBeUsed) {
    Map map(
        "<Integer Name=\"X\"><Value>1</Value></Integer><Integer Name=\"X\"><Value>2</Value></Integer>"
        "<Integer Name=\"Same\"><Value>1</Value></Integer><Integer Name=\"Same\"><Value>1</Value></Integer>"
        "<Integer Name=\"Kind\"><Value>1</Value></Integer><Float Name=\"Kind\"><Value>1</Value></Float>");
    EXPECT_EQ("PropertyException: node 'X': the XML defines it twice, in different ways",
              thrown([&] { map.integer("X")->GetValue(); }));
    EXPECT_THROW(map.mode("X"), PropertyException);
    EXPECT_THROW(map.mode("Kind"), PropertyException);
    EXPECT_EQ(1, map.integer("Same")->GetValue()); // said twice, and the same both times
}

struct FaultRow {
    const char* what;
    const char* xml; // defines "X"
    const char* problem;
};

class FaultyNode : public testing::TestWithParam<FaultRow> {};

TEST_P(FaultyNode, IsRefusedAtUseAndLeavesTheOthersAlone) {
    Map map(std::string(GetParam().xml) + "<Integer Name=\"Good\"><Value>1</Value></Integer>");
    const std::string expected = std::string("PropertyException: node 'X': ") + GetParam().problem;
    EXPECT_EQ(expected, thrown([&] { map.mode("X"); }));
    EXPECT_EQ(expected, thrown([&] { map.value("X")->ToString(); }));
    EXPECT_EQ(expected, thrown([&] { map.value("X")->FromString("1", false); }));
    EXPECT_EQ(1, map.integer("Good")->GetValue());
    EXPECT_EQ(0U, map.port.Reads() + map.port.Writes());
}

#define REG_X(inside) "<IntReg Name=\"X\">" inside "</IntReg>"
#define MASK_X(inside)                                                                                       \
    "<MaskedIntReg "                                                                                         \
    "Name=\"X\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</"            \
    "pPort>" inside "</MaskedIntReg>"

INSTANTIATE_TEST_SUITE_P(
    Rows, FaultyNode,
    testing::Values(
        FaultRow{"noValue", "<Integer Name=\"X\"/>", "it has neither Value nor pValue"},
        FaultRow{"unknownNode", "<Integer Name=\"X\"><pValue>Nobody</pValue></Integer>",
                 "pValue names 'Nobody', which doesn't exist"},
        FaultRow{"emptyReference", "<Integer Name=\"X\"><pValue></pValue></Integer>",
                 "pValue names '', which doesn't exist"},
        FaultRow{"wrongKind", "<Integer Name=\"X\"><pValue>C</pValue></Integer><Category Name=\"C\"/>",
                 "pValue names 'C', which is of the kind Category and no number"},
        FaultRow{"commandAsNumber", "<Integer Name=\"X\"><pValue>C</pValue></Integer><Command Name=\"C\"/>",
                 "pValue names 'C', which is of the kind Command and no number"},
        FaultRow{"stringAsNumber", "<Float Name=\"X\"><pValue>C</pValue></Float><String Name=\"C\"/>",
                 "pValue names 'C', which is of the kind String and no number"},
        FaultRow{"numberAsString", "<String Name=\"X\"><pValue>Good</pValue></String>",
                 "pValue names 'Good', which is of the kind Integer and no text"},
        FaultRow{"unknownLimit", "<Integer Name=\"X\"><Value>1</Value><pMax>Nobody</pMax></Integer>",
                 "pMax names 'Nobody', which doesn't exist"},
        FaultRow{"unknownCondition",
                 "<Integer Name=\"X\"><pIsAvailable>Nobody</pIsAvailable><Value>1</Value></Integer>",
                 "pIsAvailable names 'Nobody', which doesn't exist"},
        FaultRow{"unknownLock", "<Integer Name=\"X\"><pIsLocked>Nobody</pIsLocked><Value>1</Value></Integer>",
                 "pIsLocked names 'Nobody', which doesn't exist"},
        FaultRow{"notANumber", "<Integer Name=\"X\"><Value>one</Value></Integer>",
                 "Value is 'one', which is no integer"},
        FaultRow{"fraction", "<Integer Name=\"X\"><Value>1.5</Value></Integer>",
                 "Value is '1.5', which is no integer"},
        FaultRow{"tooLarge", "<Integer Name=\"X\"><Value>18446744073709551616</Value></Integer>",
                 "Value is '18446744073709551616', which is no integer"},
        FaultRow{"badFloat", "<Float Name=\"X\"><Value>1,5</Value></Float>",
                 "Value is '1,5', which is no number"},
        FaultRow{"badSet", "<Integer Name=\"X\"><Value>1</Value><ValidValueSet>1;a</ValidValueSet></Integer>",
                 "ValidValueSet is '1;a', which is no list of integers"},
        FaultRow{"setWithNaN",
                 "<Float Name=\"X\"><Value>1</Value><ValidValueSet>1;NaN;2</ValidValueSet></Float>",
                 "ValidValueSet is '1;NaN;2', which is no list of numbers"},
        FaultRow{"badFloatSet", "<Float Name=\"X\"><Value>1</Value><ValidValueSet></ValidValueSet></Float>",
                 "ValidValueSet is '', which is no list of numbers"},
        FaultRow{"indexedWithoutIndex",
                 "<Integer Name=\"X\"><ValueIndexed Index=\"0\">1</ValueIndexed></Integer>",
                 "it has indexed values and no pIndex"},
        FaultRow{
            "indexNotANumber",
            "<Integer Name=\"X\"><pIndex>Good</pIndex><ValueIndexed Index=\"a\">1</ValueIndexed></Integer>",
            "ValueIndexed has the index 'a', which is no integer"},
        FaultRow{"badImposed",
                 "<Integer Name=\"X\"><Value>1</Value><ImposedAccessMode>R</ImposedAccessMode></Integer>",
                 "ImposedAccessMode is 'R', which is no access mode"},
        FaultRow{"badVisibility",
                 "<Integer Name=\"X\"><Value>1</Value><Visibility>Nobody</Visibility></Integer>",
                 "Visibility is 'Nobody', which is no visibility"},
        FaultRow{"noPort", REG_X("<Address>0</Address><Length>4</Length>"), "pPort is missing"},
        FaultRow{"unknownPort", REG_X("<Address>0</Address><Length>4</Length><pPort>Nobody</pPort>"),
                 "pPort names 'Nobody', which doesn't exist"},
        FaultRow{"portOfAnotherKind", REG_X("<Address>0</Address><Length>4</Length><pPort>Good</pPort>"),
                 "pPort names 'Good', which is of the kind Integer and no port"},
        FaultRow{"noLength", REG_X("<Address>0</Address><pPort>Device</pPort>"), "Length is missing"},
        FaultRow{"zeroLength", REG_X("<Address>0</Address><Length>0</Length><pPort>Device</pPort>"),
                 "a length of 0 bytes is absurd"},
        FaultRow{"negativeLength", REG_X("<Address>0</Address><Length>-4</Length><pPort>Device</pPort>"),
                 "a length of -4 bytes is absurd"},
        FaultRow{"hugeLength",
                 REG_X("<Address>0</Address><Length>0x7FFFFFFFFFFFFFFF</Length><pPort>Device</pPort>"),
                 "a length of 9223372036854775807 bytes is absurd"},
        FaultRow{
            "badAccess",
            REG_X("<Address>0</Address><Length>4</Length><AccessMode>rw</AccessMode><pPort>Device</pPort>"),
            "AccessMode is 'rw', which is no access mode"},
        FaultRow{"badCaching",
                 REG_X("<Address>0</Address><Length>4</Length><pPort>Device</pPort><Cachable>Yes</Cachable>"),
                 "Cachable is 'Yes', which is no caching mode"},
        FaultRow{
            "badOrder",
            REG_X("<Address>0</Address><Length>4</Length><pPort>Device</pPort><Endianess>Middle</Endianess>"),
            "Endianess is 'Middle', which is no byte order"},
        FaultRow{"badSign",
                 REG_X("<Address>0</Address><Length>4</Length><pPort>Device</pPort><Sign>No</Sign>"),
                 "Sign is 'No', which is no sign"},
        FaultRow{"noBits", MASK_X(""), "its bits are not given, or not within 0 to 63"},
        FaultRow{"halfTheBits", MASK_X("<LSB>0</LSB>"), "its bits are not given, or not within 0 to 63"},
        FaultRow{"negativeBit", MASK_X("<Bit>-1</Bit>"), "its bits are not given, or not within 0 to 63"},
        FaultRow{"bitBeyond64", MASK_X("<LSB>0</LSB><MSB>64</MSB>"),
                 "its bits are not given, or not within 0 to 63"}),
    [](const auto& row) { return row.param.what; });

TEST(FaultyNodes, ABitOutsideOfTheRegisterIsRefused) {
    Map map(MASK_X("<Bit>32</Bit>"));
    EXPECT_EQ("PropertyException: node 'X': a register of 4 bytes doesn't hold its integer",
              thrown([&] { map.integer("X")->GetValue(); }));
    EXPECT_THROW(map.integer("X")->GetMax(), PropertyException);
    EXPECT_THROW(map.integer("X")->SetValue(0, false), PropertyException);
}

// Whoever stands on a faulty node hears of its fault, by its name.
TEST(FaultyNodes, AreNamedByThoseWhoStandOnThem) {
    Map map("<Integer Name=\"X\"><pValue>Bad</pValue></Integer><Integer "
            "Name=\"Bad\"><pValue>Nobody</pValue></Integer>"
            "<Integer Name=\"Limited\"><Value>1</Value><pMax>Bad</pMax></Integer>");
    EXPECT_EQ("PropertyException: node 'Bad': pValue names 'Nobody', which doesn't exist",
              thrown([&] { map.integer("X")->GetValue(); }));
    EXPECT_THROW(map.integer("X")->SetValue(1, false), PropertyException);
    EXPECT_THROW(map.integer("X")->GetMin(), PropertyException);
    EXPECT_THROW(map.integer("Limited")->SetValue(1), PropertyException);
    EXPECT_EQ(1, map.integer("Limited")->GetValue());
}

class Cycle : public testing::TestWithParam<FaultRow> {};

TEST_P(Cycle, IsAnErrorAndNoHang) {
    Map map(GetParam().xml);
    const CValuePtr x = map.value("X");
    EXPECT_EQ(std::string("RuntimeException: node '") + GetParam().problem + " depends on itself",
              thrown([&] { x->ToString(); }));
    EXPECT_THROW(x->FromString("1"), GenericException);
    EXPECT_THROW(x->FromString("1", false), GenericException);
    if (const CIntegerPtr integer{map.node("X")}; integer.IsValid()) {
        for (const auto& ask : {&IInteger::GetMin, &IInteger::GetMax, &IInteger::GetInc})
            thrown([&] { ((*integer).*ask)(); });
        thrown([&] { integer->GetListOfValidValues(); });
        thrown([&] { integer->GetUnit(); });
        thrown([&] { integer->GetRepresentation(); });
    }
    map.node("X")->InvalidateNode();
    map.node("X")->GetCachingMode();
    NodeList_t list;
    for (const ELinkType type : {ctParentNodes, ctReadingChildren, ctWritingChildren, ctInvalidatingChildren,
                                 ctDependingNodes, ctTerminalNodes})
        map.node("X")->GetChildren(list, type);
    EXPECT_EQ(1, map.integer("Good")->GetValue());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Cycle,
    testing::Values(
        FaultRow{"valueOfItself",
                 "<Integer Name=\"Good\"><Value>1</Value></Integer>"
                 "<Integer Name=\"X\"><pValue>X</pValue></Integer>",
                 "X': its access mode"},
        FaultRow{"valuesOfTwo",
                 "<Integer Name=\"Good\"><Value>1</Value></Integer>"
                 "<Integer Name=\"X\"><pValue>Y</pValue></Integer>"
                 "<Integer Name=\"Y\"><pValue>X</pValue></Integer>",
                 "X': its access mode"},
        FaultRow{"floats",
                 "<Integer Name=\"Good\"><Value>1</Value></Integer>"
                 "<Float Name=\"X\"><pValue>Y</pValue></Float><Float Name=\"Y\"><pValue>X</pValue></Float>",
                 "X': its access mode"},
        FaultRow{"formulas",
                 "<Integer Name=\"Good\"><Value>1</Value></Integer>"
                 "<IntSwissKnife Name=\"X\"><pVariable "
                 "Name=\"V\">Y</pVariable><Formula>V</Formula></IntSwissKnife>"
                 "<IntSwissKnife Name=\"Y\"><pVariable "
                 "Name=\"V\">X</pVariable><Formula>V</Formula></IntSwissKnife>",
                 "X': its access mode"},
        FaultRow{"addresses",
                 "<Integer Name=\"Good\"><Value>1</Value></Integer>"
                 "<IntReg Name=\"X\"><pAddress>X</pAddress><Length>4</Length><AccessMode>RW</AccessMode>"
                 "<pPort>Device</pPort></IntReg>",
                 "X': its access mode"},
        FaultRow{"index",
                 "<Integer Name=\"Good\"><Value>1</Value></Integer>"
                 "<Integer Name=\"X\"><pIndex>X</pIndex><ValueDefault>1</ValueDefault></Integer>",
                 "X': its access mode"},
        FaultRow{
            "strings",
            "<Integer Name=\"Good\"><Value>1</Value></Integer>"
            "<String Name=\"X\"><pValue>Y</pValue></String><String Name=\"Y\"><pValue>X</pValue></String>",
            "X': its access mode"},
        FaultRow{"converters",
                 "<Integer Name=\"Good\"><Value>1</Value></Integer>"
                 "<Converter Name=\"X\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>"
                 "<pValue>X</pValue></Converter>",
                 "X': its access mode"}),
    [](const auto& row) { return row.param.what; });

TEST(Cycles, OfLimitsAreErrorsAtTheLimit) {
    Map map("<Integer Name=\"X\"><Value>1</Value><pMax>K</pMax></Integer>"
            "<IntSwissKnife Name=\"K\"><pVariable "
            "Name=\"V.Max\">X</pVariable><Formula>V.Max</Formula></IntSwissKnife>"
            "<Integer Name=\"Y\"><Value>5</Value><Min>2</Min><pMax>L</pMax></Integer>"
            "<IntSwissKnife Name=\"L\"><pVariable Name=\"V\">Y</pVariable><Formula>V + "
            "V.Min</Formula></IntSwissKnife>");
    EXPECT_EQ("RuntimeException: node 'X': its range depends on itself",
              thrown([&] { map.integer("X")->GetMax(); }));
    EXPECT_THROW(map.integer("X")->SetValue(2), RuntimeException);
    EXPECT_EQ(1, map.integer("X")->GetValue());
    EXPECT_EQ(7, map.integer("Y")->GetMax()); // its own value and minimum are no circle
}

TEST(Cycles, OfCopiesAreErrors) {
    Map map("<Integer Name=\"X\"><Value>1</Value><pValueCopy>X</pValueCopy></Integer>");
    EXPECT_THROW(map.integer("X")->SetValue(2, false), RuntimeException);
    EXPECT_THROW(map.integer("X")->SetValue(2), RuntimeException);
}

TEST(Chains, ThatAreAbsurdlyLongAreErrors) {
    std::string body = "<Integer Name=\"N0\"><Value>1</Value></Integer>";
    for (int i = 1; i <= 100000; ++i)
        body += "<Integer Name=\"N" + std::to_string(i) + "\"><pValue>N" + std::to_string(i - 1) +
                "</pValue></Integer>";
    Map map(body);
    EXPECT_EQ(1, map.integer("N100")->GetValue());
    EXPECT_EQ("RuntimeException: node 'N99800' is reached through more than 200 other nodes",
              thrown([&] { map.integer("N100000")->GetValue(); }));
    for (const auto& ask : {&IInteger::GetMin, &IInteger::GetMax, &IInteger::GetInc})
        EXPECT_THROW(((*map.integer("N100000")).*ask)(), RuntimeException);
    EXPECT_THROW(map.integer("N100000")->SetValue(1, false), RuntimeException);
    map.node("N100000")->InvalidateNode();
    map.integer("N0")->SetValue(2);
    EXPECT_EQ(2, map.integer("N100")->GetValue());
}

} // namespace
