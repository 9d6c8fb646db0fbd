// SPDX-License-Identifier: MIT
// A matching of variables with values that are all different, and the values that some such matching uses (Regin, A
// filtering algorithm for constraints of difference in CSPs, 1994), on words of 64 values (Gent, Miguel, Nightingale,
// Generalised arc consistency for the alldifferent constraint, 2008).
//
// The matching is not trailed: a value that a variable is matched with is in its domain after a restore as well, and
// where it is not, a run repairs the matching. Values are offsets from `low`.
#pragma once

#include "core/alloc.h"
#include "core/branch_set.h"
#include "core/domain_words.h"

namespace koru {

class Matching {
 public:
  Matching() = default;
  // For variables whose values lie within [low, low + span). False as a bool when memory is exhausted (reported).
  Matching(int count, int low, int span);
  explicit operator bool() const { return static_cast<bool>(open_); }

  // Whether all variables lie within the range of the values still.
  bool covers(CSint *const *vars);
  // Leaves each variable the values that it has in a solution. False when there is none or memory is exhausted
  // (reported).
  [[nodiscard]] bool filter(CSint *const *vars);

 private:
  static constexpr int kNone = -1;

  struct Node {
    int number;  // in the order of the depth-first search, 0 before it
    int lowest;  // number that is reached
    int parent;
    int word;  // the next to look at
  };

  // Where all values are in one word, a run reads each domain once; what it takes away it does not look at again.
  bool isOneWord() const { return words_ == 1; }
  std::uint64_t domain(int i, int word) const {
    return isOneWord() ? domains_[i] : domainWord(vars_[i], low_ + std::int64_t{word} * kWordBits);
  }
  int firstWord(int i) const { return isOneWord() ? 0 : wordOf(vars_[i]->min); }
  int lastWord(int i) const { return isOneWord() ? 0 : wordOf(vars_[i]->max); }
  int wordOf(int value) const { return static_cast<int>((std::int64_t{value} - low_) / kWordBits); }
  bool holds(int i, int value) const { return (domain(i, value / kWordBits) >> (value % kWordBits) & 1) != 0; }

  void readDomains();
  [[nodiscard]] bool repair();
  [[nodiscard]] bool augment(int start);
  void exchange(int value, int start);

  [[nodiscard]] bool separate();
  void startSets();
  void enter(int node, int parent);
  [[nodiscard]] bool visitFrom(int root);
  int nextChild(int node);
  void settleLowest(int node, int root);
  [[nodiscard]] bool closeComponent(int node);
  [[nodiscard]] bool keep(int i, const std::uint64_t *allowed) const;
  [[nodiscard]] bool keepMatched(int begin, std::uint64_t *allowed) const;

  CSint *const *vars_ = nullptr;  // during a run
  int count_ = 0;                 // also the node that stands for all values that nobody is matched with
  int low_ = 0;
  int span_ = 0;
  int words_ = 0;
  Buffer<int> match_;  // by position
  Buffer<int> owner_;  // by value
  Buffer<int> via_;    // by value: the position that reached it
  Buffer<int> stack_;  // positions, of the search for a path; nodes, of components
  Buffer<Node> nodes_;
  Buffer<std::uint64_t> sets_;
  Buffer<std::uint64_t> domains_;  // by position, of one word
  BranchSet open_;                 // positions but those that were bound and whose value nobody else has

  std::uint64_t *unseen_ = nullptr;   // values of nodes not visited
  std::uint64_t *onStack_ = nullptr;  // values of nodes on the stack
  std::uint64_t *free_ = nullptr;     // values that nobody is matched with
  std::uint64_t *allowed_ = nullptr;  // values of one component
  int stacked_ = 0;
  int numbered_ = 0;
  bool someFree_ = false;
};

}  // namespace koru
