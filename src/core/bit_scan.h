// SPDX-License-Identifier: MIT
// The walk over the bits of a word.
#pragma once

#include <bit>
#include <cstdint>
#include <type_traits>

namespace koru {

// Visits the bits that are set in increasing order, bit i as first + i, while `visit` returns true; a visit that
// returns nothing never ends the walk. False when it has been ended. What a visit does to the word's origin makes no
// difference. Cost: a few instructions for each bit that is set.
template <class Visit>
bool forEachBit(int first, std::uint64_t word, Visit &&visit) {
  for (; word != 0; word &= word - 1) {
    const int position = first + std::countr_zero(word);
    if constexpr (std::is_void_v<decltype(visit(position))>) {
      visit(position);
    } else if (!visit(position)) {
      return false;
    }
  }
  return true;
}

}  // namespace koru
