#pragma once
/// Integer and Float: the features that people see, in front of registers, formulas or numbers in the XML.
#include <type_traits>

#include "core/FloatInterface.h"
#include "core/IntegerInterface.h"
#include "core/ValueChoice.h"

namespace genapi {

/// IntegerInterface or FloatInterface over Base.
template<class T, class Base>
using InterfaceFor =
    std::conditional_t<std::is_same_v<T, double>, FloatInterface<Base>, IntegerInterface<Base>>;

template<class T>
class NumberNode : public InterfaceFor<T, ValueNode> {
    using Number = NumberOf<T>;

public:
    using InterfaceFor<T, ValueNode>::InterfaceFor;

    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    void valueChildren(std::vector<Node*>& children) const override { m_value.children(children); }
    // What the node doesn't say of itself, it takes over from the one node behind it.
    GenApi_3_0::ERepresentation representation() override;
    std::string_view unit() override;
    GenApi_3_0::EDisplayNotation displayNotation() override;
    std::int64_t displayPrecision() override;

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;
    T compute(Reading how) override;
    void store(T value, bool verify) override;
    T ownMin() override;
    T ownMax() override;
    T ownInc() override;
    /// The values that the XML lists, or else those of the node behind; null when there are none.
    const std::vector<T>* validValues();

private:
    bool linkRange(Linker& linker, const Property& property);

    ValueChoice<T> m_value;
    Source<T> m_min;
    Source<T> m_max;
    Source<T> m_inc;
    std::vector<T> m_valid;
};

class IntegerNode final : public NumberNode<std::int64_t> {
public:
    using NumberNode::NumberNode;
    const std::vector<std::int64_t>* validIntegers() override { return validValues(); }
};

class FloatNode final : public NumberNode<double> {
public:
    using NumberNode::NumberNode;
    const std::vector<double>* validFloats() override { return validValues(); }
};

} // namespace genapi
