#pragma once

#include <cstddef>
#include <cstdint>

namespace fuzz {

// Compiles and evaluates a formula in both arithmetics. The first line is the formula; each further line
// "NAME:text" adds an expression, "NAME=text" a constant. Aborts when anything but FormulaError comes out, or
// when results are not repeatable.
void FuzzFormula(const std::uint8_t* data, std::size_t size);

} // namespace fuzz
