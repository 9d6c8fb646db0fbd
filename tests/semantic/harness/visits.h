// SPDX-License-Identifier: MIT
// Ways to walk through what can be done to a posting: every narrowing, every order of labelling, searches that split
// domains in all ways with one change or several at a time, and sequences in nested contexts.
#pragma once

#include <numeric>
#include <random>

#include "semantic/harness/run.h"

namespace koru::test::brute {

struct Effort {
  int depth = 1;       // of the sequences of narrowings that are tried in full
  int searches = 3;    // binary trees, visited in full
  int sequences = 3;   // of up to 12 random narrowings
  bool orders = true;  // of labelling
};

class Visits {
 public:
  Visits(Run &run, const Effort &effort, unsigned seed) : run_(run), effort_(effort), random_(seed) {}

  void all(const Node &root) {
    everyStep(root, effort_.depth);
    if (effort_.orders) everyOrder(root);
    for (int i = 0; i < effort_.searches; ++i)
      run_.inContext(root,
                     [&](Node node) { search(node, kChanges[static_cast<std::size_t>(i) % std::size(kChanges)]); });
    for (int i = 0; i < effort_.sequences; ++i) run_.inContext(root, [&](Node node) { sequence(node); });
  }

 private:
  static constexpr int kChanges[] = {1, 2, 4, 1};

  void everyStep(const Node &node, int depth) {
    for (std::size_t i = 0; depth > 0 && i < run_.count(); ++i) {
      const int low = run_.value(i, leastBit(node.now[i])) - 1;
      const int high = run_.value(i, greatestBit(node.now[i])) + 1;
      for (int v = low; v <= high; ++v)
        for (const Relate *relate : kRelates)
          if (run_.sound()) below(node, {relate, i, v}, [&](const Node &left) { everyStep(left, depth - 1); });
    }
  }

  template <class Body>
  void below(const Node &node, const Step &step, Body body) {
    run_.inContext(node, [&](Node left) {
      if (run_.apply(step, left)) body(left);
    });
  }

  // All orders of up to three variables, of more the two extreme ones.
  void everyOrder(const Node &root) {
    std::vector<std::size_t> order(run_.count());
    std::iota(order.begin(), order.end(), std::size_t{0});
    if (order.size() > 3) {
      label(root, order, 0);
      std::ranges::reverse(order);
      return label(root, order, 0);
    }
    do label(root, order, 0);
    while (std::ranges::next_permutation(order).found);
  }

  void label(const Node &node, const std::vector<std::size_t> &order, std::size_t next) {
    if (next == order.size()) return;
    const std::size_t i = order[next];
    for (Mask rest = node.now[i]; rest != 0 && run_.sound(); rest &= rest - 1)
      below(node, {&kEQ, i, run_.value(i, leastBit(rest))}, [&](const Node &left) { label(left, order, next + 1); });
  }

  // Two branches at each node; with more than one change the further ones only narrow.
  void search(const Node &node, int changes) {
    const std::optional<Step> chosen = drawOpen(node);
    if (!chosen || !run_.sound()) return;
    const Split &split = kSplits[draw(std::size(kSplits))];
    for (const Relate *relate : {split.left, split.right}) {
      const Step first{relate, chosen->variable, chosen->value};
      if (changes == 1) {
        below(node, first, [&](const Node &left) { search(left, changes); });
        continue;
      }
      run_.inContext(node, [&](Node left) {
        const auto steps = [&](int i) { return i == 0 ? first : i < changes ? another(node) : std::nullopt; };
        if (run_.applyTogether(steps, left)) search(left, changes);
      });
    }
  }

  std::optional<Step> another(const Node &node) {
    std::optional<Step> step = drawOpen(node);
    if (step) step->relate = kSplits[draw(std::size(kSplits))].right;
    return step;
  }

  void sequence(Node node) {
    for (int length = 0; length < 12 && run_.sound() && run_.count() > 0; ++length) {
      const std::size_t i = draw(run_.count());
      const int width = greatestBit(node.now[i]) - leastBit(node.now[i]) + 3;
      const int v = run_.value(i, leastBit(node.now[i]) - 1 + static_cast<int>(draw(static_cast<std::size_t>(width))));
      if (draw(3) == 0) cs_saveContext();
      if (!run_.apply({kRelates[draw(std::size(kRelates))], i, v}, node)) return;
    }
  }

  // A variable that is not bound and one of its values; none when all are bound.
  std::optional<Step> drawOpen(const Node &node) {
    std::array<std::size_t, kMostColumns> open{};
    std::size_t count = 0;
    for (std::size_t i = 0; i < run_.count(); ++i)
      if (!std::has_single_bit(node.now[i])) open[count++] = i;
    if (count == 0) return std::nullopt;
    const std::size_t i = open[draw(count)];
    Mask rest = node.now[i];
    for (auto skip = draw(static_cast<std::size_t>(std::popcount(rest))); skip > 0; --skip) rest &= rest - 1;
    return Step{&kEQ, i, run_.value(i, leastBit(rest))};
  }

  std::size_t draw(std::size_t below) { return random_() % below; }

  Run &run_;
  Effort effort_;
  std::mt19937 random_;
};

}  // namespace koru::test::brute
