#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <string>

#include "platform/genapi/FormulaTable.h"

namespace {

using genapi::Formula;
using genapi::FormulaError;
using genapi::FormulaScope;
using testing::AllOf;
using testing::HasSubstr;

struct Thrown {
    std::string what;
    std::size_t position = 0;
};

template<class Call>
Thrown Catch(Call call) {
    try {
        call();
    } catch (const FormulaError& error) {
        return {error.what(), error.Position()};
    }
    return {"nothing was thrown", 0};
}

struct BadText {
    const char* name;
    const char* text;
    const char* problem;
    std::size_t position;
};

class FormulaSyntax : public testing::TestWithParam<BadText> {};

TEST_P(FormulaSyntax, IsRefusedWithTextAndPosition) {
    const BadText& row = GetParam();
    for (const auto arithmetic : {Formula::Arithmetic::Integer, Formula::Arithmetic::Float}) {
        const Thrown thrown =
            Catch([&] { Formula::Compile(row.text, arithmetic, formula_table::Variables()); });
        EXPECT_THAT(thrown.what, AllOf(HasSubstr(row.problem), HasSubstr(row.text),
                                       HasSubstr("position " + std::to_string(row.position))));
        EXPECT_EQ(thrown.position, row.position);
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, FormulaSyntax,
                         testing::Values( //
                             BadText{"Empty", "", "empty", 0}, BadText{"Blank", "  \n ", "empty", 0},
                             BadText{"OperatorAlone", "*", "unexpected \"*\"", 0},
                             BadText{"OperandMissing", "A +", "unexpected end", 3},
                             BadText{"OperandMissingInside", "(A + ) * 2", "unexpected \")\"", 5},
                             BadText{"BracketOpen", "(A + 1", "\")\" expected", 6},
                             BadText{"BracketClosed", "A + 1)", "unexpected \")\"", 5},
                             BadText{"BracketsEmpty", "()", "unexpected \")\"", 1},
                             BadText{"TwoOperands", "A B", "unexpected \"B\"", 2},
                             BadText{"TwoNumbers", "1 2", "unexpected \"2\"", 2},
                             BadText{"CommaOutside", "A, B", "unexpected \",\"", 1},
                             BadText{"ColonMissing", "A ? B", "\":\" expected", 5},
                             BadText{"QuestionMissing", "A : B", "unexpected \":\"", 2},
                             BadText{"BranchMissing", "A ? : B", "unexpected \":\"", 4},
                             BadText{"UnknownVariable", "A + D", "unknown variable \"D\"", 4},
                             BadText{"CaseMatters", "a", "unknown variable \"a\"", 0},
                             BadText{"UnknownSuffix", "X.Min", "unknown variable \"X.Min\"", 0},
                             BadText{"UnknownFunction", "1 + FOO(A)", "unknown function \"FOO\"", 4},
                             BadText{"VariableCalled", "A(1)", "unknown function \"A\"", 0},
                             BadText{"FunctionWithoutOperand", "SIN()", "unexpected \")\"", 4},
                             BadText{"FunctionWithoutBracket", "SIN A", "unknown variable \"SIN\"", 0},
                             BadText{"TooManyOperands", "SIN(A, B)", "\")\" expected", 5},
                             BadText{"RoundThree", "ROUND(A, B, C)", "\")\" expected", 10},
                             BadText{"Atan2One", "ATAN2(A)", "\",\" expected", 7},
                             BadText{"MalformedHex", "0x", "malformed number", 0},
                             BadText{"MalformedHexDigit", "0xFG", "malformed number", 0},
                             BadText{"HexMinus", "0x-1", "malformed number", 0},
                             BadText{"LongHex", "0x10000000000000000", "number of more than 64 bits", 0},
                             BadText{"LettersAfterNumber", "12abc", "malformed number", 0},
                             BadText{"TwoPoints", "1.2.3", "malformed number", 0},
                             BadText{"ExponentEmpty", "1e", "malformed number", 0},
                             BadText{"ExponentHuge", "A + 1e999", "number out of range", 4},
                             BadText{"PointAlone", ".", "unexpected character", 0},
                             BadText{"NameEndsInPoint", "A. + 1", "unexpected character", 1},
                             BadText{"StrangeCharacter", "A $ B", "unexpected character", 2},
                             BadText{"Bytes", "A + \xC3\xA4", "unexpected character", 4},
                             BadText{"BadInDroppedBranch", "1 ? A : (", "unexpected end", 9},
                             BadText{"BadInDroppedOr", "1 || FOO", "unknown variable \"FOO\"", 5},
                             BadText{"EscapedOperator", "A &lt; 2", "unexpected character", 5}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(FormulaErrors, IntegerLiteralNeedsAPlaceIn64Bits) {
    const Thrown thrown = Catch([] {
        Formula::Compile("A + 18446744073709551616", Formula::Arithmetic::Integer,
                         formula_table::Variables());
    });
    EXPECT_THAT(thrown.what, HasSubstr("number of more than 64 bits"));
    EXPECT_EQ(thrown.position, 4U);
}

TEST(FormulaErrors, NulBytesAreNoEnd) {
    const std::string text("1\0+1", 4);
    EXPECT_EQ(Catch([&] { Formula::Compile(text, Formula::Arithmetic::Integer, {}); }).position, 1U);
}

struct BadValue {
    const char* name;
    const char* text;
    const char* problem;
    std::size_t position;
    std::int64_t a;
    std::int64_t b;
};

class IntegerFault : public testing::TestWithParam<BadValue> {};

TEST_P(IntegerFault, NamesTheFormula) {
    const BadValue& row = GetParam();
    const Formula formula =
        Formula::Compile(row.text, Formula::Arithmetic::Integer, formula_table::Variables());
    const std::int64_t values[] = {row.a, row.b, 0, 0};
    const Thrown thrown = Catch([&] { formula.EvaluateInteger(values); });
    EXPECT_THAT(thrown.what, AllOf(HasSubstr(row.problem), HasSubstr(row.text)));
    EXPECT_EQ(thrown.position, row.position);
}

INSTANTIATE_TEST_SUITE_P(Values, IntegerFault,
                         testing::Values( //
                             BadValue{"Division", "1 + A / B", "division by zero", 6, 1, 0},
                             BadValue{"Remainder", "A % B", "division by zero", 2, 1, 0},
                             BadValue{"ConstantDivision", "A + 1 / 0", "division by zero", 6, 1, 0},
                             BadValue{"ZeroToNegativePower", "A ** B", "division by zero", 2, 0, -1},
                             BadValue{"ShiftLeftNegative", "A << B", "negative shift count", 2, 1, -1},
                             BadValue{"ShiftRightNegative", "A >> B", "negative shift count", 2, 1,
                                      std::numeric_limits<std::int64_t>::min()},
                             BadValue{"ResultIsNaN", "SQRT(A)", "not a number", 0, -1, 0},
                             BadValue{"ConstantNaN", "A + SQRT(-1)", "not a number", 2, 1, 0},
                             BadValue{"NaNInBits", "SQRT(A) & 1", "not a number", 5, -1, 0},
                             BadValue{"NaNInBitsLeft", "1 & SQRT(A)", "not a number", 4, -1, 0},
                             BadValue{"NaNRounded", "ROUND(SQRT(A))", "not a number", 0, -1, 0}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(FormulaErrors, BitsOfNaNAreAFaultInFloatFormulas) {
    const Formula formula = Formula::Compile("A & 1", Formula::Arithmetic::Float, formula_table::Variables());
    const double values[] = {std::nan(""), 0, 0, 0};
    EXPECT_THAT(Catch([&] { formula.EvaluateFloat(values); }).what, HasSubstr("not a number"));
}

TEST(FormulaErrors, AFaultLeavesTheFormulaUsable) {
    const Formula formula =
        Formula::Compile("100 / A", Formula::Arithmetic::Integer, formula_table::Variables());
    const std::int64_t zero[] = {0, 0, 0, 0};
    const std::int64_t four[] = {4, 0, 0, 0};
    EXPECT_THROW(formula.EvaluateInteger(zero), FormulaError);
    EXPECT_EQ(formula.EvaluateInteger(four), 25);
}

TEST(FormulaErrors, TheOtherArithmeticIsAProgrammersError) {
    const Formula integer = Formula::Compile("1", Formula::Arithmetic::Integer, {});
    const Formula real = Formula::Compile("1", Formula::Arithmetic::Float, {});
    EXPECT_THROW(integer.EvaluateFloat(nullptr), std::logic_error);
    EXPECT_THROW(real.EvaluateInteger(nullptr), std::logic_error);
}

TEST(FormulaErrors, NamesAreDefinedOnce) {
    FormulaScope scope;
    scope.AddVariable("TO", 0);
    EXPECT_THAT(Catch([&] { scope.AddConstant("TO", "1"); }).what, HasSubstr("\"TO\" is defined twice"));
}

TEST(FormulaErrors, ConstantsAreNumbers) {
    for (const char* text : {"", "abc", "1 + 1", "0x", "--1", "1 2", "$", "-"}) {
        FormulaScope scope;
        scope.AddConstant("K", text);
        const Thrown thrown = Catch([&] { Formula::Compile("1 + K", Formula::Arithmetic::Float, scope); });
        EXPECT_THAT(thrown.what, HasSubstr("constant K is no number")) << text;
        EXPECT_EQ(thrown.position, 4U);
    }
}

TEST(FormulaErrors, AnExpressionIsNamedWithItsText) {
    FormulaScope scope;
    scope.AddVariable("A", 0);
    scope.AddExpression("QUOTIENT", "100 / A");
    scope.AddExpression("BROKEN", "A + ");
    const Thrown syntax = Catch([&] { Formula::Compile("1 + BROKEN", Formula::Arithmetic::Integer, scope); });
    EXPECT_THAT(syntax.what, AllOf(HasSubstr("\"1 + BROKEN\""), HasSubstr("BROKEN = \"A + \""),
                                   HasSubstr("unexpected end")));
    EXPECT_EQ(syntax.position, 4U);
    const Formula formula = Formula::Compile("1 + QUOTIENT", Formula::Arithmetic::Integer, scope);
    const std::int64_t values[] = {0};
    const Thrown fault = Catch([&] { formula.EvaluateInteger(values); });
    EXPECT_THAT(fault.what, AllOf(HasSubstr("\"1 + QUOTIENT\""), HasSubstr("QUOTIENT = \"100 / A\""),
                                  HasSubstr("division by zero")));
    EXPECT_EQ(fault.position, 4U);
}

TEST(FormulaErrors, ExpressionsInACircleAreRefused) {
    FormulaScope scope;
    scope.AddExpression("A", "B + 1");
    scope.AddExpression("B", "2 * C");
    scope.AddExpression("C", "A");
    EXPECT_THAT(Catch([&] { Formula::Compile("A", Formula::Arithmetic::Integer, scope); }).what,
                HasSubstr("uses itself: A -> B -> C -> A"));
    FormulaScope self;
    self.AddExpression("A", "A");
    EXPECT_THAT(Catch([&] { Formula::Compile("A", Formula::Arithmetic::Integer, self); }).what,
                HasSubstr("uses itself: A -> A"));
}

TEST(FormulaLimits, LongTextsAreShortenedInMessages) {
    const std::string text = "FOO + " + std::string(5000, ' ') + "1";
    const Thrown thrown = Catch([&] { Formula::Compile(text, Formula::Arithmetic::Integer, {}); });
    EXPECT_THAT(thrown.what, HasSubstr("..."));
    EXPECT_LT(thrown.what.size(), 400U);
}

TEST(FormulaLimits, TextOfMoreThanAMegabyteIsRefused) {
    EXPECT_EQ(
        Formula::Compile(std::string(Formula::kMaxLength - 1, ' ') + "1", Formula::Arithmetic::Integer, {})
            .EvaluateInteger(nullptr),
        1);
    EXPECT_THAT(Catch([] {
                    Formula::Compile(std::string(Formula::kMaxLength, ' ') + "1",
                                     Formula::Arithmetic::Integer, {});
                }).what,
                HasSubstr("too long"));
}

std::string Repeat(const std::string& text, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

TEST(FormulaLimits, LongFlatFormulasWork) {
    const std::string text = "A" + Repeat(" + A", 40000);
    const Formula formula = Formula::Compile(text, Formula::Arithmetic::Integer, formula_table::Variables());
    const std::int64_t values[] = {2, 0, 0, 0};
    EXPECT_EQ(formula.EvaluateInteger(values), 80002);
    const std::string tooMany = "A" + Repeat("+A", Formula::kMaxTokens / 2);
    EXPECT_THAT(Catch([&] {
                    Formula::Compile(tooMany, Formula::Arithmetic::Integer, formula_table::Variables());
                }).what,
                HasSubstr("too long"));
}

TEST(FormulaLimits, NestingIsBounded) {
    const auto deep = [](const char* open, const char* inner, const char* close, std::size_t n) {
        const std::string text = Repeat(open, n) + inner + Repeat(close, n);
        return Catch(
                   [&] { Formula::Compile(text, Formula::Arithmetic::Integer, formula_table::Variables()); })
            .what;
    };
    const std::size_t fits = Formula::kMaxNesting / 2 - 1;
    EXPECT_EQ(deep("(", "A", ")", fits), "nothing was thrown");
    EXPECT_EQ(deep("-", "A", "", fits), "nothing was thrown");
    EXPECT_EQ(deep("A ? 1 : ", "A", "", fits), "nothing was thrown");
    for (const std::size_t n : {std::size_t{2000}, std::size_t{20000}}) {
        EXPECT_THAT(deep("(", "A", ")", n), HasSubstr("nested too deeply"));
        EXPECT_THAT(deep("-", "A", "", n), HasSubstr("nested too deeply"));
        EXPECT_THAT(deep("A ? 1 : ", "A", "", n), HasSubstr("nested too deeply"));
        EXPECT_THAT(deep("A ** ", "A", "", n),
                    AnyOf(HasSubstr("nested too deeply"), HasSubstr("intermediate")));
        EXPECT_THAT(deep("SQRT(", "A", ")", n), HasSubstr("nested too deeply"));
    }
}

TEST(FormulaLimits, IntermediateResultsAreBounded) {
    const auto text = [](std::size_t n) { return Repeat("A + (", n) + "B" + Repeat(")", n); };
    const Formula formula = Formula::Compile(text(Formula::kMaxOperands - 1), Formula::Arithmetic::Integer,
                                             formula_table::Variables());
    const std::int64_t values[] = {1, 5, 0, 0};
    EXPECT_EQ(formula.EvaluateInteger(values), 5 + static_cast<std::int64_t>(Formula::kMaxOperands) - 1);
    EXPECT_THAT(Catch([&] {
                    Formula::Compile(text(Formula::kMaxOperands), Formula::Arithmetic::Integer,
                                     formula_table::Variables());
                }).what,
                HasSubstr("too many intermediate results"));
}

TEST(FormulaLimits, ExpressionsThatMultiplyAreStopped) {
    FormulaScope scope;
    std::vector<std::string> texts;
    texts.reserve(128);
    scope.AddExpression("E0", "1");
    for (int i = 1; i < 60; ++i) {
        const std::string below = "E" + std::to_string(i - 1);
        texts.push_back("E" + std::to_string(i));
        texts.push_back(below + " + " + below);
        scope.AddExpression(texts[texts.size() - 2], texts.back());
    }
    EXPECT_EQ(Formula::Compile("E10", Formula::Arithmetic::Integer, scope).EvaluateInteger(nullptr), 1024);
    EXPECT_THAT(Catch([&] { Formula::Compile("E59", Formula::Arithmetic::Integer, scope); }).what,
                HasSubstr("too long"));
}

TEST(FormulaLimits, ManyExpressionsAreStopped) {
    FormulaScope scope;
    std::vector<std::string> names(2000);
    std::string text = "0";
    for (std::size_t i = 0; i < names.size(); ++i) {
        names[i] = "E" + std::to_string(i);
        text += " + " + names[i];
        scope.AddExpression(names[i], "1");
    }
    EXPECT_THAT(Catch([&] { Formula::Compile(text, Formula::Arithmetic::Integer, scope); }).what,
                HasSubstr("too many expressions"));
}

} // namespace
