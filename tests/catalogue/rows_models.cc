// SPDX-License-Identifier: MIT
// The two constraints of catalogue/models.
#include "catalogue/models/models.h"
#include "catalogue/row.h"

namespace koru::catalogue {
namespace {

bool apart(const Terms &t) { return Wide{t.x[0]} + t.k[0] != t.x[1]; }

bool increasing(const Terms &t) {
  for (std::size_t i = 1; i < t.x.size(); ++i)
    if (t.x[i - 1] >= t.x[i]) return false;
  return true;
}

const Row kRows[] = {
    {"model_Apart", "vvi", door<model_Apart>, apart, Consistency::kKnown, {{4, 6}, {}, {2}}},
    {"model_Increasing", "an", door<model_Increasing>, increasing, Consistency::kBounds, {{3, 5, 4}}},
};

}  // namespace

std::span<const Row> modelRows() { return kRows; }

}  // namespace koru::catalogue
