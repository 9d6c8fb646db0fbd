// SPDX-License-Identifier: MIT
// cs_PrecedenceIf, cs_Alternative and cs_Span beside twins of their rules.
#include <cstddef>
#include <vector>

#include "koru_extras.h"
#include "unit/constraints/bounds_twin.h"

namespace {

using namespace koru::test;

// ----- a precedence: what no solution has goes

struct PrecedenceRules {
  enum : std::size_t { kStart, kDuration, kNext, kCondition };
  int delay;
  bool isAlways;
  Ranges ranges;

  explicit PrecedenceRules(Draws &draws) : delay(draws.number(-3, 4)), isAlways(draws.oneOf(4)) {
    const int end = draws.number(2, 9);
    ranges = {draws.range(0, end), draws.range(0, 5), draws.range(0, end)};
    if (!isAlways) ranges.push_back(draws.truth());
  }
  bool post(const std::vector<CSint *> &v) const {
    return cs_PrecedenceIf(isAlways ? nullptr : v[kCondition], v[kStart], v[kDuration], delay, v[kNext]);
  }
  bool isSolution(const std::vector<std::int64_t> &v) const {
    return (!isAlways && v[kCondition] == 0) || v[kStart] + v[kDuration] + delay <= v[kNext];
  }
  bool extends(std::vector<std::int64_t> &v, std::size_t at, std::size_t fixed) const {
    if (at == ranges.size()) return isSolution(v);
    if (at == fixed) return extends(v, at + 1, fixed);
    for (v[at] = ranges[at].min; v[at] <= ranges[at].max; ++v[at])
      if (extends(v, at + 1, fixed)) return true;
    return false;
  }
  bool round() {
    for (std::size_t i = 0; i < ranges.size(); ++i) {
      const auto isIn = [&](std::int64_t value) {
        std::vector<std::int64_t> v(ranges.size(), value);
        return extends(v, 0, i);
      };
      if (!keep(ranges[i], isIn)) return false;
    }
    return true;
  }
};

// ----- a task that is made up of others

struct Group {
  bool isThere;   // without a truth value
  bool allThere;  // likewise, the parts
  int n;
  Ranges ranges;

  explicit Group(Draws &draws) : isThere(draws.oneOf(2)), allThere(draws.oneOf(6)), n(draws.number(1, 5)) {
    const int end = draws.number(3, 14);
    for (int i = 0; i <= n; ++i) {
      ranges.push_back(draws.range(0, end));
      ranges.push_back(draws.range(0, draws.number(1, 6)));
      ranges.push_back((i == 0 ? isThere : allThere) ? Range{1, 1} : draws.truth());
    }
  }
  // 0 is the whole, parts count from 1.
  Range &start(int i) { return ranges[static_cast<std::size_t>(3 * i)]; }
  Range &duration(int i) { return ranges[static_cast<std::size_t>(3 * i + 1)]; }
  Range &presence(int i) { return ranges[static_cast<std::size_t>(3 * i + 2)]; }
  Range end(int i) { return {start(i).min + duration(i).min, start(i).max + duration(i).max}; }
  bool mayBe(int i) { return presence(i).max == 1; }
  bool mustBe(int i) { return presence(i).min == 1; }
  template <class Is>
  bool anyPart(const Is &is, int but = 0) {
    for (int i = 1; i <= n; ++i)
      if (i != but && is(i)) return true;
    return false;
  }

  template <class Poster>
  bool post(Poster poster, const std::vector<CSint *> &v) const {
    std::vector<CSint *> parts[3];
    for (std::size_t k = 3; k < v.size(); ++k) parts[k % 3].push_back(v[k]);
    return poster(v[0], v[1], isThere ? nullptr : v[2], parts[0].data(), parts[1].data(),
                  allThere ? nullptr : parts[2].data(), n);
  }
};

// Which part does it, if any: what goes with none of these cases goes.
struct AlternativeRules : Group {
  using Group::Group;

  bool post(const std::vector<CSint *> &v) const { return Group::post(cs_Alternative, v); }
  bool mayBeDoneBy(int i) {
    return mayBe(0) && mayBe(i) && !anyPart([&](int j) { return mustBe(j); }, i) && start(0).meets(start(i)) &&
           duration(0).meets(duration(i));
  }
  bool mayBeDoneByNone() {
    return !mustBe(0) && !anyPart([&](int i) { return mustBe(i); });
  }
  bool keepPart(int i) {
    const auto presenceIs = [&](std::int64_t value) {
      return value == 1 ? mayBeDoneBy(i) : mayBeDoneByNone() || anyPart([&](int j) { return mayBeDoneBy(j); }, i);
    };
    if (!keep(presence(i), presenceIs)) return false;
    return !mustBe(i) || (keep(start(i), [&](std::int64_t value) { return start(0).has(value); }) &&
                          keep(duration(i), [&](std::int64_t value) { return duration(0).has(value); }));
  }
  bool keepWhole() {
    const auto presenceIs = [&](std::int64_t value) {
      return value == 0 ? mayBeDoneByNone() : anyPart([&](int i) { return mayBeDoneBy(i); });
    };
    const auto startIs = [&](std::int64_t value) {
      return anyPart([&](int i) { return mayBeDoneBy(i) && start(i).has(value); });
    };
    const auto durationIs = [&](std::int64_t value) {
      return anyPart([&](int i) { return mayBeDoneBy(i) && duration(i).has(value); });
    };
    if (!keep(presence(0), presenceIs)) return false;
    return !mustBe(0) || (keep(start(0), startIs) && keep(duration(0), durationIs));
  }
  bool round() {
    for (int i = 1; i <= n; ++i)
      if (!keepPart(i)) return false;
    return keepWhole();
  }
};

// Parts lie inside the whole, which begins and ends with one of them: each rule for one value of one variable.
struct SpanRules : Group {
  using Group::Group;

  bool post(const std::vector<CSint *> &v) const { return Group::post(cs_Span, v); }
  bool fits(int i) { return start(i).max >= start(0).min && end(i).min <= end(0).max; }
  bool mayBeFirst(int i) { return mayBe(i) && start(i).min <= start(0).max; }
  bool mayBeLast(int i) { return mayBe(i) && end(i).max >= end(0).min; }
  // Without it there would be no first one, or no last one.
  bool isNeeded(int i) {
    return !anyPart([&](int j) { return mayBeFirst(j); }, i) || !anyPart([&](int j) { return mayBeLast(j); }, i);
  }
  bool keepPresence(int i) {
    return keep(presence(i), [&](std::int64_t value) {
      if (!mustBe(0)) return value == 0 || mayBe(0);
      return value == 1 ? fits(i) : !isNeeded(i);
    });
  }
  bool keepTimes(int i) {
    const bool isFirst = !anyPart([&](int j) { return mayBeFirst(j); }, i);
    const bool isLast = !anyPart([&](int j) { return mayBeLast(j); }, i);
    const auto startIs = [&](std::int64_t value) {
      return value >= start(0).min && value + duration(i).min <= end(0).max && (!isFirst || value <= start(0).max) &&
             (!isLast || value + duration(i).max >= end(0).min);
    };
    const auto durationIs = [&](std::int64_t value) {
      return start(i).min + value <= end(0).max && (!isLast || start(i).max + value >= end(0).min);
    };
    return keep(start(i), startIs) && keep(duration(i), durationIs);
  }

  // Between those that are there, and those that may be.
  bool mayStart(std::int64_t value) {
    return anyPart([&](int i) { return mayBe(i) && start(i).min <= value; }) &&
           anyPart([&](int i) { return mayBe(i) && start(i).max >= value; }) &&
           !anyPart([&](int i) { return mustBe(i) && start(i).max < value; });
  }
  bool mayEnd(const Range &range) {
    return anyPart([&](int i) { return mayBe(i) && end(i).min <= range.max; }) &&
           anyPart([&](int i) { return mayBe(i) && end(i).max >= range.min; }) &&
           !anyPart([&](int i) { return mustBe(i) && end(i).min > range.max; });
  }
  bool keepWhole() {
    const auto startIs = [&](std::int64_t value) {
      return mayStart(value) && mayEnd({value + duration(0).min, value + duration(0).max});
    };
    const auto durationIs = [&](std::int64_t value) { return mayEnd({start(0).min + value, start(0).max + value}); };
    return keep(start(0), startIs) && keep(duration(0), durationIs);
  }
  bool round() {
    const auto presenceIs = [&](std::int64_t value) {
      return value == 1 ? anyPart([&](int i) { return mayBe(i); }) : !anyPart([&](int i) { return mustBe(i); });
    };
    if (!keep(presence(0), presenceIs)) return false;
    for (int i = 1; i <= n; ++i)
      if (!keepPresence(i) || (mustBe(0) && mustBe(i) && !keepTimes(i))) return false;
    return !mustBe(0) || keepWhole();
  }
};

using PrecedenceTwin = BoundsTwin<PrecedenceRules>;
using AlternativeTwin = BoundsTwin<AlternativeRules>;
using SpanTwin = BoundsTwin<SpanRules>;

TEST_F(PrecedenceTwin, LeavesWhatSolutionsHave) { compare(3000); }
TEST_F(PrecedenceTwin, LeavesWhatSolutionsHaveHeavy) { compare(100000); }
TEST_F(AlternativeTwin, LeavesWhatSomeChoiceHas) { compare(3000); }
TEST_F(AlternativeTwin, LeavesWhatSomeChoiceHasHeavy) { compare(100000); }
TEST_F(SpanTwin, LeavesWhatTheRulesLeave) { compare(3000); }
TEST_F(SpanTwin, LeavesWhatTheRulesLeaveHeavy) { compare(100000); }

}  // namespace
