#include <cmath>
#include <cstdint>
#include <limits>

#include "platform/genapi/FormulaTable.h"

namespace {

using formula_table::FloatRow;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class FloatFormula : public testing::TestWithParam<FloatRow> {};

TEST_P(FloatFormula, Gives) {
    const FloatRow& row = GetParam();
    const double result = formula_table::Float(row);
    if (std::isnan(row.expected)) {
        EXPECT_TRUE(std::isnan(result)) << row.text << " = " << result;
    } else {
        EXPECT_DOUBLE_EQ(result, row.expected) << row.text;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Operators, FloatFormula,
    testing::Values( //
        FloatRow{"Add", "A + B", 3.75, 1.5, 2.25}, FloatRow{"Subtract", "A - B", -0.75, 1.5, 2.25},
        FloatRow{"Multiply", "A * B", 3.375, 1.5, 2.25}, FloatRow{"Divide", "A / B", 3.5, 7, 2},
        FloatRow{"DivideLiterals", "7 / 2", 3.5}, FloatRow{"DivideComparisons", "(A > 0) / 2", 0.5, 1},
        FloatRow{"DivideBits", "(A & 7) / 2", 3.5, 15}, FloatRow{"Remainder", "A % B", 1.5, 7.5, 3},
        FloatRow{"RemainderNegative", "A % B", -1.5, -7.5, 3},
        FloatRow{"Power", "A ** B", 1.4142135623730951, 2, 0.5},
        FloatRow{"PowerNegative", "A ** B", 0.25, 2, -2}, FloatRow{"And", "A & B", 12, 60.9, 15},
        FloatRow{"Or", "A | B", 63, 60, 15}, FloatRow{"Xor", "A ^ B", 51, 60, 15},
        FloatRow{"Not", "~A", -6, 5}, FloatRow{"ShiftLeft", "A << B", 327680, 5, 16},
        FloatRow{"ShiftRight", "A >> B", 5, 327680, 16}, FloatRow{"UnaryMinus", "-A", -2.5, 2.5},
        FloatRow{"UnaryPlus", "+A", 2.5, 2.5}, FloatRow{"Equal", "A = B", 1, 0.5, 0.5},
        FloatRow{"EqualNo", "A = B", 0, 0.5, 0.25}, FloatRow{"NotEqual", "A <> B", 1, 0.5, 0.25},
        FloatRow{"NotEqualNo", "A <> B", 0, 0.5, 0.5}, FloatRow{"Less", "A < B", 1, 0.25, 0.5},
        FloatRow{"LessNo", "A < B", 0, 0.5, 0.5}, FloatRow{"Greater", "A > B", 1, 0.5, 0.25},
        FloatRow{"GreaterNo", "A > B", 0, 0.5, 0.5}, FloatRow{"LessEqual", "A <= B", 1, 0.5, 0.5},
        FloatRow{"LessEqualNo", "A <= B", 0, 0.75, 0.5}, FloatRow{"GreaterEqual", "A >= B", 1, 0.5, 0.5},
        FloatRow{"GreaterEqualNo", "A >= B", 0, 0.25, 0.5}, FloatRow{"LogicalAnd", "A && B", 1, 0.1, 0.1},
        FloatRow{"LogicalAndNo", "A && B", 0, 0.1, 0}, FloatRow{"LogicalOr", "A || B", 1, 0, 0.1},
        FloatRow{"LogicalOrNo", "A || B", 0, 0, 0}, FloatRow{"LogicalNot", "!A", 0, 0.1},
        FloatRow{"LogicalNotOfZero", "!A", 1, 0}, FloatRow{"Condition", "A ? B : C", 10.5, 0.1, 10.5, 20.5},
        FloatRow{"ConditionNo", "A ? B : C", 20.5, 0, 10.5, 20.5},
        FloatRow{"ConditionMixed", "A ? 1 : B", 1, 1, 0.5},
        FloatRow{"ConditionMixedNo", "A ? 1 : B", 0.5, 0, 0.5}),
    formula_table::RowName<FloatRow>);

INSTANTIATE_TEST_SUITE_P(
    Functions, FloatFormula,
    testing::Values( //
        FloatRow{"SgnPositive", "SGN(A)", 1, 0.1}, FloatRow{"SgnNegative", "SGN(A)", -1, -0.1},
        FloatRow{"SgnZero", "SGN(A)", 0, 0}, FloatRow{"SgnNaN", "SGN(A)", kNaN, kNaN},
        FloatRow{"Neg", "NEG(A)", -1.5, 1.5}, FloatRow{"Abs", "ABS(A)", 1.5, -1.5},
        FloatRow{"Sqrt", "SQRT(A)", 1.5, 2.25}, FloatRow{"SqrtNegative", "SQRT(A)", kNaN, -1},
        FloatRow{"Trunc", "TRUNC(A)", 2, 2.9}, FloatRow{"TruncNegative", "TRUNC(A)", -2, -2.9},
        FloatRow{"Floor", "FLOOR(A)", 2, 2.9}, FloatRow{"FloorNegative", "FLOOR(A)", -3, -2.1},
        FloatRow{"Ceil", "CEIL(A)", 3, 2.1}, FloatRow{"CeilNegative", "CEIL(A)", -2, -2.9},
        FloatRow{"Round", "ROUND(A)", 3, 2.5}, FloatRow{"RoundDown", "ROUND(A)", 2, 2.4},
        FloatRow{"RoundNegativeHalf", "ROUND(A)", -3, -2.5},
        FloatRow{"RoundDigits", "ROUND(A, 2)", 1.23, 1.2345},
        FloatRow{"RoundDigitsUp", "ROUND(A, 3)", 1.235, 1.23456},
        FloatRow{"RoundNoDigits", "ROUND(A, 0)", 3, 2.5},
        FloatRow{"RoundNegativeDigits", "ROUND(A, -2)", 1200, 1234.5},
        FloatRow{"RoundManyDigits", "ROUND(A, 400)", 1.5, 1.5},
        FloatRow{"RoundManyNegativeDigits", "ROUND(A, -400)", 0, 1.5},
        FloatRow{"RoundOverflow", "ROUND(A, 300)", 1e300, 1e300},
        FloatRow{"RoundInfinite", "ROUND(A, -400)", kInf, kInf},
        FloatRow{"RoundNaNDigits", "ROUND(A, B)", kNaN, 1.5, kNaN},
        FloatRow{"Sin", "SIN(A)", 0.8414709848078965, 1}, FloatRow{"Cos", "COS(A)", 0.54030230586813977, 1},
        FloatRow{"Tan", "TAN(A)", 1.5574077246549023, 1}, FloatRow{"Asin", "ASIN(A)", 1.5707963267948966, 1},
        FloatRow{"Acos", "ACOS(A)", 1.0471975511965979, 0.5},
        FloatRow{"Atan", "ATAN(A)", 0.78539816339744828, 1},
        FloatRow{"Atan2", "ATAN2(A, B)", 2.3561944901923448, 1, -1},
        FloatRow{"Exp", "EXP(A)", 7.3890560989306495, 2}, FloatRow{"Ln", "LN(A)", 2.302585092994046, 10},
        FloatRow{"Lg", "LG(A)", 3, 1000}, FloatRow{"LnOfZero", "LN(A)", -kInf, 0},
        FloatRow{"LgOfNegative", "LG(A)", kNaN, -1}, FloatRow{"AcosOutOfRange", "ACOS(A)", kNaN, 2},
        FloatRow{"SmallLetters", "sin(A) + Cos(B)", 1, 0, 0},
        FloatRow{"OfAnIntegerValue", "SQRT(A & 0xFF)", 4, 16},
        FloatRow{"OfACondition", "SQRT(A ? B : C)", 3, 1, 9, 16},
        FloatRow{"Nested", "SQRT(ABS(NEG(A)))", 3, 9},
        FloatRow{"ArgumentsAreWholeFormulas", "ATAN2(A ? B : C, A ? C : B)", 0.78539816339744828, 1, 2, 2}),
    formula_table::RowName<FloatRow>);

INSTANTIATE_TEST_SUITE_P(
    Borders, FloatFormula,
    testing::Values( //
        FloatRow{"DivideByZero", "A / B", kInf, 1, 0}, FloatRow{"NegativeByZero", "A / B", -kInf, -1, 0},
        FloatRow{"ZeroByZero", "A / B", kNaN, 0, 0}, FloatRow{"RemainderByZero", "A % B", kNaN, 1, 0},
        FloatRow{"ZeroToNegative", "A ** B", kInf, 0, -1}, FloatRow{"NaNIsTrue", "A ? 1 : 2", 1, kNaN},
        FloatRow{"NaNEqualsNothing", "A = A", 0, kNaN}, FloatRow{"NaNDiffers", "A <> A", 1, kNaN},
        FloatRow{"BitsOfTooLarge", "A & B", 9223372036854775807.0, 1e30, 1e30},
        FloatRow{"BitsOfInfinite", "A >> 62", 1, kInf}, FloatRow{"BitsOfMinusInfinite", "A >> 62", -2, -kInf},
        FloatRow{"BitsAreExactBetween", "((A << 60) | 1) & 0xFF", 1, 1},
        FloatRow{"HexIsAPattern", "0xFFFFFFFFFFFFFFFF", -1},
        FloatRow{"LargeDecimal", "18446744073709551615", 18446744073709551615.0},
        FloatRow{"SignBitDecimal", "9223372036854775808", 9223372036854775808.0},
        FloatRow{"HugeDecimal", "1000000000000000000000000000000", 1e30},
        FloatRow{"LargeDecimalNegated", "-9223372036854775808", -9223372036854775808.0},
        FloatRow{"HexNegated", "-0x8000000000000000", 9223372036854775808.0}, FloatRow{"Fraction", ".5", 0.5},
        FloatRow{"PointAtTheEnd", "5.", 5}, FloatRow{"Exponent", "2e3", 2000},
        FloatRow{"NegativeExponent", "25E-1", 2.5}, FloatRow{"PlusExponent", "1.5e+2", 150},
        FloatRow{"Pi", "PI", 3.141592653589793}, FloatRow{"E", "E", 2.718281828459045},
        FloatRow{"ExponentOrE", "2*E", 5.43656365691809}),
    formula_table::RowName<FloatRow>);

} // namespace
