// SPDX-License-Identifier: MIT
// A table of calls with ints at the ends of their ranges and pointers that are null: a row for each function, run with
// every pair of values for every two of its ints.
#pragma once

#include <climits>
#include <deque>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "catalogue/row.h"
#include "core/solver.h"
#include "support/kit/solver_test.h"

namespace koru::test::limits {

// What stands for an int in a row.
//   v: any value          s: the size of an array of three        i: a position in it
constexpr int kEndValues[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX - 1, INT_MAX};
constexpr int kEndSizes[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, 2, 3};
constexpr int kPositions[] = {0, 1, 2, 0, 1, 2, 0};
constexpr int kLevels = 7;

inline int valueOf(char kind, int level) {
  switch (kind) {
    case 's':
      return kEndSizes[level];
    case 'i':
      return kPositions[level];
    default:
      return kEndValues[level];
  }
}

// x and y over -5..5, b over 0..1, w over all ints; arrays of x, y, b that are kept.
struct Operands {
  CSint *x = cs_createCSint(-5, 5);
  CSint *y = cs_createCSint(-5, 5);
  CSint *b = cs_createCSint(0, 1);
  CSint *w = cs_createCSint(INT_MIN, INT_MAX);
  CSint *array[3] = {x, y, b};
  CSint *wide[3] = {w, x, w};
  // Arrays that are kept.
  std::deque<std::vector<int>> ints;
  std::deque<std::vector<long long>> longs;
  std::deque<std::vector<CSint *>> arrays;

  int *keep(std::vector<int> values) {
    ints.push_back(std::move(values));
    return ints.back().data();
  }
};

// One call's ints and which of its pointers is null; a row takes its operands through it.
class Arguments {
 public:
  Arguments(std::vector<int> ints, int null) : ints_(std::move(ints)), null_(null) {}

  int operator[](std::size_t i) const { return ints_[i]; }
  bool anyNull() const { return null_ >= 0; }
  bool anyNullBut(int position) const { return null_ >= 0 && null_ != position; }
  template <class T>
  T *pointer(int position, T *value) const {
    return position == null_ ? nullptr : value;
  }

  std::string text() const {
    std::string result = "(";
    for (const int each : ints_) result += std::to_string(each) + ", ";
    return result + (anyNull() ? "pointer " + std::to_string(null_) + " null)" : "no null pointer)");
  }

 private:
  std::vector<int> ints_;
  int null_;
};

// `call` answers whether the result is the specified one.
struct LimitsRow {
  const char *function;
  std::string ints;
  int pointers;
  std::function<bool(Operands &o, const Arguments &a)> call;
};

inline void PrintTo(const LimitsRow &row, std::ostream *out) { *out << row.function; }

// Exhausted memory is the specified answer where a set of far-apart values would be needed.
inline bool refused() { return cs_getErr() == CS_ERR_MEMORY; }

// What the catalogue says about a constraint.
LimitsRow defaultRow(const catalogue::Row &row);

// The rows of a file each.
std::vector<LimitsRow> variableRows();
std::vector<LimitsRow> arithmeticRows();
std::vector<LimitsRow> globalRows();
std::vector<LimitsRow> searchRows();

}  // namespace koru::test::limits
