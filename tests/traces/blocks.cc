// SPDX-License-Identifier: MIT
#include "traces/blocks.h"

#include <climits>
#include <cstddef>
#include <cstdlib>

#include "core/alloc.h"

namespace koru::traces {
namespace {

constexpr std::size_t kLargest = 128 * 1024;

int refusals = 0;
int untilRefusal = INT_MAX;
bool refuseAll = false;

bool decide(std::size_t size) {
  const bool due = untilRefusal != INT_MAX && untilRefusal-- <= 0;
  if (due && !refuseAll) untilRefusal = INT_MAX;
  if (size <= kLargest && !due) return true;
  ++refusals;
  return false;
}

}  // namespace

long liveBlocks() { return blocksAlive; }
int refusedRequests() { return refusals; }
void watchRequests() { allocationHook = decide; }

void refuseRequest(int first, bool all) {
  untilRefusal = first < 0 ? INT_MAX : first;
  refuseAll = all;
}

void refuseNothing() { untilRefusal = INT_MAX; }
void loseBlock() { ++blocksAlive; }

}  // namespace koru::traces
