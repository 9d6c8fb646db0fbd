// SPDX-License-Identifier: MIT
// What a search labels, phase by phase.
#ifndef KORU_MINIZINC_LABELS_H
#define KORU_MINIZINC_LABELS_H

#include "minizinc/plan.h"

namespace koru::fzn {

struct Labels {
  std::vector<Phase> annotated;  // as the file says, then what it says nothing of
  std::vector<Phase> free;       // the same variables in an order that failures decide
  std::vector<Phase> joint;      // the same in one phase, with the values of the first
  Array hidden;                  // in neither: what no solution shows, where several are asked for
  bool mayRepeat = false;        // the phases have variables that no solution shows
};

// `several`: several solutions of a satisfaction problem, which are to differ in what they show.
Labels labelsOf(const Syntax &syntax, Variables &variables, const Plan &plan, bool several);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_LABELS_H
