// SPDX-License-Identifier: MIT
// malloc and free of everything that is linked statically go through the linker's --wrap; the harness itself allocates
// by operator new, which does not.
#include "traces/blocks.h"

#include <climits>
#include <cstddef>
#include <cstdlib>

#include "core/alloc.h"

namespace koru::traces {
namespace {

constexpr std::size_t kLargest = 128 * 1024;

long live = 0;
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

long liveBlocks() { return live; }
int refusedRequests() { return refusals; }
void watchRequests() { allocationHook = decide; }

void refuseRequest(int first, bool all) {
  untilRefusal = first < 0 ? INT_MAX : first;
  refuseAll = all;
}

void refuseNothing() { untilRefusal = INT_MAX; }
void loseBlock() { ++live; }

}  // namespace koru::traces

extern "C" {
void *__real_malloc(std::size_t size);
void __real_free(void *block);
void *__wrap_malloc(std::size_t size);
void __wrap_free(void *block);

void *__wrap_malloc(std::size_t size) {
  void *block = __real_malloc(size);
  if (block != nullptr) ++koru::traces::live;
  return block;
}

void __wrap_free(void *block) {
  if (block != nullptr) --koru::traces::live;
  __real_free(block);
}
}
