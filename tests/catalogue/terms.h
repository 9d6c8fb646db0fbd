// SPDX-License-Identifier: MIT
// What a constraint means: its arguments with values in the place of variables, and what must hold of them.
#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <optional>
#include <span>
#include <type_traits>
#include <vector>

namespace koru::catalogue {

using Wide = long long;

constexpr std::size_t kMostArrays = 6;

struct Terms {
  std::span<const int> x;                                // of all variables, in order, those of arrays included
  std::array<std::span<const int>, kMostArrays> arrays;  // each array of variables; without data where it was null
  std::span<const Wide> k;                               // ints that are no sizes, in order
  std::span<const std::vector<Wide>> lists;              // arrays of ints, in order
  int z = 0;                                             // of the result
};

// The value of a result; none where there is no solution.
using Value = std::optional<Wide>;

// One of the two, written without a look at the library.
struct Meaning {
  using Holds = bool (*)(const Terms &);
  using Compute = Value (*)(const Terms &);

  template <std::invocable<const Terms &> F>
  constexpr Meaning(F meaning) {
    if constexpr (std::is_same_v<std::invoke_result_t<F, const Terms &>, bool>)
      holds = meaning;
    else
      value = meaning;
  }

  Holds holds = nullptr;    // with the result, if there is one
  Compute value = nullptr;  // of the result
};

}  // namespace koru::catalogue
