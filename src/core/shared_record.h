// SPDX-License-Identifier: MIT
// A record that several constraints of one posting use, with counted owners. Unlike Shared it ends the record's life,
// so the record may own buffers and private variables. The last owner destroys it, in whatever order they go.
#pragma once

#include <new>

#include "core/alloc.h"

namespace koru {

template <class T>
class SharedRecord {
 public:
  SharedRecord() = default;
  // False as a bool when memory is exhausted (reported).
  explicit SharedRecord(T &&record) : block_(create(std::move(record))) {}
  SharedRecord(const SharedRecord &other) : block_(other.block_) {
    if (block_ != nullptr) ++block_->owners;
  }
  SharedRecord(SharedRecord &&other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  SharedRecord &operator=(SharedRecord other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~SharedRecord() {
    if (block_ == nullptr || --block_->owners > 0) return;
    block_->~Block();
    deallocate(block_);
  }

  explicit operator bool() const { return block_ != nullptr; }
  T &operator*() const { return block_->record; }
  T *operator->() const { return &block_->record; }

 private:
  struct Block {
    int owners;
    T record;
  };

  static Block *create(T &&record) {
    void *memory = allocate(sizeof(Block));
    return memory == nullptr ? nullptr : new (memory) Block{1, std::move(record)};
  }

  Block *block_ = nullptr;
};

}  // namespace koru
