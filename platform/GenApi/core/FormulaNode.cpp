#include "core/FormulaNode.h"

#include <algorithm>
#include <array>

#include "core/NumberText.h"

namespace genapi {

using namespace GenApi_3_0;

namespace {

/// Space for the values of a formula's variables, on the stack for all but the largest.
template<class T>
class Values {
public:
    explicit Values(std::size_t count) : m_large(count > m_small.size() ? count : 0) {
        m_values = m_large.empty() ? m_small.data() : m_large.data();
    }
    T& operator[](std::size_t index) { return m_values[index]; }
    const T* data() const { return m_values; }

private:
    std::array<T, 16> m_small{};
    std::vector<T> m_large;
    T* m_values;
};

bool isNameLetter(char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
           (letter >= '0' && letter <= '9') || letter == '_' || letter == '.';
}

} // namespace

// FormulaNames

bool FormulaNames::link(Node& owner, Linker& linker, const Property& property) {
    switch (property.id) {
    case PropertyId::pVariable: {
        Variable variable{};
        variable.name = property.attribute;
        variable.node = linker.number(owner, property);
        if (variable.name.empty())
            owner.setFault("a pVariable has no name");
        m_variables.push_back(variable);
        return true;
    }
    case PropertyId::Constant:
        m_constants.push_back({property.attribute, property.text});
        return true;
    case PropertyId::Expression:
        m_expressions.push_back({property.attribute, property.text});
        return true;
    default:
        return false;
    }
}

EAccessMode FormulaNames::mode(EAccessMode (*needed)(Node&)) const {
    EAccessMode mode = RW;
    for (const Variable& variable : m_variables)
        mode = Combine(mode, needed(*variable.node));
    return mode;
}

void FormulaNames::children(std::vector<Node*>& all) const {
    for (const Variable& variable : m_variables)
        if (variable.node != nullptr)
            all.push_back(variable.node);
}

void FormulaNames::split(std::string_view name, Variable& variable) {
    variable.part = Part::Value;
    const std::size_t dot = name.find('.');
    if (dot == std::string_view::npos)
        return;
    const std::string_view suffix = name.substr(dot + 1);
    if (suffix == "Min")
        variable.part = Part::Min;
    else if (suffix == "Max")
        variable.part = Part::Max;
    else if (suffix == "Inc")
        variable.part = Part::Inc;
    else if (suffix.substr(0, 6) == "Entry.") {
        variable.part = Part::Entry;
        variable.entry = suffix.substr(6);
    }
}

std::int64_t FormulaNames::readInteger(const Variable& variable, Reading how) const {
    switch (variable.part) {
    case Part::Min:
        return variable.node->minInteger();
    case Part::Max:
        return variable.node->maxInteger();
    case Part::Inc:
        return variable.node->incInteger();
    case Part::Entry:
        return variable.node->entryValue(variable.entry);
    default:
        return variable.node->readInteger(how);
    }
}

double FormulaNames::readFloat(const Variable& variable, Reading how) const {
    switch (variable.part) {
    case Part::Min:
        return variable.node->minFloat();
    case Part::Max:
        return variable.node->maxFloat();
    case Part::Inc:
        return variable.node->incFloat();
    case Part::Entry:
        return static_cast<double>(variable.node->entryValue(variable.entry));
    default:
        return variable.node->readFloat(how);
    }
}

// NodeFormula

void NodeFormula::addDotted(const FormulaNames& names, std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        if (!isNameLetter(text[i])) {
            ++i;
            continue;
        }
        std::size_t end = i;
        while (end < text.size() && isNameLetter(text[end]))
            ++end;
        const std::string_view word = text.substr(i, end - i);
        i = end;
        const std::size_t dot = word.find('.');
        const auto isWord = [word](const auto& known) { return known.name == word; };
        if (dot == std::string_view::npos || std::any_of(m_variables.begin(), m_variables.end(), isWord))
            continue;
        const auto declared = std::find_if(
            names.m_variables.begin(), names.m_variables.end(),
            [&](const FormulaNames::Variable& known) { return known.name == word.substr(0, dot); });
        if (declared == names.m_variables.end())
            continue;
        FormulaNames::Variable variable = *declared;
        variable.name = word;
        FormulaNames::split(word, variable);
        m_variables.push_back(variable);
    }
}

void NodeFormula::compile(Node& owner, const FormulaNames& names, Formula::Arithmetic arithmetic) {
    if (m_formula)
        return;
    if (!m_error.empty())
        throwWrong(owner);
    const std::string_view text = owner.text(m_textId);
    try {
        m_variables = names.m_variables;
        for (FormulaNames::Variable& variable : m_variables)
            FormulaNames::split(variable.name, variable);
        addDotted(names, text);
        for (const FormulaNames::Text& expression : names.m_expressions)
            addDotted(names, expression.text);
        FormulaScope scope;
        std::uint32_t index = 0;
        if (!m_input.empty())
            scope.AddVariable(m_input, index++);
        for (const FormulaNames::Variable& variable : m_variables)
            scope.AddVariable(variable.name, index++);
        for (const FormulaNames::Text& constant : names.m_constants)
            scope.AddConstant(constant.name, constant.text);
        for (const FormulaNames::Text& expression : names.m_expressions)
            scope.AddExpression(expression.name, expression.text);
        m_formula = std::make_unique<Formula>(Formula::Compile(text, arithmetic, scope));
    } catch (const FormulaError& error) {
        m_error = error.what();
        throwWrong(owner);
    }
}

void NodeFormula::throwWrong(const Node& owner) const {
    throw PROPERTY_EXCEPTION("%s: %s", owner.label().c_str(), m_error.c_str());
}

std::int64_t NodeFormula::integer(Node& owner, const FormulaNames& names, Reading how, std::int64_t input) {
    compile(owner, names, Formula::Arithmetic::Integer);
    const std::size_t before = m_input.empty() ? 0 : 1;
    Values<std::int64_t> values(m_variables.size() + before);
    values[0] = input;
    for (const std::uint32_t index : m_formula->Variables())
        if (index >= before)
            values[index] = names.readInteger(m_variables[index - before], how);
    try {
        return m_formula->EvaluateInteger(values.data());
    } catch (const FormulaError& error) {
        throw RUNTIME_EXCEPTION("%s: %s", owner.label().c_str(), error.what());
    }
}

double NodeFormula::floating(Node& owner, const FormulaNames& names, Reading how, double input) {
    compile(owner, names, Formula::Arithmetic::Float);
    const std::size_t before = m_input.empty() ? 0 : 1;
    Values<double> values(m_variables.size() + before);
    values[0] = input;
    for (const std::uint32_t index : m_formula->Variables())
        if (index >= before)
            values[index] = names.readFloat(m_variables[index - before], how);
    try {
        return m_formula->EvaluateFloat(values.data());
    } catch (const FormulaError& error) {
        throw RUNTIME_EXCEPTION("%s: %s", owner.label().c_str(), error.what());
    }
}

} // namespace genapi
