#include <cstdint>
#include <limits>

#include "platform/genapi/FormulaTable.h"

namespace {

using formula_table::IntegerRow;

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

class IntegerFormula : public testing::TestWithParam<IntegerRow> {};

TEST_P(IntegerFormula, Gives) {
    EXPECT_EQ(formula_table::Integer(GetParam()), GetParam().expected) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Operators, IntegerFormula,
    testing::Values( //
        IntegerRow{"Add", "A + B", 7, 3, 4}, IntegerRow{"Subtract", "A - B", -1, 3, 4},
        IntegerRow{"Multiply", "A * B", -12, 3, -4}, IntegerRow{"DivideCutsTowardsZero", "A / B", 3, 7, 2},
        IntegerRow{"DivideNegativeCutsTowardsZero", "A / B", -3, -7, 2},
        IntegerRow{"Remainder", "A % B", 1, 7, 3},
        IntegerRow{"RemainderHasTheSignOfTheDividend", "A % B", -1, -7, 3},
        IntegerRow{"RemainderOfNegativeDivisor", "A % B", 1, 7, -3},
        IntegerRow{"Power", "A ** B", 1024, 2, 10}, IntegerRow{"PowerZero", "A ** B", 1, 0, 0},
        IntegerRow{"PowerNegativeExponent", "A ** B", 0, 2, -1},
        IntegerRow{"PowerNegativeExponentOfOne", "A ** B", 1, 1, -7},
        IntegerRow{"PowerNegativeOddExponentOfMinusOne", "A ** B", -1, -1, -7},
        IntegerRow{"PowerNegativeEvenExponentOfMinusOne", "A ** B", 1, -1, -8},
        IntegerRow{"PowerOfNegative", "A ** B", -27, -3, 3}, IntegerRow{"And", "A & B", 0x0C, 0x3C, 0x0F},
        IntegerRow{"Or", "A | B", 0x3F, 0x3C, 0x0F}, IntegerRow{"Xor", "A ^ B", 0x33, 0x3C, 0x0F},
        IntegerRow{"Not", "~A", -6, 5}, IntegerRow{"ShiftLeft", "A << B", 0x50000, 5, 16},
        IntegerRow{"ShiftRight", "A >> B", 5, 0x50000, 16},
        IntegerRow{"ShiftRightKeepsTheSign", "A >> B", -3, -5, 1}, IntegerRow{"UnaryMinus", "-A", -5, 5},
        IntegerRow{"UnaryPlus", "+A", -5, -5}, IntegerRow{"DoubleMinus", "A--B", 7, 3, 4},
        IntegerRow{"MinusPlus", "A-+B", -1, 3, 4}, IntegerRow{"EqualYes", "A = B", 1, 3, 3},
        IntegerRow{"EqualNo", "A = B", 0, 3, 4}, IntegerRow{"DoubleEqual", "A == B", 1, 3, 3},
        IntegerRow{"NotEqualYes", "A <> B", 1, 3, 4}, IntegerRow{"NotEqualNo", "A <> B", 0, 3, 3},
        IntegerRow{"ExclamationEqual", "A != B", 1, 3, 4}, IntegerRow{"LessYes", "A < B", 1, 3, 4},
        IntegerRow{"LessNo", "A < B", 0, 4, 4}, IntegerRow{"GreaterYes", "A > B", 1, 4, 3},
        IntegerRow{"GreaterNo", "A > B", 0, 4, 4}, IntegerRow{"LessEqualYes", "A <= B", 1, 4, 4},
        IntegerRow{"LessEqualNo", "A <= B", 0, 5, 4}, IntegerRow{"GreaterEqualYes", "A >= B", 1, 4, 4},
        IntegerRow{"GreaterEqualNo", "A >= B", 0, 3, 4}, IntegerRow{"LogicalAndYes", "A && B", 1, 2, 4},
        IntegerRow{"LogicalAndNo", "A && B", 0, 2, 0}, IntegerRow{"LogicalAndNoLeft", "A && B", 0, 0, 2},
        IntegerRow{"LogicalOrYes", "A || B", 1, 0, 4}, IntegerRow{"LogicalOrNo", "A || B", 0, 0, 0},
        IntegerRow{"LogicalOrYesLeft", "A || B", 1, 8, 0}, IntegerRow{"LogicalNot", "!A", 0, 7},
        IntegerRow{"LogicalNotOfZero", "!A", 1, 0}, IntegerRow{"ConditionYes", "A ? B : C", 10, -1, 10, 20},
        IntegerRow{"ConditionNo", "A ? B : C", 20, 0, 10, 20}),
    formula_table::RowName<IntegerRow>);

INSTANTIATE_TEST_SUITE_P(
    Borders, IntegerFormula,
    testing::Values( //
        IntegerRow{"AddWraps", "A + B", kMin, kMax, 1}, IntegerRow{"SubtractWraps", "A - B", kMax, kMin, 1},
        IntegerRow{"MultiplyWraps", "A * B", -2, kMax, 2}, IntegerRow{"NegateSmallest", "-A", kMin, kMin},
        IntegerRow{"AbsOfSmallest", "ABS(A)", kMin, kMin},
        IntegerRow{"SmallestByMinusOne", "A / B", kMin, kMin, -1},
        IntegerRow{"SmallestRemainderMinusOne", "A % B", 0, kMin, -1},
        IntegerRow{"PowerWraps", "A ** B", 0, 2, 64}, IntegerRow{"PowerToTheSign", "A ** B", kMin, 2, 63},
        IntegerRow{"PowerHugeExponent", "A ** B", 1, -1, kMax - 1},
        IntegerRow{"PowerSmallestExponent", "A ** B", 0, 2, kMin},
        IntegerRow{"ShiftLeft63", "A << B", kMin, 1, 63}, IntegerRow{"ShiftLeft64", "A << B", 0, 1, 64},
        IntegerRow{"ShiftLeftHuge", "A << B", 0, -1, kMax},
        IntegerRow{"ShiftLeftNegative", "A << B", -4, -1, 2},
        IntegerRow{"ShiftRight63", "A >> B", -1, kMin, 63}, IntegerRow{"ShiftRight64", "A >> B", 0, kMax, 64},
        IntegerRow{"ShiftRight64OfNegative", "A >> B", -1, kMin, 64},
        IntegerRow{"LiteralLargest", "9223372036854775807", kMax},
        IntegerRow{"LiteralSmallest", "-9223372036854775808", kMin},
        IntegerRow{"LiteralUnsigned", "18446744073709551615", -1},
        IntegerRow{"LiteralAllBits", "0xFFFFFFFFFFFFFFFF", -1},
        IntegerRow{"LiteralSignBit", "0x8000000000000000", kMin},
        IntegerRow{"LiteralLeadingZeros", "0x00000000000000000000FF", 255},
        IntegerRow{"LiteralDecimalLeadingZero", "010", 10}, IntegerRow{"LiteralHexSmall", "0Xff", 255}),
    formula_table::RowName<IntegerRow>);

// A float in an integer formula is not cut before it has been reckoned with.
INSTANTIATE_TEST_SUITE_P(
    Mixed, IntegerFormula,
    testing::Values( //
        IntegerRow{"FractionTimes", "A * 0.5", 5, 10}, IntegerRow{"FractionCutAtTheEnd", "A * 0.25", 2, 11},
        IntegerRow{"FractionCutTowardsZero", "A * 0.25", -2, -11},
        IntegerRow{"FractionLeft", "0.5 * A", 5, 10}, IntegerRow{"QuotientByFloat", "A / 4.0 * 4", 7, 7},
        IntegerRow{"QuotientByInteger", "A / 4 * 4", 4, 7}, IntegerRow{"ExponentLiteral", "1e3 + A", 1005, 5},
        IntegerRow{"CompareWithFraction", "A > 2.5", 1, 3},
        IntegerRow{"CompareFractionLeft", "2.5 > A", 0, 3},
        IntegerRow{"FractionIsTrue", "0.5 ? A : B", 3, 3, 4}, IntegerRow{"FractionAndTrue", "0.5 && A", 1, 3},
        IntegerRow{"FractionNot", "!0.5", 0}, IntegerRow{"ConditionRightFloat", "(A ? B : 0.5) * 2", 8, 1, 4},
        IntegerRow{"ConditionRightFloatTaken", "(A ? B : 0.5) * 2", 1, 0, 4},
        IntegerRow{"ConditionLeftFloat", "(A ? 0.5 : B) * 2", 1, 1, 4},
        IntegerRow{"ConditionLeftFloatNotTaken", "(A ? 0.5 : B) * 2", 8, 0, 4},
        IntegerRow{"ConstantConditionLeftOfFloat", "(1 ? 3 : 0.5) / 2 * 2", 3},
        IntegerRow{"ConstantConditionRightOfFloat", "(0 ? 0.5 : 3) / 2 * 2", 3},
        IntegerRow{"BitsOfFraction", "(A * 0.5) & 0xFF", 5, 11},
        IntegerRow{"BitsOfFractionRight", "0xFF & (A * 0.5)", 5, 11}, IntegerRow{"NotOfFraction", "~1.5", -2},
        IntegerRow{"ShiftByFraction", "1 << 2.9", 4},
        IntegerRow{"RoundMakesInteger", "ROUND(A * 0.5) / 4", 1, 11},
        IntegerRow{"FloorMakesInteger", "FLOOR(A * 0.5) / 2", -3, -11},
        IntegerRow{"CeilMakesInteger", "CEIL(A * 0.5) / 4", 1, 11},
        IntegerRow{"TruncMakesInteger", "TRUNC(A * 0.5) / 2", -2, -11},
        IntegerRow{"RoundOfIntegerKeepsAllBits", "ROUND(A)", kMax, kMax},
        IntegerRow{"TruncOfIntegerKeepsAllBits", "TRUNC(A)", kMax, kMax},
        IntegerRow{"RoundDigitsOfIntegerKeepsAllBits", "ROUND(A, 3)", kMax, kMax},
        IntegerRow{"RoundTens", "ROUND(A, -1)", 20, 15}, IntegerRow{"RoundTensDown", "ROUND(A, -1)", 10, 14},
        IntegerRow{"RoundTensNegative", "ROUND(A, -1)", -20, -15},
        IntegerRow{"RoundTensNegativeDown", "ROUND(A, -1)", -10, -14},
        IntegerRow{"RoundLargestUnit", "ROUND(A, -18)", 9000000000000000000, kMax},
        IntegerRow{"RoundBeyondAllDigits", "ROUND(A, -19)", 0, kMax},
        IntegerRow{"RoundFractionalDigits", "ROUND(A, 0.5)", 7, 7},
        IntegerRow{"SquareRoot", "SQRT(A)", 3, 15}, IntegerRow{"SquareRootTimes", "SQRT(A) * 10", 38, 15},
        IntegerRow{"SignPositive", "SGN(A)", 1, 9}, IntegerRow{"SignNegative", "SGN(A)", -1, -9},
        IntegerRow{"SignZero", "SGN(A)", 0, 0}, IntegerRow{"SignLarge", "SGN(A)", -1, kMin},
        IntegerRow{"Neg", "NEG(A)", -9, 9}, IntegerRow{"Abs", "ABS(A)", 9, -9},
        IntegerRow{"TooLargeIsHeld", "1e300", kMax}, IntegerRow{"TooSmallIsHeld", "-1e300", kMin},
        IntegerRow{"InfiniteIsHeld", "A / 0.0", kMax, 1}, IntegerRow{"PiIsCut", "PI * 100", 314}),
    formula_table::RowName<IntegerRow>);

} // namespace
