#include "formula/Formula.h"

#include <algorithm>

#include "formula/FormulaCompiler.h"
#include "formula/FormulaProgram.h"

namespace genapi {

namespace {

bool NameLess(const FormulaScope::Symbol& symbol, std::string_view name) {
    return symbol.name < name;
}

const char* Describe(FormulaFault fault) {
    switch (fault) {
    case FormulaFault::DivisionByZero:
        return "division by zero";
    case FormulaFault::NegativeShift:
        return "negative shift count";
    default:
        return "not a number where an integer is wanted";
    }
}

} // namespace

void FormulaScope::AddVariable(std::string_view name, std::uint32_t index) {
    Add({name, {}, Kind::Variable, index});
}

void FormulaScope::AddConstant(std::string_view name, std::string_view number) {
    Add({name, number, Kind::Constant, 0});
}

void FormulaScope::AddExpression(std::string_view name, std::string_view formula) {
    Add({name, formula, Kind::Expression, 0});
}

void FormulaScope::Add(const Symbol& symbol) {
    const auto place = std::lower_bound(m_symbols.begin(), m_symbols.end(), symbol.name, NameLess);
    if (place != m_symbols.end() && place->name == symbol.name) {
        throw FormulaError("The name \"" + std::string(symbol.name) + "\" is defined twice", 0);
    }
    m_symbols.insert(place, symbol);
}

const FormulaScope::Symbol* FormulaScope::Find(std::string_view name) const {
    const auto place = std::lower_bound(m_symbols.begin(), m_symbols.end(), name, NameLess);
    return place != m_symbols.end() && place->name == name ? &*place : nullptr;
}

Formula::Formula() = default;
Formula::Formula(Formula&&) noexcept = default;
Formula& Formula::operator=(Formula&&) noexcept = default;
Formula::Formula(const Formula&) = default;
Formula& Formula::operator=(const Formula&) = default;
Formula::~Formula() = default;

Formula Formula::Compile(std::string_view text, Arithmetic arithmetic, const FormulaScope& scope) {
    return FormulaCompiler(arithmetic, scope).Compile(text);
}

void Formula::Run(Arithmetic wanted, const void* values, FormulaValue& result) const {
    if (m_arithmetic != wanted) {
        throw std::logic_error("Formula \"" + Text() + "\" evaluated in the wrong arithmetic");
    }
    const FormulaInstruction* at = nullptr;
    const FormulaFault fault = RunFormula(m_code.data(), values, result, at);
    if (fault != FormulaFault::None) {
        ThrowFormulaError(Text(), m_sources[at->source], at->position, Describe(fault));
    }
}

std::int64_t Formula::EvaluateInteger(const std::int64_t* values) const {
    FormulaValue result;
    Run(Arithmetic::Integer, values, result);
    return result.i;
}

double Formula::EvaluateFloat(const double* values) const {
    FormulaValue result;
    Run(Arithmetic::Float, values, result);
    return result.d;
}

} // namespace genapi
