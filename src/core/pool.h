// SPDX-License-Identifier: MIT
// Pool: small records packed in posting order, so that a propagation walk meets neighbours in memory.
//
// Records are cut from chunks, half as large as all that there are, so that a small model does not pay for a large one,
// and 64 KiB at the most. Beyond 32 MiB they are an eighth of all, in large pages where the system has them, which are
// faulted in and found in a fraction of the time. A record given back waits in the free list of its size. Chunks are
// freed by destroy() alone. Larger records, and in test builds all of them, go to the allocator one by one, where
// memory checkers see them.
#pragma once

#include "core/state.h"

#include <cstddef>

#include "core/build_mode.h"

namespace koru {

class Pool {
 public:
  // Null when memory is exhausted (reported). Aligned for pointers and 64-bit ints. Inline, because most sizes are
  // known where it is called: a record is then some ten instructions.
  [[nodiscard]] void *take(std::size_t size) {
    if (kChecked || size > kLargest) return takeLoose(size);
    const std::size_t units = (size + kUnit - 1) / kUnit;
    FreeRecord *record = free_[units];
    if (record != nullptr) {
      free_[units] = record->next;
      return record;
    }
    if (static_cast<std::size_t>(end_ - next_) < units * kUnit) [[unlikely]]
      return takeFromNextChunk(units * kUnit);
    return cut(units * kUnit);
  }
  // size: as it was taken. Null is ignored.
  void give(void *record, std::size_t size);
  void destroy();

  // What the pool has had from the allocator and not given back.
  std::size_t bytes() const;

  // Records are out that destroy() will not free: they went to the allocator one by one.
  bool hasLoose() const { return loose_ > 0; }

 private:
  static constexpr std::size_t kUnit = 8;
  static constexpr std::size_t kLargest = 512;
  static constexpr std::size_t kFirstChunk = std::size_t{4} * 1024;
  static constexpr std::size_t kLargestChunk = std::size_t{64} * 1024;
  static constexpr std::size_t kMany = std::size_t{32} << 20;
  static constexpr std::size_t kLargestOfMany = std::size_t{8} << 20;

  struct FreeRecord {
    FreeRecord *next;
  };
  struct alignas(kUnit) Chunk {
    Chunk *previous;
  };

  void *cut(std::size_t size) {
    void *record = next_;
    next_ += size;
    return record;
  }
  void *takeLoose(std::size_t size);
  void *takeFromNextChunk(std::size_t size);
  std::size_t nextChunk() const;
  bool addChunk();

  int loose_ = 0;
  std::size_t bytes_ = 0;
  char *next_ = nullptr;
  char *end_ = nullptr;
  Chunk *chunks_ = nullptr;
  FreeRecord *free_[kLargest / kUnit + 1] = {};
};

namespace solver {

inline KORU_STATE Pool pool;

}  // namespace solver

}  // namespace koru
