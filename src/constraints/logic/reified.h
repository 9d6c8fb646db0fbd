// SPDX-License-Identifier: MIT
// Statements tied to a truth value b that the host already has, fully (b exactly when the statement holds) or in half
// (b only when it does): one constraint, attached to b and to what is compared.
//
// A Statement knows its mathematics, always from the domains as they are, so nothing depends on what was true when it
// was posted:
//   Outcome outcome();                    whether it can still go both ways
//   bool impose(bool holds);              narrows to it, or to its opposite
//   bool follow(bool holds);              the same, once that was done and a bound has moved since
//   bool followRemoval(bool holds, e);    and once an inner value has gone
#pragma once

#include "constraints/logic/truth.h"
#include "core/post.h"

namespace koru::reified {

enum class Outcome { kOpen, kHolds, kFails };

enum class Form : bool { kHalf, kFull };

// What b says: that the statement holds, or for `negated` that it does not.
struct Condition {
  CSint *b;
  Form form;
  bool negated = false;
};

template <class Statement>
struct Reified {
  Condition when;
  Statement statement;

  bool decided() const { return truth::isTrue(when.b) || truth::isFalse(when.b); }
  bool imposes() const { return when.form == Form::kFull || truth::isTrue(when.b); }
  bool saysHolds() const { return truth::isTrue(when.b) != when.negated; }
};

constexpr int kOfCondition = 2;  // the index of b; 0 and 1 are those of the variables compared

template <class Statement>
[[nodiscard]] bool decide(Reified<Statement> &c) {
  const Outcome outcome = c.statement.outcome();
  if (outcome == Outcome::kOpen) return true;
  if ((outcome == Outcome::kHolds) == c.when.negated) return truth::makeFalse(c.when.b);
  return c.when.form == Form::kHalf || truth::makeTrue(c.when.b);
}

template <class Statement>
[[nodiscard]] bool changed(Reified<Statement> &c, const Event &e) {
  if (!c.decided()) return decide(c);
  if (!c.imposes()) return true;
  return e.index == kOfCondition ? c.statement.impose(c.saysHolds()) : c.statement.follow(c.saysHolds());
}

template <class Statement>
[[nodiscard]] bool removed(Reified<Statement> &c, const Event &e) {
  if (e.index == kOfCondition) return true;
  if (!c.decided()) return decide(c);
  return !c.imposes() || c.statement.followRemoval(c.saysHolds(), e);
}

// For statements that bounds alone decide.
template <class Statement>
constexpr auto kBoundsTable = handlers<Reified<Statement>>({.newMin = on<changed<Statement>>,
                                                            .newMax = on<changed<Statement>>,
                                                            .minBound = on<changed<Statement>>,
                                                            .maxBound = on<changed<Statement>>,
                                                            .bound = on<changed<Statement>>});

template <class Statement>
constexpr auto kValuesTable = handlers<Reified<Statement>>({.newMin = on<changed<Statement>>,
                                                            .newMax = on<changed<Statement>>,
                                                            .minBound = on<changed<Statement>>,
                                                            .maxBound = on<changed<Statement>>,
                                                            .bound = on<changed<Statement>>,
                                                            .removed = on<removed<Statement>>});

// A variable compared, and the events of it that matter.
struct Compared {
  CSint *variable;
  std::uint8_t concerned = kHearsAnything;
};

constexpr std::uint8_t kIsBound = events(kMinBound, kMaxBound, kBound);

// b is known not to be null.
template <class Statement>
[[nodiscard]] bool post(const Poster &poster, const TableOf<Reified<Statement>> &table, const Condition &when,
                        Statement statement, const Compared &x, const Compared &y = {nullptr}) {
  Posting posting{poster};
  if (!posting) return false;
  auto c = posting.add(table, Reified<Statement>{when, std::move(statement)});
  c.attach(x.variable, 0, x.concerned);
  if (y.variable != nullptr) c.attach(y.variable, 1, y.concerned);
  c.attach(when.b, kOfCondition, when.form == Form::kHalf ? truth::kBecomesTrue : kHearsAnything);
  if (!posting) return false;
  if (!c->decided()) return decide(*c);
  return !c->imposes() || c->statement.impose(c->saysHolds());
}

}  // namespace koru::reified
