// SPDX-License-Identifier: MIT
#include "core/event_queue.h"

namespace koru {

EventQueue::Block *EventQueue::makeBlock() {
  auto *block = static_cast<Block *>(allocate(sizeof(Block)));
  if (block != nullptr) ++blockCount_;
  return block;
}

std::uint64_t EventQueue::bytes() const { return std::uint64_t{sizeof(Block)} * static_cast<unsigned>(blockCount_); }

void EventQueue::useTail(Block *block) {
  tailBlock_ = block;
  tail_ = tailBegin_ = block->records;
  tailEnd_ = block->records + kCapacity;
}

bool EventQueue::create() {
  if (created()) return true;
  Block *block = makeBlock();
  if (block == nullptr) return false;
  block->next = block;
  useTail(block);
  clear();
  return true;
}

void EventQueue::destroy() {
  Block *block = tailBlock_;
  for (int left = blockCount_; left > 0; --left) {
    Block *next = block->next;
    deallocate(block);
    block = next;
  }
  *this = EventQueue{};
}

// The block after the tail's is free unless the head is in it.
bool EventQueue::makeRoom() {
  if (hasRoom()) return true;
  if (!created()) return false;
  const bool wasEmpty = empty();
  if (tailBlock_->next == headBlock_) {
    Block *block = makeBlock();
    if (block == nullptr) return false;
    block->next = headBlock_;
    tailBlock_->next = block;
  }
  useTail(tailBlock_->next);
  if (wasEmpty) clear();
  return true;
}

void EventQueue::enterNextHead() {
  headBlock_ = headBlock_->next;
  head_ = headBlock_->records;
  headEnd_ = head_ + kCapacity;
}

int EventQueue::size() const {
  int count = static_cast<int>(tail_ - tailBlock_->records) - static_cast<int>(head_ - headBlock_->records);
  for (const Block *block = headBlock_; block != tailBlock_; block = block->next) count += kCapacity;
  return count;
}

}  // namespace koru
