#include "formula/FormulaLexer.h"

#include <charconv>

namespace genapi {

namespace {

// Not <cctype>: its answers depend on the locale, and it wants no negative characters.
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

struct OperatorText {
    std::string_view text;
    FormulaTokenKind kind;
};

// Two characters before one.
constexpr OperatorText kOperators[] = {
    {"**", FormulaTokenKind::Power},      {"<<", FormulaTokenKind::ShiftLeft},
    {">>", FormulaTokenKind::ShiftRight}, {"<>", FormulaTokenKind::NotEqual},
    {"!=", FormulaTokenKind::NotEqual},   {"==", FormulaTokenKind::Equal},
    {"<=", FormulaTokenKind::LessEqual},  {">=", FormulaTokenKind::GreaterEqual},
    {"&&", FormulaTokenKind::LogicalAnd}, {"||", FormulaTokenKind::LogicalOr},
    {"(", FormulaTokenKind::Open},        {")", FormulaTokenKind::Close},
    {",", FormulaTokenKind::Comma},       {"?", FormulaTokenKind::Question},
    {":", FormulaTokenKind::Colon},       {"+", FormulaTokenKind::Plus},
    {"-", FormulaTokenKind::Minus},       {"*", FormulaTokenKind::Times},
    {"/", FormulaTokenKind::Divide},      {"%", FormulaTokenKind::Remainder},
    {"&", FormulaTokenKind::And},         {"|", FormulaTokenKind::Or},
    {"^", FormulaTokenKind::Xor},         {"~", FormulaTokenKind::Not},
    {"!", FormulaTokenKind::LogicalNot},  {"=", FormulaTokenKind::Equal},
    {"<", FormulaTokenKind::Less},        {">", FormulaTokenKind::Greater},
};

} // namespace

FormulaToken FormulaLexer::Next() {
    while (m_at < m_text.size() && IsSpace(m_text[m_at])) {
        ++m_at;
    }
    FormulaToken token;
    token.position = m_at;
    if (m_at == m_text.size()) {
        return token;
    }
    const char first = m_text[m_at];
    if (IsDigit(first) || (first == '.' && m_at + 1 < m_text.size() && IsDigit(m_text[m_at + 1]))) {
        Number(token);
    } else if (IsLetter(first)) {
        Name(token);
    } else {
        Operator(token);
    }
    token.text = m_text.substr(token.position, m_at - token.position);
    return token;
}

void FormulaLexer::Number(FormulaToken& token) {
    token.kind = FormulaTokenKind::Number;
    const std::string_view rest = m_text.substr(m_at);
    if (rest.size() > 1 && rest[0] == '0' && (rest[1] == 'x' || rest[1] == 'X')) {
        Hexadecimal(token);
    } else {
        Decimal(token);
    }
    if (m_at < m_text.size() && (IsLetter(m_text[m_at]) || IsDigit(m_text[m_at]) || m_text[m_at] == '.')) {
        throw FormulaLexError("malformed number", token.position);
    }
}

void FormulaLexer::Hexadecimal(FormulaToken& token) {
    const char* const end = m_text.data() + m_text.size();
    std::uint64_t bits = 0;
    const auto [stop, error] = std::from_chars(m_text.data() + m_at + 2, end, bits, 16);
    if (error == std::errc::invalid_argument) {
        throw FormulaLexError("malformed number", token.position);
    }
    if (error != std::errc()) {
        throw FormulaLexError("number of more than 64 bits", token.position);
    }
    token.integral = token.fitsInteger = true;
    token.integer = static_cast<std::int64_t>(bits);
    token.real = static_cast<double>(token.integer);
    m_at = static_cast<std::size_t>(stop - m_text.data());
}

void FormulaLexer::Decimal(FormulaToken& token) {
    const char* const begin = m_text.data() + m_at;
    const char* const end = m_text.data() + m_text.size();
    const auto [stop, error] = std::from_chars(begin, end, token.real, std::chars_format::general);
    if (error != std::errc()) {
        throw FormulaLexError("number out of range", token.position);
    }
    m_at = static_cast<std::size_t>(stop - m_text.data());
    token.integral = true;
    for (const char* c = begin; c != stop; ++c) {
        token.integral = token.integral && IsDigit(*c);
    }
    if (token.integral) {
        std::uint64_t bits = 0;
        token.fitsInteger = std::from_chars(begin, stop, bits).ec == std::errc();
        token.integer = static_cast<std::int64_t>(bits);
    }
}

void FormulaLexer::Name(FormulaToken& token) {
    token.kind = FormulaTokenKind::Name;
    const auto inName = [this](std::size_t at) {
        return at < m_text.size() && (IsLetter(m_text[at]) || IsDigit(m_text[at]));
    };
    while (inName(m_at) || (m_at < m_text.size() && m_text[m_at] == '.' && inName(m_at + 1))) {
        ++m_at;
    }
}

void FormulaLexer::Operator(FormulaToken& token) {
    const std::string_view rest = m_text.substr(m_at);
    for (const OperatorText& candidate : kOperators) {
        if (rest.substr(0, candidate.text.size()) == candidate.text) {
            token.kind = candidate.kind;
            m_at += candidate.text.size();
            return;
        }
    }
    throw FormulaLexError("unexpected character", token.position);
}

} // namespace genapi
