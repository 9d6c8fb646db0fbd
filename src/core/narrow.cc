// SPDX-License-Identifier: MIT
#include "core/narrow.h"

#include "core/log.h"
#include "core/queue.h"
#include "core/trail.h"

namespace koru {

namespace {

bool needsBits(const CSint *v) { return v->bits != nullptr && hasHoles(v); }

bool makeBits(CSint *v) {
  if (v->bits == nullptr) v->bits = DomainBits::create(v->initialMin, v->initialMax, DomainBits::Fill::kAll);
  return v->bits != nullptr;
}

// Give the variable its new bound and element count and signal it. Deliberate: a bound past the other one fails and
// leaves the domain as it is; the bits run out before the count only when a count was written back too high.
bool moveMin(CSint *v, int min, int count) {
  if (min > v->max) return false;
  v->min = min;
  v->count = count;
  return signal(v, isInstantiated(v) ? kMinBound : kNewMin, min);
}

bool moveMax(CSint *v, int max, int count) {
  if (max < v->min) return false;
  v->max = max;
  v->count = count;
  return signal(v, isInstantiated(v) ? kMaxBound : kNewMax, max);
}

bool removeMin(CSint *v) {
  if (!solver::trail.noteMin(v)) return false;
  if (needsBits(v)) return moveMin(v, nextPresent(v->bits, v->min), wrapSub(v->count, 1));
  return moveMin(v, v->min + 1, wrapSub(v->max, v->min));
}

bool removeMax(CSint *v) {
  if (!solver::trail.noteMax(v)) return false;
  if (needsBits(v)) return moveMax(v, previousPresent(v->bits, v->max), wrapSub(v->count, 1));
  return moveMax(v, v->max - 1, wrapSub(v->max, v->min));
}

bool removeInner(CSint *v, int value) {
  if (!solver::trail.noteRemoved(v, value) || !makeBits(v)) return false;
  v->bits->clear(value);
  v->count = wrapSub(v->count, 1);
  return signalRemoved(v, value);
}

}  // namespace

bool raiseMin(CSint *v, int bound) {
  if constexpr (kLogging) logChange("raise minimum of", v, "to", bound);
  if (!solver::trail.noteMin(v)) return false;
  if (!needsBits(v)) return moveMin(v, bound, rangeSize(bound, v->max));
  const int count = wrapSub(v->count, wrap(countPresent(v->bits, v->min, bound - 1)));
  return moveMin(v, v->bits->has(bound) ? bound : nextPresent(v->bits, bound), count);
}

bool lowerMax(CSint *v, int bound) {
  if constexpr (kLogging) logChange("lower maximum of", v, "to", bound);
  if (!solver::trail.noteMax(v)) return false;
  if (!needsBits(v)) return moveMax(v, bound, rangeSize(v->min, bound));
  const int count = wrapSub(v->count, wrap(countPresent(v->bits, bound + 1, v->max)));
  return moveMax(v, v->bits->has(bound) ? bound : previousPresent(v->bits, bound), count);
}

bool bindFree(CSint *v, int value) {
  if constexpr (kLogging) logChange("bind", v, "to", value);
  if (v->bits != nullptr && !v->bits->has(value)) return false;
  EventCode code = kBound;
  if (value == v->max) {
    if (!solver::trail.noteMin(v)) return false;
    code = kMinBound;
  } else if (value == v->min) {
    if (!solver::trail.noteMax(v)) return false;
    code = kMaxBound;
  } else if (!solver::trail.noteMin(v) || !solver::trail.noteMax(v)) {
    return false;
  }
  v->min = v->max = value;
  v->count = 1;
  return signal(v, code, value);
}

// Deliberate: both tests for the last value, since a count may have been written back too high.
bool removeInside(CSint *v, int value) {
  if constexpr (kLogging) logChange("narrow", v, "without", value);
  if (isInstantiated(v) || isBound(v)) return false;
  if (v->bits != nullptr && !v->bits->has(value)) return true;
  if (value == v->min) return removeMin(v);
  if (value == v->max) return removeMax(v);
  return removeInner(v, value);
}

bool removeValueNoTrail(CSint *v, int value) {
  if (!contains(v, value)) return true;
  if (value == v->min) {
    v->min = valueAfter(v, value);
  } else if (value == v->max) {
    v->max = valueBefore(v, value);
  } else {
    if (!makeBits(v)) return false;
    v->bits->clear(value);
  }
  v->count = wrapSub(v->count, 1);
  return true;
}

}  // namespace koru
