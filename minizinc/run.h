// SPDX-License-Identifier: MIT
// Searching a posted model and reporting what is found.
#ifndef KORU_MINIZINC_RUN_H
#define KORU_MINIZINC_RUN_H

#include "minizinc/options.h"
#include "minizinc/report.h"
#include "minizinc/statistics.h"

namespace koru::fzn {

// Searches as the options and annotations say; `posted` is the model's answer. False when a solution did not stand the
// check that --verify asks for, which the standard error stream then tells of.
bool run(const Syntax &syntax, Model &model, bool posted, const Options &options, Times times, Report &report);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_RUN_H
