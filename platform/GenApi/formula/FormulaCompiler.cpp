#include "formula/FormulaCompiler.h"

#include <algorithm>
#include <cmath>

#include "formula/FormulaMath.h"

namespace genapi {

using Token = FormulaTokenKind;

struct FormulaCompiler::BinaryOperator {
    Token token;
    std::uint8_t strength;
    Rule rule;
    FormulaOp integer;
    FormulaOp real;
};

struct FormulaCompiler::Function {
    enum class Rule : std::uint8_t {
        Sign,     // integer of an integer
        Whole,    // leaves integers as they are, makes integers in integer formulas
        Digits,   // two operands; integer of integers
        Real,     // double of doubles
        RealPair, // double of two doubles
    };
    std::string_view name;
    Rule rule;
    FormulaOp integer;
    FormulaOp real;
};

// Counts how deep the formula is nested, since each level costs stack of the thread that loads the XML.
class FormulaCompiler::Nested {
public:
    explicit Nested(FormulaCompiler& compiler) : m_compiler(compiler) {
        if (++m_compiler.m_nesting > Formula::kMaxNesting) {
            m_compiler.Fail("nested too deeply", m_compiler.m_token.position);
        }
    }
    ~Nested() { --m_compiler.m_nesting; }
    Nested(const Nested&) = delete;
    Nested& operator=(const Nested&) = delete;

private:
    FormulaCompiler& m_compiler;
};

namespace {
constexpr std::size_t kMaxSources = 1000;
constexpr int kWeakest = 1;
} // namespace

const FormulaCompiler::BinaryOperator* FormulaCompiler::FindBinary(Token kind) {
    static constexpr BinaryOperator kTable[] = {
        {Token::LogicalOr, 1, Rule::LogicalOr, FormulaOp::JumpIfNonZeroKeep, FormulaOp::End},
        {Token::LogicalAnd, 2, Rule::LogicalAnd, FormulaOp::JumpIfZeroKeep, FormulaOp::End},
        {Token::Or, 3, Rule::Bitwise, FormulaOp::OrI, FormulaOp::End},
        {Token::Xor, 4, Rule::Bitwise, FormulaOp::XorI, FormulaOp::End},
        {Token::And, 5, Rule::Bitwise, FormulaOp::AndI, FormulaOp::End},
        {Token::Equal, 6, Rule::Comparison, FormulaOp::EqI, FormulaOp::EqF},
        {Token::NotEqual, 6, Rule::Comparison, FormulaOp::NeI, FormulaOp::NeF},
        {Token::Less, 7, Rule::Comparison, FormulaOp::LtI, FormulaOp::LtF},
        {Token::LessEqual, 7, Rule::Comparison, FormulaOp::LeI, FormulaOp::LeF},
        {Token::Greater, 7, Rule::Comparison, FormulaOp::GtI, FormulaOp::GtF},
        {Token::GreaterEqual, 7, Rule::Comparison, FormulaOp::GeI, FormulaOp::GeF},
        {Token::ShiftLeft, 8, Rule::Bitwise, FormulaOp::ShlI, FormulaOp::End},
        {Token::ShiftRight, 8, Rule::Bitwise, FormulaOp::ShrI, FormulaOp::End},
        {Token::Plus, 9, Rule::Arithmetic, FormulaOp::AddI, FormulaOp::AddF},
        {Token::Minus, 9, Rule::Arithmetic, FormulaOp::SubI, FormulaOp::SubF},
        {Token::Times, 10, Rule::Arithmetic, FormulaOp::MulI, FormulaOp::MulF},
        {Token::Divide, 10, Rule::Arithmetic, FormulaOp::DivI, FormulaOp::DivF},
        {Token::Remainder, 10, Rule::Arithmetic, FormulaOp::ModI, FormulaOp::ModF},
    };
    const auto* found = std::find_if(std::begin(kTable), std::end(kTable),
                                     [kind](const BinaryOperator& op) { return op.token == kind; });
    return found == std::end(kTable) ? nullptr : found;
}

const FormulaCompiler::Function* FormulaCompiler::FindFunction(std::string_view name) {
    using FR = Function::Rule;
    static constexpr Function kTable[] = {
        {"SGN", FR::Sign, FormulaOp::SgnI, FormulaOp::SgnF},
        {"NEG", FR::Sign, FormulaOp::NegI, FormulaOp::NegF},
        {"ABS", FR::Sign, FormulaOp::AbsI, FormulaOp::AbsF},
        {"TRUNC", FR::Whole, FormulaOp::End, FormulaOp::TruncF},
        {"FLOOR", FR::Whole, FormulaOp::End, FormulaOp::FloorF},
        {"CEIL", FR::Whole, FormulaOp::End, FormulaOp::CeilF},
        {"ROUND", FR::Digits, FormulaOp::RoundDigitsI, FormulaOp::RoundDigitsF},
        {"SQRT", FR::Real, FormulaOp::End, FormulaOp::SqrtF},
        {"SIN", FR::Real, FormulaOp::End, FormulaOp::SinF},
        {"COS", FR::Real, FormulaOp::End, FormulaOp::CosF},
        {"TAN", FR::Real, FormulaOp::End, FormulaOp::TanF},
        {"ASIN", FR::Real, FormulaOp::End, FormulaOp::AsinF},
        {"ACOS", FR::Real, FormulaOp::End, FormulaOp::AcosF},
        {"ATAN", FR::Real, FormulaOp::End, FormulaOp::AtanF},
        {"ATAN2", FR::RealPair, FormulaOp::End, FormulaOp::Atan2F},
        {"EXP", FR::Real, FormulaOp::End, FormulaOp::ExpF},
        {"LN", FR::Real, FormulaOp::End, FormulaOp::LnF},
        {"LG", FR::Real, FormulaOp::End, FormulaOp::LgF},
    };
    const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
    const auto same = [&](const Function& f) {
        return f.name.size() == name.size() &&
               std::equal(name.begin(), name.end(), f.name.begin(),
                          [&](char given, char known) { return upper(given) == known; });
    };
    const auto* found = std::find_if(std::begin(kTable), std::end(kTable), same);
    return found == std::end(kTable) ? nullptr : found;
}

FormulaCompiler::FormulaCompiler(Formula::Arithmetic arithmetic, const FormulaScope& scope) : m_scope(scope) {
    m_formula.m_arithmetic = arithmetic;
}

Formula FormulaCompiler::Compile(std::string_view text) {
    m_formula.m_sources.push_back({{}, std::string(text.substr(0, Formula::kMaxLength))});
    m_symbols.push_back(nullptr);
    const Operand result = Text(text, nullptr);
    const bool integer = m_formula.m_arithmetic == Formula::Arithmetic::Integer;
    Convert(result, integer ? Type::Integer : Type::Float, false);
    Emit(FormulaOp::End, {}, 0);
    CollectVariables();
    m_formula.m_code.shrink_to_fit();
    return std::move(m_formula);
}

// Compiles a whole text: the formula, or an expression in the place where its name stands.
FormulaCompiler::Operand FormulaCompiler::Text(std::string_view text,
                                               const FormulaScope::Symbol* expression) {
    const FormulaLexer lexer = m_lexer;
    const FormulaToken token = m_token;
    const std::uint16_t source = m_source;
    if (expression != nullptr) {
        const auto known = std::find(m_symbols.begin(), m_symbols.end(), expression);
        if (known == m_symbols.end() && m_symbols.size() == kMaxSources) {
            Fail("too many expressions", token.position);
        }
        m_source = static_cast<std::uint16_t>(known - m_symbols.begin());
        if (known == m_symbols.end()) {
            m_formula.m_sources.push_back(
                {std::string(expression->name), std::string(text.substr(0, Formula::kMaxLength))});
            m_symbols.push_back(expression);
        }
    }
    if (text.size() > Formula::kMaxLength) {
        Fail("too long", Formula::kMaxLength);
    }
    m_lexer = FormulaLexer(text);
    Advance();
    if (m_token.kind == Token::End) {
        Fail("empty", 0);
    }
    const Operand result = Condition();
    if (m_token.kind != Token::End) {
        Fail("unexpected \"" + std::string(m_token.text) + '"', m_token.position);
    }
    m_lexer = lexer;
    m_token = token;
    m_source = source;
    return result;
}

FormulaCompiler::Operand FormulaCompiler::Condition() {
    const Nested nested(*this);
    Operand condition = Binary(kWeakest);
    if (m_token.kind != Token::Question) {
        return condition;
    }
    if (condition.type == Type::Float) {
        condition = Truth(condition);
    }
    const std::size_t position = m_token.position;
    Advance();
    if (condition.constant) {
        return ConstantCondition(condition);
    }
    const std::uint32_t toElse = Emit(FormulaOp::JumpIfZero, {}, position);
    const Operand yes = Condition();
    const std::uint32_t toEnd = Emit(FormulaOp::Jump, {}, position);
    Expect(Token::Colon, "\":\"");
    PatchJump(toElse);
    const Operand no = Unify(Condition(), yes.type);
    if (yes.type != no.type) {
        m_formula.m_code[toEnd].op = FormulaOp::IntToFloatJump;
    }
    PatchJump(toEnd);
    return {no.type, false, yes.truth && no.truth, condition.start};
}

FormulaCompiler::Operand FormulaCompiler::ConstantCondition(const Operand& condition) {
    const bool chosen = m_formula.m_code[condition.start].operand.i != 0;
    Drop(condition);
    Operand yes = Condition();
    Expect(Token::Colon, "\":\"");
    if (!chosen) {
        Drop(yes);
        return Unify(Condition(), yes.type);
    }
    const Operand no = Condition();
    Drop(no);
    return Unify(yes, no.type);
}

// The topmost operand in the type that it shares with the other branch.
FormulaCompiler::Operand FormulaCompiler::Unify(Operand operand, Type other) {
    return other == Type::Float ? Convert(operand, Type::Float, false) : operand;
}

// Operators at least that strong, those of equal strength from the left.
FormulaCompiler::Operand FormulaCompiler::Binary(int strength) {
    Operand left = Power();
    for (;;) {
        const BinaryOperator* op = FindBinary(m_token.kind);
        if (op == nullptr || op->strength < strength) {
            return left;
        }
        if (op->rule == Rule::LogicalAnd || op->rule == Rule::LogicalOr) {
            left = Logical(left, *op);
            continue;
        }
        const std::size_t position = m_token.position;
        Advance();
        const Operand right = Binary(op->strength + 1);
        left = Combine(*op, left, right, position);
    }
}

FormulaCompiler::Operand FormulaCompiler::Logical(Operand left, const BinaryOperator& op) {
    const std::size_t position = m_token.position;
    Advance();
    left = Truth(left);
    if (left.constant) {
        const bool decided = (m_formula.m_code[left.start].operand.i != 0) == (op.rule == Rule::LogicalOr);
        if (decided) {
            Drop(Binary(op.strength + 1));
            return left;
        }
        Drop(left);
        return Truth(Binary(op.strength + 1));
    }
    const std::uint32_t jump = Emit(op.integer, {}, position);
    Truth(Binary(op.strength + 1));
    PatchJump(jump);
    return {Type::Integer, false, true, left.start};
}

FormulaCompiler::Operand FormulaCompiler::Sign() {
    const Nested nested(*this);
    const FormulaToken sign = m_token;
    switch (sign.kind) {
    case Token::Plus:
        Advance();
        return Sign();
    case Token::Minus:
        Advance();
        return Signed(FormulaOp::NegI, FormulaOp::NegF, Sign(), sign.position);
    case Token::Not: {
        Advance();
        const Operand operand = Convert(Sign(), Type::Integer, false);
        return Finish(FormulaOp::NotI, operand, operand.constant, Type::Integer, sign.position);
    }
    case Token::LogicalNot: {
        Advance();
        const Operand operand = Sign();
        const FormulaOp op = operand.type == Type::Float ? FormulaOp::LogicalNotF : FormulaOp::LogicalNotI;
        Operand result = Finish(op, operand, operand.constant, Type::Integer, sign.position);
        result.truth = true;
        return result;
    }
    default:
        return Primary();
    }
}

// To the right: 2 ** 3 ** 2 is 2 ** (3 ** 2).
FormulaCompiler::Operand FormulaCompiler::Power() {
    const Operand base = Sign();
    if (m_token.kind != Token::Power) {
        return base;
    }
    const Nested nested(*this);
    const std::size_t position = m_token.position;
    Advance();
    const Operand exponent = Power();
    static constexpr BinaryOperator kPower = {Token::Power, 0, Rule::Arithmetic, FormulaOp::PowI,
                                              FormulaOp::PowF};
    return Combine(kPower, base, exponent, position);
}

FormulaCompiler::Operand FormulaCompiler::Primary() {
    const FormulaToken token = m_token;
    switch (token.kind) {
    case Token::Number:
        Advance();
        return NumberLiteral(token);
    case Token::Name:
        Advance();
        return m_token.kind == Token::Open ? Call(token) : Named(token);
    case Token::Open: {
        Advance();
        const Operand inner = Condition();
        Expect(Token::Close, "\")\"");
        return inner;
    }
    case Token::End:
        Fail("unexpected end", token.position);
    default:
        Fail("unexpected \"" + std::string(token.text) + '"', token.position);
    }
}

FormulaCompiler::Operand FormulaCompiler::Named(const FormulaToken& name) {
    const FormulaScope::Symbol* symbol = m_scope.Find(name.text);
    if (symbol == nullptr) {
        FormulaValue value{};
        if (name.text == "PI" || name.text == "pi" || name.text == "Pi") {
            value.d = 3.14159265358979323846;
        } else if (name.text == "E" || name.text == "e") {
            value.d = 2.71828182845904523536;
        } else {
            Fail("unknown variable \"" + std::string(name.text) + '"', name.position);
        }
        return Push(value, Type::Float, name.position);
    }
    if (symbol->kind == FormulaScope::Kind::Constant) {
        return Constant(*symbol, name.position);
    }
    if (symbol->kind == FormulaScope::Kind::Variable) {
        FormulaValue index{};
        index.i = symbol->index;
        const std::uint32_t start = Emit(FormulaOp::Load, index, name.position);
        return {Arithmetic(Type::Integer, Type::Integer), false, false, start};
    }
    if (std::find(m_open.begin(), m_open.end(), symbol) != m_open.end()) {
        std::string road;
        for (const FormulaScope::Symbol* open : m_open) {
            road += std::string(open->name) + " -> ";
        }
        Fail("expression uses itself: " + road + std::string(name.text), name.position);
    }
    const Nested nested(*this);
    m_open.push_back(symbol);
    const Operand result = Text(symbol->text, symbol);
    m_open.pop_back();
    return result;
}

FormulaCompiler::Operand FormulaCompiler::Call(const FormulaToken& name) {
    const Function* function = FindFunction(name.text);
    if (function == nullptr) {
        Fail("unknown function \"" + std::string(name.text) + '"', name.position);
    }
    Advance();
    const Operand first = Condition();
    const bool pair = function->rule == Function::Rule::RealPair;
    if (pair || (function->rule == Function::Rule::Digits && m_token.kind == Token::Comma)) {
        Expect(Token::Comma, "\",\"");
        const Operand second = Condition();
        Expect(Token::Close, "\")\"");
        return Apply2(*function, first, second, name.position);
    }
    Expect(Token::Close, "\")\"");
    return Apply(*function, first, name.position);
}

FormulaCompiler::Operand FormulaCompiler::NumberLiteral(const FormulaToken& number) {
    const bool integers = m_formula.m_arithmetic == Formula::Arithmetic::Integer;
    FormulaValue value{};
    // In a Float formula a decimal number beyond the integers is just a double; in an Integer formula the
    // numbers from 2 ** 63 to 2 ** 64 - 1 are the bit patterns that 64-bit registers hold.
    const bool pattern =
        number.fitsInteger && (integers || number.real == static_cast<double>(number.integer));
    if (number.integral && pattern) {
        value.i = number.integer;
        return Push(value, Type::Integer, number.position);
    }
    if (number.integral && integers) {
        Fail("number of more than 64 bits", number.position);
    }
    value.d = number.real;
    return Push(value, Type::Float, number.position);
}

FormulaCompiler::Operand FormulaCompiler::Constant(const FormulaScope::Symbol& symbol, std::size_t position) {
    FormulaLexer lexer(symbol.text);
    FormulaToken token;
    bool negative = false;
    try {
        token = lexer.Next();
        if (token.kind == Token::Minus || token.kind == Token::Plus) {
            negative = token.kind == Token::Minus;
            token = lexer.Next();
        }
        if (token.kind == Token::Number && lexer.Next().kind != Token::End) {
            token.kind = Token::End;
        }
    } catch (const FormulaLexError&) {
        token.kind = Token::End;
    }
    if (token.kind != Token::Number) {
        Fail("constant " + std::string(symbol.name) + " is no number: \"" +
                 std::string(symbol.text.substr(0, 80)) + '"',
             position);
    }
    token.position = position;
    const Operand value = NumberLiteral(token);
    return negative ? Signed(FormulaOp::NegI, FormulaOp::NegF, value, position) : value;
}

FormulaCompiler::Operand FormulaCompiler::Combine(const BinaryOperator& op, Operand left, Operand right,
                                                  std::size_t position) {
    Type operands = Type::Integer;
    if (op.rule == Rule::Arithmetic) {
        operands = Arithmetic(left.type, right.type);
    } else if (op.rule == Rule::Comparison && (left.type == Type::Float || right.type == Type::Float)) {
        operands = Type::Float;
    }
    right = Convert(right, operands, false);
    left = Convert(left, operands, true);
    const Type result = op.rule == Rule::Arithmetic ? operands : Type::Integer;
    Operand value = Finish(operands == Type::Float ? op.real : op.integer, left,
                           left.constant && right.constant, result, position);
    value.truth = op.rule == Rule::Comparison;
    return value;
}

FormulaCompiler::Operand FormulaCompiler::Apply(const Function& function, Operand operand,
                                                std::size_t position) {
    const bool integers = m_formula.m_arithmetic == Formula::Arithmetic::Integer;
    switch (function.rule) {
    case Function::Rule::Sign:
        return Signed(function.integer, function.real, operand, position);
    case Function::Rule::Whole:
    case Function::Rule::Digits: {
        if (operand.type == Type::Integer) {
            return operand;
        }
        const FormulaOp op = function.rule == Function::Rule::Digits ? FormulaOp::RoundF : function.real;
        const Operand whole = Finish(op, operand, operand.constant, Type::Float, position);
        return integers ? Convert(whole, Type::Integer, false) : whole;
    }
    default:
        operand = Convert(operand, Type::Float, false);
        return Finish(function.real, operand, operand.constant, Type::Float, position);
    }
}

FormulaCompiler::Operand FormulaCompiler::Apply2(const Function& function, Operand left, Operand right,
                                                 std::size_t position) {
    const bool digits = function.rule == Function::Rule::Digits;
    const Type type =
        digits && left.type == Type::Integer && right.type == Type::Integer ? Type::Integer : Type::Float;
    right = Convert(right, type, false);
    left = Convert(left, type, true);
    return Finish(type == Type::Integer ? function.integer : function.real, left,
                  left.constant && right.constant, type, position);
}

FormulaCompiler::Operand FormulaCompiler::Signed(FormulaOp integer, FormulaOp real, Operand operand,
                                                 std::size_t position) {
    const Type type = Arithmetic(operand.type, operand.type);
    operand = Convert(operand, type, false);
    return Finish(type == Type::Float ? real : integer, operand, operand.constant, type, position);
}

// Emits an operator over the operands from first on; when all of them are constant, works it out at once.
// What fails is left for the evaluation: it may stand on a side that is never needed.
FormulaCompiler::Operand FormulaCompiler::Finish(FormulaOp op, Operand first, bool constant, Type result,
                                                 std::size_t position) {
    Emit(op, {}, position);
    if (constant) {
        auto& code = m_formula.m_code;
        code.push_back({FormulaOp::End, 0, 0, {}});
        FormulaValue value{};
        const FormulaInstruction* at = nullptr;
        const FormulaFault fault = RunFormula(&code[first.start], nullptr, value, at);
        code.pop_back();
        if (fault == FormulaFault::None) {
            Drop(first);
            return Push(value, result, position);
        }
    }
    return {result, false, false, first.start};
}

FormulaCompiler::Operand FormulaCompiler::Truth(Operand operand) {
    if (operand.truth) {
        return operand;
    }
    const FormulaOp op = operand.type == Type::Float ? FormulaOp::TruthF : FormulaOp::TruthI;
    Operand result = Finish(op, operand, operand.constant, Type::Integer, m_token.position);
    result.truth = true;
    return result;
}

FormulaCompiler::Operand FormulaCompiler::Convert(Operand operand, Type type, bool below) {
    if (operand.type == type) {
        return operand;
    }
    operand.type = type;
    FormulaInstruction& first = m_formula.m_code[operand.start];
    if (type == Type::Float) {
        operand.truth = false;
        if (operand.constant) {
            first.operand.d = static_cast<double>(first.operand.i);
        } else {
            Emit(below ? FormulaOp::IntToFloatBelow : FormulaOp::IntToFloat, {}, first.position);
        }
        return operand;
    }
    if (operand.constant && !std::isnan(first.operand.d)) {
        first.operand.i = math::ToInteger(first.operand.d);
    } else {
        operand.constant = false;
        Emit(below ? FormulaOp::FloatToIntBelow : FormulaOp::FloatToInt, {},
             below ? first.position : m_formula.m_code.back().position);
    }
    return operand;
}

FormulaCompiler::Type FormulaCompiler::Arithmetic(Type left, Type right) const {
    const bool integers = m_formula.m_arithmetic == Formula::Arithmetic::Integer;
    return integers && left == Type::Integer && right == Type::Integer ? Type::Integer : Type::Float;
}

void FormulaCompiler::Advance() {
    if (++m_tokens > Formula::kMaxTokens) {
        Fail("too long with its expressions", m_token.position);
    }
    try {
        m_token = m_lexer.Next();
    } catch (const FormulaLexError& error) {
        Fail(error.what(), error.position);
    }
}

void FormulaCompiler::Expect(Token kind, const char* what) {
    if (m_token.kind != kind) {
        Fail(std::string(what) + " expected", m_token.position);
    }
    Advance();
}

std::uint32_t FormulaCompiler::Emit(FormulaOp op, FormulaValue operand, std::size_t position) {
    const std::uint32_t here = Here();
    m_formula.m_code.push_back({op, m_source, static_cast<std::uint32_t>(position), operand});
    if (op == FormulaOp::Push || op == FormulaOp::Load) {
        AddDepth(1);
    } else if (op == FormulaOp::Jump || op == FormulaOp::JumpIfZero || op == FormulaOp::JumpIfZeroKeep ||
               op == FormulaOp::JumpIfNonZeroKeep ||
               (op >= FormulaOp::AddI && op <= FormulaOp::RoundDigitsI) ||
               (op >= FormulaOp::AddF && op <= FormulaOp::RoundDigitsF)) {
        AddDepth(-1);
    }
    return here;
}

FormulaCompiler::Operand FormulaCompiler::Push(FormulaValue value, Type type, std::size_t position) {
    return {type, true, false, Emit(FormulaOp::Push, value, position)};
}

void FormulaCompiler::Drop(const Operand& operand) {
    m_formula.m_code.resize(operand.start);
    AddDepth(-1);
}

void FormulaCompiler::PatchJump(std::uint32_t jump) {
    // The loop steps over the jump itself.
    m_formula.m_code[jump].operand.i = static_cast<std::int64_t>(Here()) - jump - 1;
}

void FormulaCompiler::AddDepth(int change) {
    m_depth = static_cast<std::uint32_t>(static_cast<int>(m_depth) + change);
    if (m_depth > Formula::kMaxOperands) {
        Fail("too many intermediate results", m_token.position);
    }
}

void FormulaCompiler::CollectVariables() {
    auto& variables = m_formula.m_variables;
    for (const FormulaInstruction& instruction : m_formula.m_code) {
        if (instruction.op == FormulaOp::Load) {
            variables.push_back(static_cast<std::uint32_t>(instruction.operand.i));
        }
    }
    std::sort(variables.begin(), variables.end());
    variables.erase(std::unique(variables.begin(), variables.end()), variables.end());
    variables.shrink_to_fit();
}

void FormulaCompiler::Fail(const std::string& problem, std::size_t position) const {
    ThrowFormulaError(m_formula.m_sources.front().text, m_formula.m_sources[m_source], position, problem);
}

} // namespace genapi
