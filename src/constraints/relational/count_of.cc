// SPDX-License-Identifier: MIT
// cs_CountOf: count = how many of x1..xn equal the variable value.
// Consistency: domain; nothing but the bounds of count is narrowed while value has more than 2^16 values.
// Cost: in a run O(n) for each value of `value`.  State: none.
// Wakes: on every event.
// A value w is taken by lo(w) variables for sure and by hi(w) at most, so it stays while count has a number in between.
// A variable that is free can take u if `value` may be u and one more is welcome, or if `value` may be some other w,
// unless that one needs all that it can get and this variable is one of them.
// One walk is enough: a number of count that goes lies between lo(w) and hi(w) for no w; and who must take a value, or
// must not, moves lo(w) or hi(w) only towards the number that count has there.
#include <algorithm>

#include "constraints/relational/fixpoint.h"
#include "core/domain_walk.h"
#include "koru_extras.h"

namespace koru::count_of {

struct CountOf : Deferred {
  Shared<CSint *> vars;
  int n;
  CSint *value;
  CSint *count;
  Buffer<int> covered;  // by number, 0..n + 1: how many more intervals begin than end there

  CSint *at(int i) const { return vars.get()[i]; }
};

constexpr std::uint32_t kWidest = 1U << 16;

struct Range {
  int low = 0;
  int high = 0;
};

static bool hasWithin(const CSint *v, int low, int high) {
  if (low > high || v->max < low || v->min > high) return false;
  if (v->min >= low || v->max <= high || contains(v, low)) return true;
  return valueAfter(v, low) <= high;
}

static Range takersOf(const CountOf &c, int w) {
  Range range;
  for (int i = 0; i < c.n; ++i) {
    if (!contains(c.at(i), w)) continue;
    ++range.high;
    if (isBound(c.at(i))) ++range.low;
  }
  return range;
}

// The values that do not need all that they can get: how many, and the last of them.
struct Content {
  int values = 0;
  int last = 0;
};

static bool filterValues(CountOf &c, Content &content) {
  std::fill_n(c.covered.get(), c.n + 2, 0);
  return forEachValue(c.value, [&](int w) {
    const auto [low, high] = takersOf(c, w);
    if (!hasWithin(c.count, low, high)) return removeValue(c.value, w);
    ++c.covered[low];
    --c.covered[high + 1];
    if (hasWithin(c.count, low, high - 1)) content = {content.values + 1, w};
    return true;
  });
}

static bool filterCount(const CountOf &c) {
  if (!narrowMin(c.count, 0) || !narrowMax(c.count, c.n)) return false;
  for (int number = 0, open = 0; number <= c.n; ++number) {
    open += c.covered[number];
    if (open == 0 && !removeValue(c.count, number)) return false;
  }
  return true;
}

static bool welcomesMore(const CountOf &c, int w) {
  const auto [low, high] = takersOf(c, w);
  return hasWithin(c.count, low + 1, high);
}

// Whether x can take all values of `value` but `except`.
static bool canTakeOthers(const CountOf &c, const CSint *x, const int *except) {
  return forEachValue(c.value, [&](int w) { return (except != nullptr && w == *except) || contains(x, w); });
}

// All values need all that they can get: who can take each of them must take one.
static bool keepToValues(const CountOf &c) {
  for (int i = 0; i < c.n; ++i) {
    CSint *x = c.at(i);
    if (isBound(x) || !canTakeOthers(c, x, nullptr)) continue;
    if (!forEachValue(x, [&](int u) { return contains(c.value, u) || removeValue(x, u); })) return false;
  }
  return true;
}

// All but one do, and that one has enough: who can take each of the others does not take it.
static bool keepFrom(const CountOf &c, int w) {
  if (welcomesMore(c, w)) return true;
  for (int i = 0; i < c.n; ++i) {
    CSint *x = c.at(i);
    if (!isBound(x) && contains(x, w) && canTakeOthers(c, x, &w) && !removeValue(x, w)) return false;
  }
  return true;
}

static bool filter(CountOf &c) {
  if (distance(c.value->min, c.value->max) > kWidest) return narrowMin(c.count, 0) && narrowMax(c.count, c.n);
  Content content;
  if (!filterValues(c, content) || !filterCount(c)) return false;
  if (content.values > 1) return true;
  return content.values == 0 ? keepToValues(c) : keepFrom(c, content.last);
}

constexpr auto kTable = deferred<filter>(Rank::kQuadratic);

static bool post(const Poster &poster, CSint *const *array, int n, CSint *value, CSint *count) {
  if (value == nullptr || count == nullptr || n > kIntMax - 2) return false;
  Posting posting{poster};
  if (!posting) return false;
  const Shared<CSint *> vars = relational::copyOf(array, n);
  if (!vars) return false;
  Buffer<int> covered(n + 2);
  if (!covered) return false;
  auto c = posting.add(kTable, CountOf{{}, vars, n, value, count, std::move(covered)});
  for (int i = 0; i < n; ++i) c.attach(vars.get()[i], i);
  c.attach(value, n);
  c.attach(count, n);
  return posting && runSoon(*c);
}

}  // namespace koru::count_of

using koru::door;
using koru::leftOut;

bool cs_CountOf(CSint **vars, int n, CSint *value, CSint *count) {
  return leftOut("cs_CountOf") || door(koru::count_of::post("cs_CountOf", vars, n, value, count));
}
