// SPDX-License-Identifier: MIT
#include "constraints/global/transitions.h"

#include <algorithm>
#include <cstdint>

#include "core/errors.h"
#include "core/int_math.h"

namespace koru::regular {

Transitions::Transitions(const Automaton &automaton) : states_(automaton.states), symbols_(automaton.symbols) {
  if (std::int64_t{states_} * symbols_ > kIntMax) {
    reportMemoryExhausted();
    return;
  }
  if (!copyTable(automaton)) return;
  arcs_ = Buffer<Arc>(starts_[states_]);
  if (arcs_) sortArcs();
}

// Counts the arcs into each state on the way: starts_[t] becomes the end of those into t.
bool Transitions::copyTable(const Automaton &automaton) {
  const int entries = states_ * symbols_;
  table_ = Buffer<int>(static_cast<std::uint64_t>(entries) + static_cast<std::uint64_t>(states_) + 1);
  if (!table_) return false;
  starts_ = table_.get() + entries;
  std::fill_n(starts_, states_ + 1, 0);
  for (int i = 0; i < entries; ++i) {
    const int target = automaton.isState(automaton.table[i]) ? automaton.table[i] : kNone;
    table_[i] = target;
    if (target != kNone) ++starts_[target];
  }
  int end = 0;
  for (int t = 0; t < states_; ++t) end = starts_[t] += end;
  starts_[states_] = end;
  return true;
}

// Backwards, so that each state's arcs are filled from their end to their start.
void Transitions::sortArcs() {
  for (int q = states_ - 1; q >= 0; --q)
    for (int a = symbols_ - 1; a >= 0; --a)
      if (const int t = target(q, a); t != kNone) arcs_[--starts_[t]] = {a, q};
}

int Transitions::targetCount() const {
  int count = 0;
  for (int t = 0; t < states_; ++t) count += arcsInto(t) < arcsInto(t + 1) ? 1 : 0;
  return count;
}

}  // namespace koru::regular
