// SPDX-License-Identifier: MIT
// Arrays in order: ascending, one before another, a value before another.
#include <algorithm>

#include "minizinc/postings.h"

namespace koru::fzn {

namespace {

template <bool post(CSint **, int), bool reversed>
bool ordered(const Call &call) {
  Array array = call.array(0);
  if (reversed) std::reverse(array.begin(), array.end());
  return post(array.data(), sizeOf(array));
}

// Arrays of any sizes, as words: a beginning of another word comes before it.
template <bool strict>
bool lexicographic(const Call &call) {
  Array x = call.array(0), y = call.array(1);
  const int common = std::min(sizeOf(x), sizeOf(y));
  const bool mayBeEqual = x.size() == y.size() ? !strict : x.size() < y.size();
  return (mayBeEqual ? cs_LexLe : cs_LexLt)(x.data(), y.data(), common);
}

bool precede(const Call &call) {
  Array array = call.array(2);
  return cs_Precede(array.data(), sizeOf(array), call.intAt(0), call.intAt(1));
}

constexpr Row kRows[] = {
    {"koru_increasing", "X", ordered<cs_Increasing, false>},
    {"koru_decreasing", "X", ordered<cs_Increasing, true>},
    {"koru_strictly_increasing", "X", ordered<cs_StrictlyIncreasing, false>},
    {"koru_strictly_decreasing", "X", ordered<cs_StrictlyIncreasing, true>},
    {"koru_lex_less", "XX", lexicographic<true>},
    {"koru_lex_lesseq", "XX", lexicographic<false>},
    {"koru_value_precede", "ccX", precede},
};

}  // namespace

std::span<const Row> sequenceRows() { return kRows; }

}  // namespace koru::fzn
