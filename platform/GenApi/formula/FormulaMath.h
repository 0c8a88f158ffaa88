// Arithmetic of formulas with a defined result for every operand: no undefined behaviour. Internal.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace genapi::math {

using I = std::int64_t;
using U = std::uint64_t;

constexpr I kMin = std::numeric_limits<I>::min();
constexpr I kMax = std::numeric_limits<I>::max();

inline I Add(I a, I b) {
    return static_cast<I>(static_cast<U>(a) + static_cast<U>(b));
}
inline I Sub(I a, I b) {
    return static_cast<I>(static_cast<U>(a) - static_cast<U>(b));
}
inline I Mul(I a, I b) {
    return static_cast<I>(static_cast<U>(a) * static_cast<U>(b));
}
inline I Neg(I a) {
    return Sub(0, a);
}
inline I Abs(I a) {
    return a < 0 ? Neg(a) : a;
}
inline I Sgn(I a) {
    return (a > 0 ? 1 : 0) - (a < 0 ? 1 : 0);
}

// b is not 0. The processor traps on kMin / -1.
inline I Div(I a, I b) {
    return b == -1 ? Neg(a) : a / b;
}
inline I Mod(I a, I b) {
    return b == -1 ? 0 : a % b;
}

// count is not negative.
inline I Shl(I a, I count) {
    return count > 63 ? 0 : static_cast<I>(static_cast<U>(a) << count);
}
inline I Shr(I a, I count) {
    const I n = count > 63 ? 63 : count;
    return a < 0 ? ~(~a >> n) : a >> n;
}

// Integer power; base is not 0 when exponent is negative (1 / base ** -exponent, cut towards zero).
inline I Pow(I base, I exponent) {
    if (exponent < 0) {
        if (base == 1) {
            return 1;
        }
        if (base == -1) {
            return (exponent & 1) != 0 ? -1 : 1;
        }
        return 0;
    }
    I result = 1;
    for (U n = static_cast<U>(exponent); n != 0; n >>= 1) {
        if ((n & 1) != 0) {
            result = Mul(result, base);
        }
        base = Mul(base, base);
    }
    return result;
}

// The nearest multiple of 10 ** -digits, half away from zero; integers have no digits to lose for digits >=
// 0.
inline I RoundDigits(I a, I digits) {
    if (digits >= 0) {
        return a;
    }
    if (digits < -18) {
        return 0; // 10 ** 19 is more than twice the largest number, so all round to 0
    }
    I unit = 10;
    for (I n = -1; n > digits; --n) {
        unit *= 10;
    }
    const I rest = a % unit;
    const I cut = a - rest;
    if (rest >= unit / 2) {
        return Add(cut, unit);
    }
    return rest <= -(unit / 2) ? Sub(cut, unit) : cut;
}

inline double RoundDigits(double a, double digits) {
    if (std::isnan(digits)) {
        return digits;
    }
    // Beyond what a double can resolve there is nothing to round; far on the other side only 0 is left.
    const double n = std::trunc(digits);
    if (n > 308.0) {
        return a;
    }
    if (n < -308.0) {
        return std::isfinite(a) ? std::copysign(0.0, a) : a;
    }
    const double scale = std::pow(10.0, std::fabs(n));
    const double rounded = n < 0 ? std::round(a / scale) * scale : std::round(a * scale) / scale;
    return std::isfinite(rounded) ? rounded : a;
}

inline double Sgn(double a) {
    if (std::isnan(a)) {
        return a;
    }
    return static_cast<double>((a > 0 ? 1 : 0) - (a < 0 ? 1 : 0));
}

// Cut towards zero, held within the range of integers. a is not NaN.
inline I ToInteger(double a) {
    if (a >= 9223372036854775808.0) {
        return kMax;
    }
    return a < -9223372036854775808.0 ? kMin : static_cast<I>(a);
}

} // namespace genapi::math
