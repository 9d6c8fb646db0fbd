// SPDX-License-Identifier: MIT
#include "core/event_queue.h"

#include <algorithm>
#include <cstddef>

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
  tailEnd_ = endOf(block);
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
  if (empty()) clear();
  if (headBlock_ == tailBlock_ && tailEnd_ == endOf(tailBlock_))
    tailEnd_ += std::min<std::ptrdiff_t>(head_ - tailBegin_, kBetweenLooks);
  if (hasRoom()) return true;
  const bool wasEmpty = empty();
  if (tailBlock_->next == headBlock_) {
    Block *block = makeBlock();
    if (block == nullptr) return false;
    block->next = headBlock_;
    tailBlock_->next = block;
  }
  tailBlock_->end = tail_;
  if (headBlock_ == tailBlock_) headEnd_ = tail_;
  useTail(tailBlock_->next);
  if (wasEmpty) clear();
  return true;
}

void EventQueue::enterNextHead() {
  headBlock_ = headBlock_->next;
  look_ = head_ = headBlock_->records;
  headEnd_ = headBlock_ == tailBlock_ ? nullptr : headBlock_->end;
}

int EventQueue::size() const {
  if (headBlock_ == tailBlock_) return static_cast<int>(tail_ - head_);
  auto count = (headEnd_ - head_) + (tail_ - tailBlock_->records);
  for (const Block *block = headBlock_->next; block != tailBlock_; block = block->next)
    count += block->end - block->records;
  return static_cast<int>(count);
}

}  // namespace koru
