// SPDX-License-Identifier: MIT
// Solutions as text.
#ifndef KORU_MINIZINC_OUTPUT_H
#define KORU_MINIZINC_OUTPUT_H

#include "minizinc/variables.h"

namespace koru::fzn {

// The value of every declared variable (of arrays: 0), by declaration. What is not bound counts with its minimum.
std::vector<long long> valuesOf(const Syntax &syntax, Variables &variables);

// "NAME = VALUE;" for each variable and array that is to be put out, a line each.
std::string textOf(const Syntax &syntax, const std::vector<long long> &values);

// Variables that the text depends on.
std::vector<Operand> outputOf(const Syntax &syntax, const Variables &variables);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_OUTPUT_H
