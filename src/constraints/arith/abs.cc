// SPDX-License-Identifier: MIT
// cs_Abs: z = |x|.
// Consistency: bounds; holes pass when x has a bit array at posting and whenever an inner value is removed, but a value
// that a moved bound of x has left behind stays in z.  Cost: O(1) per event, O(d) when z drops values on both sides.
// State: none.  Wakes: on every event, one constraint on x and one on z, under one site.
// Deliberate: the smallest int, whose absolute value is none, leaves x at posting.
// Deliberate: a raised minimum of z is spelled out as removals from x only while x spans 0 and both sides reach it;
// otherwise a bound of x says the same.
#include <algorithm>

#include "core/post.h"

namespace koru::abs {

struct OnX {
  CSint *z;
};
struct OnZ {
  CSint *x;
};

constexpr std::int64_t negated(int value) { return -std::int64_t{value}; }

static bool containsValue(const CSint *v, std::int64_t value) {
  return value >= v->min && value <= v->max && contains(v, static_cast<int>(value));
}

static bool removeIfPresent(CSint *v, std::int64_t value) {
  return value < v->min || value > v->max || koru::removeIfPresent(v, static_cast<int>(value));
}

// ----- x changed, act on z

static std::int64_t lowest(const CSint *x) {
  return std::max({std::int64_t{0}, std::int64_t{x->min}, negated(x->max)});
}

static std::int64_t highest(const CSint *x) { return std::max(std::int64_t{x->max}, negated(x->min)); }

static bool xMoved(OnX &c, const Event &e) {
  return narrowMin64(c.z, lowest(e.var)) && narrowMax64(c.z, highest(e.var));
}

static bool xBound(OnX &c, const Event &e) {
  const std::int64_t value = highest(e.var);
  return containsValue(c.z, value) && bindValue(c.z, static_cast<int>(value));  // GCOVR_EXCL_BR_LINE: z has it
}

static bool xRemoved(OnX &c, const Event &e) {
  const std::int64_t value = e.newValue;
  return containsValue(e.var, -value) || removeIfPresent(c.z, std::max(value, -value));
}

constexpr auto kXTable = handlers<OnX>({.newMin = on<xMoved>,
                                        .newMax = on<xMoved>,
                                        .minBound = on<xMoved>,
                                        .maxBound = on<xMoved>,
                                        .bound = on<xBound>,
                                        .removed = on<xRemoved>});

// ----- z changed, act on x

// GCOVR_EXCL_BR_START: never fails, for x reaches beyond on both sides
static bool removeBothSigns(CSint *x, int from, int to) {
  for (std::int64_t k = from; k < to; ++k)
    if (!removeIfPresent(x, k) || !removeIfPresent(x, -k)) return false;
  return true;
}
// GCOVR_EXCL_BR_STOP

static bool zNewMin(OnZ &c, const Event &e) {
  CSint *x = c.x;
  const int m = e.newValue;
  if (m > negated(x->min)) return narrowMin64(x, m);
  if (m <= x->max) return removeBothSigns(x, e.oldValue, m);
  return narrowMax64(x, negated(m));
}

static bool zNewMax(OnZ &c, const Event &e) {
  CSint *x = c.x;
  const int m = e.newValue;
  return narrowMax64(x, m) && narrowMin64(x, negated(m));
}

// GCOVR_EXCL_BR_START: never fails, for x has both
static bool keepOnly(CSint *x, int v) {
  if (!narrowMin64(x, negated(v)) || !narrowMax64(x, v)) return false;
  for (std::int64_t k = negated(v) + 1; k < v; ++k)
    if (!removeIfPresent(x, k)) return false;
  return true;
}
// GCOVR_EXCL_BR_STOP

static bool zBound(OnZ &c, const Event &e) {
  CSint *x = c.x;
  const int v = valueOf(e.var);
  const bool positive = contains(x, v);
  const bool negative = containsValue(x, negated(v));
  if (positive && negative) return keepOnly(x, v);
  if (positive) return bindValue(x, v);
  return negative && bindValue(x, -v);  // GCOVR_EXCL_BR_LINE: x has it
}

static bool zRemoved(OnZ &c, const Event &e) {
  return removeIfPresent(c.x, e.newValue) && removeIfPresent(c.x, negated(e.newValue));
}

constexpr auto kZTable = handlers<OnZ>({.newMin = on<zNewMin>,
                                        .newMax = on<zNewMax>,
                                        .minBound = on<zNewMin>,
                                        .maxBound = on<zNewMax>,
                                        .bound = on<zBound>,
                                        .removed = on<zRemoved>});

// ----- posting

// The smallest absolute value in the domain: holes around 0 are passed over.
static int lowestPresent(const CSint *x) {
  const std::int64_t end = std::min(negated(x->min), std::int64_t{x->max});
  int k = clampToInt(lowest(x));
  while (k < end && !contains(x, k) && !contains(x, -k)) ++k;
  return k;
}

static CSint *createResult(const CSint *x) { return createVariable(lowestPresent(x), clampToInt(highest(x))); }

// Bounds and count are taken from the bits set: x may have lost the smallest int meanwhile.
static bool copyHoles(CSint *z, const CSint *x) {
  if (x->bits == nullptr) return true;
  DomainBuilder domain(z, DomainBuilder::Start::kEmpty);
  if (!domain) return false;
  for (std::int64_t v = z->min; v <= z->max; ++v)
    if (containsValue(x, v) || containsValue(x, -v)) domain.add(static_cast<int>(v));
  domain.fitBounds();
  return true;
}

static CSint *post(const Poster &poster, CSint *x) {
  if (x == nullptr) return nullptr;
  CSint *z = createResult(x);
  if (z == nullptr || !narrowMin(x, -z->max) || !narrowMax(x, z->max) || !copyHoles(z, x)) return nullptr;
  Posting posting{poster};
  auto onX = posting.add(kXTable, OnX{z});
  onX.attach(x);
  auto onZ = posting.add(kZTable, OnZ{x});
  onZ.attach(z);
  return posting ? z : nullptr;
}

}  // namespace koru::abs

using koru::door;
using namespace koru::abs;

CSint *cs_Abs(CSint *x) { return door(post("cs_Abs", x)); }
