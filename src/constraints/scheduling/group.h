// SPDX-License-Identifier: MIT
// A task that is made up of others: what cs_Alternative and cs_Span have in common.
#pragma once

#include "constraints/scheduling/tasks.h"

namespace koru::scheduling {

// What the host hands over.
struct GroupArrays {
  CSint *start;
  CSint *duration;
  CSint *present;  // null: it is there
  CSint **starts;
  CSint **durations;
  CSint **presents;  // null: all are
  int n;
};

struct Group : Deferred {
  CSint *start = nullptr;
  CSint *duration = nullptr;
  CSint *present = nullptr;
  Buffer<CSint *> starts;
  Buffer<CSint *> durations;
  Present presents;
  int n = 0;

  // False when something is missing or memory is exhausted (reported).
  [[nodiscard]] bool copy(const GroupArrays &given) {
    start = given.start;
    duration = given.duration;
    present = given.present;
    n = given.n;
    if (start == nullptr || duration == nullptr) return false;
    starts = copyVariables(given.starts, n);
    if (!starts) return false;
    durations = copyVariables(given.durations, n);
    return durations && presents.copy(given.presents, n);
  }
  bool mayBe(int i) const { return presents.of(i) != Presence::kOut; }
  bool mustBe(int i) const { return presents.of(i) == Presence::kIn; }
  // All parts are there whatever happens when nobody was asked.
  [[nodiscard]] bool leaveOut(int i) const { return presents.variables && presents.leaveOut(i); }
  [[nodiscard]] bool takeIn(int i) const { return presents.takeIn(i); }
  bool mayBe() const { return present == nullptr || !truth::isFalse(present); }
  bool mustBe() const { return present == nullptr || truth::isTrue(present); }
  [[nodiscard]] bool leaveOut() const { return present != nullptr && truth::makeFalse(present); }
  [[nodiscard]] bool takeIn() const { return present == nullptr || truth::makeTrue(present); }

  int countMayBe() const {
    int count = 0;
    for (int i = 0; i < n; ++i) count += mayBe(i) ? 1 : 0;
    return count;
  }
  std::int64_t size() const {
    return std::int64_t{start->count} + duration->count + (present != nullptr ? present->count : 0) +
           sizeOf(starts.get(), n) + sizeOf(durations.get(), n) + sizeOf(presents.variables.get(), n);
  }
};

// Attaches to all of them, and asks for the first run.
[[nodiscard]] bool postGroup(const Poster &poster, const TableOf<Group> &table, const GroupArrays &given);

}  // namespace koru::scheduling
