// SPDX-License-Identifier: MIT
#include "core/alloc.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "core/errors.h"

namespace koru {

#if defined(KORU_CHECKED) && KORU_CHECKED
bool (*allocationHook)(std::size_t size) = nullptr;
long blocksAlive = 0;
static bool allowed(std::size_t size) { return allocationHook == nullptr || allocationHook(size); }
static void countBlocks(long change) { blocksAlive += change; }
#else
static constexpr bool allowed(std::size_t) { return true; }
static void countBlocks(long) {}
#endif

void *allocate(std::size_t size) {
  void *block = allowed(size) ? std::malloc(size == 0 ? 1 : size) : nullptr;
  if (block == nullptr) {
    reportMemoryExhausted();
  } else {
    countBlocks(1);
  }
  return block;
}

void *allocateArray(std::size_t header, std::uint64_t count, std::size_t elementSize) {
  if (count > (SIZE_MAX - header) / elementSize) {
    reportMemoryExhausted();
    return nullptr;
  }
  return allocate(header + static_cast<std::size_t>(count) * elementSize);
}

char *copyText(const char *text) {
  const std::size_t size = std::strlen(text) + 1;
  auto *copy = static_cast<char *>(allocate(size));
  if (copy != nullptr) std::memcpy(copy, text, size);
  return copy;
}

void deallocate(void *block) {
  if (block != nullptr) countBlocks(-1);
  std::free(block);
}

}  // namespace koru
