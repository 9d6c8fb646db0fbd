// SPDX-License-Identifier: MIT
// cs_Reservoir beside a twin that looks at the level of each time by itself.
#include <cstddef>
#include <vector>

#include "koru_extras.h"
#include "support/kit/instrumented.h"
#include "unit/constraints/bounds_twin.h"

namespace {

using namespace koru::test;

constexpr int kEnd = 9;  // no event is later

struct ReservoirRules {
  int n;
  bool allThere;
  int start;
  int low;
  int high;
  Ranges ranges;

  explicit ReservoirRules(Draws &draws)
      : n(draws.number(1, 6)),
        allThere(draws.oneOf(2)),
        start(draws.number(-1, 5)),
        low(draws.number(-2, 1)),
        high(draws.number(2, 6)) {
    for (int i = 0; i < n; ++i) {
      ranges.push_back(draws.range(0, draws.number(2, kEnd)));
      const int change = draws.number(-5, 5);
      ranges.push_back({change, change + (draws.oneOf(3) ? draws.number(0, 6) : 0)});
      ranges.push_back(allThere ? Range{1, 1} : draws.truth());
    }
  }
  bool post(const std::vector<CSint *> &v) const {
    std::vector<CSint *> events[3];
    for (std::size_t k = 0; k < v.size(); ++k) events[k % 3].push_back(v[k]);
    return cs_Reservoir(events[0].data(), events[1].data(), allThere ? nullptr : events[2].data(), n, start, low, high);
  }
  Range &time(int i) { return ranges[static_cast<std::size_t>(3 * i)]; }
  Range &change(int i) { return ranges[static_cast<std::size_t>(3 * i + 1)]; }
  Range &presence(int i) { return ranges[static_cast<std::size_t>(3 * i + 2)]; }
  bool mustBe(int i) { return presence(i).min == 1; }

  // From above with sign 1, from below with -1: all levels have the other sign then.
  std::int64_t most(int sign, int i) { return sign > 0 ? change(i).max : -change(i).min; }
  std::int64_t least(int sign) const { return sign > 0 ? low : -high; }

  // What event i makes of the level at a time, at the very most.
  std::int64_t atMost(int sign, int i, int t) {
    if (presence(i).max == 0) return 0;
    const std::int64_t add = most(sign, i);
    if (add > 0) return t >= time(i).min ? add : 0;
    return mustBe(i) && t >= time(i).max ? add : 0;
  }
  std::int64_t levelBeside(int sign, int but, int t) {
    std::int64_t level = sign * start;
    for (int i = 0; i < n; ++i)
      if (i != but) level += atMost(sign, i, t);
    return level;
  }
  // Whether the others can keep the level when event i adds that much at that time.
  bool isEnough(int sign, int i, std::int64_t when, std::int64_t add) {
    for (int t = -1; t <= kEnd; ++t)
      if (levelBeside(sign, i, t) + (t >= when ? add : 0) < least(sign)) return false;
    return true;
  }
  bool mayHappen(int sign, int i, std::int64_t add) {
    for (std::int64_t when = time(i).min; when <= time(i).max; ++when)
      if (isEnough(sign, i, when, add)) return true;
    return false;
  }

  bool keepEvent(int sign, int i) {
    const auto presenceIs = [&](std::int64_t value) {
      return value == 1 ? mayHappen(sign, i, most(sign, i)) : isEnough(sign, i, 0, 0);
    };
    const auto timeIs = [&](std::int64_t value) { return isEnough(sign, i, value, most(sign, i)); };
    const auto changeIs = [&](std::int64_t value) { return mayHappen(sign, i, sign * value); };
    if (!keep(presence(i), presenceIs)) return false;
    return !mustBe(i) || (keep(time(i), timeIs) && keep(change(i), changeIs));
  }
  bool round() {
    for (const int sign : {1, -1})
      for (int i = 0; i < n; ++i)
        if (!keepEvent(sign, i)) return false;
    return true;
  }
};

using ReservoirTwin = BoundsTwin<ReservoirRules>;

TEST_F(ReservoirTwin, LeavesWhatTheOthersCanBear) { compare(rounds(3000)); }
TEST_F(ReservoirTwin, LeavesWhatTheOthersCanBearHeavy) { compare(100000); }

}  // namespace
