#pragma once
/// What SwissKnives and Converters share: variables, and formulas that are compiled when first needed.
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/Linker.h"
#include "formula/Formula.h"

namespace genapi {

/// The variables, constants and expressions that a node's formulas may use.
class FormulaNames {
public:
    /// True when the property was one of these.
    bool link(Node& owner, Linker& linker, const Property& property);
    /// What the variables allow: NI or NA when one of them can't be read, else RW.
    GenApi_3_0::EAccessMode mode(GenApi_3_0::EAccessMode (*needed)(Node&)) const;
    void children(std::vector<Node*>& all) const;

private:
    friend class NodeFormula;

    enum class Part { Value, Min, Max, Inc, Entry };
    struct Variable {
        std::string_view name;  // as the formula writes it, without a suffix that tells the part
        std::string_view entry; // of an enumeration
        Node* node;
        Part part;
    };
    struct Text {
        std::string_view name;
        std::string_view text;
    };

    static void split(std::string_view name, Variable& variable);
    std::int64_t readInteger(const Variable& variable, Reading how) const;
    double readFloat(const Variable& variable, Reading how) const;

    std::vector<Variable> m_variables;
    std::vector<Text> m_constants;
    std::vector<Text> m_expressions;
};

/// One formula of a node. A formula that doesn't compile throws PropertyException with the node's name at
/// each use; one that meets values it can't work with (a division by zero) throws RuntimeException.
class NodeFormula {
public:
    /// The property that holds the formula's text, and the name of the number that a converter puts into it;
    /// empty: none.
    NodeFormula(PropertyId text, std::string_view input) : m_textId(text), m_input(input) {}

    void compile(Node& owner, const FormulaNames& names, Formula::Arithmetic arithmetic);
    std::int64_t integer(Node& owner, const FormulaNames& names, Reading how, std::int64_t input = 0);
    double floating(Node& owner, const FormulaNames& names, Reading how, double input = 0);

private:
    [[noreturn]] void throwWrong(const Node& owner) const;
    /// Names with a part behind them ("VAR.Max") that a formula uses although only "VAR" is declared.
    void addDotted(const FormulaNames& names, std::string_view text);

    PropertyId m_textId;
    std::string_view m_input;
    std::unique_ptr<Formula> m_formula;
    std::vector<FormulaNames::Variable> m_variables; // by the formula's indices, behind the input
    std::string m_error;                             // why it doesn't compile
};

} // namespace genapi
