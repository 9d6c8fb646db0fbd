// SPDX-License-Identifier: MIT
// cs_InArray, cs_NotInArray, cs_InInterval and cs_NotInInterval against enumeration.
#include "support/brute_support.h"

namespace {

using namespace koru::test::brute;

using Values = std::vector<int>;
using Filter = std::function<int(CSint *)>;

// Posts nothing, so what is left after the call is all there is to see: exactly the values wanted.
void checkFilter(const Domain &domain, const std::function<bool(int)> &wanted, const Filter &filter) {
  cs_init();
  CSint *v = create(domain);
  Values left;
  for (const int value : domain.values)
    if (wanted(value)) left.push_back(value);
  const int result = filter(v);
  EXPECT_EQ(result, left.empty() ? 0 : 1);
  if (result == 1) {
    EXPECT_EQ(koru::test::values(v), left);
    EXPECT_EQ(cs_getNbElements(v), std::ssize(left));
  }
  EXPECT_EQ(cs_getNbConstraints(v), 0);
  cs_end();
}

bool in(const Values &array, int value) { return std::ranges::find(array, value) != array.end(); }

std::vector<Values> allArrays() {
  std::vector<Values> arrays;
  for (const Domain &d : allDomains(-1, 6)) arrays.push_back(d.values);
  arrays.insert(arrays.end(), {{3, 1, 3}, {4, 4}, {2, -9, 0, 2}, {90}});
  return arrays;
}

TEST(MembershipSemantics, ArraysKeepOrRemoveExactlyTheirValues) {
  for (const Domain &domain : allDomains(0, 5)) {
    for (const Values &array : allArrays()) {
      const int n = static_cast<int>(array.size());
      checkFilter(
          domain, [&](int v) { return in(array, v); }, [&](CSint *v) { return cs_InArray(v, array.data(), n); });
      checkFilter(
          domain, [&](int v) { return !in(array, v); }, [&](CSint *v) { return cs_NotInArray(v, array.data(), n); });
    }
  }
}

TEST(MembershipSemantics, IntervalsKeepOrRemoveExactlyTheirValues) {
  for (const Domain &domain : allDomains(0, 5)) {
    for (int low = -1; low <= 6; ++low) {
      for (int high = -1; high <= 6; ++high) {
        const auto inside = [=](int v) { return low <= v && v <= high; };
        checkFilter(domain, inside, [=](CSint *v) { return cs_InInterval(v, low, high); });
        checkFilter(domain, std::not_fn(inside), [=](CSint *v) { return cs_NotInInterval(v, low, high); });
      }
    }
  }
}

}  // namespace
