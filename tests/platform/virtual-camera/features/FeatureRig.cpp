#include "FeatureRig.h"

#include <sstream>
#include <stdexcept>

namespace kolt::test {

using namespace GenApi_3_0;

namespace {

void Require(vcam::Status status, const char* what, std::int64_t address) {
    if (status == vcam::Status::Success)
        return;
    std::ostringstream text;
    text << what << " of register 0x" << std::hex << address << " refused with 0x"
         << static_cast<unsigned>(status);
    throw RUNTIME_EXCEPTION(text.str());
}

template<class Pointer>
Pointer As(const FeatureRig& rig, const std::string& name) {
    Pointer pointer(rig.Node(name));
    if (!pointer)
        throw std::invalid_argument(name + " is missing, or something else");
    return pointer;
}

} // namespace

void RegisterPort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    Require(m_memory.Read(static_cast<std::uint32_t>(address), static_cast<std::uint8_t*>(buffer),
                          static_cast<std::size_t>(length)),
            "Read", address);
}

void RegisterPort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    std::size_t written = 0;
    Require(m_memory.Write(static_cast<std::uint32_t>(address), static_cast<const std::uint8_t*>(buffer),
                           static_cast<std::size_t>(length), written),
            "Write", address);
}

FeatureRig::FeatureRig(const vcam::Config& config, std::shared_ptr<vcam::Flash> flash)
    : model(config, faults, counters, std::move(flash)), port(model.Memory()) {
    model.Attach(&stream);
    map._LoadXMLFromString(model.Xml().c_str());
    map._Connect(&port, "Device");
}

INode* FeatureRig::Node(const std::string& name) const {
    return map._GetNode(name.c_str());
}

EAccessMode FeatureRig::Mode(const std::string& name) const {
    return As<CNodePtr>(*this, name)->GetAccessMode();
}

std::int64_t FeatureRig::Int(const std::string& name) const {
    if (const CBooleanPtr boolean = Node(name))
        return boolean->GetValue() ? 1 : 0;
    if (const CEnumerationPtr enumeration = Node(name))
        return enumeration->GetIntValue();
    return As<CIntegerPtr>(*this, name)->GetValue();
}

double FeatureRig::Real(const std::string& name) const {
    return As<CFloatPtr>(*this, name)->GetValue();
}

std::string FeatureRig::Text(const std::string& name) const {
    return As<CValuePtr>(*this, name)->ToString().c_str();
}

void FeatureRig::Set(const std::string& name, std::int64_t value) {
    if (const CBooleanPtr boolean = Node(name))
        boolean->SetValue(value != 0);
    else if (const CEnumerationPtr enumeration = Node(name))
        enumeration->SetIntValue(value);
    else
        As<CIntegerPtr>(*this, name)->SetValue(value);
}

void FeatureRig::SetReal(const std::string& name, double value) {
    As<CFloatPtr>(*this, name)->SetValue(value);
}

void FeatureRig::SetText(const std::string& name, const std::string& value) {
    As<CValuePtr>(*this, name)->FromString(value.c_str());
}

void FeatureRig::Do(const std::string& command) {
    As<CCommandPtr>(*this, command)->Execute();
}

vcam::Status FeatureRig::Poke(std::uint32_t address, std::uint32_t value) {
    vcam::Bytes bytes(4);
    vcam::Put32(bytes.data(), value);
    std::size_t written = 0;
    return model.Memory().Write(address, bytes.data(), bytes.size(), written);
}

} // namespace kolt::test
