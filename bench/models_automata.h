// SPDX-License-Identifier: MIT
// Benchmark problems that rest on automata, as programs for Koru.
#pragma once

#include <cstddef>
#include <vector>

#include "instances.h"
#include "run.h"

namespace koru::bench {

// A transition table by state, then by symbol, -1 for none; the start is state 0.
struct Automaton {
  int states;
  int symbols;
  std::vector<int> table;
  std::vector<int> finals;

  bool post(Array &x) const {
    return cs_Regular(x.data(), static_cast<int>(x.size()), table.data(), states, symbols, 0, finals.data(),
                      static_cast<int>(finals.size())) == 1;
  }

  double edges(double positions) const {
    double transitions = 0;
    for (const int target : table) transitions += target >= 0 ? 1 : 0;
    return transitions * positions;
  }
};

// Transitions drawn at random, one in eight absent; every second state is final.
inline Automaton randomAutomaton(int states, int symbols) {
  Random random(3);
  Automaton result{states, symbols, {}, {}};
  for (int i = 0; i < states * symbols; ++i) result.table.push_back(random.below(8) == 0 ? -1 : random.below(states));
  for (int q = 0; q < states; q += 2) result.finals.push_back(q);
  return result;
}

// ----- posting alone

template <int length, int states, int symbols>
Outcome postAutomaton() {
  const Automaton automaton = randomAutomaton(states, symbols);
  Lifetime lifetime;
  Outcome outcome;
  Array &x = lifetime.array(length, 0, symbols - 1);
  if (automaton.post(x)) outcome.units = static_cast<long long>(automaton.edges(length));
  return outcome;
}

// ----- propagation alone: every domain is halved and then bound, in a context that is restored

inline bool halveAndBind(const Array &x) {
  for (CSint *v : x)
    if (!cs_GE(v, (cs_getMin(v) + cs_getMax(v) + 1) / 2)) return false;
  for (CSint *v : x)
    if (!cs_EQ(v, cs_getMin(v))) return false;
  return true;
}

template <int length, int states, int symbols, int times>
Outcome cascade() {
  const Automaton automaton = randomAutomaton(states, symbols);
  Lifetime lifetime;
  Outcome outcome;
  Array &x = lifetime.array(length, 0, symbols - 1);
  if (!automaton.post(x)) return outcome;
  for (int i = 0; i < times; ++i) {
    cs_saveContext();
    if (!halveAndBind(x)) return Outcome{};
    cs_restoreContext();
    outcome.units += 2 * length;
  }
  return outcome;
}

// ----- nonograms

// The blocks of coloured cells of a line.
inline std::vector<int> blocksOf(const std::vector<int> &cells) {
  std::vector<int> blocks;
  int length = 0;
  for (std::size_t i = 0; i <= cells.size(); ++i) {
    const bool coloured = i < cells.size() && cells[i] == 1;
    if (!coloured && length > 0) blocks.push_back(length);
    length = coloured ? length + 1 : 0;
  }
  return blocks;
}

// A state for the gap before each block and one for each of its cells; the last one is final.
inline Automaton automatonOf(const std::vector<int> &blocks) {
  Automaton result{0, 2, {}, {}};
  const auto add = [&result](int onBlank, int onColour) {
    result.table.push_back(onBlank);
    result.table.push_back(onColour);
    ++result.states;
  };
  for (std::size_t block = 0; block < blocks.size(); ++block) {
    add(result.states, result.states + 1);
    for (int cell = 1; cell < blocks[block]; ++cell) add(-1, result.states + 1);
    add(result.states + (block + 1 < blocks.size() ? 1 : 0), -1);
  }
  if (blocks.empty()) add(0, -1);
  result.finals.push_back(result.states - 1);
  return result;
}

// The clues of a random picture, as automata: a row each, then a column each.
struct Nonogram {
  int size;
  std::vector<Automaton> lines;

  Nonogram(Random &random, int side) : size(side) {
    const auto n = static_cast<std::size_t>(side);
    std::vector<std::vector<int>> rows(n, std::vector<int>(n));
    std::vector<std::vector<int>> columns(n, std::vector<int>(n));
    for (std::size_t i = 0; i < n * n; ++i) rows[i / n][i % n] = columns[i % n][i / n] = random.below(100) < 45 ? 1 : 0;
    for (const auto &row : rows) lines.push_back(automatonOf(blocksOf(row)));
    for (const auto &column : columns) lines.push_back(automatonOf(blocksOf(column)));
  }

  // The cell at a place of a line.
  std::size_t cell(std::size_t line, std::size_t place) const {
    const auto n = static_cast<std::size_t>(size);
    return line < n ? line * n + place : place * n + line - n;
  }
};

inline std::vector<Nonogram> randomNonograms(int size, std::size_t count) {
  Random random(5);
  std::vector<Nonogram> result;
  while (result.size() < count) result.emplace_back(random, size);
  return result;
}

inline bool postNonogram(Lifetime &lifetime, const Nonogram &puzzle, const Array &cells) {
  for (std::size_t line = 0; line < puzzle.lines.size(); ++line) {
    Array &x = lifetime.array();
    for (std::size_t place = 0; place < static_cast<std::size_t>(puzzle.size); ++place)
      x.push_back(cells[puzzle.cell(line, place)]);
    if (!puzzle.lines[line].post(x)) return false;
  }
  return true;
}

inline Outcome solveNonograms(const std::vector<Nonogram> &puzzles) {
  Outcome outcome;
  for (const Nonogram &puzzle : puzzles) {
    Lifetime lifetime;
    Array &cells = lifetime.array(puzzle.size * puzzle.size, 0, 1);
    if (postNonogram(lifetime, puzzle, cells)) findFirst(outcome, cells, cs_findFreeVar);
  }
  return outcome;
}

template <int size, std::size_t count>
Outcome nonograms() {
  static const std::vector<Nonogram> puzzles = randomNonograms(size, count);
  return solveNonograms(puzzles);
}

// ----- rosters

// Three weeks of shifts, off, early, late or night, for 24 people. At most five days of work in a row, in which no
// shift is followed by an earlier one; on each day so many have each shift.
struct Roster {
  static constexpr int kPeople = 24;
  static constexpr int kDays = 21;
  static constexpr int kShifts = 4;
  static constexpr int kMostInARow = 5;
  static constexpr int kNeeded[kShifts] = {10, 5, 5, 4};

  // A day's shifts, all people's, one after the other; who comes first changes from day to day, as those do who get
  // what is tried first.
  static constexpr int cell(int person, int day) {
    return day * kPeople + (person + (kPeople - kNeeded[0]) * day) % kPeople;
  }
  static constexpr int beginOf(int day) { return day * kPeople; }

  // State 0 is a day off; the others are the days worked and the last shift.
  static Automaton rules() {
    constexpr int kKinds = kShifts - 1;
    Automaton result{1 + kMostInARow * kKinds, kShifts, {}, {}};
    for (int q = 0; q < result.states; ++q) {
      const int days = q == 0 ? 0 : (q - 1) / kKinds + 1;
      const int last = q == 0 ? 1 : (q - 1) % kKinds + 1;
      result.table.push_back(0);
      for (int shift = 1; shift < kShifts; ++shift)
        result.table.push_back(shift < last || days == kMostInARow ? -1 : days * kKinds + shift);
      result.finals.push_back(q);
    }
    return result;
  }
};

inline Outcome roster() {
  static const Automaton rules = Roster::rules();
  Outcome outcome;
  Lifetime lifetime;
  Array &x = lifetime.array(Roster::kPeople * Roster::kDays, 0, Roster::kShifts - 1);
  for (int person = 0; person < Roster::kPeople; ++person) {
    Array &line = lifetime.array();
    for (int day = 0; day < Roster::kDays; ++day)
      line.push_back(x[static_cast<std::size_t>(Roster::cell(person, day))]);
    if (!rules.post(line)) return outcome;
  }
  for (int day = 0; day < Roster::kDays; ++day)
    for (int shift = 0; shift < Roster::kShifts; ++shift)
      if (!cs_OccurConstraints(CSINT(Roster::kNeeded[shift]), shift, &x[static_cast<std::size_t>(Roster::beginOf(day))],
                               Roster::kPeople))
        return outcome;
  findFirst(outcome, x, cs_findFreeVar);
  return outcome;
}

}  // namespace koru::bench
