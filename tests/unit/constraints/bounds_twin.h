// SPDX-License-Identifier: MIT
// A constraint of the library beside a twin whose rules look at each value by itself: on random instances both fail on
// the same ones and leave the same bounds, when posted and after each of some changes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <vector>

#include <gtest/gtest.h>

#include "koru.h"
#include "support/kit/random.h"

namespace koru::test {

struct Range {
  std::int64_t min;
  std::int64_t max;

  bool isEmpty() const { return min > max; }
  bool has(std::int64_t value) const { return min <= value && value <= max; }
  bool meets(const Range &other) const { return min <= other.max && other.min <= max; }
  bool operator==(const Range &) const = default;
};

using Ranges = std::vector<Range>;

inline void PrintTo(const Range &r, std::ostream *out) { *out << r.min << ".." << r.max; }

// Takes the values at both ends away that nothing supports. False when none is left.
template <class IsSupported>
[[nodiscard]] bool keep(Range &r, const IsSupported &isSupported) {
  while (!r.isEmpty() && !isSupported(r.min)) ++r.min;
  while (!r.isEmpty() && !isSupported(r.max)) --r.max;
  return !r.isEmpty();
}

class Draws {
 public:
  int number(int low, int high) { return random_.between(low, high); }
  bool oneOf(int count) { return number(1, count) == 1; }
  Range range(int low, int high) {
    const int min = number(low, high);
    return {min, number(min, high)};
  }
  // A truth value: open, or known.
  Range truth() {
    const int which = number(0, 3);
    return {which == 3 ? 1 : 0, which == 2 ? 0 : 1};
  }

 private:
  Random random_{1};
};

// Twin has `ranges`, a constructor that draws an instance from Draws, post(variables), which hands it over to the
// library, and round(), all rules once, false when they fail.
template <class Twin>
class BoundsTwin : public ::testing::Test {
 protected:
  void compare(int instances) {
    for (int k = 0; k < instances && !HasFailure(); ++k) compareOne(Twin(draws_));
    EXPECT_GT(failed_, instances / 20);
    EXPECT_GT(narrowed_, instances / 20);
  }

 private:
  static bool filter(Twin &twin) {
    for (Ranges before; before != twin.ranges;) {
      before = twin.ranges;
      if (!twin.round()) return false;
    }
    return true;
  }

  void compareOne(Twin twin) {
    cs_init();
    std::vector<CSint *> variables;
    for (const Range &r : twin.ranges)
      variables.push_back(cs_createCSint(static_cast<int>(r.min), static_cast<int>(r.max)));
    const Ranges given = twin.ranges;
    bool isOpen = isSame(twin, variables, twin.post(variables));
    narrowed_ += isOpen && twin.ranges != given ? 1 : 0;
    for (int step = 0; isOpen && step < 3; ++step) isOpen = isSame(twin, variables, change(twin, variables));
    EXPECT_FALSE(HasFailure()) << "given " << ::testing::PrintToString(given);
    cs_end();
  }

  // One variable takes a bound, or gives it up.
  bool change(Twin &twin, const std::vector<CSint *> &variables) {
    const int i = draws_.number(0, static_cast<int>(variables.size()) - 1);
    Range &r = twin.ranges[static_cast<std::size_t>(i)];
    const bool isLess = draws_.oneOf(2);
    const std::int64_t middle = (r.min + r.max) / 2;
    (isLess ? r.max : r.min) = middle;
    CSint *v = variables[static_cast<std::size_t>(i)];
    return isLess ? cs_LE(v, static_cast<int>(middle)) : cs_GE(v, static_cast<int>(middle));
  }

  // Whether both go on, alike.
  bool isSame(Twin &twin, const std::vector<CSint *> &variables, bool result) {
    const Ranges before = twin.ranges;
    const bool expected = filter(twin);
    EXPECT_EQ(result, expected) << "from " << ::testing::PrintToString(before);
    failed_ += expected ? 0 : 1;
    if (!result || !expected) return false;
    Ranges seen;
    for (CSint *v : variables) seen.push_back({cs_getMin(v), cs_getMax(v)});
    EXPECT_EQ(seen, twin.ranges) << "from " << ::testing::PrintToString(before);
    return seen == twin.ranges;
  }

  Draws draws_;
  int failed_ = 0;
  int narrowed_ = 0;
};

}  // namespace koru::test
