// SPDX-License-Identifier: MIT
// cs_LexLe, cs_LexLt: an array comes before another one, or is equal to it, in the order of dictionaries (Frisch,
// Hnich, Kiziltan, Miguel, Walsh, Global constraints for lexicographic orderings, 2002).
// Consistency: domain, a variable in two places being two with one domain.  Cost: O(1) per event, a run of O(n).
// State: two positions. `first` is the first where the arrays may differ; it is trailed, and looked for anew where it
// may be ahead of the domains. `support` is not trailed: see there.
// Wakes: when the minimum in the first array or the maximum in the second one moves, or either is bound.
// Deliberate: the same variable at the same place of both arrays is equal there, bound or not, so that no strict order
// is sought in it, value by value.
#include "core/post.h"
#include "core/reversible.h"
#include "koru_extras.h"

namespace koru::lex {

struct Lex : Deferred {
  Buffer<CSint *> x;
  Buffer<CSint *> y;
  int n;
  bool strict;
  int support;  // nothing beyond matters: here x may be less than y, as it may after a restore; n where that is nowhere
  ReversibleWord first{};
  Lockstep firstFollows{};
};

// ----- rules

static bool equalAt(const Lex &c, int i) {
  const CSint *x = c.x[i];
  const CSint *y = c.y[i];
  return x == y || (isBound(x) && isBound(y) && valueOf(x) == valueOf(y));
}

// Whether the arrays may be in order from `i` on. Up to the first place where x can be less than y, they can at most be
// equal.
static bool mayFollow(Lex &c, int i) {
  c.support = c.n;
  for (; i < c.n; ++i) {
    const int least = c.x[i]->min;
    const int greatest = c.y[i]->max;
    if (least == greatest || c.x[i] == c.y[i]) continue;
    if (least < greatest) c.support = i;
    return least < greatest;
  }
  return !c.strict;
}

// All before `i` is equal.
static bool orderAt(Lex &c, int i) {
  const int gap = mayFollow(c, i + 1) ? 0 : 1;
  return narrowMax64(c.x[i], std::int64_t{c.y[i]->max} - gap) && narrowMin64(c.y[i], std::int64_t{c.x[i]->min} + gap);
}

static bool filter(Lex &c) {
  int first = c.firstFollows.kept() ? c.first.number() : 0;
  for (; first < c.n; ++first) {
    if (equalAt(c, first)) continue;
    if (!orderAt(c, first)) return false;
    if (!equalAt(c, first)) break;
  }
  if (first == c.n && c.strict) return false;
  if (!c.first.setNumber(first, WordStamp::now())) return false;
  c.firstFollows.note();
  return true;
}

// ----- handlers

static bool changed(Lex &c, const Event &e) { return e.index > c.support || ask(c); }

constexpr auto kTable = handlers<Lex>({.newMin = on<changed>,
                                       .newMax = on<changed>,
                                       .minBound = on<changed>,
                                       .maxBound = on<changed>,
                                       .bound = on<changed>},
                                      runs<filter>(Rank::kLinear));

// ----- posting

static bool post(const Poster &poster, CSint **x, CSint **y, int n, bool strict) {
  Buffer<CSint *> copyOfX = copyVariables(x, n);
  if (!copyOfX) return false;
  Buffer<CSint *> copyOfY = copyVariables(y, n);
  if (!copyOfY) return false;
  Posting posting{poster};
  if (!posting) return false;
  if (n == 0) return !strict;
  Lex record{{}, std::move(copyOfX), std::move(copyOfY), n, strict, n};
  record.first.init(0);
  auto c = posting.add(kTable, std::move(record));
  for (int i = 0; i < n; ++i) {
    c.attach(x[i], i, events(kNewMin, kMinBound, kMaxBound, kBound));
    c.attach(y[i], i, events(kNewMax, kMinBound, kMaxBound, kBound));
  }
  return posting && runSoon(*c);
}

}  // namespace koru::lex

using koru::door;
using koru::leftOut;
using namespace koru::lex;

bool cs_LexLe(CSint **x, CSint **y, int n) { return leftOut("cs_LexLe") || door(post("cs_LexLe", x, y, n, false)); }
bool cs_LexLt(CSint **x, CSint **y, int n) { return leftOut("cs_LexLt") || door(post("cs_LexLt", x, y, n, true)); }
