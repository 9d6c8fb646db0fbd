// SPDX-License-Identifier: MIT
// Tasks on machines and resources, rectangles. Of cs_Cumulative and cs_Disjunctive nothing is used: their proofs are
// none.
#include "minizinc/postings.h"

namespace koru::fzn {

namespace {

// Arguments: starts, durations, uses, capacity, and in the second form who is there.
bool cumulative(const Call &call) {
  Array starts = call.array(0), durations = call.array(1), uses = call.array(2), present;
  const bool optional = call.arguments.size() > 4;
  if (optional) present = call.array(4);
  const std::size_t n = starts.size();
  if (durations.size() != n || uses.size() != n || (optional && present.size() != n))
    return call.refuse("the arrays of tasks are not equally long");
  return cs_CumulativeTasks(starts.data(), durations.data(), uses.data(), optional ? present.data() : nullptr,
                            sizeOf(starts), call.variable(3));
}

// Arguments: starts, durations, and in the second form who is there.
bool disjunctive(const Call &call) {
  Array starts = call.array(0), durations = call.array(1), present;
  const bool optional = call.arguments.size() > 2;
  if (optional) present = call.array(2);
  if (durations.size() != starts.size() || (optional && present.size() != starts.size()))
    return call.refuse("the arrays of tasks are not equally long");
  return cs_DisjunctiveTasks(starts.data(), durations.data(), optional ? present.data() : nullptr, sizeOf(starts));
}

// Arguments: places and sizes along one axis and the other, as diffn has them: x, y, widths, heights.
bool rectangles(const Call &call) {
  Array x = call.array(0), y = call.array(1), widths = call.array(2), heights = call.array(3);
  if (y.size() != x.size() || widths.size() != x.size() || heights.size() != x.size())
    return call.refuse("the arrays of rectangles are not equally long");
  return cs_NoOverlap(x.data(), widths.data(), y.data(), heights.data(), sizeOf(x));
}

constexpr Row kRows[] = {
    {"koru_cumulative", "XXXx", cumulative}, {"koru_cumulative_opt", "XXXxX", cumulative},
    {"koru_disjunctive", "XX", disjunctive}, {"koru_disjunctive_opt", "XXX", disjunctive},
    {"koru_diffn", "XXXX", rectangles},
};

}  // namespace

std::span<const Row> scheduleRows() { return kRows; }

}  // namespace koru::fzn
