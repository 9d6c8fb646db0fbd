// SPDX-License-Identifier: MIT
// Private variables: variables of a constraint's own, in which it keeps state that backtracking restores.
//
// They are records like all others, changed by the same four operations, but they were never pushed on the variable
// stack: the host does not see them and the constraint frees them. removeValueNoTrail (core/narrow.h) takes values out
// of a fresh one during set-up.
//
// A PrivateVariables is an array of them in one block, so their addresses stay when it is moved into a record. Copies
// share the block, and the last one to go releases whatever is attached to the variables and frees their bit arrays:
// the constraints of a posting may each hold a copy and die in any order. Only one that is attached to the variables
// must hold none, a plain pointer at most: it dies with the block, and a copy of its own would keep both alive for
// ever.
#pragma once

#include <cstdint>
#include <utility>

#include "core/variable.h"

namespace koru {

class PrivateVariables {
 public:
  PrivateVariables() = default;
  // `count` variables over [0, 0]; false as a bool when memory is exhausted (reported).
  explicit PrivateVariables(int count);
  PrivateVariables(const PrivateVariables &other);
  PrivateVariables(PrivateVariables &&other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  PrivateVariables &operator=(PrivateVariables other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~PrivateVariables();

  explicit operator bool() const { return block_ != nullptr; }
  CSint *operator[](int i) const { return block_->variables() + i; }

  // Makes a variable that has not been used yet an interval, min <= max.
  void init(int i, int min, int max) const;
  // The same with those values of 0..max, one at least, whose bit is set; changes are reported as of that interval.
  // False when memory is exhausted (reported).
  [[nodiscard]] bool init(int i, int max, const std::uint64_t *words) const;

 private:
  struct Block {
    int owners;
    int count;

    // They follow the head, aligned as a variable must be. Inline: constraints ask for one in their inner loops.
    CSint *variables() {
      const auto address = reinterpret_cast<std::uintptr_t>(this + 1);
      return reinterpret_cast<CSint *>((address + alignof(CSint) - 1) & ~(alignof(CSint) - 1));
    }
  };

  Block *block_ = nullptr;
};

}  // namespace koru
