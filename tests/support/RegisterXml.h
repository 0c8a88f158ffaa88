// The pieces of a camera's XML, and the registers that they describe.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace support {

class RegisterXml {
protected:
    explicit RegisterXml(bool bigEndian) : m_bigEndian(bigEndian) {}

    // Addresses are multiples of 4.
    std::uint64_t Allocate(std::size_t length);
    void Store(std::uint64_t address, std::size_t length, std::uint64_t value);

    void Open(const char* element, const std::string& name);
    void Close(const char* element);
    void Line(const char* element, std::string_view value);
    void Line(const char* element, std::uint64_t value);
    void Hex(const char* element, std::uint64_t value);
    void Describe(const std::string& name, std::uint32_t visibility);
    void Register(std::uint64_t address, std::size_t length, const char* access);
    void Variable(const char* name, const std::string& node);
    void Endianess();
    void SignAndEndianess(bool isSigned);
    void IntReg(const std::string& name, std::size_t length, std::uint64_t value, const char* access = "RW",
                bool isSigned = false, const std::string& invalidator = {});

    const bool m_bigEndian;
    std::string m_xml;
    std::vector<std::uint8_t> m_memory; // address 0 on
    std::uint64_t m_next = 0x1000;
};

} // namespace support
