// SPDX-License-Identifier: MIT
// Block stacks filled to a few records below a block boundary, so that the push that needs the next block is the one
// of an action's pushes that the test has chosen.
#pragma once

#include <array>
#include <string>

#include "core/solver.h"

namespace koru::test {

enum Stack : std::size_t { kVariables, kTrail, kContexts, kEvents, kStacks };
constexpr const char *kStackNames[kStacks] = {"variables", "trail", "contexts", "events"};

// For each stack how many records still fit before it needs a block; kPlenty leaves it as it is.
struct Filling {
  static constexpr int kPlenty = -1;
  std::array<int, kStacks> room{kPlenty, kPlenty, kPlenty, kPlenty};

  Filling with(Stack stack, int records) const {
    Filling result = *this;
    result.room[stack] = records;
    return result;
  }

  // "plain", "trail-2" or "trail-2+events-0".
  std::string text() const {
    std::string result;
    for (std::size_t stack = 0; stack < kStacks; ++stack) {
      if (room[stack] == kPlenty) continue;
      if (!result.empty()) result += '+';
      result += std::string(kStackNames[stack]) + "-" + std::to_string(room[stack]);
    }
    return result.empty() ? "plain" : result;
  }
};

template <class Records, class Push>
void pushUntilRoomIs(int room, const Records &records, Push push) {
  while (records.count() == 0 || (records.count() + room) % Records::kCapacity != 0) push();
}

inline void fillStack(Stack stack, int room) {
  switch (stack) {
    case kVariables:
      return pushUntilRoomIs(room, solver::variables, [] { cs_createCSint(0, 0); });
    case kTrail:
      return pushUntilRoomIs(room, solver::trail, [] { cs_backtrack(nullptr, 0, nullptr); });
    case kContexts:
      return pushUntilRoomIs(room, solver::contexts, cs_saveContext);
    case kEvents:
      return solver::events.startWithRoom(room);
    case kStacks:
      return;
  }
}

inline void fillStacks(const Filling &filling) {
  for (std::size_t stack = 0; stack < kStacks; ++stack)
    if (filling.room[stack] != Filling::kPlenty) fillStack(static_cast<Stack>(stack), filling.room[stack]);
}

inline int blocksOf(Stack stack) {
  switch (stack) {
    case kVariables:
      return solver::variables.blockCount();
    case kTrail:
      return solver::trail.blockCount();
    case kContexts:
      return solver::contexts.blockCount();
    case kEvents:
      return solver::events.blockCount();
    case kStacks:
      break;
  }
  return 0;
}

}  // namespace koru::test
