// SPDX-License-Identifier: MIT
// cs_CardinalityDomain: counts[j] of the variables equal values[j]; when closed, no other value is taken.
// Consistency: domain, when the counts are intervals; else of the variables for the bounds of the counts, whose bounds
// are taken in some solution of such counts. A flow assigns the variables to values (Regin 1996).
// Cost: a run of O(n m / 64 + edges of m values) plus O(n m / 64) for each path: one for each variable that has lost
// its value or whose value has lost room, and for each that a count which is not bound can have more or less. State:
// the flow, not trailed. Wakes: at every change.
#include "constraints/counting/flow.h"
#include "constraints/counting/value_classes.h"
#include "core/post.h"
#include "koru_extras.h"

namespace koru::counting {

struct CardinalityDomain : Deferred {
  Buffer<CSint *> vars;
  int n;
  bool closed;
  ValueClasses classes;
  Flow flow;
};

static bool read(const CardinalityDomain &c) {
  const ValueClasses &classes = c.classes;
  for (int i = 0; i < c.n; ++i) classes.read(c.vars[i], c.flow.options(i));
  for (int j = 0; j < classes.counted(); ++j) {
    CSint *count = classes.count(j);
    if (!narrowMin(count, 0) || !narrowMax(count, c.n)) return false;
    c.flow.demand(j, count->min, count->max);
  }
  c.flow.demand(classes.others(), 0, c.closed ? 0 : c.n);
  return true;
}

// Whether a bound fell into a hole of its domain is told in `again`.
static bool narrowCounts(CardinalityDomain &c, bool &again) {
  for (int j = 0; j < c.classes.counted(); ++j) {
    CSint *count = c.classes.count(j);
    if (isBound(count)) continue;
    const int most = c.flow.mostOf(j);
    const int least = c.flow.leastOf(j);
    if (!narrowMin(count, least) || !narrowMax(count, most)) return false;
    again = again || count->min != least || count->max != most;
  }
  return true;
}

static bool narrowVariables(CardinalityDomain &c) {
  c.flow.separate();
  for (int i = 0; i < c.n; ++i) {
    std::uint64_t *options = c.flow.options(i);
    const std::uint64_t *possible = c.flow.possible(i);
    bool less = false;
    for (int k = 0; k < c.classes.words(); ++k) {
      less = less || (options[k] & ~possible[k]) != 0;
      options[k] &= possible[k];
    }
    if (less && !c.classes.keep(c.vars[i], options)) return false;
  }
  return true;
}

static bool filter(CardinalityDomain &c) {
  for (bool again = true; again;) {
    again = false;
    if (!read(c) || !c.flow.establish() || !narrowCounts(c, again) || !narrowVariables(c)) return false;
  }
  return true;
}

constexpr auto kTable = deferred<filter>(Rank::kHeavy);

static bool post(const Poster &poster, CSint *const *array, int n, const int *values, CSint *const *counts, int m,
                 bool closed) {
  Posting posting{poster};
  if (!posting) return false;
  CardinalityDomain record{{}, copyVariables(array, n), n, closed, {}, {}};
  if (!record.vars || !record.classes.build(values, counts, m)) return false;
  record.flow = Flow(n, record.classes.classes());
  if (!record.flow) return false;
  auto c = posting.add(kTable, std::move(record));
  for (int i = 0; posting && i < n; ++i) c.attach(c->vars[i], i);
  for (int j = 0; posting && j < m; ++j) c.attach(c->classes.count(j), n);
  return posting && runSoon(*c);
}

}  // namespace koru::counting

bool cs_CardinalityDomain(CSint **vars, int n, const int *values, CSint **counts, int m, bool closed) {
  return koru::leftOut("cs_CardinalityDomain") ||
         koru::door(koru::counting::post("cs_CardinalityDomain", vars, n, values, counts, m, closed));
}
