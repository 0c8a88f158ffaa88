// Random formulas against Aravis' evaluator. Left out is what it is known to reckon otherwise: % of fractions
// (it cuts the operands), && || and ?: on fractions (likewise), shifts by 64 and more, powers beyond 53 bits,
// ABS and the functions with fractions in integer formulas (it has none), SGN
// of NaN, and quotients by 0 on a side that
// is not needed (it fails).
#include <arv.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <string>

#include "formula/Formula.h"

namespace {

using genapi::Formula;
using genapi::FormulaError;
using genapi::FormulaScope;

class RandomFormula {
public:
    RandomFormula(std::uint32_t seed, bool fractions) : m_random(seed), m_fractions(fractions) {}

    std::string Next(int depth) {
        if (depth == 0 || Below(5) == 0) {
            return Leaf();
        }
        switch (Below(m_fractions ? 11 : 10)) {
        case 0:
            return "(" + Comparison(depth) + " ? " + Next(depth - 1) + " : " + Next(depth - 1) + ")";
        case 1:
            return (Below(2) == 0 ? "-(" : "~(") + Next(depth - 1) + ")";
        case 2:
            return Leaf() + " ** " + std::to_string(Below(3));
        case 3:
            return Below(2) == 0 ? "SGN(" + Leaf() + " - 20)" : "NEG(" + Next(depth - 1) + ")";
        case 4:
            return "(" + Next(depth - 1) + (Below(2) == 0 ? " << " : " >> ") + std::to_string(Below(6)) + ")";
        case 5:
            return "(" + Comparison(depth) + (Below(2) == 0 ? " && " : " || ") + Comparison(depth) + ")";
        case 6:
            return "(" + Next(depth - 1) + ")";
        case 10: {
            static const char* const kFunctions[] = {"SIN", "COS", "TAN",  "ATAN", "ASIN", "ACOS",  "EXP",
                                                     "LN",  "LG",  "SQRT", "ABS",  "CEIL", "TRUNC", "FLOOR"};
            // EXP of what is small: large doubles have no defined bits in Aravis.
            const std::string function = kFunctions[Below(14)];
            const std::string operand = Next(depth - 1);
            return function + (function == "EXP" ? "(SIN(" + operand + "))" : "(" + operand + ")");
        }
        default: {
            static const char* const kOperators[] = {"+", "-", "*", "/", "&", "|", "^", "%"};
            return Next(depth - 1) + " " + kOperators[Below(m_fractions ? 7 : 8)] + " " + Next(depth - 1);
        }
        }
    }

    std::int64_t Below(std::uint32_t n) { return static_cast<std::int64_t>(m_random() % n); }

private:
    std::string Leaf() {
        switch (Below(m_fractions ? 5 : 4)) {
        case 0:
            return "A";
        case 1:
            return "B";
        case 2:
            return std::to_string(Below(300));
        case 3: {
            char text[16];
            std::snprintf(text, sizeof text, "0x%llX", static_cast<unsigned long long>(Below(300)));
            return text;
        }
        default:
            return std::to_string(Below(100)) + "." + std::to_string(Below(100));
        }
    }

    std::string Comparison(int depth) {
        static const char* const kOperators[] = {"=", "<>", "<", ">", "<=", ">="};
        return "(" + Next(depth - 1) + " " + kOperators[Below(6)] + " " + Next(depth - 1) + ")";
    }

    std::mt19937 m_random;
    bool m_fractions;
};

struct Tally {
    int agreed = 0;
    int undecided = 0;
};

// One formula with one pair of values in both evaluators.
void Compare(const std::string& text, bool fractions, const std::int64_t (&integers)[2], Tally& tally) {
    FormulaScope scope;
    scope.AddVariable("A", 0);
    scope.AddVariable("B", 1);
    const double reals[] = {static_cast<double>(integers[0]), static_cast<double>(integers[1])};
    double ours = 0;
    try {
        const auto arithmetic = fractions ? Formula::Arithmetic::Float : Formula::Arithmetic::Integer;
        const Formula formula = Formula::Compile(text, arithmetic, scope);
        ours =
            fractions ? formula.EvaluateFloat(reals) : static_cast<double>(formula.EvaluateInteger(integers));
    } catch (const FormulaError&) {
        ++tally.undecided;
        return;
    }
    ArvEvaluator* evaluator = arv_evaluator_new(text.c_str());
    if (fractions) {
        arv_evaluator_set_double_variable(evaluator, "A", reals[0]);
        arv_evaluator_set_double_variable(evaluator, "B", reals[1]);
    } else {
        arv_evaluator_set_int64_variable(evaluator, "A", integers[0]);
        arv_evaluator_set_int64_variable(evaluator, "B", integers[1]);
    }
    GError* error = nullptr;
    const double theirs = fractions ? arv_evaluator_evaluate_as_double(evaluator, &error)
                                    : static_cast<double>(arv_evaluator_evaluate_as_int64(evaluator, &error));
    g_object_unref(evaluator);
    // Doubles beyond the integers in & | ^ ~ << >> have no defined value there.
    if (error != nullptr || std::fabs(theirs) > 1e15 || std::fabs(ours) > 1e15 || !std::isfinite(ours)) {
        g_clear_error(&error);
        ++tally.undecided;
        return;
    }
    EXPECT_NEAR(ours, theirs, 1e-9 * std::fabs(theirs))
        << "in " << text << " with A = " << integers[0] << ", B = " << integers[1];
    ++tally.agreed;
}

class FormulaAgreement : public testing::TestWithParam<bool> {};

TEST_P(FormulaAgreement, WithAravisOnRandomFormulas) {
    RandomFormula random(20, GetParam());
    Tally tally;
    for (int i = 0; i < 10000 && !HasFailure(); ++i) {
        const std::int64_t values[] = {random.Below(60) - 20, random.Below(9)};
        Compare(random.Next(1 + i % 4), GetParam(), values, tally);
    }
    EXPECT_GT(tally.agreed, 8000) << tally.undecided;
}

INSTANTIATE_TEST_SUITE_P(Both, FormulaAgreement, testing::Bool(),
                         [](const auto& tested) { return std::string(tested.param ? "Float" : "Integer"); });

} // namespace
