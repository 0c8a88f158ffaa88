#include "formula/FormulaProgram.h"

#include <cstring>

#include "formula/FormulaMath.h"

namespace genapi {

namespace {

// Operators that take one operand and cannot fail. True if op is one of them.
inline bool RunUnary(FormulaOp op, FormulaValue& a) {
    switch (op) {
    case FormulaOp::TruthI:
        a.i = a.i != 0 ? 1 : 0;
        return true;
    case FormulaOp::TruthF:
        a.i = a.d != 0.0 ? 1 : 0;
        return true;
    case FormulaOp::LogicalNotI:
        a.i = a.i == 0 ? 1 : 0;
        return true;
    case FormulaOp::LogicalNotF:
        a.i = a.d == 0.0 ? 1 : 0;
        return true;
    case FormulaOp::NotI:
        a.i = ~a.i;
        return true;
    case FormulaOp::NegI:
        a.i = math::Neg(a.i);
        return true;
    case FormulaOp::AbsI:
        a.i = math::Abs(a.i);
        return true;
    case FormulaOp::SgnI:
        a.i = math::Sgn(a.i);
        return true;
    case FormulaOp::NegF:
        a.d = -a.d;
        return true;
    case FormulaOp::AbsF:
        a.d = std::fabs(a.d);
        return true;
    case FormulaOp::SgnF:
        a.d = math::Sgn(a.d);
        return true;
    default:
        return false;
    }
}

// Functions of the C library, slow enough for a switch of their own.
void RunFunction(FormulaOp op, FormulaValue& a) {
    switch (op) {
    case FormulaOp::SqrtF:
        a.d = std::sqrt(a.d);
        break;
    case FormulaOp::TruncF:
        a.d = std::trunc(a.d);
        break;
    case FormulaOp::FloorF:
        a.d = std::floor(a.d);
        break;
    case FormulaOp::CeilF:
        a.d = std::ceil(a.d);
        break;
    case FormulaOp::RoundF:
        a.d = std::round(a.d);
        break;
    case FormulaOp::SinF:
        a.d = std::sin(a.d);
        break;
    case FormulaOp::CosF:
        a.d = std::cos(a.d);
        break;
    case FormulaOp::TanF:
        a.d = std::tan(a.d);
        break;
    case FormulaOp::AsinF:
        a.d = std::asin(a.d);
        break;
    case FormulaOp::AcosF:
        a.d = std::acos(a.d);
        break;
    case FormulaOp::AtanF:
        a.d = std::atan(a.d);
        break;
    case FormulaOp::ExpF:
        a.d = std::exp(a.d);
        break;
    case FormulaOp::LnF:
        a.d = std::log(a.d);
        break;
    default: // LgF
        a.d = std::log10(a.d);
        break;
    }
}

inline void RunFloatBinary(FormulaOp op, FormulaValue& a, double b) {
    switch (op) {
    case FormulaOp::AddF:
        a.d += b;
        break;
    case FormulaOp::SubF:
        a.d -= b;
        break;
    case FormulaOp::MulF:
        a.d *= b;
        break;
    case FormulaOp::DivF:
        a.d /= b;
        break;
    case FormulaOp::ModF:
        a.d = std::fmod(a.d, b);
        break;
    case FormulaOp::PowF:
        a.d = std::pow(a.d, b);
        break;
    case FormulaOp::EqF:
        a.i = a.d == b ? 1 : 0;
        break;
    case FormulaOp::NeF:
        a.i = a.d != b ? 1 : 0;
        break;
    case FormulaOp::LtF:
        a.i = a.d < b ? 1 : 0;
        break;
    case FormulaOp::LeF:
        a.i = a.d <= b ? 1 : 0;
        break;
    case FormulaOp::GtF:
        a.i = a.d > b ? 1 : 0;
        break;
    case FormulaOp::GeF:
        a.i = a.d >= b ? 1 : 0;
        break;
    case FormulaOp::Atan2F:
        a.d = std::atan2(a.d, b);
        break;
    default: // RoundDigitsF
        a.d = math::RoundDigits(a.d, b);
        break;
    }
}

inline FormulaFault RunIntBinary(FormulaOp op, FormulaValue& a, std::int64_t b) {
    switch (op) {
    case FormulaOp::AddI:
        a.i = math::Add(a.i, b);
        break;
    case FormulaOp::SubI:
        a.i = math::Sub(a.i, b);
        break;
    case FormulaOp::MulI:
        a.i = math::Mul(a.i, b);
        break;
    case FormulaOp::DivI:
    case FormulaOp::ModI:
        if (b == 0) {
            return FormulaFault::DivisionByZero;
        }
        a.i = op == FormulaOp::DivI ? math::Div(a.i, b) : math::Mod(a.i, b);
        break;
    case FormulaOp::PowI:
        if (a.i == 0 && b < 0) {
            return FormulaFault::DivisionByZero;
        }
        a.i = math::Pow(a.i, b);
        break;
    case FormulaOp::AndI:
        a.i &= b;
        break;
    case FormulaOp::OrI:
        a.i |= b;
        break;
    case FormulaOp::XorI:
        a.i ^= b;
        break;
    case FormulaOp::ShlI:
    case FormulaOp::ShrI:
        if (b < 0) {
            return FormulaFault::NegativeShift;
        }
        a.i = op == FormulaOp::ShlI ? math::Shl(a.i, b) : math::Shr(a.i, b);
        break;
    case FormulaOp::EqI:
        a.i = a.i == b ? 1 : 0;
        break;
    case FormulaOp::NeI:
        a.i = a.i != b ? 1 : 0;
        break;
    case FormulaOp::LtI:
        a.i = a.i < b ? 1 : 0;
        break;
    case FormulaOp::LeI:
        a.i = a.i <= b ? 1 : 0;
        break;
    case FormulaOp::GtI:
        a.i = a.i > b ? 1 : 0;
        break;
    case FormulaOp::GeI:
        a.i = a.i >= b ? 1 : 0;
        break;
    default: // RoundDigitsI
        a.i = math::RoundDigits(a.i, b);
        break;
    }
    return FormulaFault::None;
}

inline bool ToInteger(FormulaValue& a) {
    if (std::isnan(a.d)) {
        return false;
    }
    a.i = math::ToInteger(a.d);
    return true;
}

} // namespace

FormulaFault RunFormula(const FormulaInstruction* code, const void* variables, FormulaValue& result,
                        const FormulaInstruction*& at) {
    // The compiler has counted: no program needs more.
    FormulaValue stack[Formula::kMaxOperands + 2];
    FormulaValue* top = stack;
    for (const FormulaInstruction* pc = code;; ++pc) {
        switch (pc->op) {
        case FormulaOp::Push:
            *++top = pc->operand;
            break;
        case FormulaOp::Load:
            std::memcpy(++top, static_cast<const char*>(variables) + pc->operand.i * 8, 8);
            break;
        case FormulaOp::End:
            result = *top;
            return FormulaFault::None;
        case FormulaOp::IntToFloatJump:
            top->d = static_cast<double>(top->i);
            pc += pc->operand.i;
            break;
        case FormulaOp::Jump:
            pc += pc->operand.i;
            break;
        case FormulaOp::JumpIfZero:
            pc += (top--)->i == 0 ? pc->operand.i : 0;
            break;
        case FormulaOp::JumpIfZeroKeep:
        case FormulaOp::JumpIfNonZeroKeep:
            if ((top->i == 0) == (pc->op == FormulaOp::JumpIfZeroKeep)) {
                pc += pc->operand.i;
            } else {
                --top;
            }
            break;
        case FormulaOp::IntToFloat:
            top->d = static_cast<double>(top->i);
            break;
        case FormulaOp::IntToFloatBelow:
            top[-1].d = static_cast<double>(top[-1].i);
            break;
        case FormulaOp::FloatToInt:
        case FormulaOp::FloatToIntBelow:
            if (!ToInteger(pc->op == FormulaOp::FloatToInt ? *top : top[-1])) {
                at = pc;
                return FormulaFault::NotANumber;
            }
            break;
        default:
            if (pc->op >= FormulaOp::SqrtF) {
                RunFunction(pc->op, *top);
            } else if (!RunUnary(pc->op, *top)) {
                --top;
                if (pc->op >= FormulaOp::AddF) {
                    RunFloatBinary(pc->op, *top, top[1].d);
                } else if (const FormulaFault fault = RunIntBinary(pc->op, *top, top[1].i);
                           fault != FormulaFault::None) {
                    at = pc;
                    return fault;
                }
            }
            break;
        }
    }
}

void ThrowFormulaError(const std::string& formula, const Formula::Source& source, std::size_t position,
                       const std::string& problem) {
    const auto quote = [](const std::string& text) {
        constexpr std::size_t kShown = 200;
        return '"' + (text.size() > kShown ? text.substr(0, kShown) + "..." : text) + '"';
    };
    std::string what = "Formula " + quote(formula);
    if (!source.name.empty()) {
        what += ", expression " + source.name + " = " + quote(source.text);
    }
    throw FormulaError(what + ": " + problem + " at position " + std::to_string(position), position);
}

} // namespace genapi
