// The program that a formula is compiled to: instructions in postfix order for a small stack machine.
// Internal.
#pragma once

#include <cstdint>
#include <string>

#include "formula/Formula.h"

namespace genapi {

// One operand; instructions know whether it is an integer or a double.
union FormulaValue {
    std::int64_t i;
    double d;
};

// ...I works on integers, ...F on doubles. Comparisons leave an integer.
enum class FormulaOp : std::uint8_t {
    Push,
    Load,
    End,
    Jump,           // by operand.i instructions
    IntToFloatJump, // the same after converting the top
    JumpIfZero,     // pops an integer
    JumpIfZeroKeep, // pops only when it does not jump
    JumpIfNonZeroKeep,
    IntToFloat,
    IntToFloatBelow, // the operand under the top
    FloatToInt,
    FloatToIntBelow,
    TruthI, // 1 or 0
    TruthF,
    LogicalNotI,
    LogicalNotF,
    AddI,
    SubI,
    MulI,
    DivI,
    ModI,
    PowI,
    AndI,
    OrI,
    XorI,
    ShlI,
    ShrI,
    EqI,
    NeI,
    LtI,
    LeI,
    GtI,
    GeI,
    RoundDigitsI, // operand, digits
    NotI,
    NegI,
    AbsI,
    SgnI,
    AddF,
    SubF,
    MulF,
    DivF,
    ModF,
    PowF,
    EqF,
    NeF,
    LtF,
    LeF,
    GtF,
    GeF,
    Atan2F,
    RoundDigitsF, // operand, digits (a double)
    NegF,
    AbsF,
    SgnF,
    SqrtF,
    TruncF,
    FloorF,
    CeilF,
    RoundF,
    SinF,
    CosF,
    TanF,
    AsinF,
    AcosF,
    AtanF,
    ExpF,
    LnF,
    LgF,
};

struct FormulaInstruction {
    FormulaOp op;
    std::uint16_t source;   // index into the formula's sources
    std::uint32_t position; // in that source's text, for errors
    FormulaValue operand;
};
static_assert(sizeof(FormulaInstruction) == 16);

enum class FormulaFault { None, DivisionByZero, NegativeShift, NotANumber };

// Runs code up to End. variables: 8-byte values of either kind. On a fault, at is the instruction that met
// it.
FormulaFault RunFormula(const FormulaInstruction* code, const void* variables, FormulaValue& result,
                        const FormulaInstruction*& at);

// Where a fault happened, for people.
[[noreturn]] void ThrowFormulaError(const std::string& formula, const Formula::Source& source,
                                    std::size_t position, const std::string& problem);

} // namespace genapi
