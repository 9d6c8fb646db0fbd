// SPDX-License-Identifier: MIT
// Choices that the library leaves to the host: orders of its own for variables and values, by phase.
#ifndef KORU_MINIZINC_CHOOSE_H
#define KORU_MINIZINC_CHOOSE_H

#include "minizinc/plan.h"

namespace koru::fzn {

class Chooser {
 public:
  // The phases of a search, in its order, and of the plan what neighbourhoods keep.
  Chooser(const std::vector<Phase> &phases, const Plan &plan, unsigned long long seed);

  // For CSsearchOptions; `extra` is the chooser.
  static int chooseVariable(CSint **variables, int n, void *extra);
  static bool chooseValue(CSvalueSelection *decision, int index, CSint **variables, int n, void *extra);
  // Lets go all variables but those of relax_and_reconstruct, of which the given share keeps its values.
  static void chooseRelaxed(bool *relaxed, const int *best, int n, void *extra);

 private:
  struct Part {
    int end;  // of the phase's positions
    OwnOrder order;
    OwnValue value;
  };
  const Part &partOf(int index) const;
  unsigned long long draw();

  std::vector<Part> parts_;
  std::vector<bool> mayKeep_;  // by position
  int kept_;                   // per cent
  unsigned long long state_;
};

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_CHOOSE_H
