// pError: after a write the camera is asked whether it took it.
#include <gmock/gmock.h>

#include <functional>

#include "RuleMap.h"

namespace rules {
namespace {

using GenICam_3_0::GenericException;
using GenICam_3_0::RuntimeException;

const char kErrors[] = "<EnumEntry Name=\"Fine\"><Value>0</Value></EnumEntry>"
                       "<EnumEntry Name=\"TooBright\"><Value>3</Value></EnumEntry>"
                       "<EnumEntry Name=\"NoError\"><Value>9</Value></EnumEntry>";

// A register of 4 bytes at 0x100 and the camera's error at 0x200.
std::string Camera(const std::string& more) {
    return Reg("Reg", 0x100) + Reg("ErrorReg", 0x200) +
           Node("Enumeration", "Error", std::string(kErrors) + "<pValue>ErrorReg</pValue>") + more;
}

std::string Feature(const std::string& error = "Error") {
    return Node("Integer", "Exposure", "<pError>" + error + "</pError><pValue>Reg</pValue>");
}

std::string TextOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const RuntimeException& error) {
        return error.GetDescription();
    } catch (const GenericException& error) {
        return std::string("another class: ") + error.what();
    }
    return {};
}

TEST(ErrorRule, AWriteThatTheCameraReportsAsFailedThrowsWithTheErrorsName) {
    RuleMap rule(Camera(Feature()));
    rule.Put(0x200, 3);
    EXPECT_EQ(TextOf([&] { rule.Int("Exposure")->SetValue(50); }),
              "node 'Exposure' was set to 50, and node 'Error' reports error 3 'TooBright'");
    EXPECT_EQ(TextOf([&] { rule.Int("Exposure")->SetValue(50, false); }),
              "node 'Exposure' was set to 50, and node 'Error' reports error 3 'TooBright'")
        << "an error of the camera is no check that can be waived";
    EXPECT_EQ(TextOf([&] { rule.Value("Exposure")->FromString("51"); }),
              "node 'Exposure' was set to 51, and node 'Error' reports error 3 'TooBright'");
}

struct Row {
    const char* what;
    const char* error; // the node that pError names
    std::uint64_t code;
    const char* text; // empty: no error
};

TEST(ErrorRule, WhichValuesAreErrors) {
    const std::string others =
        Node("Integer", "Code", "<pValue>ErrorReg</pValue>") +
        Node("Boolean", "Failed", "<pValue>ErrorReg</pValue>") +
        Node("IntSwissKnife", "High",
             "<pVariable Name=\"E\">ErrorReg</pVariable><Formula>E &gt; 7</Formula>") +
        Node("Float", "Part", "<pValue>ErrorReg</pValue>") + Node("String", "Words", "<Value>x</Value>") +
        Node("Enumeration", "Missing",
             std::string(kErrors) + "<pIsImplemented>Never</pIsImplemented><pValue>ErrorReg</pValue>") +
        Node("Integer", "Never", "<Value>0</Value>");
    const Row rows[] = {
        {"0", "Error", 0, ""},
        {"an entry", "Error", 3, "node 'Error' reports error 3 'TooBright'"},
        {"a name that tells of none", "Error", 9, ""},
        {"a number without an entry", "Error", 77, "node 'Error' reports error 77"},
        {"integer, 0", "Code", 0, ""},
        {"integer", "Code", 5, "node 'Code' reports error 5"},
        {"boolean, false", "Failed", 0, ""},
        {"boolean", "Failed", 1, "node 'Failed' reports error 1"},
        {"formula, false", "High", 7, ""},
        {"formula", "High", 8, "node 'High' reports error 1"},
        {"float", "Part", 2, "node 'Part' reports error 2"},
        {"not implemented", "Missing", 3, ""},
        {"no number", "Words", 3, ""},
        {"nothing of that name", "Gone", 3, ""},
    };
    for (const Row& row : rows) {
        RuleMap rule(Camera(others + Feature(row.error)));
        rule.Put(0x200, row.code);
        const std::string text = TextOf([&] { rule.Int("Exposure")->SetValue(50); });
        EXPECT_EQ(text,
                  *row.text == '\0' ? "" : std::string("node 'Exposure' was set to 50, and ") + row.text)
            << row.what;
        EXPECT_EQ(rule.Memory(0x100), 50U) << row.what;
    }
}

TEST(ErrorRule, NamesThatMeanNoError) {
    for (const char* name : {"NoError", "No_Error", "None", "Ok", "OK", "Success"}) {
        RuleMap rule(Reg("Reg", 0x100) + Reg("ErrorReg", 0x200) +
                     Node("Enumeration", "Error",
                          "<EnumEntry Name=\"" + std::string(name) +
                              "\"><Value>1</Value></EnumEntry><pValue>ErrorReg</pValue>") +
                     Feature());
        rule.Put(0x200, 1);
        EXPECT_EQ(TextOf([&] { rule.Int("Exposure")->SetValue(50); }), "") << name;
    }
}

TEST(ErrorRule, EveryKindOfNodeThatIsWrittenAsks) {
    const std::string error = "<pError>Error</pError>";
    const std::string nodes =
        Camera(Node("FloatReg", "FloatReg", At(0x108, 8) + error) +
               Node("StringReg", "StringReg", At(0x120, 16) + error) +
               Node("Register", "Raw", At(0x140, 4) + error) + Reg("IntReg", 0x150, error) +
               Node("MaskedIntReg", "Masked", At(0x150) + error + "<LSB>4</LSB><MSB>7</MSB>") +
               Node("Integer", "Constant", error + "<Value>1</Value>") +
               Node("Float", "Float", error + "<pValue>Reg</pValue>") +
               Node("Boolean", "Boolean", error + "<pValue>Reg</pValue>") +
               Node("Command", "Command", error + "<pValue>Reg</pValue><CommandValue>1</CommandValue>") +
               Node("Enumeration", "Mode",
                    error + "<EnumEntry Name=\"On\"><Value>1</Value></EnumEntry><pValue>Reg</pValue>") +
               Node("String", "String", error + "<Value>x</Value>") +
               Node("IntConverter", "Converter",
                    error + "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>Reg</pValue>"));
    const std::pair<const char*, std::function<void(RuleMap&)>> rows[] = {
        {"node 'FloatReg' was set to 0.5, and ", [](RuleMap& r) { r.Float("FloatReg")->SetValue(0.5); }},
        {"node 'StringReg' was set to 'a', and ", [](RuleMap& r) { r.String("StringReg")->SetValue("a"); }},
        {"node 'Raw' was written, and ", [](RuleMap& r) { r.Value("Raw")->FromString("0x01020304"); }},
        {"node 'Raw' was written, and ",
         [](RuleMap& r) {
             const std::uint8_t bytes[4] = {};
             r.Register("Raw")->Set(bytes, 4);
         }},
        {"node 'IntReg' was set to 4, and ", [](RuleMap& r) { r.Int("IntReg")->SetValue(4); }},
        {"node 'Masked' was set to 5, and ", [](RuleMap& r) { r.Int("Masked")->SetValue(5); }},
        {"node 'Constant' was set to 6, and ", [](RuleMap& r) { r.Int("Constant")->SetValue(6); }},
        {"node 'Float' was set to 7, and ", [](RuleMap& r) { r.Float("Float")->SetValue(7); }},
        {"node 'Boolean' was set to 1, and ", [](RuleMap& r) { r.Bool("Boolean")->SetValue(true); }},
        {"node 'Command' was executed, and ", [](RuleMap& r) { r.Command("Command")->Execute(); }},
        {"node 'Mode' was set to 1 ('On'), and ", [](RuleMap& r) { r.Enum("Mode")->SetIntValue(1); }},
        {"node 'String' was set to 'b', and ", [](RuleMap& r) { r.String("String")->SetValue("b"); }},
        {"node 'Converter' was set to 8, and ", [](RuleMap& r) { r.Int("Converter")->SetValue(8); }},
    };
    for (const auto& [begin, write] : rows) {
        RuleMap rule(nodes);
        EXPECT_EQ(TextOf([&] { write(rule); }), "") << begin;
        rule.Put(0x200, 3);
        EXPECT_EQ(TextOf([&] { write(rule); }),
                  std::string(begin) + "node 'Error' reports error 3 'TooBright'");
    }
}

TEST(ErrorRule, AFeatureOverARegisterWithAnErrorNamesBoth) {
    RuleMap rule(Camera(Reg("Low", 0x110, "<pError>Error</pError>") +
                        Node("Integer", "Feature", "<pValue>Low</pValue>")));
    rule.Put(0x200, 3);
    EXPECT_EQ(TextOf([&] { rule.Int("Feature")->SetValue(50); }),
              "node 'Feature' can't be set to 50: node 'Low' was set to 50, and node 'Error' reports error 3 "
              "'TooBright'");
}

TEST(ErrorRule, APortsErrorIsAskedForAfterEachWriteThroughIt) {
    const std::string nodes = Node("IntReg", "Reg",
                                   "<Address>0x100</Address><Length>4</Length><AccessMode>RW</AccessMode>"
                                   "<pPort>Second</pPort><Endianess>BigEndian</Endianess>") +
                              Reg("ErrorReg", 0x200) + Node("Port", "Second", "<pError>ErrorReg</pError>") +
                              Node("Integer", "Feature", "<pValue>Reg</pValue>");
    RuleMap rule(nodes);
    ASSERT_TRUE(rule.map._Connect(&rule.port, "Second"));
    rule.Int("Feature")->SetValue(1);
    rule.Put(0x200, 4);
    EXPECT_EQ(
        TextOf([&] { rule.Int("Feature")->SetValue(2); }),
        "node 'Feature' can't be set to 2: node 'Second' was written, and node 'ErrorReg' reports error 4");
    const std::uint8_t byte = 0;
    EXPECT_EQ(TextOf([&] { CPortPtr(rule.Get("Second"))->Write(&byte, 0x300, 1); }),
              "node 'Second' was written, and node 'ErrorReg' reports error 4");
    EXPECT_EQ(TextOf([&] { CPortPtr(rule.Get("Device"))->Write(&byte, 0x300, 1); }), "") << "another port";
    rule.Put(0x100, 77);
    EXPECT_EQ(rule.Int("Feature")->GetValue(), 77) << "what the port refused isn't believed";
}

TEST(ErrorRule, AllNodesThatAreNamedAreAsked) {
    RuleMap rule(Camera(
        Reg("SecondReg", 0x204) +
        Node("Integer", "Exposure", "<pError>Error</pError><pError>SecondReg</pError><pValue>Reg</pValue>")));
    rule.Int("Exposure")->SetValue(1);
    rule.Put(0x204, 8);
    EXPECT_EQ(TextOf([&] { rule.Int("Exposure")->SetValue(2); }),
              "node 'Exposure' was set to 2, and node 'SecondReg' reports error 8");
    rule.Put(0x200, 3);
    EXPECT_EQ(TextOf([&] { rule.Int("Exposure")->SetValue(2); }),
              "node 'Exposure' was set to 2, and node 'Error' reports error 3 'TooBright'");
}

TEST(ErrorRule, TheErrorIsReadAnewAfterEachWriteAndNeverForAReading) {
    RuleMap rule(Camera(Feature()));
    EXPECT_EQ(rule.Enum("Error")->GetIntValue(), 0);
    rule.port.Forget();
    rule.Int("Exposure")->SetValue(1);
    EXPECT_EQ(rule.port.Writes(), 1U);
    EXPECT_EQ(rule.port.Reads(), 1U) << "the cached error of before says nothing";
    rule.port.Forget();
    rule.Put(0x200, 3);
    EXPECT_EQ(rule.Int("Exposure")->GetValue(), 1);
    EXPECT_EQ(rule.Int("Exposure")->GetValue(true, true), 1) << "whoever reads has written nothing";
    EXPECT_EQ(rule.port.Reads(), 1U);
}

TEST(ErrorRule, WhatTheCameraRefusedIsReadAnew) {
    // Two fields of one address, so that the other one holds the refused bytes too.
    const std::string field = At(0x100) + "<Endianess>BigEndian</Endianess>";
    RuleMap rule(Reg("ErrorReg", 0x200) + Node("IntReg", "Whole", field + "<pError>ErrorReg</pError>") +
                 Node("IntReg", "Same", field) + Node("Integer", "Feature", "<pValue>Whole</pValue>") +
                 Node("Integer", "Other", "<pValue>Same</pValue>"));
    rule.Put(0x100, 10);
    EXPECT_EQ(rule.Int("Feature")->GetValue(), 10);
    EXPECT_EQ(rule.Int("Other")->GetValue(), 10);
    rule.Put(0x200, 1);
    rule.port.OnWritten([&](std::int64_t address, std::int64_t) {
        if (address == 0x100) {
            rule.Put(0x100, 10); // the camera stays as it was
        }
    });
    EXPECT_EQ(
        TextOf([&] { rule.Int("Feature")->SetValue(20); }),
        "node 'Feature' can't be set to 20: node 'Whole' was set to 20, and node 'ErrorReg' reports error "
        "1");
    EXPECT_EQ(rule.Int("Feature")->GetValue(), 10);
    EXPECT_EQ(rule.Int("Other")->GetValue(), 10);
}

TEST(ErrorRule, ARefusedCommandIsNotRunning) {
    RuleMap rule(Camera(Node("Command", "Go",
                             "<pError>Error</pError><pValue>Reg</pValue>"
                             "<CommandValue>1</CommandValue>")));
    rule.Put(0x200, 3);
    rule.port.OnWritten([&](std::int64_t, std::int64_t) { rule.Put(0x100, 0); });
    EXPECT_EQ(TextOf([&] { rule.Command("Go")->Execute(); }),
              "node 'Go' was executed, and node 'Error' reports error 3 'TooBright'");
    EXPECT_TRUE(rule.Command("Go")->IsDone());
    EXPECT_STREQ(rule.Value("Go")->ToString().c_str(), "0");
}

TEST(ErrorRule, AnErrorThatCannotBeReadIsToldAsSuch) {
    RuleMap rule(Camera(Feature()));
    rule.Int("Exposure")->SetValue(1);
    rule.port.OnAccess([](bool write, std::int64_t address, std::int64_t) {
        if (!write && address == 0x200) {
            throw RUNTIME_EXCEPTION("no answer");
        }
    });
    EXPECT_EQ(TextOf([&] { rule.Int("Exposure")->SetValue(2); }),
              "node 'Exposure' was set to 2 and can't tell whether that worked: node 'ErrorReg', reading 4 "
              "bytes at address 0x200: no answer");
    EXPECT_EQ(rule.Memory(0x100), 2U);
}

TEST(ErrorRule, ANodeMayBeItsOwnErrorAndErrorsMayBeWritten) {
    RuleMap own(Reg("Self", 0x100, "<pError>Self</pError>"));
    EXPECT_EQ(TextOf([&] { own.Int("Self")->SetValue(0); }), "");
    EXPECT_EQ(TextOf([&] { own.Int("Self")->SetValue(5); }),
              "node 'Self' was set to 5, and node 'Self' reports error 5");
    RuleMap each(Reg("A", 0x100, "<pError>B</pError>") + Reg("B", 0x104, "<pError>A</pError>"));
    EXPECT_EQ(TextOf([&] { each.Int("A")->SetValue(5); }), "");
    EXPECT_EQ(TextOf([&] { each.Int("B")->SetValue(0); }),
              "node 'B' was set to 0, and node 'A' reports error 5");
}

TEST(ErrorRule, ListenersHearOfTheRefusal) {
    RuleMap rule(Camera(Feature()));
    int heard = 0;
    const CallbackHandleType handle = Register(
        rule.Get("Exposure"), [&](INode*) { ++heard; }, cbPostInsideLock);
    rule.Put(0x200, 3);
    EXPECT_NE(TextOf([&] { rule.Int("Exposure")->SetValue(2); }), "");
    EXPECT_EQ(heard, 1);
    EXPECT_TRUE(rule.Get("Exposure")->DeregisterCallback(handle));
}

} // namespace
} // namespace rules
