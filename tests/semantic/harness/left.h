// SPDX-License-Identifier: MIT
// Domains as sets of 64 values, and the state of all columns of a posting at a node.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

#include "support/kit/small_domains.h"

namespace koru::test::brute {

constexpr std::size_t kMostColumns = 16;  // of the result one
constexpr int kWindow = 64;               // values that can be told apart

using Mask = std::uint64_t;
using Masks = std::array<Mask, kMostColumns>;  // by variable or by column

inline int leastBit(Mask mask) { return std::countr_zero(mask); }
inline int greatestBit(Mask mask) { return kWindow - 1 - std::countl_zero(mask); }
inline Mask lowBits(int n) { return n <= 0 ? 0 : n >= kWindow ? ~Mask{0} : (Mask{1} << n) - 1; }
inline Mask hullOf(Mask mask) { return mask == 0 ? 0 : lowBits(greatestBit(mask) + 1) & ~lowBits(leastBit(mask)); }
inline bool hasBit(Mask mask, int bit) { return bit >= 0 && bit < kWindow && (mask >> bit & 1) != 0; }

// How the columns of a posting are laid out: the variable in each, and the value that bit 0 stands for, by variable.
struct Layout {
  std::vector<std::size_t> variableAt;
  std::array<int, kMostColumns> base{};
};

// What has been done on the branch that led to a node.
struct Branch {
  bool unheard = false;   // changes were made before earlier ones had been heard
  bool removals = false;  // by cs_NEQ
};

// What is left of the domain in each column.
class Left {
 public:
  Left(const Layout &layout, const Masks &now, const Masks &posted, const Masks &lost, const Branch &steps)
      : branch(steps), layout_(layout), now_(now), posted_(posted), lost_(lost) {}

  Branch branch;

  std::size_t columns() const { return layout_.variableAt.size(); }
  std::size_t result() const { return columns() - 1; }
  Mask mask(std::size_t column) const { return now_[layout_.variableAt[column]]; }
  int min(std::size_t column) const { return leastBit(mask(column)) + base(column); }
  int max(std::size_t column) const { return greatestBit(mask(column)) + base(column); }
  bool has(std::size_t column, int value) const { return hasBit(mask(column), value - base(column)); }
  bool isBound(std::size_t column) const { return std::has_single_bit(mask(column)); }
  bool isInterval(std::size_t column) const { return mask(column) == hullOf(mask(column)); }
  bool isSame(std::size_t a, std::size_t b) const { return layout_.variableAt[a] == layout_.variableAt[b]; }
  bool isShared() const {
    std::vector<std::size_t> seen = layout_.variableAt;
    std::ranges::sort(seen);
    return std::ranges::adjacent_find(seen) != seen.end();
  }
  std::vector<int> values(std::size_t column) const {
    std::vector<int> result;
    for (Mask rest = mask(column); rest != 0; rest &= rest - 1) result.push_back(leastBit(rest) + base(column));
    return result;
  }

  std::size_t unbound() const {
    std::size_t count = 0;
    for (std::size_t c = 0; c < columns(); ++c) count += isBound(c) ? 0 : 1;
    return count;
  }

  // Whether the value had been removed at a node that was looked at before.
  bool wasLost(std::size_t column, int value) const {
    return hasBit(lost_[layout_.variableAt[column]], value - base(column));
  }
  // What was left when the posting had been made.
  Left posted() const { return {layout_, posted_, posted_, lost_, {}}; }

 private:
  int base(std::size_t column) const { return layout_.base[layout_.variableAt[column]]; }

  const Layout &layout_;
  const Masks &now_;
  const Masks &posted_;
  const Masks &lost_;
};

}  // namespace koru::test::brute
