// SPDX-License-Identifier: MIT
// Callbacks of every type that the library takes: eight of each, one for each script. Each runs its script and then
// answers as a plain callback of its type does, unless the script refuses.
#pragma once

#include <array>
#include <utility>

#include "koru.h"
#include "traces/trace.h"

namespace koru::traces {

// What the script answers: whether it accepts the call, and its number; and how often it has been called.
struct Said {
  bool accepted;
  int number;
  int calls;
};

Said runScript(int script);

CSint *reply(const Said &said, CSint **array, int size, CSint *);
int reply(const Said &said, CSint **array, int size, int);
int reply(const Said &said, CSint ***matrix, int rows, int columns, int);
int reply(const Said &said, int row, CSint **array, int columns, int);
int reply(const Said &said, int index, int value, int);
int reply(const Said &said, int row, int column, int value, int);
int reply(const Said &said, void *extra, int);
const char *reply(const Said &said, void *extra, const char *);
bool reply(const Said &said, CSvalueSelection *r, int index, CSint **array, int size, void *state, bool);
bool reply(const Said &said, int index, CSint **array, int size, void *state, bool);
bool reply(const Said &said, CSnoGoodSet *set, CSnoGood *ng, CSint **array, int size, void *extra, bool);

template <class F>
struct Scripted;

// The last argument of reply tells the type of the result, for overloading.
template <class R, class... A>
struct Scripted<R (*)(A...)> {
  static auto slot(int script) -> R (*)(A...) {
    return script == kNull ? nullptr : kSlots[static_cast<std::size_t>(script)];
  }

 private:
  template <int S>
  static R answer(A... args) {
    const Said said = runScript(S);
    if constexpr (std::is_void_v<R>) {
      return;
    } else if constexpr (requires { reply(said, args..., R{}); }) {
      return reply(said, args..., R{});
    } else {
      return said.accepted;
    }
  }

  template <std::size_t... S>
  static constexpr auto makeSlots(std::index_sequence<S...>) {
    return std::array<R (*)(A...), sizeof...(S)>{&answer<static_cast<int>(S)>...};
  }
  static inline const auto kSlots = makeSlots(std::make_index_sequence<kScripts>{});
};

// These say something to the models before the script runs, or instead of it.
template <>
struct Scripted<CSbacktrackCallback> {
  static CSbacktrackCallback slot(int script);
};
template <>
struct Scripted<CSnoGoodRelease> {
  static CSnoGoodRelease slot(int script);
};

}  // namespace koru::traces
