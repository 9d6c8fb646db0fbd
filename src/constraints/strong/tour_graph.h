// SPDX-License-Identifier: MIT
// The graph of what may follow what in a circuit: node i may be followed by the values of next[i]. A node that may be
// left out has an edge to itself, and only where that is meant.
#pragma once

#include "core/alloc.h"
#include "core/variable.h"

namespace koru {

class TourGraph {
 public:
  TourGraph() = default;
  // False as a bool when memory is exhausted (reported).
  explicit TourGraph(int count);
  explicit operator bool() const { return static_cast<bool>(nodes_); }

  // A circuit through all nodes that must be in starts and ends at one of them, the root. In a depth-first search from
  // there (Tarjan 1972)
  // - who is not reached, or does not lead back, is left out;
  // - edges lead from a subtree of the root to itself and to earlier ones, so the circuit passes the subtrees from the
  //   last to the first: an edge that leaps over one in which a node must be in leads nowhere (Francis, Stuckey,
  //   Explaining circuit propagation, 2014).
  // Removes what these rules forbid; once. O(edges). False when there is no circuit.
  [[nodiscard]] bool filter(CSint *const *next);

 private:
  static constexpr int kNobody = -1;

  struct Node {
    int number;   // in the order of the depth-first search, 0 before it
    int lowest;   // number that is reached
    int parent;   // in that search
    int looked;   // the last successor looked at
    int subtree;  // of the root, from 1; the root's own is 0
    bool stacked;
  };

  bool mayBeOut(int i) const { return contains(next_[i], i); }
  [[nodiscard]] bool leaveOut(int i) const;
  int chooseRoot() const;
  void start();
  void enter(int i, int parent);
  [[nodiscard]] bool visit(int root);
  [[nodiscard]] bool look(int i, int j);
  [[nodiscard]] bool leave(int i);
  int nextSuccessor(int i);
  bool leaps(int from, int to) const { return needed_[from - 1] > needed_[to]; }
  [[nodiscard]] bool removeLeapsOf(int root) const;

  CSint *const *next_ = nullptr;  // during a run
  int count_ = 0;
  int numbered_ = 0;
  int stacked_ = 0;
  int subtrees_ = 0;
  Buffer<Node> nodes_;
  Buffer<int> stack_;
  Buffer<int> needed_;  // by subtree: how many up to this one have a node that must be in
};

}  // namespace koru
