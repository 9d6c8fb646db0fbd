// SPDX-License-Identifier: MIT
// cs_AllNeqBounds: all variables of an array take different values.
// Consistency: bounds, domains seen as intervals.  Cost: a run of O(n log n).  State: none.
// Wakes: when a bound moves or a variable is bound.
// Deliberate: a value inside the bounds of a domain is never removed, also when another variable has been bound to it.
// Deliberate: a variable that stands twice fails.
#include "constraints/strong/hall_bounds.h"
#include "core/post.h"
#include "koru_extras.h"

namespace koru::all_neq_bounds {

struct AllNeqBounds : Deferred {
  Buffer<CSint *> vars;
  int count;
  HallBounds bounds;
};

static bool filter(AllNeqBounds &c) { return c.bounds.filter(c.vars.get(), c.count); }

constexpr auto kTable = deferred<filter>(Rank::kSorting, events(kNewMin, kNewMax, kMinBound, kMaxBound, kBound));

static bool post(const Poster &poster, CSint **vars, int count) {
  Buffer<CSint *> copy = copyVariables(vars, count);
  if (!copy) return false;
  Posting posting{poster};
  if (!posting) return false;
  if (count < 2) return true;
  HallBounds bounds(count);
  if (!bounds) return false;
  auto c = posting.add(kTable, AllNeqBounds{{}, std::move(copy), count, std::move(bounds)});
  for (int i = 0; i < count; ++i) c.attach(vars[i], i);
  return posting && !c->hearsItself && runSoon(*c);
}

}  // namespace koru::all_neq_bounds

using koru::door;
using koru::leftOut;
using namespace koru::all_neq_bounds;

bool cs_AllNeqBounds(CSint **vars, int n) {
  return leftOut("cs_AllNeqBounds") || door(post("cs_AllNeqBounds", vars, n));
}
