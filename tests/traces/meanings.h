// SPDX-License-Identifier: MIT
// Meanings that take more than a line; see the table of constraints.
#pragma once

#include "traces/table.h"

namespace koru::traces::meaning {

using Value = std::optional<std::int64_t>;

Value sum(const Terms &t);
Value firstLessOthers(const Terms &t);
Value product(const Terms &t);
Value scalarProduct(const Terms &t);
Value least(const Terms &t);
Value greatest(const Terms &t);
Value element(const Terms &t);          // lists[0][x0]
Value variableElement(const Terms &t);  // x[1 + x0]
Value occurrences(const Terms &t);      // of k0 among all
bool quotient(const Terms &t);          // x0 = z * x1 * x2 * ...
bool allDifferent(const Terms &t);
bool indexOfValue(const Terms &t);  // x[z] = k0
bool counted(const Terms &t);       // x0 of the others are k0
bool accepted(const Terms &t);      // by the automaton lists[0] with k0 states over k1 symbols from k2 into lists[1]
bool cumulative(const Terms &t);    // starts, durations, uses, capacity
bool disjunctive(const Terms &t);   // starts, durations

}  // namespace koru::traces::meaning
