#include "core/RegisterNumbers.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>

namespace genapi {

using namespace GenApi_3_0;

namespace {

std::uint64_t assemble(const std::uint8_t* bytes, std::int64_t length, EEndianess order) {
    std::uint64_t value = 0;
    for (std::int64_t i = 0; i < length; ++i)
        value = value << 8 | bytes[order == BigEndian ? i : length - 1 - i];
    return value;
}

void disassemble(std::uint64_t value, std::uint8_t* bytes, std::int64_t length, EEndianess order) {
    for (std::int64_t i = 0; i < length; ++i, value >>= 8)
        bytes[order == BigEndian ? length - 1 - i : i] = static_cast<std::uint8_t>(value);
}

std::uint64_t ones(unsigned count) {
    return count >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

} // namespace

// IntRegNode

void IntRegNode::link(Linker& linker, const Property& property) {
    switch (property.id) {
    case PropertyId::Sign:
        m_signed = property.text == "Signed";
        if (!m_signed && property.text != "Unsigned")
            setFault("Sign is '" + std::string(property.text) + "', which is no sign");
        break;
    case PropertyId::Bit:
        m_lsb = linker.integer(*this, property);
        m_msb = m_lsb;
        break;
    case PropertyId::LSB:
        m_lsb = linker.integer(*this, property);
        break;
    case PropertyId::MSB:
        m_msb = linker.integer(*this, property);
        break;
    case PropertyId::ValidValueSet:
        if (!parseIntegers(property.text, m_valid))
            setFault("ValidValueSet is '" + std::string(property.text) + "', which is no list of integers");
        std::sort(m_valid.begin(), m_valid.end());
        break;
    default:
        RegisterNode::link(linker, property);
        break;
    }
}

void IntRegNode::linked(Linker& linker) {
    RegisterNode::linked(linker);
    const bool masked = kind() != NodeKind::IntReg;
    if (!masked) {
        m_lsb = -1;
        m_msb = -1;
    } else if (m_lsb < 0 || m_msb < 0 || m_lsb > 63 || m_msb > 63) {
        setFault("its bits are not given, or not within 0 to 63");
    }
}

IntRegNode::Bits IntRegNode::bits(std::int64_t length) const {
    const auto width = static_cast<unsigned>(length * 8);
    if (m_lsb < 0)
        return {0, width};
    // Big-endian registers count their bits from the most significant one; makers disagree about which end is
    // "LSB".
    const auto low = static_cast<unsigned>(std::min(m_lsb, m_msb));
    const auto high = static_cast<unsigned>(std::max(m_lsb, m_msb));
    return {endianess() == BigEndian ? width - 1 - high : low, high - low + 1};
}

std::int64_t IntRegNode::integerLength() {
    const std::int64_t size = length();
    if (size < 1 || size > 8 || std::max(m_lsb, m_msb) >= size * 8)
        throw PROPERTY_EXCEPTION("%s: a register of %lld bytes doesn't hold its integer", label().c_str(),
                                 static_cast<long long>(size));
    return size;
}

std::uint64_t IntRegNode::raw(Reading how, std::int64_t length) {
    return assemble(bytes(how, length), length, endianess());
}

std::int64_t IntRegNode::compute(Reading how) {
    const std::int64_t size = integerLength();
    const Bits where = bits(size);
    std::uint64_t value = raw(how, size) >> where.lowest & ones(where.count);
    if (m_signed && where.count < 64 && value >> (where.count - 1) != 0)
        value |= ~ones(where.count);
    return static_cast<std::int64_t>(value);
}

void IntRegNode::store(std::int64_t value, bool) {
    const std::int64_t size = integerLength();
    const Bits where = bits(size);
    // All 64 bits are a value; of fewer, what is cut off would be lost without a word.
    if (where.count < 64 && (value < ownMin() || value > ownMax()))
        throw OUT_OF_RANGE_EXCEPTION("%s: value %lld doesn't fit into %u bits",
                                     Evaluation::blame(*this).c_str(), static_cast<long long>(value),
                                     where.count);
    std::uint64_t all = static_cast<std::uint64_t>(value) & ones(where.count);
    if (where.count != static_cast<unsigned>(size) * 8) {
        // A register that can't be read holds commands, and the other bits' ones would give them again.
        const std::uint64_t others = mayRead() ? raw({}, size) & ~(ones(where.count) << where.lowest) : 0;
        all = others | all << where.lowest;
    }
    std::uint8_t bytes[8];
    disassemble(all, bytes, size, endianess());
    writeBytes(bytes, size);
}

std::int64_t IntRegNode::ownMin() {
    const unsigned count = bits(integerLength()).count;
    return m_signed ? -static_cast<std::int64_t>(ones(count - 1)) - 1 : 0;
}

std::int64_t IntRegNode::ownMax() {
    const unsigned count = bits(integerLength()).count;
    return static_cast<std::int64_t>(ones(m_signed || count == 64 ? count - 1 : count));
}

// FloatRegNode

std::int64_t FloatRegNode::floatLength() {
    const std::int64_t size = length();
    if (size != 4 && size != 8)
        throw PROPERTY_EXCEPTION("%s: a register of %lld bytes holds no float", label().c_str(),
                                 static_cast<long long>(size));
    return size;
}

double FloatRegNode::compute(Reading how) {
    const std::int64_t size = floatLength();
    const std::uint64_t raw = assemble(bytes(how, size), size, endianess());
    if (size == 8) {
        double value = 0;
        std::memcpy(&value, &raw, sizeof value);
        return value;
    }
    const auto half = static_cast<std::uint32_t>(raw);
    float value = 0;
    std::memcpy(&value, &half, sizeof value);
    return static_cast<double>(value);
}

void FloatRegNode::store(double value, bool) {
    const std::int64_t size = floatLength();
    std::uint64_t raw = 0;
    if (size == 8) {
        std::memcpy(&raw, &value, sizeof value);
    } else {
        if (std::isfinite(value) && std::fabs(value) > static_cast<double>(FLT_MAX))
            throw OUT_OF_RANGE_EXCEPTION("%s: value %s doesn't fit into a float of 4 bytes",
                                         Evaluation::blame(*this).c_str(), formatFloat(value).c_str());
        const auto single = static_cast<float>(value);
        std::uint32_t half = 0;
        std::memcpy(&half, &single, sizeof half);
        raw = half;
    }
    std::uint8_t bytes[8];
    disassemble(raw, bytes, size, endianess());
    writeBytes(bytes, size);
}

double FloatRegNode::ownMax() {
    return floatLength() == 8 ? DBL_MAX : static_cast<double>(FLT_MAX);
}

} // namespace genapi
