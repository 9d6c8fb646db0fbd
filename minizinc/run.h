// SPDX-License-Identifier: MIT
// Searching a posted model and reporting what is found.
#ifndef KORU_MINIZINC_RUN_H
#define KORU_MINIZINC_RUN_H

#include "minizinc/model.h"
#include "minizinc/plan.h"
#include "minizinc/report.h"

namespace koru::fzn {

// Times that the statistics tell of, in seconds.
struct Times {
  double parse = 0;
  double post = 0;
};

// Searches as the options and annotations say; `posted` is the model's answer. False when a solution did not stand the
// check that --verify asks for, which the standard error stream then tells of.
bool run(const Syntax &syntax, Model &model, bool posted, const Options &options, Times times, Report &report);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_RUN_H
