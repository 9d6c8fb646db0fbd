// SPDX-License-Identifier: MIT
// A theta-lambda tree (Vilim, Global constraints in scheduling, 2007): when a set of tasks is completed at the
// earliest, if they are done one at a time and none before its earliest start; and when with one more of another set.
//
// The tasks are the leaves of a balanced binary tree, by earliest start; a node sums up the tasks below it. Tasks of
// the first set, theta, are white; those of the second, lambda, are grey.
#pragma once

#include <cstdint>

#include "core/alloc.h"

namespace koru::scheduling {

using Time = std::int64_t;

class ThetaTree {
 public:
  static constexpr int kNobody = -1;
  static constexpr Time kNever = INT64_MIN / 4;  // the completion of no task at all

  ThetaTree() = default;
  // False as a bool when memory is exhausted (reported).
  explicit ThetaTree(int most);
  explicit operator bool() const { return static_cast<bool>(nodes_); }

  // Both sets empty; then there are the leaves 0 to count - 1, count at most `most`. `usesGrey`: grey leaves may come;
  // without them everything is faster. O(count).
  void clear(int count, bool usesGrey);
  // A leaf gets the colour, whatever it had before. The earliest starts must ascend with the leaves. O(log count).
  void makeWhite(int leaf, Time start, Time length) { set(leaf, white(start, length)); }
  void makeGrey(int leaf, Time start, Time length);
  void remove(int leaf) { set(leaf, kEmpty); }
  // The same for many, which count when all have been placed. O(1), and then O(count).
  void placeWhite(int leaf, Time start, Time length) { nodes_[leaves_ + leaf] = white(start, length); }
  void allPlaced();

  Time completion() const { return nodes_[1].completion; }
  // Of the other white tasks. O(log count).
  Time completionWithout(int leaf) const;
  // With the grey task with which it is latest; the same as above when none makes it later.
  Time greyCompletion() const { return nodes_[1].greyCompletion; }
  int greyLeaf() const { return nodes_[1].completionBy; }

 private:
  struct Node {
    Time length;          // of the white tasks together
    Time completion;      // of the white tasks
    Time greyLength;      // with at most one grey task
    Time greyCompletion;  // with at most one grey task
    int lengthBy;         // that grey task's leaf, or nobody
    int completionBy;
  };

  static constexpr Node kEmpty{0, kNever, 0, kNever, kNobody, kNobody};

  static Node white(Time start, Time length) {
    return {length, start + length, length, start + length, kNobody, kNobody};
  }
  static Node both(const Node &left, const Node &right);
  static void sumWhite(Node &node, const Node &left, const Node &right);
  void set(int leaf, const Node &node);

  Buffer<Node> nodes_;  // the children of node k are 2 k and 2 k + 1
  int leaves_ = 1;      // a power of two: leaf i is node leaves_ + i
  bool usesGrey_ = true;
};

}  // namespace koru::scheduling
