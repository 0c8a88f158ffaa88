#pragma once
/// Integer and Float: the features that people see, in front of registers, formulas or numbers in the XML.
#include "core/FloatInterface.h"
#include "core/IntegerInterface.h"
#include "core/ValueChoice.h"

namespace genapi {

class IntegerNode final : public IntegerInterface<ValueNode> {
public:
    using IntegerInterface::IntegerInterface;

    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    void valueChildren(std::vector<Node*>& children) const override { m_value.children(children); }
    GenApi_3_0::ERepresentation representation() override;
    std::string_view unit() override;
    const std::vector<std::int64_t>* validIntegers() override;

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;
    std::int64_t computeInteger(Reading how) override;
    void storeInteger(std::int64_t value, bool verify) override;
    std::int64_t ownMin() override;
    std::int64_t ownMax() override;
    std::int64_t ownInc() override;

private:
    ValueChoice<std::int64_t> m_value;
    IntegerSource m_min;
    IntegerSource m_max;
    IntegerSource m_inc;
    std::vector<std::int64_t> m_valid;
};

class FloatNode final : public FloatInterface<ValueNode> {
public:
    using FloatInterface::FloatInterface;

    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    void valueChildren(std::vector<Node*>& children) const override { m_value.children(children); }
    GenApi_3_0::ERepresentation representation() override;
    std::string_view unit() override;
    GenApi_3_0::EDisplayNotation displayNotation() override;
    std::int64_t displayPrecision() override;
    const std::vector<double>* validFloats() override;

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;
    double computeFloat(Reading how) override;
    void storeFloat(double value, bool verify) override;
    double ownMin() override;
    double ownMax() override;
    double ownInc() override;

private:
    ValueChoice<double> m_value;
    FloatSource m_min;
    FloatSource m_max;
    FloatSource m_inc;
    std::vector<double> m_valid;
};

} // namespace genapi
