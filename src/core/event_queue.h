// SPDX-License-Identifier: MIT
// EventQueue: the events that wait, first in first out, in a ring of blocks of 1024 records.
//
// A queue that has run empty starts again at the beginning of its block, so that a short one stays in a few cache
// lines: not each time, but once 64 records were taken. What that leaves unused at the beginning it may use beyond the
// end. Blocks are reused, and freed by destroy() alone. Records are read by copying them out: pushing and taking one
// costs some ten instructions each.
#pragma once

#include "core/alloc.h"
#include "core/constraint.h"
#include "core/state.h"
#include "core/variable.h"

namespace koru {

struct EventRecord {
  CSint *variable;
  Entry *entries;  // of the variable at the time of the change
  int value;       // new bound, bound value or removed value
  int code;        // an EventCode, and the flag below
};

// Of an event that a sum with a constant has passed on in full to the variable that it has made: it, the variable's
// oldest constraint, would find nothing to do and is not called.
constexpr int kWithoutMaker = 8;

class EventQueue {
 public:
  static constexpr int kCapacity = 1024;

  // Allocates the first block, unless it is there already. False when memory is exhausted (reported).
  [[nodiscard]] bool create();
  void destroy();
  bool created() const { return tailBlock_ != nullptr; }
  int blockCount() const { return blockCount_; }
  std::uint64_t bytes() const;

  bool empty() const { return head_ == tail_; }
  // Exactly one event waits. Of a queue that is not empty.
  bool single() const { return head_ + 1 == tail_; }
  int size() const;
  // For tests: an empty queue whose block has room for that many events only.
  void startWithRoom(int room) {
    tailBegin_ = tailEnd_ - room;
    clear();
  }

  bool hasRoom() const { return tail_ != tailEnd_; }
  bool hasRoomFor(int count) const { return tailEnd_ - tail_ >= count; }
  // Room for a push. False when memory is exhausted (reported).
  [[nodiscard]] bool makeRoom();
  void push(const EventRecord &event) { *tail_++ = event; }

  // There is room in any case.
  void pushIf(bool wanted, const EventRecord &event) {
    *tail_ = event;
    tail_ += wanted ? 1 : 0;
  }

  // The oldest event, of a queue that is not empty.
  EventRecord take() {
    const EventRecord event = *head_++;
    if (head_ >= look_) [[unlikely]] {
      if (empty()) {
        clear();
      } else if (head_ == headEnd_) {
        enterNextHead();
      }
    }
    return event;
  }

  void clear() {
    headBlock_ = tailBlock_;
    headEnd_ = nullptr;
    head_ = tail_ = tailBegin_;
    tailEnd_ = endOf(tailBlock_);
    look_ = tailEnd_ - head_ < kBetweenLooks ? tailEnd_ : head_ + kBetweenLooks;
  }

 private:
  static constexpr int kBetweenLooks = 64;

  struct Block {
    Block *next;
    EventRecord *end;  // of the records, when the tail is in another block
    EventRecord records[kCapacity + kBetweenLooks];
  };

  static EventRecord *endOf(Block *block) { return block->records + kCapacity; }
  Block *makeBlock();
  void enterNextHead();
  void useTail(Block *block);

  EventRecord *head_ = nullptr;
  EventRecord *tail_ = nullptr;
  EventRecord *look_ = nullptr;     // from here on it is looked whether the queue, or the head's block, is at its end
  EventRecord *headEnd_ = nullptr;  // of the head's block, when the tail is in another one
  EventRecord *tailEnd_ = nullptr;
  EventRecord *tailBegin_ = nullptr;
  Block *headBlock_ = nullptr;
  Block *tailBlock_ = nullptr;
  int blockCount_ = 0;
};

namespace solver {

inline KORU_STATE EventQueue events;

}  // namespace solver
}  // namespace koru
