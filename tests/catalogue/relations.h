// SPDX-License-Identifier: MIT
// Relations and functions of values that take more than a line, or that several rows share.
#pragma once

#include "catalogue/terms.h"

namespace koru::catalogue {

using T = const Terms &;

// A sum of products that says on which side of every int it lies even when it does not fit.
class Sum {
 public:
  void add(Wide a, Wide b = 1) {
    wrapped_ += static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b);
    about_ += static_cast<double>(a) * static_cast<double>(b);
  }
  // Exact below 2^62, and 2^62 or more of the same sign beyond.
  Wide value() const {
    constexpr Wide kMost = Wide{1} << 62;
    if (about_ < static_cast<double>(kMost) && about_ > -static_cast<double>(kMost)) return static_cast<Wide>(wrapped_);
    return about_ > 0 ? kMost : -kMost;
  }

 private:
  std::uint64_t wrapped_ = 0;
  double about_ = 0;
};

// Of two variables, and of one and an int.
bool equal(T t);
bool different(T t);
bool atMost(T t);
bool below(T t);
bool atLeast(T t);
bool above(T t);
bool equalsInt(T t);
bool differsFromInt(T t);
bool atMostInt(T t);
bool belowInt(T t);
bool atLeastInt(T t);
bool aboveInt(T t);

// Of a variable and the ints of a list, or those from k0 to k1.
bool among(T t);
bool notAmong(T t);
bool within(T t);
bool notWithin(T t);

// 1 where it holds, 0 elsewhere.
template <bool (*Holds)(T)>
Value outcome(T t) {
  return Holds(t) ? 1 : 0;
}

Value sum(T t);
Value firstLessOthers(T t);
Value product(T t);
Value scalarProduct(T t);
Value least(T t);
Value greatest(T t);
Value element(T t);          // lists[0][x0]
Value variableElement(T t);  // x[1 + x0]
Value occurrences(T t);      // of k0 among all
bool quotient(T t);          // x0 = z * x1 * x2 * ...
bool allDifferent(T t);
bool indexOfValue(T t);  // x[z] = k0
bool counted(T t);       // x0 of the array are k0
bool accepted(T t);      // by the automaton lists[0] with k0 states over k1 symbols from k2 into lists[1]
bool cumulative(T t);    // starts, durations, uses, capacity
bool disjunctive(T t);   // starts, durations

}  // namespace koru::catalogue
