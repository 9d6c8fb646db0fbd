// SPDX-License-Identifier: MIT
#include "constraints/scheduling/theta_tree.h"

#include <bit>

namespace koru::scheduling {

static unsigned leavesFor(int count) { return std::bit_ceil(static_cast<unsigned>(count) + (count == 0 ? 1U : 0U)); }

ThetaTree::ThetaTree(int most) { make(nodes_, std::uint64_t{2} * leavesFor(most)); }

void ThetaTree::clear(int count) {
  leaves_ = static_cast<int>(leavesFor(count));
  for (int k = 1; k < 2 * leaves_; ++k) nodes_[k] = {0, kNever, 0, kNever, kNobody, kNobody};
}

void ThetaTree::makeWhite(int leaf, Time start, Time length) {
  set(leaf, {length, start + length, length, start + length, kNobody, kNobody});
}

void ThetaTree::makeGrey(int leaf, Time start, Time length) {
  set(leaf, {0, kNever, length, start + length, leaf, leaf});
}

void ThetaTree::remove(int leaf) { set(leaf, {0, kNever, 0, kNever, kNobody, kNobody}); }

ThetaTree::Node ThetaTree::both(const Node &left, const Node &right) {
  Node node = right;
  node.length = left.length + right.length;
  if (left.completion + right.length > node.completion) node.completion = left.completion + right.length;
  node.greyLength = left.length + right.greyLength;
  if (left.greyLength + right.length > node.greyLength) {
    node.greyLength = left.greyLength + right.length;
    node.lengthBy = left.lengthBy;
  }
  if (left.completion + right.greyLength > node.greyCompletion) {
    node.greyCompletion = left.completion + right.greyLength;
    node.completionBy = right.lengthBy;
  }
  if (left.greyCompletion + right.length > node.greyCompletion) {
    node.greyCompletion = left.greyCompletion + right.length;
    node.completionBy = left.completionBy;
  }
  return node;
}

void ThetaTree::set(int leaf, const Node &node) {
  int k = leaves_ + leaf;
  nodes_[k] = node;
  for (k /= 2; k >= 1; k /= 2) nodes_[k] = both(nodes_[2 * k], nodes_[2 * k + 1]);
}

}  // namespace koru::scheduling
