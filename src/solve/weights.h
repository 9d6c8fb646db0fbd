// SPDX-License-Identifier: MIT
// Which variables each constraint concerns, and how much each variable has been blamed for failures: the weighted
// degree of Boussemart, Hemery, Lecoutre, Sais, "Boosting Systematic Search by Weighting Constraints", ECAI 2004.
//
// A constraint concerns the labelled variables that it is attached to, and for each other variable it is attached to
// (the result of a sum, say) those that a small constraint ties to that one. Collected once, when a search begins;
// constraints that are posted later concern nobody. A failure adds to all variables of the constraint, the latest ones
// more: the addend grows by a twentieth each time, and all weights are halved when one gets too large. Integers, so
// that every platform comes to the same order.
// Cost: collecting is linear in all attachments and a sort of them; a failure is a bisection and a pass over the
// constraint's variables.
#pragma once

#include <utility>

#include "core/alloc.h"
#include "core/constraint.h"

namespace koru::solve {

class Weights {
 public:
  // The positions of variables[0..n-1]. False when memory is exhausted (reported).
  [[nodiscard]] bool collect(CSint *const *variables, int n);
  bool collected() const { return static_cast<bool>(weights_); }

  void noteFailure(const Constraint *constraint);
  std::uint64_t of(int position) const { return weights_[position]; }

  // Each constraint has a place below this.
  int places() const { return count_; }
  // Visits the positions that share with the given one a constraint whose place is still unvisited, some perhaps more
  // than once, and notes these places.
  template <class Visit>
  void forEachNeighbour(int position, bool *visited, Visit visit) const {
    for (int i = linksBegin_[position]; i < linksBegin_[position + 1]; ++i)
      if (!std::exchange(visited[links_[i]], true)) forEachConcerned(links_[i], visit);
  }

 private:
  struct Link {  // a constraint and a position that it concerns, or a variable that is not labelled
    const Constraint *constraint;
    int position;
  };
  template <class Visit>
  void forEachConcerned(int first, Visit visit) const {
    for (int i = first; i < count_ && scopes_[i].constraint == scopes_[first].constraint; ++i)
      visit(scopes_[i].position);
  }
  int findScope(const Constraint *constraint) const;
  void rescale();

  friend class ScopeCollector;

  Buffer<std::uint64_t> weights_;
  Buffer<Link> scopes_;  // ordered by constraint, then position; without repetitions
  Buffer<int> linksBegin_;
  Buffer<int> links_;  // for each position the places in scopes_ at which its constraints begin
  int count_ = 0;
  int variables_ = 0;
  std::uint64_t addend_ = 1 << 10;
};

}  // namespace koru::solve
