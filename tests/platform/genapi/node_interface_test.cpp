// What a node and a map tell of themselves, how nodes are found, and the callbacks.
#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <thread>

#include "platform/genapi/NodeMapFixture.h"

namespace {

using namespace genapi_test;

std::string names(const NodeList_t& nodes) {
    std::string all;
    for (INode* node : nodes)
        all += (all.empty() ? "" : " ") + node->GetName().str();
    return all;
}

TEST(NodeInterface, TellsWhatTheXmlSays) {
    Map map(R"(<Integer Name="Width" NameSpace="Standard">
<Extension><Integer Name="Inside"><Value>1</Value></Integer></Extension>
<ToolTip>Short</ToolTip><Description>Longer text</Description><DisplayName>Image Width</DisplayName>
<Visibility>Expert</Visibility><DocuURL>http://docu</DocuURL><IsDeprecated>Yes</IsDeprecated><EventID>9A</EventID>
<pAlias>Other</pAlias><pCastAlias>AsFloat</pCastAlias><Streamable>Yes</Streamable><Value>5</Value></Integer>
<Integer Name="Other"><ImposedVisibility>Guru</ImposedVisibility><Value>5</Value></Integer>
<Float Name="AsFloat"><pValue>Width</pValue></Float>)");
    const CNodePtr width = map.node("Width");
    EXPECT_STREQ("Width", width->GetName().c_str());
    EXPECT_STREQ("Std::Width", width->GetName(true).c_str());
    EXPECT_EQ(Standard, width->GetNameSpace());
    EXPECT_STREQ("Short", width->GetToolTip().c_str());
    EXPECT_STREQ("Longer text", width->GetDescription().c_str());
    EXPECT_STREQ("Image Width", width->GetDisplayName().c_str());
    EXPECT_EQ(Expert, width->GetVisibility());
    EXPECT_STREQ("http://docu", width->GetDocuURL().c_str());
    EXPECT_TRUE(width->IsDeprecated());
    EXPECT_STREQ("9A", width->GetEventID().c_str());
    EXPECT_TRUE(width->IsStreamable());
    EXPECT_STREQ("TestDevice", width->GetDeviceName().c_str());
    EXPECT_EQ(map.ref()._Ptr, width->GetNodeMap());
    EXPECT_EQ(static_cast<INode*>(map.node("Other")), width->GetAlias());
    EXPECT_EQ(static_cast<INode*>(map.node("AsFloat")), width->GetCastAlias());
    EXPECT_EQ(nullptr, map.ref()._GetNode("Inside")); // a maker's extension is passed over

    const CNodePtr other = map.node("Other");
    EXPECT_STREQ("Cust::Other", other->GetName(true).c_str());
    EXPECT_STREQ("Other", other->GetDisplayName().c_str());
    EXPECT_STREQ("", other->GetToolTip().c_str());
    EXPECT_EQ(Guru, other->GetVisibility());
    EXPECT_FALSE(other->IsDeprecated());
    EXPECT_FALSE(other->IsStreamable());
    EXPECT_EQ(nullptr, other->GetAlias());
    other->ImposeVisibility(Invisible);
    EXPECT_EQ(Invisible, other->GetVisibility());
    other->ImposeVisibility(Beginner);
    EXPECT_EQ(Guru, other->GetVisibility());
    EXPECT_THROW(other->ImposeVisibility(_UndefinedVisibility), InvalidArgumentException);
}

TEST(NodeInterface, GivesItsProperties) {
    Map map("<IntSwissKnife Name=\"X\"><pVariable Name=\"A\">I</pVariable><pVariable Name=\"B\">J</pVariable>"
            "<Constant Name=\"C\">2</Constant><Formula>A + B + C</Formula></IntSwissKnife>"
            "<Integer Name=\"I\"><Value>1</Value></Integer><Integer Name=\"J\"><Value>1</Value></Integer>");
    gcstring_vector propertyNames;
    map.node("X")->GetPropertyNames(propertyNames);
    EXPECT_EQ((gcstring_vector{"Name", "pVariable", "Constant", "Formula"}), propertyNames);
    gcstring value, attribute;
    EXPECT_TRUE(map.node("X")->GetProperty("pVariable", value, attribute));
    EXPECT_STREQ("I\tJ", value.c_str());
    EXPECT_STREQ("A\tB", attribute.c_str());
    EXPECT_TRUE(map.node("X")->GetProperty("Formula", value, attribute));
    EXPECT_STREQ("A + B + C", value.c_str());
    EXPECT_STREQ("", attribute.c_str());
    EXPECT_FALSE(map.node("X")->GetProperty("Unit", value, attribute));
    EXPECT_FALSE(map.node("X")->GetProperty("NoSuchThing", value, attribute));
}

TEST(NodeInterface, EachKindHasItsInterface) {
    const std::string reg = registerAt("0", 4) + "<Bit>0</Bit>";
    const std::string value = "<Value>0</Value>";
    const std::string computed =
        "<Formula>1</Formula><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>"
        "<pValue>I</pValue><CommandValue>1</CommandValue>";
    struct Kind {
        const char* kind;
        std::string inside;
        EInterfaceType type;
    };
    const Kind kinds[] = {
        {"Category", "", intfICategory},
        {"Integer", value, intfIInteger},
        {"IntReg", reg, intfIInteger},
        {"MaskedIntReg", reg, intfIInteger},
        {"IntSwissKnife", computed, intfIInteger},
        {"IntConverter", computed, intfIInteger},
        {"Float", value, intfIFloat},
        {"FloatReg", reg, intfIFloat},
        {"SwissKnife", computed, intfIFloat},
        {"Converter", computed, intfIFloat},
        {"Boolean", value, intfIBoolean},
        {"Command", computed, intfICommand},
        {"Enumeration", "<EnumEntry Name=\"A\">" + value + "</EnumEntry>" + value, intfIEnumeration},
        {"StringReg", reg, intfIString},
        {"String", value, intfIString},
        {"Register", reg, intfIRegister},
        {"Port", "", intfIPort},
        {"Node", "", intfIBase},
        {"ConfRom", "", intfIBase},
        {"TextDesc", "", intfIBase},
        {"IntKey", "", intfIBase},
        {"AdvFeatureLock", "", intfIBase},
        {"SmartFeature", "", intfIBase}};
    for (const Kind& kind : kinds) {
        Map map("<Integer Name=\"I\"><Value>1</Value></Integer><" + std::string(kind.kind) + " Name=\"X\">" +
                kind.inside + "</" + kind.kind + ">");
        INode* node = map.ref()._GetNode("X");
        ASSERT_NE(nullptr, node) << kind.kind;
        EXPECT_EQ(kind.type, node->GetPrincipalInterfaceType()) << kind.kind;
        EXPECT_EQ(kind.type == intfIInteger, CIntegerPtr(node).IsValid()) << kind.kind;
        EXPECT_EQ(kind.type == intfIFloat, CFloatPtr(node).IsValid()) << kind.kind;
        EXPECT_EQ(kind.type == intfIBoolean, CBooleanPtr(node).IsValid()) << kind.kind;
        EXPECT_EQ(kind.type == intfICommand, CCommandPtr(node).IsValid()) << kind.kind;
        EXPECT_EQ(kind.type == intfIEnumeration, CEnumerationPtr(node).IsValid()) << kind.kind;
        EXPECT_EQ(kind.type == intfIString, CStringPtr(node).IsValid()) << kind.kind;
        EXPECT_EQ(kind.type == intfICategory, CCategoryPtr(node).IsValid()) << kind.kind;
        EXPECT_EQ(kind.type == intfIPort, CPortPtr(node).IsValid()) << kind.kind;
        EXPECT_EQ(kind.inside == reg, CRegisterPtr(node).IsValid()) << kind.kind;
        EXPECT_EQ(kind.type != intfIBase && kind.type != intfIPort, CValuePtr(node).IsValid()) << kind.kind;
        EXPECT_TRUE(CNodePtr(node).IsValid());
        EXPECT_TRUE(CBasePtr(node).IsValid());
        // The same by way of the root interface, as from any other library.
        IBase* base = node;
        EXPECT_EQ(kind.type == intfIInteger, CIntegerPtr(base).IsValid()) << kind.kind;
        EXPECT_EQ(kind.type == intfIEnumeration, CEnumerationPtr(base).IsValid()) << kind.kind;
    }
}

TEST(NodeInterface, KnowsItsNeighbours) {
    Map map(
        intReg("Reg", "0x100", "<pInvalidator>Cmd</pInvalidator>") + intReg("Copy", "0x104") +
        "<Integer Name=\"Max\"><Value>9</Value></Integer>"
        "<Integer Name=\"X\"><pIsLocked>Max</pIsLocked><pValue>Reg</pValue><pValueCopy>Copy</pValueCopy>"
        "<pMax>Max</pMax><pSelected>Copy</pSelected></Integer><Float Name=\"Y\"><pValue>X</pValue></Float>"
        "<Command Name=\"Cmd\"><pValue>Copy</pValue><CommandValue>1</CommandValue></Command>");
    NodeList_t list;
    map.node("X")->GetChildren(list);
    EXPECT_EQ("Max Reg", names(list));
    map.node("X")->GetChildren(list, ctWritingChildren);
    EXPECT_EQ("Reg Copy", names(list));
    map.node("Reg")->GetChildren(list, ctInvalidatingChildren);
    EXPECT_EQ("Cmd", names(list));
    map.node("Reg")->GetChildren(list, ctReadingChildren);
    EXPECT_EQ("Device", names(list));
    map.node("Y")->GetChildren(list, ctTerminalNodes);
    EXPECT_EQ("Reg Copy", names(list));
    map.node("Max")->GetChildren(list, ctTerminalNodes);
    EXPECT_EQ("Max", names(list));
    map.node("Max")->GetChildren(list, ctDependingNodes);
    std::sort(list.begin(), list.end(), [](INode* a, INode* b) { return a->GetName() < b->GetName(); });
    EXPECT_EQ("Cmd Copy Reg X Y", names(list));
    map.node("Reg")->GetParents(list);
    EXPECT_EQ("X", names(list));
    map.node("Reg")->GetChildren(list, ctParentNodes);
    EXPECT_EQ("X", names(list));
}

TEST(NodeMapInterface, FindsByNameAndNameSpace) {
    Map map("<Integer Name=\"Width\" NameSpace=\"Standard\"><Value>1</Value></Integer>"
            "<Integer Name=\"Mine\" NameSpace=\"Custom\"><Value>1</Value></Integer>");
    EXPECT_STREQ("Width", map.ref()._GetNode("Std::Width")->GetName().c_str());
    EXPECT_STREQ("Mine", map.ref()._GetNode("Cust::Mine")->GetName().c_str());
    EXPECT_EQ(nullptr, map.ref()._GetNode("Cust::Width"));
    EXPECT_EQ(nullptr, map.ref()._GetNode("Std::Mine"));
    EXPECT_EQ(nullptr, map.ref()._GetNode("width"));
    EXPECT_EQ(nullptr, map.ref()._GetNode(""));
    EXPECT_EQ(nullptr, map.ref()._GetNode("Std::"));
    EXPECT_FALSE(CIntegerPtr(map.ref()._GetNode("Nobody")).IsValid());
    NodeList_t all;
    map.ref()._GetNodes(all);
    EXPECT_EQ("Device Width Mine", names(all));
    EXPECT_EQ(3U, map.ref()._Ptr->GetNumNodes());
}

TEST(NodeMapInterface, TellsOfTheDevice) {
    Map map("");
    const CNodeMapRef& ref = map.ref();
    EXPECT_STREQ("Model", ref._GetModelName().c_str());
    EXPECT_STREQ("Vendor", ref._GetVendorName().c_str());
    EXPECT_STREQ("Tip", ref._GetToolTip().c_str());
    EXPECT_STREQ("None", ref._GetStandardNameSpace().c_str());
    EXPECT_STREQ("P", ref._GetProductGuid().c_str());
    EXPECT_STREQ("V", ref._GetVersionGuid().c_str());
    EXPECT_STREQ("TestDevice", ref._GetDeviceName().c_str());
    GenICam_3_0::Version_t version;
    ref._GetSchemaVersion(version);
    EXPECT_EQ(1, version.Major);
    EXPECT_EQ(1, version.Minor);
    ref._GetDeviceVersion(version);
    EXPECT_EQ(2, version.Major);
    EXPECT_EQ(3, version.Minor);
    EXPECT_EQ(4, version.SubMinor);
    std::uint16_t build = 9;
    ref._GetGenApiVersion(version, build);
    EXPECT_EQ(3, version.Major);
    gcstring_vector versions;
    ref._GetSupportedSchemaVersions(versions);
    EXPECT_EQ((gcstring_vector{"1.0", "1.1"}), versions);
}

TEST(NodeMapReference, CountsItsHolds) {
    CNodeMapRef empty;
    EXPECT_EQ(nullptr, empty._Ptr);
    EXPECT_THROW(empty._GetNode("X"), LogicalErrorException);
    EXPECT_THROW(empty._GetModelName(), LogicalErrorException);
    empty._Destroy();
    const std::string xml = wrapXml("<Integer Name=\"X\"><Value>4</Value></Integer>");
    const CNodeMapFactory factory(ContentType_Xml, xml.data(), xml.size());
    CNodeMapRef first(factory.CreateNodeMap("Device"));
    {
        CNodeMapRef second(first);
        CNodeMapRef third;
        third = second;
        third = third;
        EXPECT_EQ(first._Ptr, third._Ptr);
        first._Destroy();
        EXPECT_EQ(nullptr, first._Ptr);
        EXPECT_EQ(4, CIntegerPtr(third._GetNode("X"))->GetValue());
        first = third;
    }
    EXPECT_EQ(4, CIntegerPtr(first._GetNode("X"))->GetValue());
    first = factory.CreateNodeMap();
    EXPECT_STREQ("Device", first._GetDeviceName().c_str());
}

// Callbacks

TEST(NodeCallbacks, TellOfEachChangeOnce) {
    Map map(intReg("Reg", "0x100") +
            "<Integer Name=\"X\"><pValue>Reg</pValue></Integer>"
            "<IntSwissKnife Name=\"K\"><pVariable Name=\"A\">X</pVariable>"
            "<pVariable Name=\"B\">Reg</pVariable><Formula>A + B</Formula></IntSwissKnife>" +
            intReg("Apart", "0x104"));
    int changes = 0;
    std::int64_t seen = -1;
    const CallbackHandleType handle = Register(map.node("K"), [&](INode* node) {
        ++changes;
        seen = CIntegerPtr(node)->GetValue();
    });
    map.integer("X")->SetValue(4);
    EXPECT_EQ(1, changes);
    EXPECT_EQ(8, seen);
    map.integer("Apart")->SetValue(4);
    EXPECT_EQ(1, changes);
    map.node("Reg")->InvalidateNode();
    EXPECT_EQ(2, changes);
    map.ref()._InvalidateNodes();
    EXPECT_EQ(3, changes);
    map.integer("X")->GetValue();
    EXPECT_EQ(3, changes);
    Deregister(handle);
    map.integer("X")->SetValue(5);
    EXPECT_EQ(3, changes);
    Deregister(nullptr);
    EXPECT_FALSE(map.node("X")->DeregisterCallback(nullptr));
    EXPECT_THROW(map.node("X")->RegisterCallback(nullptr), InvalidArgumentException);
    EXPECT_THROW(Register(nullptr, [](INode*) {}), LogicalErrorException);
}

// A neighbour in the same register is told too, whether its value is cached or not.
TEST(NodeCallbacks, TellThoseThatShareBytes) {
    Map map(intReg("Whole", "0x100") + "<MaskedIntReg Name=\"Bit\">" + registerAt("0x100") +
            "<Bit>0</Bit></MaskedIntReg>");
    int changes = 0;
    Register(map.node("Bit"), [&](INode*) { ++changes; });
    map.integer("Whole")->SetValue(1);
    EXPECT_EQ(1, changes);
}

class Listener {
public:
    void OnChange(INode* node) { m_names += node->GetName().str() + " "; }
    std::string m_names;
};

TEST(NodeCallbacks, MayBeMemberFunctions) {
    Map map("<Integer Name=\"X\"><Value>1</Value></Integer>");
    Listener listener;
    Register(map.node("X"), listener, &Listener::OnChange, cbPostOutsideLock);
    map.integer("X")->SetValue(2);
    EXPECT_EQ("X ", listener.m_names);
}

bool lockIsFree(CNodeMapRef& ref) {
    std::atomic<bool> free{false};
    std::thread other([&] {
        free = ref._Ptr->GetLock().TryLock();
        if (free)
            ref._Ptr->GetLock().Unlock();
    });
    other.join();
    return free;
}

TEST(NodeCallbacks, RunInsideOrOutsideOfTheLock) {
    Map map("<Integer Name=\"X\"><Value>1</Value></Integer>");
    std::string order;
    Register(
        map.node("X"), [&](INode*) { order += lockIsFree(map.ref()) ? "outside free " : "outside held "; },
        cbPostOutsideLock);
    Register(
        map.node("X"), [&](INode*) { order += lockIsFree(map.ref()) ? "inside free " : "inside held "; },
        cbPostInsideLock);
    map.integer("X")->SetValue(2);
    EXPECT_EQ("inside held outside free ", order);
}

TEST(NodeCallbacks, ThatThrowKeepNobodyFromHearing) {
    Map map("<Integer Name=\"X\"><Value>1</Value></Integer>");
    int heard = 0;
    Register(map.node("X"), [](INode*) { throw 5; });
    Register(map.node("X"), [&](INode*) { ++heard; });
    Register(
        map.node("X"), [](INode*) { throw std::runtime_error("x"); }, cbPostOutsideLock);
    Register(
        map.node("X"), [&](INode*) { ++heard; }, cbPostOutsideLock);
    map.integer("X")->SetValue(2);
    EXPECT_EQ(2, heard);
    EXPECT_TRUE(lockIsFree(map.ref()));
}

TEST(NodeCallbacks, MayWriteAndMayEndThemselves) {
    Map map("<Integer Name=\"X\"><Value>1</Value></Integer><Integer Name=\"Y\"><Value>0</Value></Integer>");
    int yChanges = 0;
    Register(map.node("Y"), [&](INode*) { ++yChanges; });
    CallbackHandleType handle = nullptr;
    handle = Register(map.node("X"), [&](INode*) {
        map.integer("Y")->SetValue(map.integer("X")->GetValue());
        Deregister(handle);
    });
    map.integer("X")->SetValue(7);
    map.integer("X")->SetValue(8);
    EXPECT_EQ(7, map.integer("Y")->GetValue());
    EXPECT_EQ(1, yChanges);
}

TEST(NodeCallbacks, ThatCallThemselvesComeToAnEnd) {
    Map map("<Integer Name=\"X\"><Value>1</Value></Integer>");
    int calls = 0;
    Register(map.node("X"), [&](INode*) {
        ++calls;
        map.integer("X")->SetValue(calls);
    });
    map.integer("X")->SetValue(5);
    EXPECT_GE(calls, 1);
    EXPECT_LE(calls, 100);
    EXPECT_EQ(calls, map.integer("X")->GetValue());
}

TEST(NodeCallbacks, RunAfterAFailedWriteToo) {
    Map map(intReg("Reg", "0x100"));
    int changes = 0;
    Register(map.node("Reg"), [&](INode*) { ++changes; });
    map.port.FailWrites(1);
    EXPECT_THROW(map.integer("Reg")->SetValue(1), RuntimeException);
    EXPECT_EQ(1, changes); // whether it was written is unknown
    EXPECT_THROW(map.integer("Reg")->SetValue(-1), OutOfRangeException);
    EXPECT_EQ(1, changes);
}

} // namespace
