// SPDX-License-Identifier: MIT
// cs_Clause, cs_ReifClause, cs_ClauseIff, cs_ClauseIf: at least one of the literals is true; b says so, or asks for it.
// Consistency: domain, which for a clause is unit propagation.
// Cost: an event calls the handler of every clause in which it makes a literal false, watched or not, because entries
// cannot be moved from variable to variable: one look at a bound, or two. A watched one that is lost is replaced in a
// walk that goes on from where it stood (Gent, Jefferson, Miguel 2006; Gent 2013).
// State: the two literals watched, not false unless the other one is true. Not trailed: after a restore they are no
// worse than before.
// Wakes: when a literal becomes false; with b, also when one becomes true and when b becomes false.
// Deliberate: an event of a literal that is not watched looks at the first watched one all the same: where a
// propagation has failed and nobody has restored, its own event may never have come.
#include <utility>

#include "constraints/logic/literals.h"
#include "core/post.h"
#include "koru_extras.h"

namespace koru::clause {

struct Clause {
  Literals literals;
  int first;
  int second;
};

// The other direction: every literal that is true makes b true.
struct Implied {
  Literals literals;
  CSint *b;
};

// ----- rules

// The literal at `watch`, if it is false, gives way to another one; failing that, the other watched one must be true.
static bool replace(const Literals &literals, int &watch, int other) {
  if (!literals.isFalse(watch) || literals.isTrue(other)) return true;
  for (int i = watch + 1 < literals.count() ? watch + 1 : 0; i != watch; i = i + 1 < literals.count() ? i + 1 : 0) {
    if (i == other || literals.isFalse(i)) continue;
    watch = i;
    return true;
  }
  return literals.makeTrue(other);
}

static bool replaceFirst(Clause &c) { return replace(c.literals, c.first, c.second); }
static bool replaceSecond(Clause &c) { return replace(c.literals, c.second, c.first); }

static bool makeAllFalse(const Literals &literals) {
  for (int i = 0; i < literals.count(); ++i)
    if (!literals.makeFalse(i)) return false;
  return true;
}

static bool proveFrom(const Implied &c, int i) { return !c.literals.isTrue(i) || truth::makeTrue(c.b); }

static bool filter(const Implied &c) {
  for (int i = 0; i < c.literals.count(); ++i)
    if (!proveFrom(c, i)) return false;
  return !truth::isFalse(c.b) || makeAllFalse(c.literals);
}

// ----- handlers

static bool lost(Clause &c, const Event &e) { return e.index == c.second ? replaceSecond(c) : replaceFirst(c); }

constexpr auto kClauseTable = handlers<Clause>(
    {.newMin = on<lost>, .newMax = on<lost>, .minBound = on<lost>, .maxBound = on<lost>, .bound = on<lost>});

static bool changed(Implied &c, const Event &e) {
  if (e.index < c.literals.count()) return proveFrom(c, e.index);
  return !truth::isFalse(c.b) || makeAllFalse(c.literals);
}

constexpr auto kImpliedTable = handlers<Implied>({.newMin = on<changed>,
                                                  .newMax = on<changed>,
                                                  .minBound = on<changed>,
                                                  .maxBound = on<changed>,
                                                  .bound = on<changed>});

// ----- posting

static bool postClause(Posting &posting, Literals literals) {
  if (!posting || !literals) return false;
  if (literals.alwaysHold()) return true;
  const int n = literals.count();
  if (n == 0) return false;
  auto c = posting.add(kClauseTable, Clause{std::move(literals), 0, n - 1});
  for (int i = 0; posting && i < n; ++i) c.attach(c->literals.variable(i), i, c->literals.becomesFalse(i));
  if (posting && n == 1) return c->literals.makeTrue(0);
  return posting && replaceFirst(*c) && replaceSecond(*c);
}

static bool postImplied(Posting &posting, Literals literals, CSint *b) {
  if (!posting || !literals) return false;
  if (literals.alwaysHold()) return truth::makeTrue(b);
  const int n = literals.count();
  auto c = posting.add(kImpliedTable, Implied{std::move(literals), b});
  for (int i = 0; posting && i < n; ++i) c.attach(c->literals.variable(i), i, c->literals.becomesTrue(i));
  c.attach(b, n, truth::kBecomesFalse);
  return posting && filter(*c);
}

static bool post(const Poster &poster, const ClauseArrays &arrays) {
  Posting posting{poster};
  return posting && postClause(posting, Literals(arrays, nullptr));
}

static bool postIf(const Poster &poster, CSint *b, const ClauseArrays &arrays) {
  if (b == nullptr) return false;
  Posting posting{poster};
  return posting && postClause(posting, Literals(arrays, b));
}

static bool postIff(Posting &posting, CSint *b, const ClauseArrays &arrays, Literals literals) {
  return postImplied(posting, std::move(literals), b) && postClause(posting, Literals(arrays, b));
}

static bool postIff(const Poster &poster, CSint *b, const ClauseArrays &arrays) {
  if (b == nullptr) return false;
  Posting posting{poster};
  return posting && postIff(posting, b, arrays, Literals(arrays, nullptr));
}

static CSint *reify(const Poster &poster, const ClauseArrays &arrays) {
  Posting posting{poster};
  if (!posting) return nullptr;
  Literals literals(arrays, nullptr);
  if (!literals) return nullptr;
  CSint *b = createVariable(0, 1);
  return b != nullptr && postIff(posting, b, arrays, std::move(literals)) ? b : nullptr;
}

}  // namespace koru::clause

using koru::door;
using koru::leftOut;
using namespace koru::clause;

bool cs_Clause(CSint **pos, int p, CSint **neg, int q) {
  return leftOut("cs_Clause") || door(post("cs_Clause", {pos, p, neg, q}));
}
CSint *cs_ReifClause(CSint **pos, int p, CSint **neg, int q) { return door(reify("cs_ReifClause", {pos, p, neg, q})); }
bool cs_ClauseIff(CSint *b, CSint **pos, int p, CSint **neg, int q) {
  return leftOut("cs_ClauseIff") || door(postIff("cs_ClauseIff", b, {pos, p, neg, q}));
}
bool cs_ClauseIf(CSint *b, CSint **pos, int p, CSint **neg, int q) {
  return leftOut("cs_ClauseIf") || door(postIf("cs_ClauseIf", b, {pos, p, neg, q}));
}
