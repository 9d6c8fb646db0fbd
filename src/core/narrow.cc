// SPDX-License-Identifier: MIT
#include "core/narrow.h"

#include <bit>

#include "core/log.h"
#include "core/queue.h"
#include "core/trail.h"

namespace koru {

// The operations are leaf functions: what is rare, a full block of the trail, a domain of several words, an event that
// propagates at once, is somebody else's, to whom they jump with their own arguments. So they save no registers, which
// is a third of their instructions.

namespace {

// Gives the trail room for the record that the operation is about to push, and starts it anew.
template <bool (*narrow)(CSint *, int)>
[[gnu::noinline, gnu::cold]] bool withRoom(CSint *v, int value) {
  return solver::trail.makeRoom() && narrow(v, value);
}

// Who changes the variable; its maker need not hear of it.
enum class By { kAnyone, kMaker };

// Give the variable its new bound and element count and signal it. Deliberate: a bound past the other one fails and
// leaves the domain as it is; the bits run out before the count only when a count was written back too high. A maker is
// told of a bound that lies past the one it asked for.
template <By by>
[[gnu::always_inline]] inline bool moveMin(CSint *v, int asked, int min, int count) {
  if (min > v->max) return false;
  v->min = min;
  v->count = count;
  const EventCode code = isInstantiated(v) ? kMinBound : kNewMin;
  return by == By::kMaker && min == asked ? signalByMaker(v, code, min) : signal(v, code, min);
}

template <By by>
[[gnu::always_inline]] inline bool moveMax(CSint *v, int asked, int max, int count) {
  if (max < v->min) return false;
  v->max = max;
  v->count = count;
  const EventCode code = isInstantiated(v) ? kMaxBound : kNewMax;
  return by == By::kMaker && max == asked ? signalByMaker(v, code, max) : signal(v, code, max);
}

// Whoever asks hears of it.
[[gnu::always_inline]] inline bool moveMin(CSint *v, int min, int count) {
  return moveMin<By::kAnyone>(v, min, min, count);
}
[[gnu::always_inline]] inline bool moveMax(CSint *v, int max, int count) {
  return moveMax<By::kAnyone>(v, max, max, count);
}

// ----- among holes, whose bits are one word or several

bool needsBits(const CSint *v) { return v->bits != nullptr && hasHoles(v); }

int lowest(const DomainBits *bits, std::uint64_t word) {
  return wrap(std::int64_t{bits->low} + std::countr_zero(word));
}
int highest(const DomainBits *bits, std::uint64_t word) {
  return wrap(std::int64_t{bits->low} + 63 - std::countl_zero(word));
}

// The first (last) value of the domain from this one on (down to this one).
int firstFrom(const DomainBits *bits, int value) {
  const std::uint64_t word = bits->upwardsFrom(value);
  return word != 0 ? value + std::countr_zero(word) : nextPresent(bits, value);
}
int lastUpTo(const DomainBits *bits, int value) {
  const std::uint64_t word = bits->downwardsFrom(value);
  return word != 0 ? value - std::countl_zero(word) : previousPresent(bits, value);
}

template <By by>
[[gnu::noinline]] bool raiseMinByWords(CSint *v, int bound) {
  const int count = wrapSub(v->count, countWithin(v->bits, v->min, bound - 1));
  return moveMin<by>(v, bound, firstFrom(v->bits, bound), count);
}

template <By by>
[[gnu::noinline]] bool lowerMaxByWords(CSint *v, int bound) {
  const int count = wrapSub(v->count, countWithin(v->bits, bound + 1, v->max));
  return moveMax<by>(v, bound, lastUpTo(v->bits, bound), count);
}

template <By by>
[[gnu::always_inline]] inline bool raiseMinAmongHoles(CSint *v, int bound) {
  const DomainBits *bits = v->bits;
  if (!has(v, kEasy)) return raiseMinByWords<by>(v, bound);
  const std::uint64_t kept = bits->onlyWordFrom(bound);
  const int gone = countByInstruction(bits->onlyWordFrom(v->min) ^ kept);
  return moveMin<by>(v, bound, lowest(bits, kept), wrapSub(v->count, gone));
}

template <By by>
[[gnu::always_inline]] inline bool lowerMaxAmongHoles(CSint *v, int bound) {
  const DomainBits *bits = v->bits;
  if (!has(v, kEasy)) return lowerMaxByWords<by>(v, bound);
  const std::uint64_t kept = bits->onlyWordUpTo(bound);
  const int gone = countByInstruction(bits->onlyWordUpTo(v->max) ^ kept);
  return moveMax<by>(v, bound, highest(bits, kept), wrapSub(v->count, gone));
}

// One value less, which needs no counting.
[[gnu::noinline]] bool removeMinByWords(CSint *v) {
  return moveMin(v, firstFrom(v->bits, v->min + 1), wrapSub(v->count, 1));
}

[[gnu::noinline]] bool removeMaxByWords(CSint *v) {
  return moveMax(v, lastUpTo(v->bits, v->max - 1), wrapSub(v->count, 1));
}

[[gnu::always_inline]] inline bool removeMinAmongHoles(CSint *v) {
  const DomainBits *bits = v->bits;
  if (!has(v, kEasy)) return removeMinByWords(v);
  return moveMin(v, lowest(bits, bits->onlyWordFrom(v->min + 1)), wrapSub(v->count, 1));
}

[[gnu::always_inline]] inline bool removeMaxAmongHoles(CSint *v) {
  const DomainBits *bits = v->bits;
  if (!has(v, kEasy)) return removeMaxByWords(v);
  return moveMax(v, highest(bits, bits->onlyWordUpTo(v->max - 1)), wrapSub(v->count, 1));
}

// ----- the removal of a value that is there: at a bound, or inside

[[gnu::always_inline]] inline bool removeMin(CSint *v) {
  solver::trail.noteMin(v);
  if (needsBits(v)) return removeMinAmongHoles(v);
  return moveMin<By::kAnyone>(v, v->min + 1, v->min + 1, wrapSub(v->max, v->min));
}

[[gnu::always_inline]] inline bool removeMax(CSint *v) {
  solver::trail.noteMax(v);
  if (needsBits(v)) return removeMaxAmongHoles(v);
  return moveMax<By::kAnyone>(v, v->max - 1, v->max - 1, wrapSub(v->max, v->min));
}

template <By by>
[[gnu::always_inline]] inline bool clearBit(CSint *v, int value) {
  v->bits->clear(value);
  v->count = wrapSub(v->count, 1);
  return by == By::kMaker ? signalRemovedByMaker(v, value) : signalRemoved(v, value);
}

// For the first hole: an interval's bits, over all that the variable ever held.
bool makeBits(CSint *v) {
  setBits(v, DomainBits::create(v->initialMin, v->initialMax, DomainBits::Fill::kAll));
  return v->bits != nullptr;
}

template <By by>
[[gnu::noinline]] bool makeBitsAndClear(CSint *v, int value) {
  return makeBits(v) && clearBit<by>(v, value);
}

template <By by>
[[gnu::always_inline]] inline bool removeInner(CSint *v, int value) {
  solver::trail.noteRemoved(v, value);
  return v->bits != nullptr ? clearBit<by>(v, value) : makeBitsAndClear<by>(v, value);
}

// Deliberate: both tests for the last value, since a count may have been written back too high.
template <By by, bool (*again)(CSint *, int)>
[[gnu::always_inline]] inline bool take(CSint *v, int value) {
  if (isInstantiated(v) || isBound(v)) return false;
  if (!solver::trail.hasRoom()) [[unlikely]]
    return withRoom<again>(v, value);
  if (value == v->min) return removeMin(v);
  if (value == v->max) return removeMax(v);
  return removeInner<by>(v, value);
}

template <By by>
bool takeHeld(CSint *v, int value) {
  return take<by, takeHeld<by>>(v, value);
}

// ----- bounds, from the record on

template <By by, bool (*again)(CSint *, int)>
[[gnu::always_inline]] inline bool raise(CSint *v, int bound) {
  if (!solver::trail.hasRoom()) [[unlikely]]
    return withRoom<again>(v, bound);
  if constexpr (kLogging) logChange("raise minimum of", v, "to", bound);
  solver::trail.noteMin(v);
  return needsBits(v) ? raiseMinAmongHoles<by>(v, bound) : moveMin<by>(v, bound, bound, rangeSize(bound, v->max));
}

template <By by, bool (*again)(CSint *, int)>
[[gnu::always_inline]] inline bool lower(CSint *v, int bound) {
  if (!solver::trail.hasRoom()) [[unlikely]]
    return withRoom<again>(v, bound);
  if constexpr (kLogging) logChange("lower maximum of", v, "to", bound);
  solver::trail.noteMax(v);
  return needsBits(v) ? lowerMaxAmongHoles<by>(v, bound) : moveMax<by>(v, bound, bound, rangeSize(v->min, bound));
}

// ----- the binding to a value that is there

[[gnu::always_inline]] inline bool settle(CSint *v, EventCode code, int value) {
  v->min = v->max = value;
  v->count = 1;
  return signal(v, code, value);
}

[[gnu::noinline, gnu::cold]] bool bindInnerByParts(CSint *v, int value) {
  if (!solver::trail.makeRoom()) return false;
  solver::trail.noteMin(v);
  if (!solver::trail.makeRoom()) return false;
  solver::trail.noteMax(v);
  return settle(v, kBound, value);
}

[[gnu::always_inline]] inline bool bindInner(CSint *v, int value) {
  if (!solver::trail.hasRoomFor(2)) [[unlikely]]
    return bindInnerByParts(v, value);
  solver::trail.noteMin(v);
  solver::trail.noteMax(v);
  return settle(v, kBound, value);
}

bool bindHeld(CSint *v, int value) {
  if (value != v->max && value != v->min) return bindInner(v, value);
  if (!solver::trail.hasRoom()) [[unlikely]]
    return withRoom<bindHeld>(v, value);
  if (value == v->max) {
    solver::trail.noteMin(v);
    return settle(v, kMinBound, value);
  }
  solver::trail.noteMax(v);
  return settle(v, kMaxBound, value);
}

}  // namespace

bool raiseMin(CSint *v, int bound) { return raise<By::kAnyone, raiseMin>(v, bound); }
bool lowerMax(CSint *v, int bound) { return lower<By::kAnyone, lowerMax>(v, bound); }

// Flattened, lest the question who else hears becomes a call.
[[gnu::flatten]] bool raiseMinByMaker(CSint *v, int bound) { return raise<By::kMaker, raiseMinByMaker>(v, bound); }
[[gnu::flatten]] bool lowerMaxByMaker(CSint *v, int bound) { return lower<By::kMaker, lowerMaxByMaker>(v, bound); }

bool bindFree(CSint *v, int value) {
  if constexpr (kLogging) logChange("bind", v, "to", value);
  if (v->bits != nullptr && !v->bits->has(value)) return false;
  return bindHeld(v, value);
}

bool removeInside(CSint *v, int value) {
  if constexpr (kLogging) logChange("narrow", v, "without", value);
  if (v->bits != nullptr && !v->bits->has(value)) return !isInstantiated(v) && !isBound(v);
  return take<By::kAnyone, takeHeld<By::kAnyone>>(v, value);
}

bool removeHeld(CSint *v, int value) {
  if constexpr (kLogging) logChange("narrow", v, "without", value);
  return takeHeld<By::kAnyone>(v, value);
}

bool removeHeldByMaker(CSint *v, int value) {
  if constexpr (kLogging) logChange("narrow", v, "without", value);
  return takeHeld<By::kMaker>(v, value);
}

bool removeValueNoTrail(CSint *v, int value) {
  if (!contains(v, value)) return true;
  if (value == v->min) {
    v->min = valueAfter(v, value);
  } else if (value == v->max) {
    v->max = valueBefore(v, value);
  } else {
    if (v->bits == nullptr && !makeBits(v)) return false;
    v->bits->clear(value);
  }
  v->count = wrapSub(v->count, 1);
  return true;
}

}  // namespace koru
