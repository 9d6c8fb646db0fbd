// SPDX-License-Identifier: MIT
// Allocation failure on demand: while an AllocationRule lives, it decides which allocations of the library succeed.
#pragma once

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "core/alloc.h"
#include "core/solver.h"

namespace koru::test {

class AllocationRule {
 public:
  explicit AllocationRule(std::function<bool(std::size_t)> allows) {
    rule() = std::move(allows);
    sizes().clear();
    allocationHook = ask;
  }
  AllocationRule(const AllocationRule &) = delete;
  AllocationRule &operator=(const AllocationRule &) = delete;
  ~AllocationRule() { allocationHook = nullptr; }

  // The sizes asked for since the rule stands, refused ones included.
  static std::vector<std::size_t> &sizes() {
    static std::vector<std::size_t> asked;
    return asked;
  }
  static int count() { return static_cast<int>(sizes().size()); }

 private:
  static std::function<bool(std::size_t)> &rule() {
    static std::function<bool(std::size_t)> current;
    return current;
  }
  static bool ask(std::size_t size) {
    sizes().push_back(size);
    return rule()(size);
  }
};

inline auto refuseAll() {
  return [](std::size_t) { return false; };
}
inline auto allowAll() {
  return [](std::size_t) { return true; };
}
// Refuses the n-th request only, counted from 0.
inline auto refuseOnly(int n) {
  return [n, next = 0](std::size_t) mutable { return next++ != n; };
}

// Pushes records without effect until the next push needs a block that does not exist yet.
inline void fillTrail() {
  while (solver::trail.count() != solver::trail.blockCount() * Trail::kCapacity) {
    cs_backtrack(nullptr, 0, [](CSint *, int) {});
  }
}

}  // namespace koru::test
