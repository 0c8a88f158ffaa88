// Formulas of GenICam nodes (SwissKnife, IntSwissKnife, Converter, IntConverter), compiled once, evaluated
// often.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace genapi {

struct FormulaInstruction;
union FormulaValue;

// What is wrong with a formula, in its text or with the values it met. what() is a sentence for people that
// quotes the formula; the node's name is the caller's to add.
class FormulaError : public std::runtime_error {
public:
    FormulaError(const std::string& what, std::size_t position)
        : std::runtime_error(what), m_position(position) {}
    // Where in the text (of the formula, or of the sub-expression that what() names): offset in bytes, from
    // 0.
    std::size_t Position() const { return m_position; }

private:
    std::size_t m_position;
};

// The names that a formula may use besides PI and E. Views of the caller's texts, which must stay until
// Compile has returned. Names are case-sensitive and may be dotted ("VAR.Max", "VAR.Entry.Off"). A name can
// be given once; the second time throws FormulaError.
class FormulaScope {
public:
    // A variable, found at values[index] at evaluation. Two names may share an index.
    void AddVariable(std::string_view name, std::uint32_t index);
    // <Constant>: a number with an optional sign.
    void AddConstant(std::string_view name, std::string_view number);
    // <Expression>: a formula over the same names. May use other expressions, in any order, but not itself.
    void AddExpression(std::string_view name, std::string_view formula);

    enum class Kind { Variable, Constant, Expression };
    struct Symbol {
        std::string_view name;
        std::string_view text;
        Kind kind;
        std::uint32_t index;
    };
    const Symbol* Find(std::string_view name) const;

private:
    void Add(const Symbol& symbol);

    std::vector<Symbol> m_symbols; // sorted by name
};

// Immutable after Compile, so any number of threads may evaluate one formula.
//
// Language, strongest binding first (as in C, except for '=' and '**'):
//   ( )   name   number (decimal, 0x, fraction, exponent)   FUNCTION(x)
//   - + ~ !  as a sign
//   **    to the right: 2 ** 3 ** 2 = 512; but -2 ** 2 = 4
//   * / %          + -          << >>          < > <= >=          = <> (== !=)
//   &          ^          |          &&          ||          ? :  to the right
// && || ?: evaluate only the side they need, so "X = 0 ? 0 : 100 / X" is safe.
// Functions: SGN NEG ABS SQRT TRUNC FLOOR CEIL ROUND(x) ROUND(x, digits) SIN COS TAN ASIN ACOS ATAN ATAN2(y,
// x) EXP LN (base e) LG (base 10). Function names and PI, E in capitals or not; a variable of that name comes
// first.
//
// Arithmetic::Float: all numbers are double, the result of / too. Quotients by 0, LN(0) and the like are what
// IEEE 754 says (infinities, NaN). & | ^ ~ << >> work on the operands cut to 64-bit integers, and between
// themselves lose no bit. Arithmetic::Integer: all numbers are 64-bit integers; sums, differences, products,
// powers and the negative of the smallest number wrap; quotients are cut towards zero, and remainders have
// the dividend's sign. A literal with a fraction or an exponent, and functions with fractional results, make
// that part of the formula Float; the result is cut towards zero. Both: comparisons give 1 or 0; a shift by
// 64 or more leaves 0 (or -1 of a negative number shifted right); hexadecimal literals are bit patterns
// (0xFFFFFFFFFFFFFFFF is -1); a double outside the range of integers becomes the nearest integer there is.
class Formula {
public:
    enum class Arithmetic { Integer, Float };

    // Limits on what is compiled, expressions included, since XML comes from devices.
    static constexpr std::size_t kMaxLength = 1U << 20; // bytes of one text
    static constexpr std::uint32_t kMaxTokens = 100000; // in all, each use of an expression anew
    static constexpr std::uint32_t kMaxNesting =
        1000; // brackets count 2; signs, conditions and expressions 1 to 3
    static constexpr std::uint32_t kMaxOperands = 250; // intermediate results at one time

    // Throws FormulaError for what can't be compiled.
    static Formula Compile(std::string_view text, Arithmetic arithmetic, const FormulaScope& scope);

    Formula(Formula&&) noexcept;
    Formula& operator=(Formula&&) noexcept;
    Formula(const Formula&);
    Formula& operator=(const Formula&);
    ~Formula();

    // values: one per variable index of the scope. Allocate nothing. Throw FormulaError for an integer
    // division by 0, a negative shift count, and a NaN where an integer is wanted. Calling the one that does
    // not fit the arithmetic throws std::logic_error.
    std::int64_t EvaluateInteger(const std::int64_t* values) const;
    double EvaluateFloat(const double* values) const;

    Arithmetic GetArithmetic() const { return m_arithmetic; }
    // The variable indices that the result depends on, ascending; what folding removed is not among them.
    const std::vector<std::uint32_t>& Variables() const { return m_variables; }
    const std::string& Text() const { return m_sources.front().text; }

    // A text that instructions come from: the formula itself, or an expression that it uses.
    struct Source {
        std::string name; // empty: the formula
        std::string text;
    };

private:
    friend class FormulaCompiler;
    Formula();
    void Run(Arithmetic wanted, const void* values, FormulaValue& result) const;

    Arithmetic m_arithmetic = Arithmetic::Integer;
    std::vector<FormulaInstruction> m_code;
    std::vector<std::uint32_t> m_variables;
    std::vector<Source> m_sources;
};

} // namespace genapi
