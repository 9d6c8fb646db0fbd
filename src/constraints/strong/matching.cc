// SPDX-License-Identifier: MIT
#include "constraints/strong/matching.h"

#include <algorithm>
#include <bit>

#include "core/bit_scan.h"
#include "core/narrow.h"

namespace koru {

Matching::Matching(int count, int low, int span) : count_(count), low_(low), span_(span), words_(wordsFor(span)) {
  const auto n = static_cast<unsigned>(count);
  const auto values = static_cast<unsigned>(span);
  if (make(match_, n) && make(owner_, values) && make(via_, values) && make(stack_, n + 1) && make(nodes_, n + 1) &&
      make(sets_, std::uint64_t{4} * static_cast<unsigned>(words_)) && make(domains_, isOneWord() ? n : 0))
    open_ = BranchSet(count);
  if (!open_) return;
  std::fill_n(match_.get(), count, kNone);
  std::fill_n(owner_.get(), span, kNone);
  unseen_ = sets_.get();
  onStack_ = unseen_ + words_;
  free_ = onStack_ + words_;
  allowed_ = free_ + words_;
}

bool Matching::covers(CSint *const *vars) {
  open_.refresh();
  return open_.forEach([&](int i) { return vars[i]->min >= low_ && std::int64_t{vars[i]->max} - low_ < span_; });
}

bool Matching::filter(CSint *const *vars) {
  vars_ = vars;
  if (isOneWord()) readDomains();
  if (!repair() || !separate()) return false;
  const BranchStamp now = BranchStamp::now();
  return open_.forEach([&](int i) {
    if (isBound(vars_[i])) open_.takeOut(i, now);
    return true;
  });
}

void Matching::readDomains() {
  open_.forEach([&](int i) {
    domains_[i] = domainWord(vars_[i], low_);
    return true;
  });
}

// ----- the matching

bool Matching::repair() {
  open_.forEach([&](int i) {
    if (match_[i] == kNone || holds(i, match_[i])) return true;
    owner_[match_[i]] = kNone;
    match_[i] = kNone;
    return true;
  });
  return open_.forEach([&](int i) { return match_[i] != kNone || augment(i); });
}

// Breadth first over values, each seen once: a value that is free ends a path that gives `start` one.
bool Matching::augment(int start) {
  std::fill_n(unseen_, words_, ~std::uint64_t{0});
  int queued = 1;
  stack_[0] = start;
  for (int taken = 0; taken < queued; ++taken) {
    const int position = stack_[taken];
    for (int k = firstWord(position); k <= lastWord(position); ++k) {
      const std::uint64_t reached = domain(position, k) & unseen_[k];
      unseen_[k] &= ~reached;
      const bool onlyOwned = forEachBit(k * kWordBits, reached, [&](int value) {
        via_[value] = position;
        if (owner_[value] == kNone) {
          exchange(value, start);
          return false;
        }
        stack_[queued++] = owner_[value];
        return true;
      });
      if (!onlyOwned) return true;
    }
  }
  return false;
}

void Matching::exchange(int value, int start) {
  for (;;) {
    const int position = via_[value];
    const int given = match_[position];
    match_[position] = value;
    owner_[value] = position;
    if (position == start) return;
    value = given;
  }
}

// ----- components
//
// An edge leads from a variable to the one that is matched with a value of its domain: they could pass values on. One
// to the last node stands for a free value, and that node leads to all variables. A value of another component is in no
// solution.

bool Matching::separate() {
  startSets();
  if (someFree_) {
    if (!visitFrom(count_)) return false;
  }
  return open_.forEach([&](int i) { return nodes_[i].number != 0 || visitFrom(i); });
}

void Matching::startSets() {
  stacked_ = numbered_ = 0;
  std::fill_n(unseen_, words_, 0);
  std::fill_n(onStack_, words_, 0);
  std::fill_n(allowed_, words_, 0);
  std::fill_n(free_, words_, 0);
  nodes_[count_].number = 0;
  open_.forEach([&](int i) {
    nodes_[i].number = 0;
    WordSet(unseen_).set(match_[i]);
    for (int k = firstWord(i); k <= lastWord(i); ++k) free_[k] |= domain(i, k);
    return true;
  });
  std::uint64_t any = 0;
  for (int k = 0; k < words_; ++k) any |= free_[k] &= ~unseen_[k];
  someFree_ = any != 0;
}

void Matching::enter(int node, int parent) {
  Node &entered = nodes_[node];
  entered.number = entered.lowest = ++numbered_;
  entered.parent = parent;
  stack_[stacked_++] = node;
  if (node == count_) {
    entered.word = 0;
    return;
  }
  entered.word = firstWord(node);
  WordSet(unseen_).clear(match_[node]);
  WordSet(onStack_).set(match_[node]);
}

// Tarjan's algorithm, without recursion.
bool Matching::visitFrom(int root) {
  enter(root, kNone);
  for (int node = root; node != kNone;) {
    const int child = nextChild(node);
    if (child != kNone) {
      enter(child, node);
      node = child;
      continue;
    }
    settleLowest(node, root);
    const Node &left = nodes_[node];
    if (left.lowest == left.number && !closeComponent(node)) return false;
    if (left.parent != kNone) nodes_[left.parent].lowest = std::min(nodes_[left.parent].lowest, left.lowest);
    node = left.parent;
  }
  return true;
}

int Matching::nextChild(int node) {
  const bool isFree = node == count_;
  const int last = isFree ? words_ - 1 : lastWord(node);
  for (int &k = nodes_[node].word; k <= last; ++k) {
    const std::uint64_t word = isFree ? unseen_[k] : domain(node, k) & unseen_[k];
    if (word != 0) return owner_[k * kWordBits + std::countr_zero(word)];
  }
  return kNone;
}

// What a variable reaches on the stack itself. The root's value, or a free one, ends the search: nothing is lower.
void Matching::settleLowest(int node, int root) {
  Node &left = nodes_[node];
  const int lowest = nodes_[root].number;
  if (node == root || left.lowest == lowest) return;
  if (root != count_ && holds(node, match_[root])) {
    left.lowest = lowest;
    return;
  }
  for (int k = firstWord(node); k <= lastWord(node); ++k) {
    const std::uint64_t word = domain(node, k);
    if ((word & free_[k]) != 0) {
      left.lowest = lowest;
      return;
    }
    forEachBit(k * kWordBits, word & onStack_[k],
               [&](int value) { left.lowest = std::min(left.lowest, nodes_[owner_[value]].number); });
  }
}

// Everything from the node on the stack upwards is its component: each variable keeps the values matched there and,
// where the free values belong to it, those.
bool Matching::closeComponent(int node) {
  int begin = stacked_;
  while (stack_[--begin] != node) {
  }
  const int first = node == count_ ? begin + 1 : begin;
  std::uint64_t *allowed = node == count_ ? free_ : allowed_;
  for (int i = first; i < stacked_; ++i) {
    WordSet(allowed).set(match_[stack_[i]]);
    WordSet(onStack_).clear(match_[stack_[i]]);
  }
  const bool consistent = keepMatched(first, allowed);
  for (int i = first; i < stacked_; ++i) WordSet(allowed).clear(match_[stack_[i]]);
  stacked_ = begin;
  return consistent;
}

bool Matching::keep(int i, const std::uint64_t *allowed) const {
  if (!isOneWord()) return keepValues(vars_[i], low_, allowed, words_);
  const std::uint64_t kept = domains_[i] & *allowed;
  return kept == domains_[i] || keepBits(vars_[i], low_, domains_[i], kept);
}

bool Matching::keepMatched(int begin, std::uint64_t *allowed) const {
  if (allowed == allowed_ && begin == stacked_ - 1)
    return bindValue(vars_[stack_[begin]], low_ + match_[stack_[begin]]);
  for (int i = begin; i < stacked_; ++i)
    if (!keep(stack_[i], allowed)) return false;
  return true;
}

}  // namespace koru
