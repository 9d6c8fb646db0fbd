// SPDX-License-Identifier: MIT
// EventQueue: the events that wait, first in first out, in a ring of blocks of 1024 records.
//
// A queue that has run empty starts again at the beginning of its block, so that a short one stays in a few cache
// lines. Blocks are reused, and freed by destroy() alone. Records are read by copying them out: pushing and taking one
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
  int code;        // an EventCode, and the flags below
};

// Of an event that a sum with a constant has passed on in full to the variable that it has made: it, the variable's
// oldest constraint, would find nothing to do and is not called; or nobody is.
constexpr int kWithoutMaker = 8;
constexpr int kUnheard = 16;

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
  // Room for a push. False when memory is exhausted (reported).
  [[nodiscard]] bool makeRoom();
  void push(const EventRecord &event) { *tail_++ = event; }

  // The oldest event, of a queue that is not empty.
  EventRecord take() {
    const EventRecord event = *head_++;
    if (head_ == tail_) {
      clear();
    } else if (head_ == headEnd_) [[unlikely]] {
      enterNextHead();
    }
    return event;
  }

  void clear() {
    headBlock_ = tailBlock_;
    headEnd_ = tailEnd_;
    head_ = tail_ = tailBegin_;
  }

 private:
  struct Block {
    Block *next;
    EventRecord records[kCapacity];
  };

  Block *makeBlock();
  [[gnu::noinline, gnu::cold]] void enterNextHead();
  void useTail(Block *block);

  EventRecord *head_ = nullptr;
  EventRecord *tail_ = nullptr;
  EventRecord *headEnd_ = nullptr;
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
