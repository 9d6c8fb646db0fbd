// SPDX-License-Identifier: MIT
// Several processes that search in different ways: the first proof ends all.
#ifndef KORU_MINIZINC_PORTFOLIO_H
#define KORU_MINIZINC_PORTFOLIO_H

#include <functional>

#include "minizinc/options.h"
#include "minizinc/report.h"
#include "minizinc/syntax.h"

namespace koru::fzn {

// Whether more than one process can be of use: not where all solutions are asked for.
bool isForPortfolio(const Syntax &syntax, const Options &options);

// Runs `solve` in options.processes children, each with options of its own, and reports the best of what they find. The
// exit status: 0, or 1 when a child had it. No other thread may run yet.
int runPortfolio(const Syntax &syntax, const Options &options, const std::function<int(const Options &)> &solve);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_PORTFOLIO_H
