// One row of a formula table: the text, and what it gives with the variables A, B, C and X.Max.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "formula/Formula.h"

namespace formula_table {

inline genapi::FormulaScope Variables() {
    genapi::FormulaScope scope;
    scope.AddVariable("A", 0);
    scope.AddVariable("B", 1);
    scope.AddVariable("C", 2);
    scope.AddVariable("X.Max", 3);
    return scope;
}

struct IntegerRow {
    const char* name;
    const char* text;
    std::int64_t expected;
    std::int64_t a = 0;
    std::int64_t b = 0;
    std::int64_t c = 0;
};

struct FloatRow {
    const char* name;
    const char* text;
    double expected;
    double a = 0;
    double b = 0;
    double c = 0;
};

template<class Row>
std::string RowName(const testing::TestParamInfo<Row>& info) {
    return info.param.name;
}

inline std::int64_t Integer(const IntegerRow& row) {
    const auto formula =
        genapi::Formula::Compile(row.text, genapi::Formula::Arithmetic::Integer, Variables());
    const std::int64_t values[] = {row.a, row.b, row.c, 77};
    return formula.EvaluateInteger(values);
}

inline double Float(const FloatRow& row) {
    const auto formula = genapi::Formula::Compile(row.text, genapi::Formula::Arithmetic::Float, Variables());
    const double values[] = {row.a, row.b, row.c, 77.5};
    return formula.EvaluateFloat(values);
}

} // namespace formula_table
