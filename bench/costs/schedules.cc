// SPDX-License-Identifier: MIT
// Examples of schedules: ten tasks of 1 to 9 that have little more time than they need.
#include <numeric>

#include "costs/row.h"

namespace koru::bench::costs {

namespace {

constexpr int kTasks = 10;

struct Tasks {
  std::vector<int> lengths;
  Array *starts;
  Array *durations;

  Tasks(Model &m, int machines) {
    for (int i = 0; i < kTasks; ++i) lengths.push_back(1 + m.random.below(9));
    const int time = std::accumulate(lengths.begin(), lengths.end(), 0) / machines + 10;
    starts = &m.array(kTasks, 0, time);
    for (int i = 0; i < kTasks; ++i) m.require(cs_LE((*starts)[static_cast<std::size_t>(i)], time - lengthOf(i)));
    durations = &m.constants(lengths);
  }
  int lengthOf(int i) const { return lengths[static_cast<std::size_t>(i)]; }
};

// Uses of 1 to 3 of a capacity of 4.
template <auto post>
void resource(Model &m) {
  const Tasks t(m, 2);
  std::vector<int> uses;
  for (int i = 0; i < kTasks; ++i) uses.push_back(1 + m.random.below(3));
  Array &used = m.constants(uses);
  m.require(post(t.starts->data(), t.durations->data(), used.data(), CSINT(4)));
}
bool byWindows(CSint **starts, CSint **durations, CSint **uses, CSint *capacity) {
  return cs_Cumulative(starts, durations, uses, kTasks, capacity);
}
bool byTasks(CSint **starts, CSint **durations, CSint **uses, CSint *capacity) {
  return cs_CumulativeTasks(starts, durations, uses, nullptr, kTasks, capacity);
}

void oneMachine(Model &m) {
  const Tasks t(m, 1);
  m.require(cs_DisjunctiveTasks(t.starts->data(), t.durations->data(), nullptr, kTasks));
}
void byPairs(Model &m) {
  const Tasks t(m, 1);
  m.require(cs_Disjunctive(t.starts->data(), t.durations->data(), kTasks));
}
void transitions(Model &m) {
  const Tasks t(m, 1);
  constexpr int kTimes[] = {0, 1, 2, 1, 0, 1, 2, 1, 0};
  std::vector<int> states;
  for (int i = 0; i < kTasks; ++i) states.push_back(i % 3);
  m.require(cs_DisjunctiveTransitions(t.starts->data(), t.durations->data(), nullptr, states.data(), states.data(),
                                      kTasks, kTimes, 3, 3));
}
void precedences(Model &m) {
  const Tasks t(m, 1);
  for (std::size_t i = 1; i < kTasks; ++i)
    m.require(cs_PrecedenceIf(m.variable(0, 1), (*t.starts)[i - 1], (*t.durations)[i - 1], 0, (*t.starts)[i]));
}
void orders(Model &m) {
  const Tasks t(m, 1);
  for (std::size_t i = 1; i < kTasks; ++i)
    m.require(cs_EitherBefore(m.variable(0, 1), (*t.starts)[i - 1], (*t.durations)[i - 1], nullptr, (*t.starts)[i],
                              (*t.durations)[i], nullptr));
}
void alternatives(Model &m) {
  for (int i = 0; i < kTasks; ++i) {
    Array &starts = m.array(3, i, i + 20);
    Array &durations = m.constants({3, 5, 8});
    m.require(cs_Alternative(m.variable(0, 15), m.others(1, 3, 8)[0], nullptr, starts.data(), durations.data(),
                             m.array(3, 0, 1).data(), 3));
  }
}
void span(Model &m) {
  const Tasks t(m, 2);
  m.require(cs_Span(m.variable(2, 9), m.others(1, 20, 25)[0], nullptr, t.starts->data(), t.durations->data(), nullptr,
                    kTasks));
}
void reservoir(Model &m) {
  Array &changes = m.constants({3, -2, 4, -3, 2, -4, 5, -1, 3, -6});
  m.require(cs_Reservoir(m.array(kTasks, 0, 30).data(), changes.data(), nullptr, kTasks, 2, 0, 6));
}
void rectangles(Model &m) {
  constexpr int kSquares = 9;
  Array x;
  Array y;
  Array &sides = m.others({});
  for (int side = kSquares; side > 0; --side) {
    x.push_back(m.variable(0, 15 - side));
    y.push_back(m.variable(0, 21 - side));
    sides.push_back(CSINT(side));
  }
  m.require(cs_NoOverlap(x.data(), sides.data(), y.data(), sides.data(), kSquares));
}

constexpr Row kRows[] = {
    {"cs_Cumulative", "10 tasks that take 1 to 3 of 4", resource<byWindows>},
    {"cs_CumulativeTasks", "the same", resource<byTasks>},
    {"cs_Disjunctive", "10 tasks one at a time", byPairs},
    {"cs_DisjunctiveTasks", "the same", oneMachine},
    {"cs_DisjunctiveTransitions", "the same, three tools", transitions},
    {"cs_PrecedenceIf", "10 tasks, nine of one after the next", precedences},
    {"cs_EitherBefore", "10 tasks, nine before or after the next", orders},
    {"cs_Alternative", "10 tasks done by one of three", alternatives},
    {"cs_Span", "10 tasks in one of 20 to 25", span},
    {"cs_Reservoir", "10 events, a level of 0 to 6", reservoir},
    {"cs_NoOverlap", "squares of sides 9 to 1 in 15x21", rectangles},
};

}  // namespace

std::span<const Row> scheduleRows() { return kRows; }

}  // namespace koru::bench::costs
