// SPDX-License-Identifier: MIT
// cs_EitherBefore: b => a task ends before another one starts; not b => it is the other way round, and both are there.
// When one of them is not there, b holds.
// Consistency: acts when only one of the two orders is possible, or it is known which one it is; then domain.
// Cost: O(1) per event.  State: none.
// Wakes: when a bound of a start or truth value moves, or a duration grows.
#include "constraints/scheduling/tasks.h"
#include "koru_extras.h"

namespace koru::scheduling {

namespace {

struct One {
  CSint *start;
  CSint *duration;
  CSint *present;  // null: it is there

  bool isGiven() const { return start != nullptr && duration != nullptr; }
  bool isIn() const { return present == nullptr || truth::isTrue(present); }
  bool isOut() const { return present != nullptr && truth::isFalse(present); }
  bool takeIn() const { return isIn() || truth::makeTrue(present); }
};

struct Either {
  CSint *b;
  One first;
  One second;
};

bool mayPrecede(const One &a, const One &b) { return Time{a.start->min} + a.duration->min <= b.start->max; }

bool order(const One &a, const One &b) { return precede(a.start, a.duration, 0, b.start); }

bool secondFirst(const Either &c) {
  return truth::makeFalse(c.b) && c.first.takeIn() && c.second.takeIn() && order(c.second, c.first);
}

// There is no room for both.
bool leaveOneOut(const Either &c) {
  if (c.first.isIn()) return truth::makeFalse(c.second.present);
  return !c.second.isIn() || truth::makeFalse(c.first.present);
}

bool filter(Either &c) {
  if (c.first.isOut() || c.second.isOut()) return truth::makeTrue(c.b);
  if (truth::isFalse(c.b)) return secondFirst(c);
  if (!mayPrecede(c.second, c.first) && !truth::makeTrue(c.b)) return false;
  const bool known = truth::isTrue(c.b);
  const bool bothIn = c.first.isIn() && c.second.isIn();
  if (known && bothIn) return order(c.first, c.second);
  if (mayPrecede(c.first, c.second)) return true;
  if (bothIn) return secondFirst(c);
  return !known || leaveOneOut(c);
}

bool changed(Either &c, const Event &) { return filter(c); }

constexpr auto kTable = handlers<Either>({.newMin = on<changed>,
                                          .newMax = on<changed>,
                                          .minBound = on<changed>,
                                          .maxBound = on<changed>,
                                          .bound = on<changed>});

bool post(const Poster &poster, const Either &given) {
  if (given.b == nullptr || !given.first.isGiven() || !given.second.isGiven()) return false;
  if ((given.first.present == nullptr) != (given.second.present == nullptr)) return false;
  Posting posting{poster};
  auto c = posting.add(kTable, given);
  c.attach(given.b, -1, kBoundsMove);
  for (const One &task : {given.first, given.second}) {
    c.attach(task.start, -1, kBoundsMove);
    c.attach(task.duration, -1, kMinRises);
    if (task.present != nullptr) c.attach(task.present, -1, kBoundsMove);
  }
  return posting && filter(*c);
}

}  // namespace
}  // namespace koru::scheduling

bool cs_EitherBefore(CSint *b, CSint *start, CSint *duration, CSint *present, CSint *otherStart, CSint *otherDuration,
                     CSint *otherPresent) {
  return koru::leftOut("cs_EitherBefore") ||
         koru::door(koru::scheduling::post("cs_EitherBefore",
                                           {b, {start, duration, present}, {otherStart, otherDuration, otherPresent}}));
}
