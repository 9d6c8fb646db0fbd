// SPDX-License-Identifier: MIT
// Whether values are a solution: every constraint of the file evaluated by its definition, without the solver. It
// shares nothing with what posts constraints.
#ifndef KORU_MINIZINC_CHECK_H
#define KORU_MINIZINC_CHECK_H

#include "minizinc/syntax.h"

namespace koru::fzn {

// `values` by declaration. False, and the first constraint or domain that does not hold, or that is not known here.
bool isSolution(const Syntax &syntax, const std::vector<long long> &values, Mistake &wrong);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_CHECK_H
