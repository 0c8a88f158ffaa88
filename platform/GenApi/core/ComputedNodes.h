#pragma once
/// Numbers that are worked out: IntSwissKnife and SwissKnife from variables alone, IntConverter and Converter
/// from another node's number and back.
#include "core/FloatInterface.h"
#include "core/FormulaNode.h"
#include "core/IntegerInterface.h"

namespace genapi {

class IntSwissKnifeNode final : public IntegerInterface<ValueNode> {
public:
    using IntegerInterface::IntegerInterface;

    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    void valueChildren(std::vector<Node*>& children) const override { m_names.children(children); }
    GenApi_3_0::ERepresentation representation() override;
    std::string_view unit() override { return text(PropertyId::Unit); }
    bool compile() override;

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;
    std::int64_t computeInteger(Reading how) override;
    void storeInteger(std::int64_t value, bool verify) override;
    std::int64_t ownMin() override;
    std::int64_t ownMax() override;

private:
    FormulaNames m_names;
    NodeFormula m_formula{PropertyId::Formula, {}};
};

class SwissKnifeNode final : public FloatInterface<ValueNode> {
public:
    using FloatInterface::FloatInterface;

    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    void valueChildren(std::vector<Node*>& children) const override { m_names.children(children); }
    GenApi_3_0::ERepresentation representation() override;
    std::string_view unit() override { return text(PropertyId::Unit); }
    GenApi_3_0::EDisplayNotation displayNotation() override;
    std::int64_t displayPrecision() override;
    bool compile() override;

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;
    double computeFloat(Reading how) override;
    void storeFloat(double value, bool verify) override;
    double ownMin() override;
    double ownMax() override;

private:
    FormulaNames m_names;
    NodeFormula m_formula{PropertyId::Formula, {}};
};

/// What both converters share: the node behind the formulas and which way these run.
struct ConverterParts {
    /// True when the property was one of these.
    bool link(Node& owner, Linker& linker, const Property& property);
    void linked(Node& owner) const;
    void children(std::vector<Node*>& all) const;
    GenApi_3_0::EAccessMode mode(Aspect aspect, GenApi_3_0::EAccessMode (*needed)(Node&)) const;
    /// The ends of the range as people see it, through the formula and in no order; infinite or not a number
    /// where the formula has none.
    void limits(Node& owner, NodeFormula& from, double& first, double& second) const;

    Node* value = nullptr;
    FormulaNames names;
    bool varying =
        false; // the formula neither rises nor falls all the way: its range can't be told from the ends
};

class IntConverterNode final : public IntegerInterface<ValueNode> {
public:
    using IntegerInterface::IntegerInterface;

    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    void valueChildren(std::vector<Node*>& children) const override { m_parts.children(children); }
    GenApi_3_0::ERepresentation representation() override;
    std::string_view unit() override;
    bool compile() override;

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;
    std::int64_t computeInteger(Reading how) override;
    void storeInteger(std::int64_t value, bool verify) override;
    std::int64_t ownMin() override;
    std::int64_t ownMax() override;

private:
    std::int64_t end(bool upper);

    ConverterParts m_parts;
    NodeFormula m_from{PropertyId::FormulaFrom, "TO"};
    NodeFormula m_to{PropertyId::FormulaTo, "FROM"};
    NodeFormula m_range{PropertyId::FormulaFrom, "TO"}; // in floats: neither overflow nor division by zero
};

class ConverterNode final : public FloatInterface<ValueNode> {
public:
    using FloatInterface::FloatInterface;

    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    void valueChildren(std::vector<Node*>& children) const override { m_parts.children(children); }
    GenApi_3_0::ERepresentation representation() override;
    std::string_view unit() override;
    GenApi_3_0::EDisplayNotation displayNotation() override;
    std::int64_t displayPrecision() override;
    bool compile() override;

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;
    double computeFloat(Reading how) override;
    void storeFloat(double value, bool verify) override;
    double ownMin() override;
    double ownMax() override;

private:
    ConverterParts m_parts;
    NodeFormula m_from{PropertyId::FormulaFrom, "TO"};
    NodeFormula m_to{PropertyId::FormulaTo, "FROM"};
};

} // namespace genapi
