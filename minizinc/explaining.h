// SPDX-License-Identifier: MIT
// Why a model has no solution: the lines of it that contradict each other.
#ifndef KORU_MINIZINC_EXPLAINING_H
#define KORU_MINIZINC_EXPLAINING_H

#include "minizinc/options.h"
#include "minizinc/syntax.h"

namespace koru::fzn {

// Writes them on the standard output, as comments: to be called when a run has ended, and its solver with it. Runs the
// model again and again, for `milliseconds` at most (0: no limit). False with a mistake, which it then tells of.
bool explainFailure(const Syntax &syntax, long long milliseconds, Mistake &mistake);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_EXPLAINING_H
