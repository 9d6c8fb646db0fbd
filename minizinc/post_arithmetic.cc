// SPDX-License-Identifier: MIT
// Products, quotients, powers, absolute values, the least and the greatest.
#include <climits>

#include "minizinc/postings.h"

namespace koru::fzn {

namespace {

// Whether all products of two values are ints.
bool fitsMultiplied(const Call &call, const Operand &x, const Operand &y) {
  for (const long long a : {call.variables.low(x), call.variables.high(x)}) {
    for (const long long b : {call.variables.low(y), call.variables.high(y)}) {
      long long product = 0;
      if (__builtin_mul_overflow(a, b, &product) || product < INT_MIN || product > INT_MAX) return false;
    }
  }
  return true;
}

bool times(const Call &call) {
  const Operand x = call.operand(0), y = call.operand(1);
  if (x.isConstant || y.isConstant) {
    const Operand factor = x.isConstant ? y : x;
    Array terms = {call.variables.get(factor), call.variable(2)};
    const long long coefficients[] = {x.isConstant ? x.value : y.value, -1};
    return cs_Linear(terms.data(), coefficients, 2, CS_METHOD_EQ, 0);
  }
  CSint *left = call.variable(0), *right = call.variable(1);
  if (left == right) return cs_Pow(left, call.variables.constant(2), call.variable(2));
  const bool fits = fitsMultiplied(call, x, y);
  CSint *product = cs_Mul(left, right);
  // A product that is no int shows as the nearest one.
  if (!fits && !(cs_LT(product, INT_MAX) && cs_GT(product, INT_MIN))) return false;
  return call.define(2, product);
}

bool divide(const Call &call) { return cs_DivTrunc(call.variable(0), call.variable(1), call.variable(2)); }
bool remainder(const Call &call) { return cs_Mod(call.variable(0), call.variable(1), call.variable(2)); }
bool power(const Call &call) { return cs_Pow(call.variable(0), call.variable(1), call.variable(2)); }
bool absolute(const Call &call) { return call.define(1, cs_Abs(call.variable(0))); }

// --- The greatest and the least ---

// cs_Max keeps all variables below the result and the result below the greatest maximum. What it does not see: where
// one variable alone can reach the minimum of the result, it has to. The result is the last of the array.
bool lastToReach(CSint **array, int size, void *) {
  const int low = cs_getMin(array[size - 1]);
  CSint *only = nullptr;
  for (int i = 0; i < size - 1; ++i) {
    if (cs_getMax(array[i]) < low) continue;
    if (only != nullptr) return true;
    only = array[i];
  }
  return only != nullptr && cs_GE(only, low);
}

// The same for cs_Min.
bool lastToReachDown(CSint **array, int size, void *) {
  const int high = cs_getMax(array[size - 1]);
  CSint *only = nullptr;
  for (int i = 0; i < size - 1; ++i) {
    if (cs_getMin(array[i]) > high) continue;
    if (only != nullptr) return true;
    only = array[i];
  }
  return only != nullptr && cs_LE(only, high);
}

// The greatest (the least) of no numbers is none.
template <CSint *extreme(CSint **, int), CSeventAllKnownCallback last>
bool makeExtreme(const Call &call, std::size_t result, Array operands) {
  Array &array = call.keep(std::move(operands));
  if (array.empty() || !call.define(result, extreme(array.data(), sizeOf(array)))) return false;
  Array watched = array;
  watched.push_back(call.variable(result));
  return cs_eventRun(watched.data(), sizeOf(watched), last, nullptr);
}

template <CSint *extreme(CSint **, int), CSeventAllKnownCallback last>
bool extremeOf(const Call &call) {
  return makeExtreme<extreme, last>(call, 0, call.array(1));
}

template <CSint *extreme(CSint **, int), CSeventAllKnownCallback last>
bool extremeOfTwo(const Call &call) {
  return makeExtreme<extreme, last>(call, 2, {call.variable(0), call.variable(1)});
}

constexpr Row kRows[] = {
    {"int_times", "xxx", times, false, 2},
    {"int_div", "xxx", divide},
    {"int_mod", "xxx", remainder},
    {"int_pow", "xxx", power},
    {"int_pow_fixed", "xcx", power},
    {"int_abs", "xx", absolute, false, 1},
    {"int_max", "xxx", extremeOfTwo<cs_Max, lastToReach>, false, 2},
    {"int_min", "xxx", extremeOfTwo<cs_Min, lastToReachDown>, false, 2},
    {"array_int_maximum", "xX", extremeOf<cs_Max, lastToReach>, false, 0},
    {"array_int_minimum", "xX", extremeOf<cs_Min, lastToReachDown>, false, 0},
};

}  // namespace

std::span<const Row> arithmeticRows() { return kRows; }

}  // namespace koru::fzn
