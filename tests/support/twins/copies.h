// SPDX-License-Identifier: MIT
// Domains as sets of values and contexts as copies of all of them: what narrowing and undoing mean, with nothing that
// could be got wrong in the same way as the library's bounds, counts and undo records. Nothing propagates by itself.
#pragma once

#include <climits>
#include <set>
#include <vector>

#include "koru.h"

namespace koru::test::copies {

// Whether a value satisfies a comparison.
inline bool satisfies(int value, const CSvalueSelection &r) {
  switch (r.method) {
    case CS_METHOD_EQ:
      return value == r.value;
    case CS_METHOD_NEQ:
      return value != r.value;
    case CS_METHOD_LE:
      return value <= r.value;
    case CS_METHOD_LT:
      return value < r.value;
    case CS_METHOD_GE:
      return value >= r.value;
    default:
      return value > r.value;
  }
}

// What there is to know of each variable, and contexts.
template <class State>
class CopiesOf {
 public:
  // `anew` is what a restore of an earlier context leaves of the variable.
  void create(const State &state, const State &anew) {
    states_.push_back(state);
    created_.push_back(anew);
  }
  int variables() const { return static_cast<int>(states_.size()); }
  const State &variable(int v) const { return states_[static_cast<std::size_t>(v)]; }
  State &variable(int v) { return states_[static_cast<std::size_t>(v)]; }

  int contexts() const { return static_cast<int>(contexts_.size()); }
  int save() {
    contexts_.push_back(states_);
    return contexts();
  }
  void restore() {
    const std::vector<State> copy = contexts_.back();
    contexts_.pop_back();
    for (std::size_t v = 0; v < states_.size(); ++v) states_[v] = v < copy.size() ? copy[v] : created_[v];
  }
  void restoreUntil(int label) {
    while (contexts() >= label) restore();
  }
  // Accepts or forgets a context.
  void close() { contexts_.pop_back(); }

 private:
  std::vector<State> created_;
  std::vector<State> states_;
  std::vector<std::vector<State>> contexts_;
};

using Domain = std::set<int>;

// Keeps the values that satisfy a comparison; false, with nothing changed, when that is none.
inline bool keep(Domain &domain, const CSvalueSelection &r) {
  // There is nothing beyond the ends of the int range to compare with.
  if ((r.method == CS_METHOD_LT && r.value == INT_MIN) || (r.method == CS_METHOD_GT && r.value == INT_MAX)) return true;
  Domain kept;
  for (const int value : domain)
    if (satisfies(value, r)) kept.insert(value);
  if (!kept.empty()) domain = kept;
  return !kept.empty();
}

}  // namespace koru::test::copies
