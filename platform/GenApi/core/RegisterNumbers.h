#pragma once
/// Numbers that lie in registers: IntReg, MaskedIntReg, the entries of a StructReg, and FloatReg.
#include "core/FloatInterface.h"
#include "core/IntegerInterface.h"
#include "core/RegisterNode.h"

namespace genapi {

class IntRegNode final : public IntegerInterface<RegisterNode> {
public:
    using IntegerInterface::IntegerInterface;

    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    const std::vector<std::int64_t>* validIntegers() override { return m_valid.empty() ? nullptr : &m_valid; }

protected:
    std::int64_t compute(Reading how) override;
    void store(std::int64_t value, bool verify) override;
    std::int64_t ownMin() override;
    std::int64_t ownMax() override;
    bool valueCacheValid() const override { return RegisterNode::valueCacheValid(); }
    std::string toText(bool verify, Reading how) override { return IntegerInterface::toText(verify, how); }
    void fromText(const std::string& text, bool verify) override { IntegerInterface::fromText(text, verify); }

private:
    /// The bits of the value inside of the register's bytes, counted from the least significant one.
    struct Bits {
        unsigned lowest;
        unsigned count;
    };
    Bits bits(std::int64_t length) const;
    std::int64_t integerLength();
    std::uint64_t raw(Reading how, std::int64_t length);

    std::vector<std::int64_t> m_valid;
    std::int64_t m_lsb = -1; // as the XML counts; -1: the whole register
    std::int64_t m_msb = -1;
    bool m_signed = false;
};

class FloatRegNode final : public FloatInterface<RegisterNode> {
public:
    using FloatInterface::FloatInterface;

protected:
    double compute(Reading how) override;
    void store(double value, bool verify) override;
    double ownMin() override { return -ownMax(); }
    double ownMax() override;
    bool valueCacheValid() const override { return RegisterNode::valueCacheValid(); }
    std::string toText(bool verify, Reading how) override { return FloatInterface::toText(verify, how); }
    void fromText(const std::string& text, bool verify) override { FloatInterface::fromText(text, verify); }

private:
    std::int64_t floatLength();
};

} // namespace genapi
