// Compiles a formula by recursive descent straight into postfix code, folding constants on the way. Internal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formula/Formula.h"
#include "formula/FormulaLexer.h"
#include "formula/FormulaProgram.h"

namespace genapi {

class FormulaCompiler {
public:
    FormulaCompiler(Formula::Arithmetic arithmetic, const FormulaScope& scope);
    Formula Compile(std::string_view text);

private:
    enum class Type : std::uint8_t { Integer, Float };
    // What the code emitted last leaves on the stack. A constant is one Push, at start.
    struct Operand {
        Type type;
        bool constant;
        bool truth; // known to be 1 or 0
        std::uint32_t start;
    };
    enum class Rule : std::uint8_t { Arithmetic, Bitwise, Comparison, LogicalAnd, LogicalOr };
    struct BinaryOperator;
    struct Function;
    class Nested;

    static const BinaryOperator* FindBinary(FormulaTokenKind kind);
    static const Function* FindFunction(std::string_view name);

    Operand Text(std::string_view text, const FormulaScope::Symbol* expression);
    Operand Condition();
    Operand ConstantCondition(const Operand& condition);
    Operand Unify(Operand operand, Type other);
    Operand Binary(int strength);
    Operand Logical(Operand left, const BinaryOperator& op);
    Operand Power();
    Operand Sign();
    Operand Primary();
    Operand Named(const FormulaToken& name);
    Operand Call(const FormulaToken& name);
    Operand NumberLiteral(const FormulaToken& number);
    Operand Constant(const FormulaScope::Symbol& symbol, std::size_t position);

    Operand Combine(const BinaryOperator& op, Operand left, Operand right, std::size_t position);
    Operand Apply(const Function& function, Operand operand, std::size_t position);
    Operand Apply2(const Function& function, Operand left, Operand right, std::size_t position);
    Operand Signed(FormulaOp integer, FormulaOp real, Operand operand, std::size_t position);
    Operand Finish(FormulaOp op, Operand first, bool constant, Type result, std::size_t position);
    // The type of a sum and the like of two operands of these types.
    Type Arithmetic(Type left, Type right) const;
    Operand Truth(Operand operand);
    // Converts the topmost operand, or the one under it.
    Operand Convert(Operand operand, Type type, bool below);

    void Advance();
    void Expect(FormulaTokenKind kind, const char* what);
    std::uint32_t Emit(FormulaOp op, FormulaValue operand, std::size_t position);
    Operand Push(FormulaValue value, Type type, std::size_t position);
    // Takes the topmost operand back, code and all.
    void Drop(const Operand& operand);
    std::uint32_t Here() const { return static_cast<std::uint32_t>(m_formula.m_code.size()); }
    void PatchJump(std::uint32_t jump);
    void AddDepth(int change);
    void CollectVariables();
    [[noreturn]] void Fail(const std::string& problem, std::size_t position) const;

    const FormulaScope& m_scope;
    Formula m_formula;
    FormulaLexer m_lexer{{}};
    FormulaToken m_token;
    std::uint16_t m_source = 0;
    std::uint32_t m_tokens = 0;
    std::uint32_t m_nesting = 0;
    std::uint32_t m_depth = 0;
    std::vector<const FormulaScope::Symbol*> m_open;    // the expressions being compiled, outermost first
    std::vector<const FormulaScope::Symbol*> m_symbols; // the expression of each source; none for the first
};

} // namespace genapi
