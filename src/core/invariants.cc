// SPDX-License-Identifier: MIT
#include "core/invariants.h"

#include "core/build_mode.h"

#if defined(KORU_CHECKED) && KORU_CHECKED

#include "core/check.h"
#include "core/context_stack.h"
#include "core/create.h"
#include "core/queue.h"
#include "core/trail.h"

// GCOVR_EXCL_START: the tests' own checks, whose other branches end the process uncounted
namespace koru::check {

namespace {

void checkBits(const CSint &v) {
  require(v.bits->low <= v.min && v.max <= v.bits->high, "bits cover the bounds");
  if (solver::checked.countsMayLag) return;
  require(v.bits->has(v.min) && v.bits->has(v.max), "the bounds are present in the bits");
  require(wrap(countPresent(v.bits, v.min, v.max)) == v.count, "the element count is the number of bits set");
}

void checkDomain(const CSint &v) {
  require(v.initialMin <= v.min && v.min <= v.max && v.max <= v.initialMax, "bounds are in order");
  if (v.bits != nullptr) return checkBits(v);
  require(!hasHoles(&v) || solver::checked.countsMayLag, "an interval's element count is its size");
}

void checkEntries(const Entry *entry) {
  for (; entry != nullptr; entry = entry->next) {
    const int older = entry->next != nullptr ? entry->next->heardFromHere() : 0;
    require(entry->heardByOlder == older, "what a list hears is what its entries hear");
  }
}

template <class Visit>
void forEachEntry(Visit visit) {
  solver::variables.forEach([&](CSint &v) {
    for (Entry *entry = v.constraints; entry != nullptr; entry = entry->next) visit(*entry);
  });
}

// Takes every entry's reference away, looks at what is left, and puts them back: no memory needed.
void checkReferences() {
  forEachEntry([](Entry &entry) { --entry.constraint->references; });
  forEachEntry([](Entry &entry) {
    const int others = entry.constraint->references;
    require(others >= 0, "a constraint has a reference for each of its entries");
    require(others == 0 || solver::checked.posters > 0, "nothing but entries refers to a constraint");
    require(entry.constraint->site->references > 0, "a constraint's site is referred to");
  });
  forEachEntry([](Entry &entry) { ++entry.constraint->references; });
}

void checkContexts() {
  int previous = 0;
  solver::contexts.forEach([&](const ContextMark &mark) {
    require(previous <= mark.trailMark, "trail marks ascend");
    previous = mark.trailMark;
  });
  require(previous <= solver::trail.count(), "trail marks lie on the trail");
}

}  // namespace

void walkWhenIdle() {
  if (solver::queue.depth != 0 || --solver::checked.untilNext > 0) return;
  solver::checked.untilNext = solver::checked.period;
  require(!solver::agenda.due(), "nobody waits outside propagation");
  require(solver::events.empty(), "the queue is empty outside propagation");
  require(solver::graveyard == nullptr, "no detached entry waits outside propagation");
  require(solver::variables.sound() && solver::trail.sound() && solver::contexts.sound(),
          "block bases follow one another");
  solver::variables.forEach([](const CSint &v) {
    checkDomain(v);
    checkEntries(v.constraints);
  });
  checkReferences();
  checkContexts();
}

}  // namespace koru::check
// GCOVR_EXCL_STOP

#endif
