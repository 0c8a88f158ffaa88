#include "genapi/FuzzFormula.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "formula/Formula.h"

namespace fuzz {

namespace {

using genapi::Formula;
using genapi::FormulaError;
using genapi::FormulaScope;

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void AddLine(FormulaScope& scope, std::string_view line) {
    const std::size_t mark = line.find_first_of(":=");
    if (mark == std::string_view::npos) {
        return;
    }
    const std::string_view name = line.substr(0, mark);
    const std::string_view text = line.substr(mark + 1);
    line[mark] == ':' ? scope.AddExpression(name, text) : scope.AddConstant(name, text);
}

template<class Number, class Evaluate>
void EvaluateTwice(const Number (&values)[4], Evaluate evaluate) {
    const auto once = [&](Number& result) {
        try {
            result = evaluate(values);
            return true;
        } catch (const FormulaError&) {
            return false;
        }
    };
    Number first{};
    Number second{};
    Require(once(first) == once(second));
    Require(std::memcmp(&first, &second, sizeof first) == 0);
}

void Evaluate(const Formula& formula) {
    for (const std::uint32_t index : formula.Variables()) {
        Require(index < 4);
    }
    if (formula.GetArithmetic() == Formula::Arithmetic::Integer) {
        using Limits = std::numeric_limits<std::int64_t>;
        static const std::int64_t kValues[][4] = {{0, 0, 0, 0},
                                                  {1, 2, 3, 4},
                                                  {-1, Limits::min(), Limits::max(), 63},
                                                  {Limits::min(), -1, 64, Limits::max()}};
        for (const auto& values : kValues) {
            EvaluateTwice(values, [&](const std::int64_t* v) { return formula.EvaluateInteger(v); });
        }
        return;
    }
    using Limits = std::numeric_limits<double>;
    static const double kValues[][4] = {
        {0, 0, 0, 0},
        {1.5, -2.5, 3e5, 0.1},
        {Limits::infinity(), Limits::quiet_NaN(), Limits::max(), -0.0},
        {-Limits::infinity(), Limits::denorm_min(), 9223372036854775808.0, -1}};
    for (const auto& values : kValues) {
        EvaluateTwice(values, [&](const double* v) { return formula.EvaluateFloat(v); });
    }
}

} // namespace

void FuzzFormula(const std::uint8_t* data, std::size_t size) {
    const std::string_view all(reinterpret_cast<const char*>(data), size);
    std::size_t end = all.find('\n');
    const std::string_view text = all.substr(0, end);
    FormulaScope scope;
    try {
        scope.AddVariable("A", 0);
        scope.AddVariable("TO", 1);
        scope.AddVariable("VAR.Max", 2);
        scope.AddVariable("VAR.Entry.Off", 3);
        while (end != std::string_view::npos) {
            const std::size_t begin = end + 1;
            end = all.find('\n', begin);
            AddLine(scope, all.substr(begin, end == std::string_view::npos ? end : end - begin));
        }
    } catch (const FormulaError&) {
        return;
    }
    for (const auto arithmetic : {Formula::Arithmetic::Integer, Formula::Arithmetic::Float}) {
        try {
            Evaluate(Formula::Compile(text, arithmetic, scope));
        } catch (const FormulaError& error) {
            Require(error.what()[0] != '\0');
        }
    }
}

} // namespace fuzz
