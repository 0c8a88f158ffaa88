#include "support/RegisterXml.h"

#include <cstdio>

namespace support {

std::uint64_t RegisterXml::Allocate(std::size_t length) {
    const std::uint64_t address = m_next;
    m_next += (length + 3) & ~std::size_t{3};
    m_memory.resize(m_next);
    return address;
}

void RegisterXml::Store(std::uint64_t address, std::size_t length, std::uint64_t value) {
    for (std::size_t i = 0; i < length; ++i) {
        const std::size_t shift = 8 * (m_bigEndian ? length - 1 - i : i);
        m_memory[address + i] = static_cast<std::uint8_t>(value >> shift);
    }
}

void RegisterXml::Open(const char* element, const std::string& name) {
    m_xml += "<" + std::string(element) + " Name=\"" + name + "\">\n";
}

void RegisterXml::Close(const char* element) {
    m_xml += "</" + std::string(element) + ">\n";
}

void RegisterXml::Line(const char* element, std::string_view value) {
    m_xml.append("<").append(element).append(">").append(value).append("</").append(element).append(">\n");
}

void RegisterXml::Line(const char* element, std::uint64_t value) {
    Line(element, std::to_string(value));
}

void RegisterXml::Hex(const char* element, std::uint64_t value) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%llX", static_cast<unsigned long long>(value));
    Line(element, text);
}

void RegisterXml::Describe(const std::string& name, std::uint32_t visibility) {
    static const char* const kVisibilities[] = {"Beginner", "Expert", "Guru", "Invisible"};
    Line("ToolTip", "Sets " + name + ".");
    Line("Description", "Sets " + name + ". Counts from the next frame on.");
    Line("Visibility", kVisibilities[visibility]);
}

void RegisterXml::Register(std::uint64_t address, std::size_t length, const char* access) {
    Hex("Address", address);
    Line("Length", length);
    Line("AccessMode", access);
    Line("pPort", "Device");
}

void RegisterXml::Variable(const char* name, const std::string& node) {
    m_xml.append("<pVariable Name=\"").append(name).append("\">").append(node).append("</pVariable>\n");
}

void RegisterXml::Endianess() {
    Line("Endianess", m_bigEndian ? "BigEndian" : "LittleEndian");
}

void RegisterXml::SignAndEndianess(bool isSigned) {
    Line("Sign", isSigned ? "Signed" : "Unsigned");
    Endianess();
}

void RegisterXml::IntReg(const std::string& name, std::size_t length, std::uint64_t value, const char* access,
                         bool isSigned, const std::string& invalidator) {
    const std::uint64_t address = Allocate(length);
    Store(address, length, value);
    Open("IntReg", name);
    Register(address, length, access);
    if (!invalidator.empty()) {
        Line("pInvalidator", invalidator);
    }
    SignAndEndianess(isSigned);
    Close("IntReg");
}

} // namespace support
