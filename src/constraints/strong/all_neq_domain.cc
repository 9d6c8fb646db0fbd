// SPDX-License-Identifier: MIT
// cs_AllNeqDomain: all variables of an array take different values.
// Consistency: domain; bounds while the values span more than kWidest, or when an accepted context inside a restored
// one has brought back values beyond those of the posting. Cost: a run of O(edges / 64) to O(edges), edges being the
// values in the domains of those not yet bound, and O(n) paths at posting or when many matched values have gone. State:
// a matching, not trailed, and the positions that were bound, whose values nobody else has, per branch. Wakes: at every
// change. Deliberate: a variable that stands twice fails.
#include <algorithm>

#include "constraints/strong/hall_bounds.h"
#include "constraints/strong/matching.h"
#include "core/post.h"
#include "koru_extras.h"

namespace koru::all_neq_domain {

constexpr std::int64_t kWidest = 1 << 20;

struct AllNeqDomain : Deferred {
  Buffer<CSint *> vars;
  int count;
  Matching matching;
  HallBounds bounds;
};

static bool filter(AllNeqDomain &c) {
  CSint **vars = c.vars.get();
  if (c.matching && c.matching.covers(vars)) return c.matching.filter(vars);
  return c.bounds.filter(vars, c.count);
}

constexpr auto kTable = deferred<filter>(Rank::kQuadratic);

// From the least value to the greatest, over all variables.
struct Span {
  int low = kIntMax;
  int high = kIntMin;

  explicit Span(const AllNeqDomain &c) {
    for (int i = 0; i < c.count; ++i) {
      low = std::min(low, c.vars[i]->min);
      high = std::max(high, c.vars[i]->max);
    }
  }
  std::int64_t size() const { return std::int64_t{high} - low + 1; }
};

// Without a matching where the span is too wide.
static bool createMatching(AllNeqDomain &c, const Span &span) {
  if (span.size() > kWidest) return true;
  c.matching = Matching(c.count, span.low, static_cast<int>(span.size()));
  return static_cast<bool>(c.matching);
}

static bool post(const Poster &poster, CSint **vars, int count) {
  Buffer<CSint *> copy = copyVariables(vars, count);
  if (!copy) return false;
  Posting posting{poster};
  if (!posting) return false;
  if (count < 2) return true;
  AllNeqDomain record{{}, std::move(copy), count, {}, {}};
  const Span span(record);
  if (span.size() < count) return false;
  record.bounds = HallBounds(count);
  if (!record.bounds || !createMatching(record, span)) return false;
  auto c = posting.add(kTable, std::move(record));
  for (int i = 0; i < count; ++i) c.attach(vars[i], i);
  return posting && !c->hearsItself && runSoon(*c);
}

}  // namespace koru::all_neq_domain

using koru::door;
using koru::leftOut;
using namespace koru::all_neq_domain;

bool cs_AllNeqDomain(CSint **vars, int n) {
  return leftOut("cs_AllNeqDomain") || door(post("cs_AllNeqDomain", vars, n));
}
