// SPDX-License-Identifier: MIT
// For z = f(x, y): as long as x and y have few pairs of values together, a walk over all of them leaves what has a
// support; with more, a constraint has rules on bounds, which need not decide anything, since a single pair is few.
//
// bool f(int x, int y, std::int64_t &z) returns false where there is no result.
#pragma once

#include <algorithm>
#include <array>

#include "constraints/relational/fixpoint.h"
#include "constraints/relational/gaps.h"
#include "core/domain_walk.h"

namespace koru::relational {

struct TwoToOne : Deferred {
  CSint *x;
  CSint *y;
  CSint *z;

  std::int64_t size() const { return std::int64_t{x->count} + y->count + z->count; }
};

// The bounds on what is left, in 64 bits; begins without anything.
struct Hull {
  std::int64_t low = std::int64_t{kIntMax} + 1;
  std::int64_t high = std::int64_t{kIntMin} - 1;

  void add(std::int64_t from, std::int64_t to) {
    low = std::min(low, from);
    high = std::max(high, to);
  }
  // Of absolute values, the sign being 1 or -1.
  void add(std::int64_t from, std::int64_t to, int sign) { sign > 0 ? add(from, to) : add(-to, -from); }
};

// The values of v, or of -v when the sign is -1.
inline Hull hullOf(const CSint *v, int sign) {
  Hull hull;
  hull.add(v->min, v->max);
  return sign > 0 ? hull : Hull{-hull.high, -hull.low};
}

[[nodiscard]] inline bool narrowTo(CSint *v, const Hull &hull) {
  return narrowMin64(v, hull.low) && narrowMax64(v, hull.high);
}

constexpr std::uint64_t kMostPairs = 2048;

inline bool hasFewPairs(const TwoToOne &c) {
  const std::uint64_t ofX = std::uint64_t{distance(c.x->min, c.x->max)} + 1;
  const std::uint64_t ofY = std::uint64_t{distance(c.y->min, c.y->max)} + 1;
  return ofX <= kMostPairs && ofX * ofY <= kMostPairs;
}

// What the pairs lead to, in places of the stack.
struct Supported {
  std::array<bool, kMostPairs> y{};  // by distance from the least value
  std::array<int, kMostPairs> results;
  int count = 0;

  void add(std::uint32_t placeOfY, int result) {
    y[placeOfY] = true;
    results[static_cast<std::size_t>(count++)] = result;
  }
};

template <auto f>
bool supports(const TwoToOne &c, int x, Supported &found) {
  bool any = false;
  forEachValue(c.y, [&](int y) {
    std::int64_t z;
    if ((c.x != c.y || x == y) && f(x, y, z) && z >= kIntMin && z <= kIntMax && contains(c.z, static_cast<int>(z))) {
      found.add(distance(c.y->min, y), static_cast<int>(z));
      any = true;
    }
    return true;
  });
  return any;
}

[[nodiscard]] inline bool keepResults(CSint *z, Supported &found) {
  if (found.count == 0) return false;
  int *first = found.results.data();
  std::sort(first, first + found.count);
  const int count = static_cast<int>(std::unique(first, first + found.count) - first);
  if (!narrowMin(z, first[0]) || !narrowMax(z, first[count - 1])) return false;
  for (int i = 1; i < count; ++i)
    if (!dropBetween(z, first[i - 1], first[i])) return false;
  return true;
}

template <auto f>
[[nodiscard]] bool filterPairs(const TwoToOne &c) {
  Supported found;
  const int low = c.y->min;
  std::array<bool, kMostPairs> ofX{};
  const int lowOfX = c.x->min;
  forEachValue(c.x, [&](int x) {
    ofX[distance(lowOfX, x)] = supports<f>(c, x, found);
    return true;
  });
  const auto keep = [](CSint *v, int from, const std::array<bool, kMostPairs> &supported) {
    return forEachValue(v, [&](int value) { return supported[distance(from, value)] || removeValue(v, value); });
  };
  return keepResults(c.z, found) && keep(c.x, lowOfX, ofX) && keep(c.y, low, found.y);
}

template <auto f, bool (*filterBounds)(const TwoToOne &)>
[[nodiscard]] bool filterTwoToOne(TwoToOne &c) {
  return hasFewPairs(c) ? filterPairs<f>(c) : filterBounds(c);
}

// The same variable may stand in several places.
template <bool (*filter)(TwoToOne &)>
[[nodiscard]] bool postTwoToOne(const Poster &poster, CSint *x, CSint *y, CSint *z) {
  if (x == nullptr || y == nullptr || z == nullptr) return false;
  Posting posting{poster};
  if (!posting) return false;
  auto c = posting.add(kTable<TwoToOne, filter>, TwoToOne{{}, x, y, z});
  c.attach(x, 0);
  c.attach(y, 1);
  c.attach(z, 2);
  return posting && runSoon(*c);
}

}  // namespace koru::relational
