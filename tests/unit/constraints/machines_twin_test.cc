// SPDX-License-Identifier: MIT
// cs_DisjunctiveTransitions and cs_NoOverlap beside twins: their own rules for two at a time, value by value, and the
// twins of what they hand on to, OneMachine and SharedResource.
#include <algorithm>
#include <cstddef>
#include <vector>

#include "koru_extras.h"
#include "support/kit/instrumented.h"
#include "unit/constraints/bounds_twin.h"
#include "unit/constraints/one_machine_twin.h"
#include "unit/constraints/shared_resource_twin.h"

namespace {

using namespace koru::test;
using koru::scheduling::Presence;
using koru::scheduling::Time;
namespace naive = koru::scheduling::naive;

// ----- a machine that needs time between two tasks

struct TransitionRules {
  int n;
  bool allThere;
  int kinds;
  std::vector<int> times;
  std::vector<int> left;
  std::vector<int> needed;
  Ranges ranges;

  explicit TransitionRules(Draws &draws) : n(draws.number(2, 5)), allThere(draws.oneOf(2)), kinds(draws.number(1, 3)) {
    const int end = draws.number(4, 20);
    for (int i = 0; i < kinds * kinds; ++i) times.push_back(draws.number(0, draws.number(0, 5)));
    for (int i = 0; i < n; ++i) {
      const int least = draws.oneOf(8) ? 0 : draws.number(1, 5);
      ranges.push_back(draws.range(0, end));
      ranges.push_back({least, least + (draws.oneOf(3) ? draws.number(0, 5) : 0)});
      ranges.push_back(allThere ? Range{1, 1} : draws.truth());
      left.push_back(draws.number(0, kinds - 1));
      needed.push_back(draws.number(0, kinds - 1));
    }
  }
  bool post(const std::vector<CSint *> &v) const {
    std::vector<CSint *> tasks[3];
    for (std::size_t k = 0; k < v.size(); ++k) tasks[k % 3].push_back(v[k]);
    return cs_DisjunctiveTransitions(tasks[0].data(), tasks[1].data(), allThere ? nullptr : tasks[2].data(),
                                     left.data(), needed.data(), n, times.data(), kinds, kinds);
  }
  Range &start(int i) { return ranges[static_cast<std::size_t>(3 * i)]; }
  Range &duration(int i) { return ranges[static_cast<std::size_t>(3 * i + 1)]; }
  Range &presence(int i) { return ranges[static_cast<std::size_t>(3 * i + 2)]; }
  bool mustBe(int i) { return presence(i).min == 1; }
  bool isSolid(int i) { return mustBe(i) && duration(i).min > 0; }
  int between(int i, int j) const {
    return times[static_cast<std::size_t>(left[static_cast<std::size_t>(i)] * kinds +
                                          needed[static_cast<std::size_t>(j)])];
  }
  bool mayPrecede(int i, int j) { return start(i).min + duration(i).min + between(i, j) <= start(j).max; }

  // j cannot come before i: i comes before j, or is not there, or takes no time.
  bool precede(int i, int j) {
    if (!mustBe(i)) {
      return duration(i).min == 0 || mayPrecede(i, j) ||
             keep(presence(i), [](std::int64_t value) { return value == 0; });
    }
    const int gap = between(i, j);
    const auto durationIs = [&](std::int64_t value) {
      return value == 0 || start(i).min + value + gap <= start(j).max;
    };
    const auto startIs = [&](std::int64_t value) { return value + duration(i).min + gap <= start(j).max; };
    const auto nextIs = [&](std::int64_t value) { return start(i).min + duration(i).min + gap <= value; };
    return keep(duration(i), durationIs) &&
           (duration(i).min == 0 || (keep(start(i), startIs) && keep(start(j), nextIs)));
  }
  bool keepTwo() {
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j)
        if (i != j && isSolid(j) && !mayPrecede(j, i) && presence(i).max == 1 && !precede(i, j)) return false;
    return true;
  }

  int leastAfter(int i) const {
    int least = INT32_MAX;
    for (int j = 0; j < n; ++j)
      if (j != i) least = std::min(least, between(i, j));
    return least;
  }
  Presence presenceOf(int i) {
    if (presence(i).max == 0 || duration(i).min == 0) return Presence::kOut;
    return mustBe(i) ? Presence::kIn : Presence::kOptional;
  }
  // Tasks that are longer by the least time that can follow.
  bool keepAll() {
    naive::Tasks tasks;
    for (int i = 0; i < n; ++i) {
      const Time length = duration(i).min + leastAfter(i);
      tasks.push_back({start(i).min, start(i).max + length, length, presenceOf(i)});
    }
    if (!naive::filterNaively(tasks)) return false;
    for (int i = 0; i < n; ++i) {
      const auto &task = tasks[static_cast<std::size_t>(i)];
      const auto startIs = [&](std::int64_t value) { return task.earliest <= value && value <= task.latestStart(); };
      if (task.isIn() && !keep(start(i), startIs)) return false;
      if (task.isOut() && presenceOf(i) == Presence::kOptional) presence(i) = {0, 0};
    }
    return true;
  }
  bool round() { return keepTwo() && keepAll(); }
};

// ----- rectangles

struct OverlapRules {
  enum Axis : int { kAlongX = 0, kAlongY = 2 };
  int n;
  Ranges ranges;

  explicit OverlapRules(Draws &draws) : n(draws.number(2, 5)) {
    const int ends[] = {draws.number(2, 7), draws.number(2, 7)};
    for (int i = 0; i < 2 * n; ++i) {
      const int least = draws.oneOf(9) ? 0 : draws.number(1, 5);
      ranges.push_back(draws.range(0, ends[i % 2]));
      ranges.push_back({least, least + (draws.oneOf(4) ? draws.number(0, 4) : 0)});
    }
  }
  bool post(const std::vector<CSint *> &v) const {
    std::vector<CSint *> sides[4];
    for (std::size_t k = 0; k < v.size(); ++k) sides[k % 4].push_back(v[k]);
    return cs_NoOverlap(sides[0].data(), sides[1].data(), sides[2].data(), sides[3].data(), n);
  }
  Range &place(Axis axis, int i) { return ranges[static_cast<std::size_t>(4 * i + axis)]; }
  Range &size(Axis axis, int i) { return ranges[static_cast<std::size_t>(4 * i + axis + 1)]; }
  static Axis across(Axis axis) { return axis == kAlongX ? kAlongY : kAlongX; }
  bool hasSize(Axis axis, int i) { return size(axis, i).min > 0; }
  bool hasArea(int i) { return hasSize(kAlongX, i) && hasSize(kAlongY, i); }
  bool mayPrecede(Axis axis, int i, int j) { return place(axis, i).min + size(axis, i).min <= place(axis, j).max; }
  bool maySeparate(Axis axis, int i, int j) { return mayPrecede(axis, i, j) || mayPrecede(axis, j, i); }

  bool precede(Axis axis, int i, int j) {
    const auto placeIs = [&](std::int64_t value) { return value + size(axis, i).min <= place(axis, j).max; };
    const auto nextIs = [&](std::int64_t value) { return place(axis, i).min + size(axis, i).min <= value; };
    const auto sizeIs = [&](std::int64_t value) { return place(axis, i).min + value <= place(axis, j).max; };
    return keep(place(axis, i), placeIs) && keep(place(axis, j), nextIs) && keep(size(axis, i), sizeIs);
  }
  // The only one of four ways, when it is that.
  bool keepApart(int i, int j) {
    int ways = 0;
    for (const Axis axis : {kAlongX, kAlongY}) ways += mayPrecede(axis, i, j) + mayPrecede(axis, j, i);
    if (ways != 1) return ways > 0;
    const Axis axis = maySeparate(kAlongX, i, j) ? kAlongX : kAlongY;
    return mayPrecede(axis, i, j) ? precede(axis, i, j) : precede(axis, j, i);
  }
  // i may have no area: then its size ends at j, or is none.
  bool keepSize(Axis axis, int i, int j) {
    if (!hasSize(across(axis), i) || maySeparate(across(axis), i, j) || mayPrecede(axis, j, i)) return true;
    return keep(size(axis, i),
                [&](std::int64_t value) { return value == 0 || place(axis, i).min + value <= place(axis, j).max; });
  }
  bool keepTwo() {
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j) {
        if (i == j || !hasArea(j)) continue;
        if (hasArea(i) ? !keepApart(i, j) : !(keepSize(kAlongX, i, j) && keepSize(kAlongY, i, j))) return false;
      }
    return true;
  }

  Time extent(Axis axis) {
    Time first = INT64_MAX;
    Time last = INT64_MIN;
    for (int i = 0; i < n; ++i) {
      if (!hasArea(i)) continue;
      first = std::min<Time>(first, place(axis, i).min);
      last = std::max<Time>(last, place(axis, i).max + size(axis, i).min);
    }
    return first == INT64_MAX ? 0 : last - first;
  }
  // They share the room across.
  bool share(Axis axis) {
    naive::Loads loads;
    for (int i = 0; i < n; ++i) {
      const Time length = size(axis, i).min;
      const Presence presence = hasArea(i) ? Presence::kIn : Presence::kOut;
      loads.push_back({{place(axis, i).min, place(axis, i).max + length, length, presence}, size(across(axis), i).min});
    }
    if (!naive::filterNaively(loads, extent(across(axis)))) return false;
    for (int i = 0; i < n; ++i) {
      const auto &task = loads[static_cast<std::size_t>(i)].task;
      const auto placeIs = [&](std::int64_t value) { return task.earliest <= value && value <= task.latestStart(); };
      if (task.isIn() && !keep(place(axis, i), placeIs)) return false;
    }
    return true;
  }
  bool round() { return keepTwo() && share(kAlongX) && share(kAlongY); }
};

using TransitionsTwin = BoundsTwin<TransitionRules>;
using NoOverlapTwin = BoundsTwin<OverlapRules>;

TEST_F(TransitionsTwin, LeavesWhatTheRulesLeave) { compare(rounds(3000)); }
TEST_F(TransitionsTwin, LeavesWhatTheRulesLeaveHeavy) { compare(100000); }
TEST_F(NoOverlapTwin, LeavesWhatTheRulesLeave) { compare(rounds(2000)); }
TEST_F(NoOverlapTwin, LeavesWhatTheRulesLeaveHeavy) { compare(100000); }

}  // namespace
