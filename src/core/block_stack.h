// SPDX-License-Identifier: MIT
// BlockStack: a stack of records in blocks of 1024, or as many as its type says. Records never move once pushed, so
// plain pointers to them stay valid; a block that was emptied is kept for the next growth and freed by destroy() alone.
//
// Cost: push and pop constant, an allocation only when the stack first grows past a multiple of 1024.
// State: a popped record keeps its contents until the next push.
// A stack index is an int: what would be the 2^31st record is refused as for want of memory.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/alloc.h"
#include "core/errors.h"

namespace koru {

template <class Record, int capacity = 1024>
class BlockStack {
  static_assert(std::is_trivially_destructible_v<Record>);

 public:
  static constexpr int kCapacity = capacity;

  // Allocates the first block, unless it is there already. False when memory is exhausted.
  [[nodiscard]] bool create();
  void destroy();

  // The new record, its contents left to the caller; null when the stack was never created (no report) or a new block
  // cannot be had (reported), the stack then being unchanged.
  Record *push() {
    if (top_ == end_ && !enterNextBlock()) [[unlikely]]
      return nullptr;
    return top_++;
  }

  // Whether pushes find room in the current block, and a way to have it for one: false as a push would be null.
  bool hasRoom() const { return top_ != end_; }
  bool hasRoomFor(int count) const { return end_ - top_ >= count; }
  [[nodiscard]] bool makeRoom() { return hasRoom() || enterNextBlock(); }
  // A push for which there is room.
  Record *pushInRoom() { return top_++; }

  // The record removed, readable until the next push. The stack must not be empty.
  Record *pop() {
    if (top_ == begin_) [[unlikely]]
      enterPreviousBlock();
    return --top_;
  }

  // Pops down to `count` records, at most those there are.
  void popTo(int count);

  // The record at a stack index below count(); constant time for those in the newest block.
  Record &at(int index) const {
    Block *block = current_;
    while (index < block->base) block = block->previous;
    return block->records()[index - block->base];
  }

  // The stack index of a record; -1 for one that none of its blocks has room for.
  int indexOf(const Record *record) const;

  // The newest record, of a stack that is not empty. With an if in place of the choice a sudoku takes 0.9 % more
  // instructions.
  Record &newest() const {
    return top_ != begin_ ? top_[-1] : at(count() - 1);  // cppcheck-suppress returnTempReference
  }

  bool empty() const { return top_ == begin_ && base_ == 0; }
  int count() const { return base_ + static_cast<int>(top_ - begin_); }
  int blockCount() const { return blockCount_; }
  std::uint64_t bytes() const {
    return std::uint64_t{kCapacity} * sizeof(Record) * static_cast<unsigned>(blockCount_ - refills_);
  }
  bool created() const { return first_ != nullptr; }

  // For the invariant checker: blocks follow one another and the counts agree.
  bool sound() const;

  // Visits every record, oldest first.
  template <class Visit>
  void forEach(Visit visit) const;
  // Those from a stack index on, oldest first.
  template <class Visit>
  void forEachFrom(int first, Visit visit) const;

 protected:
  // For a loop over the newest records that keeps the top in a register: the records of the current block from `count`
  // on, and the new end of the stack within them.
  Record *top() const { return top_; }
  Record *const *placeOfTop() const { return &top_; }
  Record *lowestFrom(int count) const { return count > base_ ? begin_ + (count - base_) : begin_; }
  void cutAt(Record *top) { top_ = top; }

  // For a stack that is full, and of whose records nobody will read or pop one again: the current block stands for the
  // next one as well, and is filled anew. Counts and indexes go on as if there were two. False when there is a next
  // block already, or could be none.
  bool refill();

 private:
  struct Block {
    int base;  // stack index of the block's first record
    Block *next;
    Block *previous;

    // The records follow the head, aligned for their type, which malloc alone may not do.
    Record *records() {
      const auto address = reinterpret_cast<std::uintptr_t>(this + 1);
      return reinterpret_cast<Record *>((address + alignof(Record) - 1) & ~(alignof(Record) - 1));
    }
  };

  Block *makeBlock(Block *previous);
  bool canGrow() const { return base_ <= INT_MAX - 2 * kCapacity; }
  // Kept out of line: push and pop are inlined all over the engine.
  [[gnu::noinline, gnu::cold]] bool enterNextBlock();
  [[gnu::noinline, gnu::cold]] void enterPreviousBlock();
  void use(Block *block) {
    current_ = block;
    base_ = block->base;
    begin_ = block->records();
    end_ = begin_ + kCapacity;
  }

  Record *top_ = nullptr;    // the next free record
  Record *begin_ = nullptr;  // the current block's records
  Record *end_ = nullptr;
  int base_ = 0;  // of the current block
  int blockCount_ = 0;
  int refills_ = 0;  // that are counted as blocks
  Block *current_ = nullptr;
  Block *first_ = nullptr;
};

template <class Record, int capacity>
typename BlockStack<Record, capacity>::Block *BlockStack<Record, capacity>::makeBlock(Block *previous) {
  constexpr std::size_t slack = alignof(Record) > alignof(Block) ? alignof(Record) : 0;
  auto *block = static_cast<Block *>(allocateArray(sizeof(Block) + slack, kCapacity, sizeof(Record)));
  if (block == nullptr) return nullptr;
  *block = {count(), nullptr, previous};
  ++blockCount_;
  return block;
}

template <class Record, int capacity>
bool BlockStack<Record, capacity>::create() {
  if (first_ != nullptr) return true;
  first_ = makeBlock(nullptr);
  if (first_ == nullptr) return false;
  use(first_);
  top_ = begin_;
  return true;
}

template <class Record, int capacity>
void BlockStack<Record, capacity>::destroy() {
  for (Block *block = first_; block != nullptr;) {
    Block *next = block->next;
    deallocate(block);
    block = next;
  }
  *this = BlockStack{};
}

template <class Record, int capacity>
bool BlockStack<Record, capacity>::enterNextBlock() {
  if (current_ == nullptr) return false;
  if (!canGrow()) {  // GCOVR_EXCL_START: takes 2^31 records, which tests push on a stack of their own
    reportMemoryExhausted();
    return false;
  }  // GCOVR_EXCL_STOP
  if (current_->next == nullptr) {
    current_->next = makeBlock(current_);
    if (current_->next == nullptr) return false;
  }
  use(current_->next);
  top_ = begin_;
  return true;
}

template <class Record, int capacity>
bool BlockStack<Record, capacity>::refill() {
  if (current_ == nullptr || !canGrow() || current_->next != nullptr) return false;
  current_->base += kCapacity;
  ++blockCount_;
  ++refills_;
  use(current_);
  top_ = begin_;
  return true;
}

template <class Record, int capacity>
void BlockStack<Record, capacity>::enterPreviousBlock() {
  use(current_->previous);
  top_ = end_;
}

template <class Record, int capacity>
void BlockStack<Record, capacity>::popTo(int count) {
  Block *block = current_;
  while (count < block->base) block = block->previous;
  use(block);
  top_ = begin_ + (count - block->base);
}

// Addresses in different blocks compare as numbers do.
template <class Record, int capacity>
int BlockStack<Record, capacity>::indexOf(const Record *record) const {
  const auto address = reinterpret_cast<std::uintptr_t>(record);
  const auto isIn = [&](Block *block) {
    const auto first = reinterpret_cast<std::uintptr_t>(block->records());
    return address >= first && address < first + kCapacity * sizeof(Record);
  };
  Block *block = current_;
  while (block != nullptr && !isIn(block)) block = block->previous;
  if (block == nullptr) return -1;
  return block->base + static_cast<int>(record - block->records());
}

// GCOVR_EXCL_START: one of the tests' own checks
template <class Record, int capacity>
bool BlockStack<Record, capacity>::sound() const {
  int blocks = 0;
  for (Block *block = first_, *previous = nullptr; block != nullptr; previous = block, block = block->next) {
    if (block->base != blocks * kCapacity || block->previous != previous) return false;
    ++blocks;
  }
  return blocks == blockCount_ && (current_ == nullptr || base_ == current_->base);
}
// GCOVR_EXCL_STOP

template <class Record, int capacity>
template <class Visit>
void BlockStack<Record, capacity>::forEach(Visit visit) const {
  const int all = count();
  for (Block *block = first_; block != nullptr && block->base < all; block = block->next) {
    const int inBlock = all - block->base < kCapacity ? all - block->base : kCapacity;
    for (int i = 0; i < inBlock; ++i) visit(block->records()[i]);
  }
}

template <class Record, int capacity>
template <class Visit>
void BlockStack<Record, capacity>::forEachFrom(int first, Visit visit) const {
  const int all = count();
  Block *block = current_;
  while (block != nullptr && block->base > first) block = block->previous;
  for (; block != nullptr && block->base < all; block = block->next) {
    const int end = all - block->base < kCapacity ? all - block->base : kCapacity;
    for (int i = first > block->base ? first - block->base : 0; i < end; ++i) visit(block->records()[i]);
  }
}

}  // namespace koru
