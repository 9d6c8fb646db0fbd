// SPDX-License-Identifier: MIT
#include "constraints/scheduling/theta_tree.h"

#include <algorithm>
#include <bit>

namespace koru::scheduling {

static unsigned leavesFor(int count) { return std::bit_ceil(static_cast<unsigned>(count) + (count == 0 ? 1U : 0U)); }

ThetaTree::ThetaTree(int most) { make(nodes_, std::uint64_t{2} * leavesFor(most)); }

void ThetaTree::clear(int count, bool usesGrey) {
  usesGrey_ = usesGrey;
  leaves_ = static_cast<int>(leavesFor(count));
  for (int k = 1; k < 2 * leaves_; ++k) nodes_[k] = kEmpty;
}

void ThetaTree::makeGrey(int leaf, Time start, Time length) {
  set(leaf, {0, kNever, length, start + length, leaf, leaf});
}

void ThetaTree::allPlaced() {
  for (int k = leaves_ - 1; k >= 1; --k) nodes_[k] = both(nodes_[2 * k], nodes_[2 * k + 1]);
}

// Up from the leaf, as if there were nothing.
Time ThetaTree::completionWithout(int leaf) const {
  Time length = 0;
  Time completion = kNever;
  for (int k = leaves_ + leaf; k > 1; k /= 2) {
    const Node &beside = nodes_[k ^ 1];
    completion = k % 2 == 0 ? std::max(beside.completion, completion + beside.length)
                            : std::max(completion, beside.completion + length);
    length += beside.length;
  }
  return completion;
}

void ThetaTree::sumWhite(Node &node, const Node &left, const Node &right) {
  node.length = left.length + right.length;
  node.completion = std::max(right.completion, left.completion + right.length);
}

ThetaTree::Node ThetaTree::both(const Node &left, const Node &right) {
  Node node = right;
  sumWhite(node, left, right);
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
  if (usesGrey_) {
    for (k /= 2; k >= 1; k /= 2) nodes_[k] = both(nodes_[2 * k], nodes_[2 * k + 1]);
  } else {
    for (k /= 2; k >= 1; k /= 2) sumWhite(nodes_[k], nodes_[2 * k], nodes_[2 * k + 1]);
  }
}

}  // namespace koru::scheduling
