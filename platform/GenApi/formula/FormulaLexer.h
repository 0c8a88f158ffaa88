// Splits a formula into tokens. Internal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>

namespace genapi {

enum class FormulaTokenKind : std::uint8_t {
    End,
    Number,
    Name,
    Open,
    Close,
    Comma,
    Question,
    Colon,
    Plus,
    Minus,
    Times,
    Divide,
    Remainder,
    Power,
    And,
    Or,
    Xor,
    Not,
    LogicalNot,
    LogicalAnd,
    LogicalOr,
    ShiftLeft,
    ShiftRight,
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
};

struct FormulaToken {
    FormulaTokenKind kind = FormulaTokenKind::End;
    std::size_t position = 0;
    std::string_view text;
    // Number: its value as a double; as an integer too unless it is written with a fraction or an exponent.
    bool integral = false;
    bool fitsInteger = false; // 64 bits, unsigned ones wrapped
    std::int64_t integer = 0;
    double real = 0;
};

// What the lexer can't read; the compiler makes a FormulaError of it.
struct FormulaLexError : std::runtime_error {
    FormulaLexError(const char* problem, std::size_t where) : std::runtime_error(problem), position(where) {}
    std::size_t position;
};

class FormulaLexer {
public:
    explicit FormulaLexer(std::string_view text) : m_text(text) {}
    FormulaToken Next();

private:
    void Number(FormulaToken& token);
    void Hexadecimal(FormulaToken& token);
    void Decimal(FormulaToken& token);
    void Name(FormulaToken& token);
    void Operator(FormulaToken& token);

    std::string_view m_text;
    std::size_t m_at = 0;
};

} // namespace genapi
