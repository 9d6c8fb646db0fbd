// SPDX-License-Identifier: MIT
// An exported function as a table has it: called with arguments of any kind, each read by the type of its parameter.
#pragma once

#include <algorithm>
#include <type_traits>
#include <utility>

#include "koru.h"

namespace koru::catalogue {

// One argument; its letter among the row's kinds says which field counts.
struct Actual {
  CSint *variable = nullptr;
  CSint **variables = nullptr;
  long long number = 0;
  int *ints = nullptr;
  long long *longs = nullptr;
};

// A result that is a variable as a number: whether there is one.
struct Answer {
  int number = 0;
  CSint *result = nullptr;
};

// A call stands on a line of its own, and is not the last thing done: a profiler finds the line, and a call in the last
// place may become a jump.
struct Door {
  Answer (*call)(const Actual *) = nullptr;
  int line = 0;
  bool makes = false;  // a variable
  const char *file = __FILE__;
};

inline Answer answer(CSint *result) { return {result != nullptr ? 1 : 0, result}; }
inline Answer answer(int number) { return {number, nullptr}; }

template <class T>
T as(const Actual &a) {
  if constexpr (std::is_integral_v<T>) {
    return static_cast<T>(a.number);
  } else if constexpr (std::is_same_v<T, CSint *>) {
    return a.variable;
  } else if constexpr (std::is_same_v<T, CSint **>) {
    return a.variables;
  } else if constexpr (std::is_same_v<std::remove_const_t<std::remove_pointer_t<T>>, long long>) {
    return a.longs;
  } else {
    return a.ints;
  }
}

// In a namespace without a name, so that each file of rows has functions of its own in one piece: where files share
// functions, readers of debug information may find no line for them. Nor are the functions that call inlined: some
// readers tell the line of the function that they stand in then.
namespace {

template <auto F>
struct Through;

template <class R, class... A, R (*F)(A...)>
struct Through<F> {
  static constexpr bool kMakes = std::is_pointer_v<R>;
  static Answer call(const Actual *a) { return pass(a, std::index_sequence_for<A...>()); }

  static constexpr int kLine = __LINE__ + 3;
  template <std::size_t... i>
  [[gnu::noinline]] static Answer pass(const Actual *a, std::index_sequence<i...>) {
    const R result = F(as<A>(a[i])...);
    return answer(result);
  }
};

template <auto F>
constexpr Door door{&Through<F>::call, Through<F>::kLine, Through<F>::kMakes};

// f(n, ...) with up to four variables as a function of an array and its size. What stands behind the first n arguments
// is not read.
template <auto F>
struct Spread {
  static constexpr int kLine = __LINE__ + 4;
  static Answer call(const Actual *a) {
    CSint *x[4] = {};
    if (a[0].variables != nullptr) std::copy_n(a[0].variables, std::clamp(a[1].number, 0LL, 4LL), x);
    CSint *const result = F(static_cast<int>(a[1].number), x[0], x[1], x[2], x[3]);
    return answer(result);
  }
};

template <auto F>
constexpr Door spread{&Spread<F>::call, Spread<F>::kLine, true};

}  // namespace
}  // namespace koru::catalogue
