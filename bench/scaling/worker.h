// SPDX-License-Identifier: MIT
// A process at work on a piece of a tree that is only thought of: what takes a walk a second takes it nothing.
#pragma once

#include <algorithm>

#include "parallel/piece.h"
#include "tree.h"

namespace koru::bench {

class Worker {
 public:
  explicit Worker(const Tree &tree) : tree_(&tree) {}

  // Takes a piece; returns how many levels it has to go.
  int begin(const parallel::Piece &piece) {
    levels_.clear();
    base_ = static_cast<std::size_t>(piece.base);
    Tree::Node node = tree_->root();
    for (const CSwalkStep &step : piece.steps) {
      levels_.push_back({node, step.value, 0, 0});
      node = tree_->child(node, step.value);
    }
    ended_ = false;
    if (piece.done) next();
    return static_cast<int>(piece.steps.size());
  }

  // Works for about so long; returns how long. Shorter: the piece is finished.
  double work(double seconds) {
    double worked = 0;
    while (!ended_ && worked < seconds) {
      const Tree::Node node = here();
      if (Tree::isLeaf(node) || (worked + node.seconds <= seconds)) {
        worked += node.seconds;
        for (Level &level : levels_) level.worked += node.seconds;
        next();
      } else {
        levels_.push_back({node, 0, 0, 0});
      }
    }
    return worked;
  }

  // How long until it is finished.
  double left() const {
    double sum = ended_ ? 0 : here().seconds;
    for (std::size_t i = base_; i < levels_.size(); ++i) sum += rightOf(levels_[i]);
    return sum;
  }

  bool ended() const { return ended_; }
  parallel::Piece piece() const { return {stepsTo(levels_.size()), static_cast<int>(base_), false}; }

  // As cs_splitWalk: the shallowest level that has values left, of which those tried have taken `least` each.
  bool split(double least, parallel::Piece &given) {
    for (std::size_t i = base_; !ended_ && i < levels_.size(); ++i) {
      const Level &level = levels_[i];
      if (!hasMore(level)) continue;
      if (level.worked < least * (level.tried + 1)) return false;
      given = {stepsTo(i + 1), static_cast<int>(i), true};
      base_ = i + 1;
      return true;
    }
    return false;
  }

  // At least so long there is nothing to give: the value that is tried at that level ends sooner, or has not taken
  // enough.
  double untilSplit(double least) const {
    double below = ended_ ? 0 : here().seconds;  // that the values of deeper levels still take
    std::size_t first = levels_.size();
    for (std::size_t i = levels_.size(); i-- > base_;)
      if (hasMore(levels_[i])) first = i;
    if (ended_ || first == levels_.size()) return left();
    for (std::size_t i = first + 1; i < levels_.size(); ++i) below += rightOf(levels_[i]);
    const Level &level = levels_[first];
    return std::min(below, least * (level.tried + 1) - level.worked);
  }

 private:
  struct Level {
    Tree::Node node;
    int value;
    int tried;
    double worked;
  };

  bool hasMore(const Level &l) const { return l.value + 1 < std::ssize(tree_->sharesOf(l.node)); }
  // Of the values that are not tried yet.
  double rightOf(const Level &level) const {
    const Shares &shares = tree_->sharesOf(level.node);
    double sum = 0;
    for (std::size_t v = static_cast<std::size_t>(level.value) + 1; v < shares.size(); ++v) sum += shares[v];
    return level.node.seconds * sum;
  }
  Tree::Node here() const {
    return levels_.empty() ? tree_->root() : tree_->child(levels_.back().node, levels_.back().value);
  }
  // To the next value of the newest level that has one.
  void next() {
    while (levels_.size() > base_ && !hasMore(levels_.back())) levels_.pop_back();
    ended_ = levels_.size() <= base_;
    if (ended_) return;
    ++levels_.back().value;
    ++levels_.back().tried;
  }
  parallel::Steps stepsTo(std::size_t depth) const {
    parallel::Steps steps;
    for (std::size_t i = 0; i < depth; ++i)
      steps.push_back({levels_[i].value, 0, static_cast<int>(std::ssize(tree_->sharesOf(levels_[i].node))) - 1, 0});
    return steps;
  }

  const Tree *tree_;
  std::vector<Level> levels_;
  std::size_t base_ = 0;
  bool ended_ = true;
};

}  // namespace koru::bench
