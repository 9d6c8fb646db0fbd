// SPDX-License-Identifier: MIT
// cs_PrecedenceIf: b => start + duration + delay <= next.
// Consistency: domain, for which bounds suffice.  Cost: O(1) per event.  State: none.
// Wakes: when b becomes true, start or duration grows, next falls; each time all bounds are looked at.
#include "constraints/scheduling/tasks.h"
#include "koru_extras.h"

namespace koru::scheduling {

struct Precedence {
  CSint *b;  // null: always
  CSint *start;
  CSint *duration;
  int delay;
  CSint *next;
};

static bool filter(Precedence &c) {
  if (c.b == nullptr || truth::isTrue(c.b)) return precede(c.start, c.duration, c.delay, c.next);
  const Time earliest = Time{c.start->min} + c.duration->min + c.delay;
  return earliest <= c.next->max || truth::makeFalse(c.b);
}

static bool changed(Precedence &c, const Event &) { return filter(c); }

constexpr auto kTable = handlers<Precedence>({.newMin = on<changed>,
                                              .newMax = on<changed>,
                                              .minBound = on<changed>,
                                              .maxBound = on<changed>,
                                              .bound = on<changed>});

static bool post(const Poster &poster, const Precedence &given) {
  if (given.start == nullptr || given.duration == nullptr || given.next == nullptr) return false;
  Posting posting{poster};
  auto c = posting.add(kTable, given);
  if (given.b != nullptr) c.attach(given.b, -1, kMinRises);
  c.attach(given.start, -1, kMinRises);
  c.attach(given.duration, -1, kMinRises);
  c.attach(given.next, -1, kMaxFalls);
  return posting && filter(*c);
}

}  // namespace koru::scheduling

bool cs_PrecedenceIf(CSint *b, CSint *start, CSint *duration, int delay, CSint *next) {
  return koru::leftOut("cs_PrecedenceIf") ||
         koru::door(koru::scheduling::post("cs_PrecedenceIf", {b, start, duration, delay, next}));
}
