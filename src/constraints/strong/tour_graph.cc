// SPDX-License-Identifier: MIT
#include "constraints/strong/tour_graph.h"

#include <algorithm>

#include "core/domain_walk.h"
#include "core/narrow.h"

namespace koru {

TourGraph::TourGraph(int count) : count_(count) {
  const auto n = static_cast<unsigned>(count);
  if (make(stack_, n) && make(needed_, n + 1)) make(nodes_, n);
}

// One that must be in, with as many successors as any: so the subtrees may be many. kNobody when nobody must.
int TourGraph::chooseRoot() const {
  int root = kNobody;
  for (int i = 0; i < count_; ++i)
    if (!mayBeOut(i) && (root == kNobody || next_[i]->count > next_[root]->count)) root = i;
  return root;
}

bool TourGraph::leaveOut(int i) const { return mayBeOut(i) && bindValue(next_[i], i); }

bool TourGraph::filter(CSint *const *next) {
  next_ = next;
  const int root = chooseRoot();
  if (root == kNobody) return true;
  for (int i = 0; i < count_; ++i) nodes_[i].number = 0;
  numbered_ = stacked_ = subtrees_ = 0;
  needed_[0] = 0;
  if (!visit(root) || !removeLeapsOf(root)) return false;
  for (int i = 0; i < count_; ++i)
    if (nodes_[i].number == 0 && !leaveOut(i)) return false;
  return true;
}

void TourGraph::enter(int i, int parent) {
  if (parent != kNobody && nodes_[parent].parent == kNobody) {
    ++subtrees_;
    needed_[subtrees_] = needed_[subtrees_ - 1];
  }
  if (parent != kNobody && !mayBeOut(i)) needed_[subtrees_] = needed_[subtrees_ - 1] + 1;
  ++numbered_;
  nodes_[i] = {numbered_, numbered_, parent, kNobody, subtrees_, true};
  stack_[stacked_++] = i;
}

// The root's component is left on the stack: it is the last one.
bool TourGraph::visit(int root) {
  enter(root, kNobody);
  for (int i = root;;) {
    const int j = nextSuccessor(i);
    if (j == kNobody) {
      if (i == root) return true;
      const int parent = nodes_[i].parent;
      if (!leave(i)) return false;
      i = parent;
    } else if (nodes_[j].number == 0) {
      enter(j, i);
      i = j;
    } else if (!look(i, j)) {
      return false;
    }
  }
}

int TourGraph::nextSuccessor(int i) {
  const CSint *v = next_[i];
  int &looked = nodes_[i].looked;
  while (looked < v->max) {
    looked = looked < v->min ? v->min : valueAfter(v, looked);
    if (contains(v, looked)) return looked;
  }
  return kNobody;
}

// An edge to a node that has been visited.
bool TourGraph::look(int i, int j) {
  Node &node = nodes_[i];
  if (node.subtree > nodes_[j].subtree && leaps(node.subtree, nodes_[j].subtree)) return removeValue(next_[i], j);
  if (nodes_[j].stacked) node.lowest = std::min(node.lowest, nodes_[j].number);
  return true;
}

// All behind `i` has been visited. A component that does not lead back to the root is left out.
bool TourGraph::leave(int i) {
  const Node &node = nodes_[i];
  Node &parent = nodes_[node.parent];
  parent.lowest = std::min(parent.lowest, node.lowest);
  if (node.lowest < node.number) return true;
  for (int out = kNobody; out != i;) {
    out = stack_[--stacked_];
    nodes_[out].stacked = false;
    if (!leaveOut(out)) return false;
  }
  return true;
}

// The circuit goes from the root to the last subtree.
bool TourGraph::removeLeapsOf(int root) const {
  const CSint *v = next_[root];
  return forEachValue(v,
                      [&](int j) { return !leaps(subtrees_ + 1, nodes_[j].subtree) || removeValue(next_[root], j); });
}

}  // namespace koru
