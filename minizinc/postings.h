// SPDX-License-Identifier: MIT
// The constraints that are known, by name, and the functions that post them.
#ifndef KORU_MINIZINC_POSTINGS_H
#define KORU_MINIZINC_POSTINGS_H

#include "minizinc/call.h"

namespace koru::fzn {

// Posts a constraint. False when the solver refuses it, or with a mistake.
using Post = bool (*)(const Call &);

/**
 * A kind of constraint. Arguments, a letter each:
 *   x  an int or bool, fixed or not      X  an array of these
 *   c  one that is fixed                 C  an array of these
 *   s  a set                             S  an array of sets
 */
struct Row {
  const char *name;
  const char *arguments;
  Post post;
  bool ties = false;  // there are name_reif and name_imp as well, with a truth value x at the end
  int result = -1;    // the argument that it can make when that is not made yet
};

std::span<const Row> comparisonRows();
std::span<const Row> linearRows();
std::span<const Row> arithmeticRows();
std::span<const Row> logicRows();
std::span<const Row> elementRows();
std::span<const Row> permutationRows();
std::span<const Row> countingRows();
std::span<const Row> sequenceRows();
std::span<const Row> scheduleRows();

// x op y and x op value, stated or tied to the call's truth value; methods are CS_METHOD_...
bool compareVariables(const Call &call, Tie tie, int method, CSint *x, CSint *y);
bool compareConstant(const Call &call, Tie tie, int method, CSint *x, long long value);

std::size_t nbArguments(const Row &row, Form form);

// The row for a name, if there are several the one with as many arguments, and the form that the name has; null when no
// constraint is called that.
const Row *findRow(std::string_view name, std::size_t arguments, Form &form);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_POSTINGS_H
