// SPDX-License-Identifier: MIT
// Memory: the only malloc and free of the library.
//
// A failed allocation is reported here, once, and shows to the caller as null. Buffer owns an array alone, Shared
// counts its owners: the undo trail and a constraint may hold the same array, whichever dies first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "core/build_mode.h"

namespace koru {

// Null when memory is exhausted (reported) or the size does not fit. A size of 0 is a size of 1.
[[nodiscard]] void *allocate(std::size_t size);
[[nodiscard]] void *allocateArray(std::size_t header, std::uint64_t count, std::size_t elementSize);
// Inline up to the call: half of the buffers that are ended are empty.
void deallocateBlock(void *block);
inline void deallocate(void *block) {
  if (block != nullptr) deallocateBlock(block);
}

// Asks the system to make the block one of large pages, for memory that will be used from end to end. Where it has
// none, nothing happens.
void askForLargePages(void *block, std::size_t size);

// Test builds ask this hook, when set, before every allocation; false makes the allocation fail. They count the blocks
// that are allocated and not yet freed.
#if defined(KORU_CHECKED) && KORU_CHECKED
extern bool (*allocationHook)(std::size_t size);
extern long blocksAlive;
#endif

// An array of trivial elements with one owner.
template <class T>
class Buffer {
 public:
  Buffer() = default;
  explicit Buffer(int count) : Buffer(static_cast<std::uint64_t>(count)) {}
  explicit Buffer(std::uint64_t count) : data_(static_cast<T *>(allocateArray(0, count, sizeof(T)))) {}
  Buffer(Buffer &&other) noexcept : data_(std::exchange(other.data_, nullptr)) {}
  Buffer &operator=(Buffer &&other) noexcept {
    std::swap(data_, other.data_);
    return *this;
  }
  ~Buffer() { deallocate(data_); }

  explicit operator bool() const { return data_ != nullptr; }
  T *get() const { return data_; }
  T &operator[](int i) const { return data_[i]; }

 private:
  T *data_ = nullptr;
};

// For several buffers, of which none is tried once one cannot be had: make(a, n) && make(b, m).
template <class T>
bool make(Buffer<T> &buffer, std::uint64_t count) {
  buffer = Buffer<T>(count);
  return static_cast<bool>(buffer);
}

// Room for `count` elements while a function runs, its own where `few` are enough: to ask for memory and give it back
// takes some 180 instructions. Their contents are left to the caller. Null as Buffer is.
template <class T, std::size_t few>
class Scratch {
 public:
  // cppcheck-suppress uninitMemberVar
  explicit Scratch(std::uint64_t count) : large_(count > few ? Buffer<T>(count) : Buffer<T>()), isLarge_(count > few) {}
  Scratch(const Scratch &) = delete;
  Scratch &operator=(const Scratch &) = delete;

  explicit operator bool() const { return !isLarge_ || large_; }
  T *get() { return isLarge_ ? large_.get() : small_; }

 private:
  Buffer<T> large_;
  bool isLarge_;
  T small_[few];
};

// A copy of a text. Null when memory is exhausted (reported).
char *copyText(const char *text);

// The head of a shared array; the elements follow it.
struct alignas(std::max_align_t) SharedBlock {
  int owners;
};

inline void dropShare(SharedBlock *block) {
  if (block != nullptr && --block->owners == 0) deallocate(block);
}

// An array of trivial elements with counted owners.
template <class T>
class Shared {
 public:
  Shared() = default;
  explicit Shared(int count) : Shared(static_cast<std::uint64_t>(count < 0 ? 0 : count)) {}
  explicit Shared(std::uint64_t count)
      : block_(static_cast<SharedBlock *>(allocateArray(sizeof(SharedBlock), count, sizeof(T)))) {
    if (block_ != nullptr) block_->owners = 1;
  }
  Shared(const Shared &other) : block_(other.block_) {
    if (block_ != nullptr) ++block_->owners;
  }
  Shared &operator=(Shared other) {
    std::swap(block_, other.block_);
    return *this;
  }
  ~Shared() { dropShare(block_); }

  explicit operator bool() const { return block_ != nullptr; }
  T *get() const { return block_ == nullptr ? nullptr : reinterpret_cast<T *>(block_ + 1); }

  // Hands one share to the caller, who ends it with dropShare.
  SharedBlock *share() const {
    ++block_->owners;
    return block_;
  }

 private:
  SharedBlock *block_ = nullptr;
};

}  // namespace koru
