// SPDX-License-Identifier: MIT
// cs_ElementOf: result = values[index] over an array of ints, which is copied.
// Consistency: domain, but a result over more than 2^20 values may keep inner ones that no position has.
// Cost: O(n) in a run, O(positions left) for a result of up to 1,024 values in a row, O(1) once the index is bound;
// O(n log n) at posting.
// State: the values, and the (value, position) pairs in order.  Wakes: on every event.
#include <algorithm>
#include <array>
#include <tuple>

#include "constraints/relational/gaps.h"
#include "core/post.h"
#include "koru_extras.h"

namespace koru::element_of {

struct Pair {
  int value;
  int position;

  bool operator<(const Pair &other) const { return std::tie(value, position) < std::tie(other.value, other.position); }
};

struct ElementOf : Deferred {
  CSint *index;
  CSint *result;
  Buffer<int> values;
  Buffer<Pair> pairs;
  int n;
};

static bool hasPosition(const ElementOf &c, int from, int to) {
  for (int k = from; k < to; ++k)
    if (contains(c.index, c.pairs[k].position)) return true;
  return false;
}

static bool removePositions(const ElementOf &c, int from, int to) {
  for (int k = from; k < to; ++k)
    if (!removeIfPresent(c.index, c.pairs[k].position)) return false;
  return true;
}

// A walk over the groups of pairs with one value: positions stay while the result has it, and it stays while there are
// positions. That is the fixpoint, since what goes from one has no partner in the other.
static bool filterPairs(const ElementOf &c) {
  const Pair *last = nullptr;  // with a value that stays
  for (int from = 0, to = 0; from < c.n; from = to) {
    const Pair &pair = c.pairs[from];
    while (to < c.n && c.pairs[to].value == pair.value) ++to;
    if (!contains(c.result, pair.value)) {
      if (!removePositions(c, from, to)) return false;
    } else if (hasPosition(c, from, to)) {
      if (last == nullptr ? !narrowMin(c.result, pair.value)
                          : !relational::dropBetween(c.result, last->value, pair.value))
        return false;
      last = &pair;
    }
  }
  return last != nullptr && narrowMax(c.result, last->value);
}

constexpr std::uint32_t kNarrow = 1024;

// The same fixpoint for a result of narrow range, by a walk over the positions that are left.
static bool filterPositions(const ElementOf &c) {
  std::array<bool, kNarrow> found{};  // by distance from the least result
  const int low = c.result->min;
  int least = kIntMax;
  int most = kIntMin;
  const auto keepPosition = [&](int position) {
    const int value = c.values[position];
    if (!contains(c.result, value)) return removeValue(c.index, position);
    found[distance(low, value)] = true;
    least = std::min(least, value);
    most = std::max(most, value);
    return true;
  };
  const auto keepResult = [&](int value) { return found[distance(low, value)] || removeValue(c.result, value); };
  return forEachValue(c.index, keepPosition) && narrowMin(c.result, least) && narrowMax(c.result, most) &&
         forEachValue(c.result, keepResult);
}

static bool filter(ElementOf &c) {
  if (!narrowMin(c.index, 0) || !narrowMax(c.index, c.n - 1)) return false;
  if (!isBound(c.index)) return distance(c.result->min, c.result->max) < kNarrow ? filterPositions(c) : filterPairs(c);
  const int value = c.values[valueOf(c.index)];
  return contains(c.result, value) && bindValue(c.result, value);
}

constexpr auto kTable = deferred<filter>(Rank::kLinear);

static bool post(const Poster &poster, CSint *index, const int *values, int n, CSint *result) {
  if (index == nullptr || values == nullptr || n < 1 || result == nullptr) return false;
  Posting posting{poster};
  if (!posting) return false;
  ElementOf record{{}, index, result, Buffer<int>(n), {}, n};
  if (!record.values || !make(record.pairs, static_cast<unsigned>(n))) return false;
  for (int i = 0; i < n; ++i) {
    record.values[i] = values[i];
    record.pairs[i] = {values[i], i};
  }
  std::sort(record.pairs.get(), record.pairs.get() + n);
  auto c = posting.add(kTable, std::move(record));
  c.attach(index, 0);
  c.attach(result, 1);
  return posting && runSoon(*c);
}

}  // namespace koru::element_of

using koru::door;
using koru::leftOut;

bool cs_ElementOf(CSint *index, const int *values, int n, CSint *result) {
  return leftOut("cs_ElementOf") || door(koru::element_of::post("cs_ElementOf", index, values, n, result));
}
