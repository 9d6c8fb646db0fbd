// SPDX-License-Identifier: MIT
#include <numeric>

#include "koru_extras.h"
#include "tree.h"

namespace koru::bench {

namespace {

constexpr int kMarks = 8, kLength = 42;
constexpr double kLeast = 500;  // choice points of a node whose shares are taken

void postRuler(CSint **marks) {
  static CSint *distances[kMarks * kMarks];
  int pairs = 0;
  for (int i = 0; i < kMarks; ++i) marks[i] = cs_createCSint(0, kLength);
  for (int i = 0; i < kMarks; ++i)
    for (int j = i + 1; j < kMarks; ++j) {
      distances[pairs] = cs_Sub(marks[j], marks[i]);
      cs_GE(distances[pairs++], 1);
    }
  cs_EQ(marks[0], 0);
  cs_AllNeq(distances, pairs);
}

// Choice points below each value of the levels that are open.
class Measured {
 public:
  void note(const std::vector<CSwalkStep> &steps, int depth) {
    int same = 0;
    while (same < depth && same < size() && values_[index(same)] == steps[index(same)].value) ++same;
    // Another value of the same level, if there is one, goes on with it.
    closeTo(same < depth && same < size() ? same + 1 : depth);
    for (int i = same; i < depth; ++i) {
      if (i == size()) {
        values_.push_back(0);
        levels_.emplace_back();
      }
      values_[index(i)] = steps[index(i)].value;
      levels_[index(i)].push_back(0);
    }
    if (depth > 0) levels_.back().back() += 1;
  }
  void closeTo(int depth) {
    while (size() > depth) {
      const Shares level = std::move(levels_.back());
      levels_.pop_back();
      values_.pop_back();
      const double sum = std::accumulate(level.begin(), level.end(), 0.0);
      if (!levels_.empty()) levels_.back().back() += sum;
      if (sum >= kLeast) take(level, sum);
    }
  }

  std::vector<Shares> shares;

 private:
  static std::size_t index(int i) { return static_cast<std::size_t>(i); }
  int size() const { return static_cast<int>(values_.size()); }
  void take(Shares level, double sum) {
    for (double &each : level) each /= sum;
    shares.push_back(std::move(level));
  }

  std::vector<int> values_;
  std::vector<Shares> levels_;
};

}  // namespace

std::vector<Shares> measureShares() {
  cs_init();
  CSint *marks[kMarks];
  postRuler(marks);
  CSwalk *walk = cs_openWalk(marks, kMarks, cs_findFreeVar);
  Measured measured;
  std::vector<CSwalkStep> steps(kMarks);
  while (cs_goWalk(walk, 1, false) == CS_STATUS_CHOICE_POINTS) {
    const CSwalkPosition at = cs_getWalkPosition(walk, steps.data(), kMarks);
    measured.note(steps, at.depth);
  }
  measured.closeTo(0);
  cs_end();
  return measured.shares;
}

}  // namespace koru::bench
