#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/genapi/FormulaTable.h"

namespace {

using formula_table::IntegerRow;
using genapi::Formula;
using genapi::FormulaScope;

class FormulaLanguage : public testing::TestWithParam<IntegerRow> {};

TEST_P(FormulaLanguage, Gives) {
    EXPECT_EQ(formula_table::Integer(GetParam()), GetParam().expected) << GetParam().text;
}

// Each row gives another result when the two operators bind the other way round.
INSTANTIATE_TEST_SUITE_P(
    Precedence, FormulaLanguage,
    testing::Values( //
        IntegerRow{"ConditionUnderOr", "1 || 0 ? 2 : 3", 2}, IntegerRow{"OrUnderAnd", "1 || 0 && 0", 1},
        IntegerRow{"AndUnderBitOr", "2 && 0 | 1", 1}, IntegerRow{"BitOrUnderXor", "1 | 1 ^ 1", 1},
        IntegerRow{"XorUnderBitAnd", "1 ^ 1 & 0", 1}, IntegerRow{"BitAndUnderEqual", "2 & 2 = 2", 0},
        IntegerRow{"BitAndUnderNotEqual", "2 & 2 <> 3", 0}, IntegerRow{"EqualUnderLess", "2 = 1 < 3", 0},
        IntegerRow{"LessUnderShift", "1 < 1 << 1", 1}, IntegerRow{"GreaterUnderShift", "4 > 8 >> 2", 1},
        IntegerRow{"ShiftUnderPlus", "1 << 1 + 1", 4}, IntegerRow{"ShiftUnderMinus", "16 >> 3 - 1", 4},
        IntegerRow{"PlusUnderTimes", "1 + 2 * 3", 7}, IntegerRow{"PlusUnderTimesLeft", "2 * 3 + 1", 7},
        IntegerRow{"MinusUnderDivide", "9 - 6 / 3", 7}, IntegerRow{"PlusUnderRemainder", "5 + 5 % 3", 7},
        IntegerRow{"TimesUnderPower", "2 * 3 ** 2", 18}, IntegerRow{"PowerUnderTimesRight", "2 ** 3 * 2", 16},
        IntegerRow{"SignOverPower", "-2 ** 2", 4}, IntegerRow{"NotOverPower", "~2 ** 2", 9},
        IntegerRow{"SignOverPowerOfVariable", "-A ** 2", 9, 3},
        IntegerRow{"SignAfterPower", "2 ** -1 ** 2", 2}, IntegerRow{"SignInExponent", "2 ** -1 + 1", 1},
        IntegerRow{"SignOverTimes", "-2 * -3", 6}, IntegerRow{"NotOverPlus", "~1 + 1", -1},
        IntegerRow{"LogicalNotOverPlus", "!0 + 1", 2}, IntegerRow{"Brackets", "(1 + 2) * 3", 9},
        IntegerRow{"BracketsInBrackets", "((1 + (2)) * (3))", 9}),
    formula_table::RowName<IntegerRow>);

INSTANTIATE_TEST_SUITE_P(
    Associativity, FormulaLanguage,
    testing::Values( //
        IntegerRow{"MinusFromTheLeft", "10 - 4 - 3", 3}, IntegerRow{"MinusPlus", "10 - 4 + 3", 9},
        IntegerRow{"DivideFromTheLeft", "100 / 10 / 5", 2}, IntegerRow{"DivideTimes", "100 / 10 * 5", 50},
        IntegerRow{"RemainderFromTheLeft", "100 % 30 % 4", 2},
        IntegerRow{"ShiftFromTheLeft", "1 << 2 << 1", 8},
        IntegerRow{"ShiftRightFromTheLeft", "64 >> 4 >> 1", 2},
        IntegerRow{"CompareFromTheLeft", "3 > 2 > 1", 0}, IntegerRow{"EqualFromTheLeft", "2 = 2 = 2", 0},
        IntegerRow{"PowerFromTheRight", "2 ** 3 ** 2", 512},
        IntegerRow{"ConditionFromTheRight", "0 ? 1 : 0 ? 2 : 3", 3},
        IntegerRow{"ConditionInTheMiddle", "1 ? 0 ? 1 : 2 : 3", 2},
        IntegerRow{"ConditionChain", "A=0 ? 10 : A=1 ? 11 : A=2 ? 12 : 13", 12, 2}),
    formula_table::RowName<IntegerRow>);

INSTANTIATE_TEST_SUITE_P(
    OldBugs, FormulaLanguage,
    testing::Values( //
        IntegerRow{"DottedName", "X.Max + 1", 78}, IntegerRow{"DottedNameBesideOperators", "2*X.Max-1", 153},
        IntegerRow{"UntakenDivisionByZero", "A = 0 ? 5 : 100 / A", 5, 0},
        IntegerRow{"UntakenConstantDivisionByZero", "A ? 1 / 0 : 5", 5, 0},
        IntegerRow{"AndStopsAtFalse", "A && 100 / A", 0, 0},
        IntegerRow{"OrStopsAtTrue", "!A || 100 / A", 1, 0}, IntegerRow{"ConstantOrStops", "1 || 1 / 0", 1},
        IntegerRow{"ConstantAndStops", "0 && 1 / 0", 0}, IntegerRow{"ConstantAndGoesOn", "1 && A", 1, 9},
        IntegerRow{"ConstantOrGoesOn", "0 || A", 1, 9},
        IntegerRow{"ConstantConditionDropsTheOther", "1 ? A : 1 / 0", 9, 9},
        IntegerRow{"MinusBesideName", "A-B", 2, 5, 3}, IntegerRow{"MinusBesideNumber", "A-1", 4, 5},
        IntegerRow{"HexBesideMinus", "0x10-1", 15}, IntegerRow{"HexEndingInE", "0xE-1", 13},
        IntegerRow{"HexEndingInEPlus", "0x1E+3", 33}, IntegerRow{"NoBlanks", "(A&2)?1:0", 1, 6},
        IntegerRow{"LineBreaksAndTabs", " \t( A\r\n&\n2 ) ", 2, 6},
        IntegerRow{"NotEqualNotLess", "(A<>0)", 1, 6}, IntegerRow{"LessThanNegative", "A<-1", 1, -2},
        IntegerRow{"EqualNegative", "A=-2", 1, -2}, IntegerRow{"NotNot", "~~A", 6, 6},
        IntegerRow{"TimesNegative", "A*-1", -6, 6},
        IntegerRow{"ColonOfAnotherCondition", "(A?1:2)?3:4", 3, 1},
        IntegerRow{"FourByteField",
                   "(A & 0x1F) = 0x10 ? (A & 0x3F) : (A & 0x3F) + (B & 0xC0) + ((C & 0xFFFF) << 16)", 0x700C5,
                   0x05, 0xFC0, 7}),
    formula_table::RowName<IntegerRow>);

std::int64_t Evaluate(const char* text, const FormulaScope& scope, std::vector<std::int64_t> values = {}) {
    return Formula::Compile(text, Formula::Arithmetic::Integer, scope).EvaluateInteger(values.data());
}

double EvaluateFloat(const char* text, const FormulaScope& scope, std::vector<double> values = {}) {
    return Formula::Compile(text, Formula::Arithmetic::Float, scope).EvaluateFloat(values.data());
}

TEST(FormulaNames, AreFoundByTheirWholeSpelling) {
    FormulaScope scope;
    scope.AddVariable("VAR", 0);
    scope.AddVariable("VAR2", 1);
    scope.AddVariable("VAR.Min", 2);
    scope.AddVariable("VAR.Entry.Off_1", 3);
    scope.AddVariable("var", 4);
    scope.AddVariable("_x", 5);
    EXPECT_EQ(Evaluate("VAR + VAR2*10 + VAR.Min*100 + VAR.Entry.Off_1*1000 + var*10000 + _x*100000", scope,
                       {1, 2, 3, 4, 5, 6}),
              654321);
}

TEST(FormulaNames, VariablesComeBeforeTheNamesOfTheLanguage) {
    FormulaScope scope;
    scope.AddVariable("E", 0);
    scope.AddVariable("PI", 1);
    scope.AddVariable("SIN", 2);
    EXPECT_EQ(Evaluate("E + PI*10 + SIN*100", scope, {1, 2, 3}), 321);
    EXPECT_DOUBLE_EQ(EvaluateFloat("SIN(SIN)", scope, {0, 0, 1}), 0.8414709848078965);
}

TEST(FormulaNames, VariablesReportWhatTheResultDependsOn) {
    FormulaScope scope;
    scope.AddVariable("A", 7);
    scope.AddVariable("B", 3);
    scope.AddVariable("C", 5);
    const auto compile = [&](const char* text) {
        return Formula::Compile(text, Formula::Arithmetic::Integer, scope).Variables();
    };
    EXPECT_EQ(compile("A + B * A"), (std::vector<std::uint32_t>{3, 7}));
    EXPECT_EQ(compile("1 ? A : C"), (std::vector<std::uint32_t>{7}));
    EXPECT_EQ(compile("0 && C"), (std::vector<std::uint32_t>{}));
}

TEST(FormulaConstants, AreNumbersWithASign) {
    FormulaScope scope;
    scope.AddConstant("TEN", " 10 ");
    scope.AddConstant("MINUS", "-3");
    scope.AddConstant("HEX", "0xFF");
    scope.AddConstant("HALF", "0.5");
    EXPECT_EQ(Evaluate("TEN + MINUS", scope), 7);
    EXPECT_EQ(Evaluate("HEX & 0xF", scope), 15);
    EXPECT_EQ(Evaluate("TEN * HALF", scope), 5);
    EXPECT_DOUBLE_EQ(EvaluateFloat("MINUS * HALF", scope), -1.5);
    // A constant is one value, not a piece of text.
    EXPECT_EQ(Evaluate("MINUS ** 2", scope), 9);
}

TEST(FormulaExpressions, AreReckonedInPlaceAsOneValue) {
    FormulaScope scope;
    scope.AddVariable("A", 0);
    scope.AddExpression("SUM", "A + K");
    scope.AddConstant("K", "1");
    scope.AddExpression("TWICE", "2 * SUM");
    EXPECT_EQ(Evaluate("3 * SUM", scope, {4}), 15);
    EXPECT_EQ(Evaluate("TWICE - SUM", scope, {4}), 5);
    EXPECT_EQ(Evaluate("TWICE", scope, {4}), 10);
}

TEST(FormulaExpressions, AreOnlyReckonedWhereNeeded) {
    FormulaScope scope;
    scope.AddVariable("A", 0);
    scope.AddExpression("QUOTIENT", "100 / A");
    EXPECT_EQ(Evaluate("A = 0 ? -1 : QUOTIENT", scope, {0}), -1);
    EXPECT_EQ(Evaluate("A = 0 ? -1 : QUOTIENT", scope, {5}), 20);
}

TEST(FormulaExpressions, UnusedOnesAreNotLookedAt) {
    FormulaScope scope;
    scope.AddExpression("BROKEN", "((");
    EXPECT_EQ(Evaluate("1", scope), 1);
}

TEST(FormulaObject, CopiesAndMovesStandAlone) {
    auto scope = std::make_unique<FormulaScope>();
    auto text = std::make_unique<std::string>("A * 3");
    scope->AddVariable("A", 0);
    Formula first = Formula::Compile(*text, Formula::Arithmetic::Integer, *scope);
    scope.reset();
    text.reset();
    const Formula copy = first;
    const Formula moved = std::move(first);
    const std::int64_t values[] = {5};
    EXPECT_EQ(copy.EvaluateInteger(values), 15);
    EXPECT_EQ(moved.EvaluateInteger(values), 15);
    EXPECT_EQ(moved.Text(), "A * 3");
    EXPECT_EQ(moved.GetArithmetic(), Formula::Arithmetic::Integer);
}

TEST(FormulaObject, ServesManyThreadsAtOnce) {
    const Formula formula = Formula::Compile("A % 3 = 0 ? A * B : ROUND(A * 0.5) + X.Max",
                                             Formula::Arithmetic::Integer, formula_table::Variables());
    std::vector<std::thread> threads;
    std::vector<std::int64_t> sums(4);
    for (std::size_t t = 0; t < sums.size(); ++t) {
        threads.emplace_back([&, t] {
            for (std::int64_t a = 0; a < 3000; ++a) {
                const std::int64_t values[] = {a, 2, 0, 1};
                sums[t] += formula.EvaluateInteger(values);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::int64_t expected = 0;
    for (std::int64_t a = 0; a < 3000; ++a) {
        expected += a % 3 == 0 ? a * 2 : (a + 1) / 2 + 1;
    }
    EXPECT_EQ(sums, std::vector<std::int64_t>(4, expected));
}

} // namespace
