// A node map of a few nodes over registers in memory, for tests of single rules.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "GenApi/GenApi.h"
#include "support/MemoryPort.h"

namespace rules {

using namespace GenApi_3_0;

inline std::string Description(const std::string& nodes, int schemaMinor = 1) {
    const std::string minor = std::to_string(schemaMinor);
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<RegisterDescription ModelName=\"Rule\" VendorName=\"Kolt\" StandardNameSpace=\"None\" "
           "SchemaMajorVersion=\"1\" SchemaMinorVersion=\"" +
           minor +
           "\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"2\" SubMinorVersion=\"3\" "
           "ProductGuid=\"11111111-2222-3333-4444-555555555555\" "
           "VersionGuid=\"66666666-7777-8888-9999-AAAAAAAAAAAA\" "
           "xmlns=\"http://www.genicam.org/GenApi/Version_1_" +
           minor + "\">\n" + nodes + "\n<Port Name=\"Device\"/>\n</RegisterDescription>\n";
}

// <kind Name="name">inside</kind>
inline std::string Node(const std::string& kind, const std::string& name, const std::string& inside) {
    return "<" + kind + " Name=\"" + name + "\">" + inside + "</" + kind + ">\n";
}

// The part that registers of all kinds share.
inline std::string At(int address, int length = 4, const std::string& access = "RW") {
    return "<Address>" + std::to_string(address) + "</Address><Length>" + std::to_string(length) +
           "</Length><AccessMode>" + access + "</AccessMode><pPort>Device</pPort>";
}

// An unsigned big-endian register of 4 bytes.
inline std::string Reg(const std::string& name, int address, const std::string& more = "",
                       const std::string& access = "RW") {
    return Node("IntReg", name,
                At(address, 4, access) + more + "<Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>");
}

class RuleMap {
public:
    explicit RuleMap(const std::string& nodes, int schemaMinor = 1) : RuleMap(nodes, schemaMinor, true) {}
    static RuleMap Unconnected(const std::string& nodes) { return RuleMap(nodes, 1, false); }

    INode* Get(const std::string& name) const {
        INode* node = map._GetNode(name.c_str());
        EXPECT_NE(node, nullptr) << "no node " << name;
        return node;
    }
    CIntegerPtr Int(const std::string& name) const { return Get(name); }
    CFloatPtr Float(const std::string& name) const { return Get(name); }
    CBooleanPtr Bool(const std::string& name) const { return Get(name); }
    CEnumerationPtr Enum(const std::string& name) const { return Get(name); }
    CStringPtr String(const std::string& name) const { return Get(name); }
    CCommandPtr Command(const std::string& name) const { return Get(name); }
    CRegisterPtr Register(const std::string& name) const { return Get(name); }
    CValuePtr Value(const std::string& name) const { return Get(name); }
    EAccessMode Mode(const std::string& name) const { return Get(name)->GetAccessMode(); }
    void Put(std::int64_t address, std::uint64_t value, std::size_t length = 4) {
        port.StoreInteger(address, length, value);
    }
    std::uint64_t Memory(std::int64_t address, std::size_t length = 4) const {
        return port.LoadInteger(address, length);
    }

    // Declared before the map, which must not outlive it.
    support::MemoryPort port;
    CNodeMapRef map;

private:
    RuleMap(const std::string& nodes, int schemaMinor, bool connect) : map("Device") {
        map._LoadXMLFromString(Description(nodes, schemaMinor).c_str());
        if (connect) {
            EXPECT_TRUE(map._Connect(&port, "Device"));
        }
    }
};

inline std::vector<std::string> Names(const NodeList_t& nodes) {
    std::vector<std::string> names;
    for (INode* node : nodes) {
        names.emplace_back(node->GetName().c_str());
    }
    return names;
}

inline std::vector<std::string> Names(const FeatureList_t& values) {
    std::vector<std::string> names;
    for (IValue* value : values) {
        names.emplace_back(value->GetNode()->GetName().c_str());
    }
    return names;
}

} // namespace rules
