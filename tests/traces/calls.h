// SPDX-License-Identifier: MIT
// From a line to a call: the arguments are read by the types of the function's parameters, so that a row of the table
// needs no code of its own unless the function is variadic or wants its arguments to fit one another.
#pragma once

#include <algorithm>
#include <climits>
#include <tuple>

#include "traces/callbacks.h"
#include "traces/machine.h"

namespace koru::traces {

class Reader {
 public:
  Reader(Machine &machine, const Line &line) : machine_(machine), line_(line), kind_(line.row->kinds) {}

  template <class T>
  T next() {
    if constexpr (std::is_pointer_v<T> && std::is_function_v<std::remove_pointer_t<T>>) {
      return Scripted<T>::slot(take().number);
    } else {
      return read(static_cast<T *>(nullptr));
    }
  }

  const Arg &take() {
    while (*kind_ == 'x') ++kind_;
    ++kind_;
    return line_.args[at_++];
  }

 private:
  // No more than the arrays before it hold.
  int read(const int *) {
    const bool size = *kind_ == 'n';
    const int number = take().number;
    return size ? std::min(number, limit_) : number;
  }
  CSint *read(CSint *const *) { return machine_.variable(take().number); }
  CSint **read(CSint **const *) {
    const Arg &arg = take();
    if (arg.number == kNull) return nullptr;
    shorten(arg);
    return machine_.array(arg.list);
  }
  int *read(int *const *) {
    const Arg &arg = take();
    if (arg.number == kNull) return nullptr;
    shorten(arg);
    std::vector<int> &ints = machine_.kept().ints.emplace_back(arg.list);
    ints.push_back(0);
    return ints.data();
  }
  const int *read(const int *const *) { return read(static_cast<int *const *>(nullptr)); }
  CSvalueSelector *read(CSvalueSelector *const *) { return machine_.selector(take().number); }
  CSvalueSelector **read(CSvalueSelector **const *) {
    const Arg &arg = take();
    if (arg.number == kNull) return nullptr;
    shorten(arg);
    return machine_.selectorArray(arg.list);
  }
  CSsearchNotify *read(CSsearchNotify *const *) { return machine_.hooks(take().number); }
  const CSsearchNotify *read(const CSsearchNotify *const *) { return machine_.hooks(take().number); }
  CSnoGoodSet *read(CSnoGoodSet *const *) { return machine_.set(take().number); }
  CSprofiler *read(CSprofiler *const *) { return machine_.profiler(take().number); }
  const char *read(const char *const *) {
    const Arg &arg = take();
    return arg.number == kNull ? nullptr : arg.text.c_str();
  }
  void *read(void *const *) {
    ++kind_;
    return &machine_;
  }
  std::FILE *read(std::FILE *const *) {
    ++kind_;
    return machine_.scratch();
  }
  int *read(int **const *) = delete;
  void shorten(const Arg &arg) { limit_ = std::min(limit_, static_cast<int>(arg.list.size())); }

  Machine &machine_;
  const Line &line_;
  const char *kind_;
  std::size_t at_ = 0;
  int limit_ = INT_MAX;
};

template <auto F>
struct Call;

template <class R, class... A, R (*F)(A...)>
struct Call<F> {
  static void run(Machine &machine, const Line &line) {
    Reader in(machine, line);
    std::tuple<A...> arguments{in.next<A>()...};
    if constexpr (std::is_void_v<R>) {
      std::apply(F, arguments);
    } else if constexpr (std::is_integral_v<R>) {
      machine.answer(line, static_cast<int>(std::apply(F, arguments)));
    } else {
      machine.answer(line, std::apply(F, arguments));
    }
  }
};

template <auto F>
constexpr auto call = &Call<F>::run;

}  // namespace koru::traces
