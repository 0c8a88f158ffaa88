#pragma once
/// Numbers that are worked out: IntSwissKnife and SwissKnife from variables alone, IntConverter and Converter
/// from another node's number and back.
#include "core/FormulaNode.h"
#include "core/NumberNodes.h"

namespace genapi {

template<class T>
class KnifeNode : public InterfaceFor<T, ValueNode> {
public:
    using InterfaceFor<T, ValueNode>::InterfaceFor;

    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    void valueChildren(std::vector<Node*>& children) const override { m_names.children(children); }
    bool compile() override;

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;
    T compute(Reading how) override;
    void store(T value, bool verify) override;
    T ownMin() override { return NumberOf<T>::smallest; }
    T ownMax() override { return NumberOf<T>::largest; }

private:
    FormulaNames m_names;
    NodeFormula m_formula{PropertyId::Formula, {}};
};

class IntSwissKnifeNode final : public KnifeNode<std::int64_t> {
public:
    using KnifeNode::KnifeNode;
};

class SwissKnifeNode final : public KnifeNode<double> {
public:
    using KnifeNode::KnifeNode;
};

/// What both converters share; they differ in how they work out their range.
template<class T>
class ConversionNode : public InterfaceFor<T, ValueNode> {
public:
    using InterfaceFor<T, ValueNode>::InterfaceFor;

    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    void valueChildren(std::vector<Node*>& children) const override;
    bool compile() override;

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;
    T compute(Reading how) override;
    void store(T value, bool verify) override;

    /// The ends of the range as people see it, through a formula in floats and in no order; infinite where
    /// the formula is. False where there is no range to tell.
    bool limits(NodeFormula& from, double& first, double& second);
    /// The number as people see it, for one of the node behind.
    T converted(T behind, Reading how = {});
    Node& behind() const { return *m_value; }
    NodeFormula& from() { return m_from; }

private:
    Node* m_value = nullptr;
    FormulaNames m_names;
    // The formula neither rises nor falls all the way: its range can't be told from the ends.
    bool m_varying = false;
    NodeFormula m_from{PropertyId::FormulaFrom, "TO"};
    NodeFormula m_to{PropertyId::FormulaTo, "FROM"};
};

class IntConverterNode final : public ConversionNode<std::int64_t> {
public:
    using ConversionNode::ConversionNode;

protected:
    std::int64_t ownMin() override { return end(false); }
    std::int64_t ownMax() override { return end(true); }

private:
    std::int64_t end(bool upper);

    NodeFormula m_range{PropertyId::FormulaFrom, "TO"}; // in floats: neither overflow nor division by zero
};

class ConverterNode final : public ConversionNode<double> {
public:
    using ConversionNode::ConversionNode;

protected:
    double ownMin() override;
    double ownMax() override;
};

} // namespace genapi
