// SPDX-License-Identifier: MIT
#include "core/alloc.h"

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

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

#if defined(__linux__)
void askForLargePages(void *block, std::size_t size) {
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto begin = (reinterpret_cast<std::uintptr_t>(block) + page - 1) / page * page;
  const auto end = (reinterpret_cast<std::uintptr_t>(block) + size) / page * page;
  if (begin < end) madvise(reinterpret_cast<void *>(begin), end - begin, MADV_HUGEPAGE);
}
#else
void askForLargePages(void *, std::size_t) {}
#endif

void deallocateBlock(void *block) {
  countBlocks(-1);
  std::free(block);
}

}  // namespace koru
