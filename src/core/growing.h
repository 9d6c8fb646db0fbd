// SPDX-License-Identifier: MIT
// An array that grows at its end. Its elements move when it does.
#pragma once

#include <algorithm>
#include <type_traits>

#include "core/alloc.h"

namespace koru {

template <class T>
class Growing {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  int count() const { return count_; }
  T &operator[](int i) const { return items_[i]; }
  void cutTo(int count) { count_ = count; }

  // False when memory is exhausted (reported); the array is then as before.
  [[nodiscard]] bool add(const T &item) {
    if (count_ == room_ && !grow()) return false;
    items_[count_++] = item;
    return true;
  }

 private:
  bool grow() {
    const int room = room_ == 0 ? 64 : 2 * room_;
    Buffer<T> larger(room);
    if (!larger) return false;
    std::copy_n(items_.get(), count_, larger.get());
    items_ = std::move(larger);
    room_ = room;
    return true;
  }

  Buffer<T> items_;
  int count_ = 0;
  int room_ = 0;
};

}  // namespace koru
