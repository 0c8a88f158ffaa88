// A node map made from a few lines of XML and connected to registers in memory.
#pragma once

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "GenApi/GenApi.h"
#include "support/MemoryPort.h"

namespace genapi_test {

using namespace GenApi_3_0;
using GenICam_3_0::AccessException;
using GenICam_3_0::gcstring;
using GenICam_3_0::gcstring_vector;
using GenICam_3_0::GenericException;
using GenICam_3_0::InvalidArgumentException;
using GenICam_3_0::LogicalErrorException;
using GenICam_3_0::OutOfRangeException;
using GenICam_3_0::PropertyException;
using GenICam_3_0::RuntimeException;

inline std::string wrapXml(const std::string& nodes, const std::string& schemaMinor = "1") {
    return R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Model" VendorName="Vendor" StandardNameSpace="None" SchemaMajorVersion="1"
    SchemaMinorVersion=")" +
           schemaMinor + R"(" SchemaSubMinorVersion="0" MajorVersion="2" MinorVersion="3" SubMinorVersion="4"
    ToolTip="Tip" ProductGuid="P" VersionGuid="V" xmlns="http://www.genicam.org/GenApi/Version_1_1">
<Port Name="Device"/>
)" + nodes +
           "\n</RegisterDescription>\n";
}

// The elements of a register at an address of the port "Device".
inline std::string registerAt(const std::string& address, int length = 4, const std::string& access = "RW",
                              const std::string& more = {}) {
    return "<Address>" + address + "</Address><Length>" + std::to_string(length) + "</Length><AccessMode>" +
           access + "</AccessMode><pPort>Device</pPort>" + more;
}

inline std::string intReg(const std::string& name, const std::string& address, const std::string& more = {},
                          int length = 4, const std::string& access = "RW") {
    return "<IntReg Name=\"" + name + "\">" + registerAt(address, length, access, more) +
           "<Endianess>BigEndian</Endianess></IntReg>\n";
}

class Map {
public:
    explicit Map(const std::string& nodes, bool connect = true) : m_ref("TestDevice") {
        m_ref._LoadXMLFromString(wrapXml(nodes));
        if (connect)
            m_ref._Connect(&port, "Device");
    }

    CNodeMapRef& ref() { return m_ref; }
    CNodePtr node(const char* name) {
        CNodePtr found(m_ref._GetNode(name));
        EXPECT_TRUE(found.IsValid()) << name;
        return found;
    }
    CIntegerPtr integer(const char* name) { return as<CIntegerPtr>(name); }
    CFloatPtr floating(const char* name) { return as<CFloatPtr>(name); }
    CBooleanPtr boolean(const char* name) { return as<CBooleanPtr>(name); }
    CEnumerationPtr enumeration(const char* name) { return as<CEnumerationPtr>(name); }
    CStringPtr string(const char* name) { return as<CStringPtr>(name); }
    CCommandPtr command(const char* name) { return as<CCommandPtr>(name); }
    CRegisterPtr reg(const char* name) { return as<CRegisterPtr>(name); }
    CValuePtr value(const char* name) { return as<CValuePtr>(name); }
    CCategoryPtr category(const char* name) { return as<CCategoryPtr>(name); }
    CSelectorPtr selector(const char* name) { return as<CSelectorPtr>(name); }
    EAccessMode mode(const char* name) { return node(name)->GetAccessMode(); }

    support::MemoryPort port;

private:
    template<class Pointer>
    Pointer as(const char* name) {
        Pointer found(m_ref._GetNode(name));
        EXPECT_TRUE(found.IsValid()) << name;
        return found;
    }

    CNodeMapRef m_ref;
};

// What an operation throws: "AccessException: node 'X' can't be read: ...", or "" for nothing.
template<class Operation>
std::string thrown(Operation operation) {
    try {
        operation();
    } catch (const GenericException& exception) {
        const std::string what = exception.what();
        const std::size_t end = what.rfind(" thrown (");
        const std::size_t begin = what.rfind(" : ", end);
        return what.substr(begin + 3, end - begin - 3) + ": " + exception.GetDescription();
    }
    return {};
}

} // namespace genapi_test
