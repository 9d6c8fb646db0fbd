// SPDX-License-Identifier: MIT
// What an all-different does to a variable that holds the value of another one, while a search tries a value: the
// removal of core/narrow where all is as it mostly is, written out in one piece and without a jump for where the value
// lies, at the minimum, at the maximum or between, which the processor cannot foresee.
#pragma once

#include <bit>

#include "core/build_mode.h"
#include "core/queue.h"
#include "core/trail.h"

namespace koru {

// For so many removals: they only queue their events, and there is room for these and the records of the trail.
inline bool canTakeEasily(int count) {
  return !kLogging && solver::queue.trying && changesWait() && solver::trail.hasRoomFor(count) &&
         solver::events.hasRoomFor(count);
}

// Of an easy domain that holds the value, and a variable with constraints. False when it has no other.
[[gnu::always_inline]] inline bool takeEasily(CSint *v, int value) {
  if (isBound(v)) return false;
  const std::uint64_t word = v->bits->onlyWord();
  const std::uint32_t offset = v->bits->offset(value);
  const unsigned atMin = value == v->min ? 1 : 0;
  const unsigned atMax = value == v->max ? 1 : 0;
  const unsigned code = atMax + ((atMin + atMax - 1) & kRemoved);  // when several values are left
  solver::trail.noteTakenOfTrial(v, static_cast<TrailKind>(code), value);
  // How far off the next value above (below) is, where that is asked for.
  constexpr std::uint64_t kHighest = std::uint64_t{1} << 63;
  const int above = std::countr_zero((word >> offset ^ 1) | kHighest);
  const int below = std::countl_zero((word << (63 - offset) ^ kHighest) | 1);
  const int raised = above & -static_cast<int>(atMin);
  const int lowered = below & -static_cast<int>(atMax);
  v->bits->words()[0] = word ^ std::uint64_t{code >> 2} << offset;
  v->min += raised;
  v->max -= lowered;
  const int count = --v->count;
  const bool heard = (v->constraints->heardFromHere() & (events(kRemoved) | kHearsConflicts | kKeyed)) != 0;
  const unsigned codeNow = code + (count == 1 ? 2U : 0U);
  solver::events.pushIf(heard | (code != kRemoved),
                        {v, v->constraints, value + raised - lowered, static_cast<int>(codeNow)});
  return true;
}

}  // namespace koru
