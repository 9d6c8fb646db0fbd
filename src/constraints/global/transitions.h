// SPDX-License-Identifier: MIT
// The transitions of an automaton: a copy of the caller's table, and the same by target. They serve all positions of
// cs_Regular, whose graph so needs no memory for its edges.
#pragma once

#include <cstddef>

#include "core/alloc.h"

namespace koru::regular {

// As the host describes it; finals and table entries that are no state are no final and no transition.
struct Automaton {
  const int *table;  // by state, then by symbol
  int states;
  int symbols;
  int start;
  const int *finals;
  int finalCount;

  bool isState(int q) const { return q >= 0 && q < states; }
};

// A transition into a state.
struct Arc {
  int symbol;
  int source;
};

class Transitions {
 public:
  static constexpr int kNone = -1;

  Transitions() = default;
  // False as a bool when memory is exhausted, or there are more transitions than an int can tell (reported both).
  explicit Transitions(const Automaton &automaton);
  explicit operator bool() const { return static_cast<bool>(arcs_); }

  int states() const { return states_; }
  int symbols() const { return symbols_; }

  // The targets by source; for loops, to be kept in registers.
  struct Table {
    const int *first;
    std::ptrdiff_t symbols;
    const int *row(int q) const { return first + q * symbols; }
  };
  Table table() const { return {table_.get(), symbols_}; }

  // A state or kNone.
  int target(int q, int a) const { return row(q)[a]; }
  const int *row(int q) const { return table().row(q); }

  // The arcs into t, by source and then by symbol, are those from arcsInto(t) up to arcsInto(t + 1).
  int arcsInto(int t) const { return starts_[t]; }
  const Arc *arcs() const { return arcs_.get(); }
  const Arc &arc(int i) const { return arcs_[i]; }

  // The number of states into which an arc leads.
  int targetCount() const;

 private:
  [[nodiscard]] bool copyTable(const Automaton &automaton);
  void sortArcs();

  int states_ = 0;
  int symbols_ = 0;
  Buffer<int> table_;  // and the starts behind it
  int *starts_ = nullptr;
  Buffer<Arc> arcs_;
};

}  // namespace koru::regular
