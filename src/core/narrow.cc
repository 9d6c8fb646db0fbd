// SPDX-License-Identifier: MIT
#include "core/narrow.h"

#include "core/log.h"
#include "core/solver.h"

namespace koru {

namespace {

bool needsBits(const CSint *v) { return v->bits != nullptr && hasHoles(v); }

bool makeBits(CSint *v) {
  if (v->bits == nullptr) v->bits = DomainBits::create(v->initialMin, v->initialMax, DomainBits::Fill::kAll);
  return v->bits != nullptr;
}

bool signalMin(CSint *v) { return signal(v, isInstantiated(v) ? kMinBound : kNewMin, v->min); }
bool signalMax(CSint *v) { return signal(v, isInstantiated(v) ? kMaxBound : kNewMax, v->max); }

bool removeMin(CSint *v) {
  if (!solver.trail.noteMin(v)) return false;
  if (needsBits(v)) {
    v->count = wrapSub(v->count, 1);
    v->min = nextPresent(v->bits, v->min);
  } else {
    v->count = wrapSub(v->max, v->min);
    v->min = v->min + 1;
  }
  return signalMin(v);
}

bool removeMax(CSint *v) {
  if (!solver.trail.noteMax(v)) return false;
  if (needsBits(v)) {
    v->count = wrapSub(v->count, 1);
    v->max = previousPresent(v->bits, v->max);
  } else {
    v->count = wrapSub(v->max, v->min);
    v->max = v->max - 1;
  }
  return signalMax(v);
}

bool removeInner(CSint *v, int value) {
  if (!solver.trail.noteRemoved(v, value) || !makeBits(v)) return false;
  v->bits->clear(value);
  v->count = wrapSub(v->count, 1);
  return signal(v, kRemoved, value);
}

}  // namespace

bool raiseMin(CSint *v, int bound) {
  if constexpr (kLogging) logChange("raise minimum", v, bound);
  if (!solver.trail.noteMin(v)) return false;
  if (needsBits(v)) {
    v->count = wrapSub(v->count, wrap(countPresent(v->bits, v->min, bound - 1)));
    v->min = v->bits->has(bound) ? bound : nextPresent(v->bits, bound);
  } else {
    v->count = rangeSize(bound, v->max);
    v->min = bound;
  }
  return signalMin(v);
}

bool lowerMax(CSint *v, int bound) {
  if constexpr (kLogging) logChange("lower maximum", v, bound);
  if (!solver.trail.noteMax(v)) return false;
  if (needsBits(v)) {
    v->count = wrapSub(v->count, wrap(countPresent(v->bits, bound + 1, v->max)));
    v->max = v->bits->has(bound) ? bound : previousPresent(v->bits, bound);
  } else {
    v->count = rangeSize(v->min, bound);
    v->max = bound;
  }
  return signalMax(v);
}

bool bindFree(CSint *v, int value) {
  if constexpr (kLogging) logChange("bind", v, value);
  if (v->bits != nullptr && !v->bits->has(value)) return false;
  EventCode code = kBound;
  if (value == v->max) {
    if (!solver.trail.noteMin(v)) return false;
    code = kMinBound;
  } else if (value == v->min) {
    if (!solver.trail.noteMax(v)) return false;
    code = kMaxBound;
  } else if (!solver.trail.noteMin(v) || !solver.trail.noteMax(v)) {
    return false;
  }
  v->min = v->max = value;
  v->count = 1;
  return signal(v, code, value);
}

// Deliberate: both tests for the last value, since a count may have been written back too high.
bool removeInside(CSint *v, int value) {
  if constexpr (kLogging) logChange("remove", v, value);
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
