// SPDX-License-Identifier: MIT
#include "constraints/counting/components.h"

#include <algorithm>
#include <bit>

#include "core/bit_scan.h"

namespace koru::counting {

Components::Components(int nodes) : count_(nodes), words_(wordsFor(nodes)) {
  const auto n = static_cast<unsigned>(nodes);
  const auto words = static_cast<unsigned>(words_);
  if (make(nodes_, n) && make(stack_, n) && make(sets_, std::uint64_t{2} * words) &&
      make(components_, std::uint64_t{n} * words))
    rows_ = Buffer<std::uint64_t>(std::uint64_t{n} * words);
}

void Components::find() {
  numbered_ = stacked_ = 0;
  std::fill_n(sets_.get(), words_, ~std::uint64_t{0});
  std::fill_n(sets_.get() + words_, words_, 0);
  for (int node = 0; node < count_; ++node)
    if (WordSet(sets_.get()).has(node)) visitFrom(node);
}

void Components::visitFrom(int node) {
  enter(node, kNone);
  while (node != kNone) {
    const int child = nextChild(node);
    if (child != kNone) {
      enter(child, node);
      node = child;
      continue;
    }
    settleLowest(node);
    const Node &left = nodes_[node];
    if (left.lowest == left.number) close(node);
    if (left.parent != kNone) nodes_[left.parent].lowest = std::min(nodes_[left.parent].lowest, left.lowest);
    node = left.parent;
  }
}

void Components::enter(int node, int parent) {
  const int number = numbered_++;
  nodes_[node] = {number, number, parent, 0, kNone};
  stack_[stacked_++] = node;
  WordSet(sets_.get()).clear(node);
  WordSet(sets_.get() + words_).set(node);
}

int Components::nextChild(int node) {
  for (int &k = nodes_[node].word; k < words_; ++k) {
    const std::uint64_t left = row(node)[k] & sets_[k];
    if (left != 0) return k * kWordBits + std::countr_zero(left);
  }
  return kNone;
}

void Components::settleLowest(int node) {
  Node &left = nodes_[node];
  const std::uint64_t *onStack = sets_.get() + words_;
  for (int k = 0; k < words_; ++k)
    forEachBit(k * kWordBits, row(node)[k] & onStack[k],
               [&](int other) { left.lowest = std::min(left.lowest, nodes_[other].number); });
}

// Everything from the node on the stack upwards is its component.
void Components::close(int node) {
  std::uint64_t *component = components_.get() + offset(node);
  std::fill_n(component, words_, 0);
  for (int member = kNone; member != node;) {
    member = stack_[--stacked_];
    nodes_[member].root = node;
    WordSet(component).set(member);
    WordSet(sets_.get() + words_).clear(member);
  }
}

}  // namespace koru::counting
