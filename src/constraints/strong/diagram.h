// SPDX-License-Identifier: MIT
// The arcs of a graph by the node that they leave, and the layers that they make: layer k holds the nodes to which k
// arcs lead from the root.
#pragma once

#include "core/alloc.h"

namespace koru::mdd {

struct Given {
  const int *sources;
  const int *values;
  const int *targets;
  int count;
};

class Diagram {
 public:
  Diagram() = default;
  // False when memory is exhausted (reported).
  [[nodiscard]] bool build(const Given &given);

  // Nodes are numbered from 0 on, in the order of the host's ints; kNone for one without an arc.
  static constexpr int kNone = -1;
  int find(int node) const;

  // Goes to layer 0, and to the next one, of which firstNode and lastNode are the ends.
  void begin(int root);
  void step();
  bool isEmpty() const { return layerSize_ == 0; }
  int firstNode() const { return first_; }
  int lastNode() const { return last_; }

  // The arcs on which the last step went: source, value, target of each.
  const int *cells() const { return cells_.get(); }
  int rows() const { return rows_; }

 private:
  struct Arc {
    int source;
    int value;
    int target;
  };

  void collect(int node);

  int nodeCount_ = 0;
  Buffer<int> nodes_;     // the host's numbers, ascending
  Buffer<Arc> arcs_;      // by source
  Buffer<int> firstArc_;  // by node, and one behind the last
  Buffer<int> seenIn_;    // by node: the step that reached it last
  Buffer<int> layer_;
  Buffer<int> next_;
  Buffer<int> cells_;
  int layerSize_ = 0;
  int nextSize_ = 0;
  int rows_ = 0;
  int step_ = 0;
  int first_ = 0;
  int last_ = 0;
};

}  // namespace koru::mdd
