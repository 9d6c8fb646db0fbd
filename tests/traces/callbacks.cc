// SPDX-License-Identifier: MIT
#include "traces/callbacks.h"

#include <climits>
#include <cstdlib>

#include "traces/machine.h"

namespace koru::traces {
namespace {

constexpr int kUnwanted = 99;  // the number of scripts that take odd values out

int score(const Said &said, int value) {
  if (said.number == kUnwanted && value % 2 != 0) return INT_MAX;
  return static_cast<int>(static_cast<unsigned>(said.number) * static_cast<unsigned>(value));
}

int firstFree(CSint **array, int size) {
  for (int i = 0; array != nullptr && i < size; ++i)
    if (array[i] != nullptr && cs_isFree(array[i])) return i;
  return kNull;
}

CSvalueSelector *plainSelector(const Said &said) { return cs_getValueSelector(std::abs(said.number % 5)); }

template <int S>
void undone(CSint *v, int index) {
  Machine::current->undone(v, index);
  runScript(S);
}

template <std::size_t... S>
constexpr auto undoneSlots(std::index_sequence<S...>) {
  return std::array<CSbacktrackCallback, sizeof...(S)>{&undone<static_cast<int>(S)>...};
}

// The solver must not be changed while a set is released.
void released(CSnoGoodSet *set, void *) { Machine::current->released(set); }

}  // namespace

Said runScript(int script) {
  const bool accepted = Machine::current->callback(script);
  return {accepted, Machine::current->scriptNumber(script), Machine::current->scriptCalls(script)};
}

CSint *reply(const Said &, CSint **array, int size, CSint *) {
  const int index = firstFree(array, size);
  return index < 0 ? nullptr : array[index];
}

int reply(const Said &, CSint **array, int size, int) { return firstFree(array, size); }

int reply(const Said &, CSint ***matrix, int rows, int columns, int) {
  for (int row = 0; matrix != nullptr && row < rows; ++row)
    if (firstFree(matrix[row], columns) >= 0) return row;
  return kNull;
}

int reply(const Said &, int, CSint **array, int columns, int) { return firstFree(array, columns); }

int reply(const Said &said, int, int value, int) { return score(said, value); }
int reply(const Said &said, int, int, int value, int) { return score(said, value); }

// Limits grow, so that restarts come to an end.
int reply(const Said &said, void *, int) { return said.number < 0 || said.number > 100 ? 0 : said.number + said.calls; }

const char *reply(const Said &said, void *, const char *) { return said.accepted ? "a place" : nullptr; }

bool reply(const Said &said, CSvalueSelection *r, int index, CSint **array, int size, void *state, bool) {
  return cs_selectNextValue(r, plainSelector(said), index, array, size, state) && said.accepted;
}

bool reply(const Said &said, int index, CSint **array, int size, void *state, bool) {
  if (state == Machine::current) return said.accepted;  // the found hook is of the same type, and gets an extra pointer
  return cs_initValueSelector(plainSelector(said), index, array, size, state) && said.accepted;
}

bool reply(const Said &said, CSnoGoodSet *, CSnoGood *ng, CSint **, int, void *, bool) {
  for (int i = -1; i <= cs_getNbNoGoodElements(ng); ++i) {
    int index = 0;
    CSvalueSelection decision{};
    cs_getNoGoodElementAt(&index, &decision, ng, i);
  }
  return said.accepted;
}

CSbacktrackCallback Scripted<CSbacktrackCallback>::slot(int script) {
  static const auto slots = undoneSlots(std::make_index_sequence<kScripts>{});
  return script == kNull ? nullptr : slots[static_cast<std::size_t>(script)];
}

CSnoGoodRelease Scripted<CSnoGoodRelease>::slot(int script) { return script == kNull ? nullptr : released; }

}  // namespace koru::traces
