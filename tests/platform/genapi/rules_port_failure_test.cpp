// What a port throws comes out of the map as the same class, with the names of the nodes before its text.
#include <gmock/gmock.h>

#include <functional>
#include <new>
#include <stdexcept>

#include "RuleMap.h"

namespace rules {
namespace {

using GenICam_3_0::GenericException;

struct Caught {
    std::string type; // as the class tells it in what()
    std::string text;
    std::string file;
    unsigned line = 0;
};

Caught Catch(const std::function<void()>& call) {
    try {
        call();
    } catch (const GenericException& error) {
        const std::string what = error.what();
        const std::size_t end = what.rfind(" thrown (");
        const std::size_t begin = what.rfind(" : ", end) + 3;
        return {what.substr(begin, end - begin), error.GetDescription(), error.GetSourceFileName(),
                error.GetSourceLine()};
    }
    return {};
}

std::string TextOf(const std::function<void()>& call) {
    return Catch(call).text;
}

// A feature in front of a register, with everything else that a feature may ask a camera for.
std::string Width() {
    return Reg("WidthReg", 0x100) + Reg("WidthMaxReg", 0x104) + Reg("WidthMinReg", 0x108) +
           Reg("WidthIncReg", 0x10C) + Reg("AvailableReg", 0x110) +
           Node("Integer", "Width", "<pIsAvailable>AvailableReg</pIsAvailable><pValue>WidthReg</pValue>") +
           Node("Integer", "Limited",
                "<pValue>WidthReg</pValue><pMin>WidthMinReg</pMin><pMax>WidthMaxReg</pMax>"
                "<pInc>WidthIncReg</pInc>");
}

void FailAt(RuleMap& rule, std::int64_t address, const std::function<void()>& fail) {
    rule.port.OnAccess([address, fail](bool, std::int64_t at, std::int64_t) {
        if (at == address) {
            fail();
        }
    });
}

class MyTimeout : public GenICam_3_0::TimeoutException {
public:
    MyTimeout() : TimeoutException("mine", "somewhere/mine.cpp", 77) {}
};

template<class Published>
void Throw() {
    throw Published("no answer", "port/there.cpp", 4711);
}

template<class Published>
bool IsJust(const std::function<void()>& call) {
    try {
        call();
    } catch (const Published& error) {
        return typeid(error) == typeid(Published);
    } catch (...) {
    }
    return false;
}

struct ClassRow {
    const char* type;
    void (*fail)();
    bool (*isJust)(const std::function<void()>& call);
};

template<class Published>
constexpr ClassRow Row(const char* type) {
    return {type, &Throw<Published>, &IsJust<Published>};
}

const ClassRow kClasses[] = {
    Row<GenICam_3_0::BadAllocException>("BadAllocException"),
    Row<GenICam_3_0::InvalidArgumentException>("InvalidArgumentException"),
    Row<GenICam_3_0::OutOfRangeException>("OutOfRangeException"),
    Row<GenICam_3_0::PropertyException>("PropertyException"),
    Row<GenICam_3_0::RuntimeException>("RuntimeException"),
    Row<GenICam_3_0::LogicalErrorException>("LogicalErrorException"),
    Row<GenICam_3_0::AccessException>("AccessException"),
    Row<GenICam_3_0::TimeoutException>("TimeoutException"),
    Row<GenICam_3_0::DynamicCastException>("DynamicCastException"),
    Row<GenICam_3_0::GenericException>("GenericException"),
};

TEST(PortFailureRule, APublishedExceptionKeepsItsClassFileAndLine) {
    for (const ClassRow& row : kClasses) {
        RuleMap rule(Width());
        rule.Put(0x110, 1);
        FailAt(rule, 0x100, row.fail);
        const auto read = [&] { rule.Int("Width")->GetValue(); };
        const auto write = [&] { rule.Int("Width")->SetValue(640); };
        const Caught reading = Catch(read);
        EXPECT_EQ(reading.type, row.type);
        EXPECT_EQ(reading.text, "node 'Width' can't be read: node 'WidthReg', reading 4 bytes at address "
                                "0x100: no answer");
        EXPECT_EQ(reading.file, "there.cpp");
        EXPECT_EQ(reading.line, 4711U);
        const Caught writing = Catch(write);
        EXPECT_EQ(writing.type, row.type);
        EXPECT_EQ(writing.text, "node 'Width' can't be set to 640: node 'WidthReg', writing 4 bytes at "
                                "address 0x100: no answer");
        EXPECT_EQ(writing.file, "there.cpp");
        EXPECT_EQ(writing.line, 4711U);
        EXPECT_TRUE(row.isJust(read)) << row.type;
        EXPECT_TRUE(row.isJust(write)) << row.type;
        rule.port.OnAccess(nullptr);
        EXPECT_EQ(rule.Int("Width")->GetValue(), 0) << "the map stays usable after a " << row.type;
    }
}

struct OtherRow {
    const char* what;
    std::function<void()> fail;
    const char* type;
    const char* text;
    const char* file;
};

TEST(PortFailureRule, OtherStandardExceptionsBecomePublishedOnes) {
    const OtherRow rows[] = {
        {"derived from a published one", [] { throw MyTimeout(); }, "TimeoutException", "mine", "mine.cpp"},
        {"std::runtime_error", [] { throw std::runtime_error("cable out"); }, "RuntimeException", "cable out",
         "PortFailure.cpp"},
        {"std::logic_error", [] { throw std::logic_error("not yet"); }, "RuntimeException", "not yet",
         "PortFailure.cpp"},
        {"std::bad_alloc", [] { throw std::bad_alloc(); }, "BadAllocException", "std::bad_alloc",
         "PortFailure.cpp"},
        {"without a text", [] { throw std::runtime_error(""); }, "RuntimeException",
         "the port gives no reason", "PortFailure.cpp"},
        {"published, without a text", [] { throw GenICam_3_0::AccessException(nullptr, "a.cpp", 1); },
         "AccessException", "the port gives no reason", "a.cpp"},
        {"with signs of a format", [] { throw std::runtime_error("100 %s %n"); }, "RuntimeException",
         "100 %s %n", "PortFailure.cpp"},
    };
    for (const OtherRow& row : rows) {
        RuleMap rule(Reg("R", 0x100));
        FailAt(rule, 0x100, row.fail);
        const Caught caught = Catch([&] { rule.Int("R")->GetValue(); });
        EXPECT_EQ(caught.type, row.type) << row.what;
        EXPECT_EQ(caught.text,
                  std::string("node 'R' can't be read: reading 4 bytes at address 0x100: ") + row.text)
            << row.what;
        EXPECT_EQ(caught.file, row.file) << row.what;
    }
}

TEST(PortFailureRule, WhatIsNoExceptionPassesAsItIs) {
    RuleMap rule(Width());
    rule.Put(0x110, 1);
    FailAt(rule, 0x100, [] { throw 0x80000006U; });
    for (int round = 0; round < 2; ++round) {
        try {
            round == 0 ? static_cast<void>(rule.Int("Width")->GetValue()) : rule.Int("Width")->SetValue(1);
            FAIL() << "nothing came";
        } catch (unsigned status) {
            EXPECT_EQ(status, 0x80000006U);
        }
    }
}

struct TextRow {
    const char* what;
    std::int64_t failing; // the address
    std::function<void(RuleMap&)> call;
    const char* text;
};

void ExpectTexts(const std::string& nodes, const std::vector<TextRow>& rows,
                 const std::function<void(RuleMap&)>& prepare = {}) {
    for (const TextRow& row : rows) {
        RuleMap rule(nodes);
        if (prepare) {
            prepare(rule);
        }
        FailAt(rule, row.failing, [] { throw TIMEOUT_EXCEPTION("no answer"); });
        EXPECT_EQ(TextOf([&] { row.call(rule); }), row.text) << row.what;
    }
}

TEST(PortFailureRule, TheTextTellsWhatWasAskedOfWhom) {
    ExpectTexts(
        Width(),
        {{"minimum", 0x108, [](RuleMap& rule) { rule.Int("Limited")->GetMin(); },
          "node 'Limited' can't tell its minimum: node 'WidthMinReg', reading 4 bytes at address 0x108: no "
          "answer"},
         {"maximum", 0x104, [](RuleMap& rule) { rule.Int("Limited")->GetMax(); },
          "node 'Limited' can't tell its maximum: node 'WidthMaxReg', reading 4 bytes at address 0x104: no "
          "answer"},
         {"increment", 0x10C, [](RuleMap& rule) { rule.Int("Limited")->GetInc(); },
          "node 'Limited' can't tell its increment: node 'WidthIncReg', reading 4 bytes at address 0x10c: no "
          "answer"},
         {"access mode", 0x110, [](RuleMap& rule) { rule.Get("Width")->GetAccessMode(); },
          "node 'Width' can't tell its access mode: node 'AvailableReg', reading 4 bytes at address 0x110: "
          "no answer"},
         {"condition of a value", 0x110, [](RuleMap& rule) { rule.Int("Width")->GetValue(); },
          "node 'Width' can't tell its access mode: node 'AvailableReg', reading 4 bytes at address 0x110: "
          "no answer"},
         {"range of a write", 0x104, [](RuleMap& rule) { rule.Int("Limited")->SetValue(3); },
          "node 'Limited' can't tell its maximum: node 'WidthMaxReg', reading 4 bytes at address 0x104: no "
          "answer"},
         {"write without a check", 0x100, [](RuleMap& rule) { rule.Int("Limited")->SetValue(3, false); },
          "node 'Limited' can't be set to 3: node 'WidthReg', writing 4 bytes at address 0x100: no answer"},
         {"text", 0x100, [](RuleMap& rule) { rule.Value("Limited")->ToString(); },
          "node 'Limited' can't be read: node 'WidthReg', reading 4 bytes at address 0x100: no answer"},
         {"write of a text", 0x100, [](RuleMap& rule) { rule.Value("WidthReg")->FromString("0x10"); },
          "node 'WidthReg' can't be set to 16: writing 4 bytes at address 0x100: no answer"},
         {"bytes", 0x100,
          [](RuleMap& rule) {
              std::uint8_t bytes[4] = {};
              rule.Register("WidthReg")->Get(bytes, 4);
          },
          "node 'WidthReg' can't be read: reading 4 bytes at address 0x100: no answer"},
         {"write of bytes", 0x100,
          [](RuleMap& rule) {
              const std::uint8_t bytes[4] = {};
              rule.Register("WidthReg")->Set(bytes, 4);
          },
          "node 'WidthReg' can't be written: writing 4 bytes at address 0x100: no answer"},
         {"the port itself", 0x102,
          [](RuleMap& rule) {
              std::uint8_t byte = 0;
              CPortPtr(rule.Get("Device"))->Read(&byte, 0x102, 1);
          },
          "node 'Device', reading 1 byte at address 0x102: no answer"},
         {"write to the port itself", 0x102,
          [](RuleMap& rule) {
              const std::uint8_t byte = 0;
              CPortPtr(rule.Get("Device"))->Write(&byte, 0x102, 1);
          },
          "node 'Device', writing 1 byte at address 0x102: no answer"}});
}

TEST(PortFailureRule, EveryKindOfFeatureTellsItsValue) {
    const std::string nodes =
        Reg("R", 0x100) + Node("FloatReg", "F", At(0x108, 8)) + Node("StringReg", "S", At(0x120, 16)) +
        Node("Register", "Raw", At(0x140, 16)) +
        Node("MaskedIntReg", "Masked", At(0x150) + "<LSB>4</LSB><MSB>7</MSB>") + Reg("LengthReg", 0x160) +
        Reg("IndexReg", 0x164) + Node("Float", "Time", "<pValue>F</pValue><Unit>us</Unit>") +
        Node("Boolean", "Switch", "<pValue>R</pValue>") +
        Node("Command", "Go", "<pValue>R</pValue><CommandValue>1</CommandValue>") +
        Node("Enumeration", "Mode",
             "<EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry><EnumEntry Name=\"On\"><Value>1</Value>"
             "</EnumEntry><pValue>R</pValue>") +
        Node("String", "Name", "<pValue>S</pValue>") +
        Node("Converter", "Half",
             "<FormulaTo>FROM * 2</FormulaTo><FormulaFrom>TO / 2</FormulaFrom>"
             "<pValue>F</pValue>") +
        Node("IntSwissKnife", "Twice", "<pVariable Name=\"A\">R</pVariable><Formula>A * 2</Formula>") +
        Node("IntReg", "Indexed",
             "<Address>0x200</Address><pIndex Offset=\"4\">IndexReg</pIndex><Length>4</Length>"
             "<AccessMode>RW</AccessMode><pPort>Device</pPort>") +
        Node("StringReg", "Long",
             "<Address>0x300</Address><pLength>LengthReg</pLength><AccessMode>RW"
             "</AccessMode><pPort>Device</pPort>");
    ExpectTexts(
        nodes,
        {{"float", 0x108, [](RuleMap& rule) { rule.Float("Time")->SetValue(12.5); },
          "node 'Time' can't be set to 12.5: node 'F', writing 8 bytes at address 0x108: no answer"},
         {"boolean", 0x100, [](RuleMap& rule) { rule.Bool("Switch")->SetValue(true); },
          "node 'Switch' can't be set to 1: node 'R', writing 4 bytes at address 0x100: no answer"},
         {"enumeration", 0x100, [](RuleMap& rule) { rule.Value("Mode")->FromString("On"); },
          "node 'Mode' can't be set to 1 ('On'): node 'R', writing 4 bytes at address 0x100: no answer"},
         {"number without an entry", 0x100, [](RuleMap& rule) { rule.Enum("Mode")->SetIntValue(7, false); },
          "node 'Mode' can't be set to 7: node 'R', writing 4 bytes at address 0x100: no answer"},
         {"command", 0x100, [](RuleMap& rule) { rule.Command("Go")->Execute(); },
          "node 'Go' can't be executed: node 'R', writing 4 bytes at address 0x100: no answer"},
         {"command's end", 0x100, [](RuleMap& rule) { rule.Command("Go")->IsDone(); },
          "node 'Go' can't be read: node 'R', reading 4 bytes at address 0x100: no answer"},
         {"string", 0x120, [](RuleMap& rule) { rule.String("Name")->SetValue("Left"); },
          "node 'Name' can't be set to 'Left': node 'S', writing 16 bytes at address 0x120: no answer"},
         {"string's register", 0x120, [](RuleMap& rule) { rule.String("S")->GetValue(); },
          "node 'S' can't be read: reading 16 bytes at address 0x120: no answer"},
         {"converter", 0x108, [](RuleMap& rule) { rule.Float("Half")->SetValue(0.5); },
          "node 'Half' can't be set to 0.5: node 'F', writing 8 bytes at address 0x108: no answer"},
         {"formula", 0x100, [](RuleMap& rule) { rule.Int("Twice")->GetValue(); },
          "node 'Twice' can't be read: node 'R', reading 4 bytes at address 0x100: no answer"},
         {"masked write, at its read", 0x150, [](RuleMap& rule) { rule.Int("Masked")->SetValue(3); },
          "node 'Masked' can't be set to 3: reading 4 bytes at address 0x150: no answer"},
         {"index of an address", 0x164, [](RuleMap& rule) { rule.Int("Indexed")->SetValue(9); },
          "node 'Indexed' can't be set to 9: node 'IndexReg', reading 4 bytes at address 0x164: no answer"},
         {"address alone", 0x164, [](RuleMap& rule) { rule.Register("Indexed")->GetAddress(); },
          "node 'Indexed' can't tell where it lies: node 'IndexReg', reading 4 bytes at address 0x164: no "
          "answer"},
         {"length", 0x160, [](RuleMap& rule) { rule.String("Long")->GetMaxLength(); },
          "node 'Long' can't tell where it lies: node 'LengthReg', reading 4 bytes at address 0x160: no "
          "answer"}});
}

TEST(PortFailureRule, PollingNamesItsNodesToo) {
    RuleMap rule(Reg("R", 0x100) + Node("Command", "Go",
                                        "<PollingTime>10</PollingTime><pValue>R</pValue>"
                                        "<CommandValue>1</CommandValue>"));
    rule.Command("Go")->Execute();
    FailAt(rule, 0x100, [] { throw TIMEOUT_EXCEPTION("no answer"); });
    EXPECT_EQ(TextOf([&] { rule.map._Poll(10); }),
              "node 'Go' can't be read: node 'R', reading 4 bytes at address 0x100: no answer");
}

// A port may come back into the map; what fails there is told from the inside out.
TEST(PortFailureRule, FailuresOfNestedOperationsAreToldOneInsideTheOther) {
    RuleMap rule(Reg("Outer", 0x100) + Reg("Inner", 0x104));
    rule.port.OnAccess([&](bool, std::int64_t at, std::int64_t) {
        if (at == 0x100) {
            rule.Int("Inner")->GetValue();
        } else {
            throw TIMEOUT_EXCEPTION("no answer");
        }
    });
    EXPECT_EQ(
        TextOf([&] { rule.Int("Outer")->GetValue(); }),
        "node 'Outer' can't be read: reading 4 bytes at address 0x100: node 'Outer' can't be read: node "
        "'Inner', reading 4 bytes at address 0x104: no answer");
    rule.port.OnAccess(nullptr);
    EXPECT_EQ(rule.Int("Outer")->GetValue(), 0);
    FailAt(rule, 0x104, [] { throw TIMEOUT_EXCEPTION("no answer"); });
    EXPECT_EQ(TextOf([&] { rule.Int("Inner")->GetValue(); }),
              "node 'Inner' can't be read: reading 4 bytes at address 0x104: no answer")
        << "nothing of the failed operation is left";
}

} // namespace
} // namespace rules
