// SPDX-License-Identifier: MIT
// Tasks as variables: starts, durations, and truth values that tell which are there, or null when all are.
#pragma once

#include "constraints/logic/truth.h"
#include "constraints/scheduling/one_machine.h"
#include "core/fixpoint.h"
#include "core/post.h"

namespace koru::scheduling {

constexpr std::uint8_t kMinRises = events(kNewMin, kMinBound, kBound);
constexpr std::uint8_t kMaxFalls = events(kNewMax, kMaxBound, kBound);
constexpr std::uint8_t kBoundsMove = kMinRises | kMaxFalls;

// The present variables of a posting, copied; without any when the host gave none.
struct Present {
  Buffer<CSint *> variables;

  // False when they cannot be had.
  [[nodiscard]] bool copy(CSint *const *from, int n) {
    if (from == nullptr) return true;
    variables = copyVariables(from, n);
    return static_cast<bool>(variables);
  }
  Presence of(int i) const {
    if (!variables || truth::isTrue(variables[i])) return Presence::kIn;
    return truth::isFalse(variables[i]) ? Presence::kOut : Presence::kOptional;
  }
  [[nodiscard]] bool takeIn(int i) const { return !variables || truth::makeTrue(variables[i]); }
  // Of a task that need not be there.
  [[nodiscard]] bool leaveOut(int i) const { return truth::makeFalse(variables[i]); }
};

// A task by the bounds of its variables. It is out as well when it may take no time: then it is in nobody's way.
inline Task taskOf(const CSint *start, const CSint *duration, Presence presence) {
  const Time length = duration->min;
  return {start->min, Time{start->max} + length, length, length > 0 ? presence : Presence::kOut};
}

// start + duration + delay <= next. Domain consistent.
[[nodiscard]] inline bool precede(CSint *start, CSint *duration, int delay, CSint *next) {
  const Time room = Time{next->max} - delay;
  if (!narrowMax64(start, room - duration->min)) return false;
  if (!narrowMax64(duration, room - start->min)) return false;
  return narrowMin64(next, Time{start->min} + duration->min + delay);
}

// What is known of the times of a task, back to its start. For one that may be left out its start says nothing.
[[nodiscard]] inline bool keepStart(const Task &task, CSint *start) {
  return !task.isIn() || (narrowMin64(start, task.earliest) && narrowMax64(start, task.latestStart()));
}
// A start that has no value at a bound lies further in than was asked for.
inline bool isKept(const Task &task, const CSint *start) {
  return !task.isIn() || (start->min == task.earliest && start->max == task.latestStart());
}

}  // namespace koru::scheduling
