// SPDX-License-Identifier: MIT
// The constraints of koru_extras.h.
#include "catalogue/relations.h"
#include "catalogue/row.h"
#include "koru_extras.h"

namespace koru::catalogue {

namespace {

using enum Consistency;

// A row: {"cs_Name", "kinds", door<cs_Name>, relation, kDomain, {{values that violate it}}}
const Row kRows[] = {
    {"cs_AllNeqBounds", "an", door<cs_AllNeqBounds>, allDifferent, kBounds, {{7, 1, 7}}},
    {"cs_AllNeqDomain", "an", door<cs_AllNeqDomain>, allDifferent, kDomain, {{7, 1, 7}}},
};

}  // namespace

std::span<const Row> extraRows() { return kRows; }

}  // namespace koru::catalogue
