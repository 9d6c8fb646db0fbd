// SPDX-License-Identifier: MIT
// The strongly connected components of a graph whose edges are rows of bits: Tarjan's algorithm, without recursion.
#pragma once

#include <cstddef>

#include "core/alloc.h"
#include "core/domain_words.h"

namespace koru::counting {

class Components {
 public:
  Components() = default;
  // Of `nodes` nodes, at least 1. False as a bool when memory is exhausted (reported).
  explicit Components(int nodes);
  explicit operator bool() const { return static_cast<bool>(rows_); }

  int words() const { return words_; }
  // The nodes that an edge leads to from this one; to be filled before `find`.
  std::uint64_t *row(int node) const { return rows_.get() + offset(node); }

  // O(nodes * nodes / 64) at most.
  void find();
  // The component that a node belongs to.
  const std::uint64_t *of(int node) const { return components_.get() + offset(nodes_[node].root); }

 private:
  static constexpr int kNone = -1;

  struct Node {
    int number;  // in the order of the depth-first search
    int lowest;  // number that is reached
    int parent;
    int word;  // the next to look at
    int root;  // of its component
  };

  std::ptrdiff_t offset(int node) const { return static_cast<std::ptrdiff_t>(node) * words_; }
  void visitFrom(int node);
  void enter(int node, int parent);
  int nextChild(int node);
  void settleLowest(int node);
  void close(int node);

  int count_ = 0;
  int words_ = 0;
  int numbered_ = 0;
  int stacked_ = 0;
  Buffer<Node> nodes_;
  Buffer<int> stack_;
  Buffer<std::uint64_t> sets_;        // two: the nodes not seen, and those on the stack
  Buffer<std::uint64_t> components_;  // by root: the nodes
  Buffer<std::uint64_t> rows_;
};

}  // namespace koru::counting
