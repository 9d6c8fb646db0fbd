// SPDX-License-Identifier: MIT
// Choices that the library leaves to the host: orders of its own for variables and values, by phase.
#ifndef KORU_MINIZINC_CHOOSE_H
#define KORU_MINIZINC_CHOOSE_H

#include "minizinc/plan.h"

namespace koru::fzn {

class Chooser {
 public:
  // The phases of a search, in its order.
  Chooser(const std::vector<Phase> &phases, unsigned long long seed);

  // For CSsearchOptions; `extra` is the chooser.
  static int chooseVariable(CSint **variables, int n, void *extra);
  static bool chooseValue(CSvalueSelection *decision, int index, CSint **variables, int n, void *extra);

 private:
  struct Part {
    int end;  // of the phase's positions
    OwnOrder order;
    OwnValue value;
  };
  const Part &partOf(int index) const;
  bool heads();

  std::vector<Part> parts_;
  unsigned long long state_;
};

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_CHOOSE_H
