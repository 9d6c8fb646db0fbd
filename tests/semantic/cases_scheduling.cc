// SPDX-License-Identifier: MIT
// Up to three tasks on a resource: with so few, no feasible schedule is refused; semantic/cumulative_test.cc has more.
#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

// The columns are start, duration and use of each task, and the capacity; the call has an array of each.
template <class T>
std::vector<T> byArray(const T *columns, int n) {
  std::vector<T> result;
  for (int field = 0; field < 3; ++field)
    for (int i = 0; i < n; ++i) result.push_back(columns[3 * i + field]);
  result.push_back(columns[3 * n]);
  return result;
}

// Arrays that are kept by what was posted: the last ones, as many as there may be solvers at a time.
struct HandedOver {
  std::array<std::vector<CSint *>, 64> arrays;
  std::size_t next = 0;

  CSint **keep(std::vector<CSint *> array) {
    std::vector<CSint *> &place = arrays[next++ % arrays.size()];
    place = std::move(array);
    return place.data();
  }
};

Constraint cumulative(int n) {
  const auto handedOver = std::make_shared<HandedOver>();
  Constraint c = stated("cs_Cumulative", {n});
  c.solution = [n, inOrder = c.solution](Values t) { return inOrder(byArray(t.data(), n)); };
  c.post = [=, inOrder = c.post](CSint **x, CSint *&result) {
    return inOrder(handedOver->keep(byArray(x, n)), result);
  };
  return c;
}

// Without the array that tells who is.
Constraint allThere(const char *name, std::vector<int> sizes) {
  return constraintOf({catalogue::rowOf(name), std::move(sizes), {}, {}, 1});
}

// With one variable left, its bounds are right.
Constraint promisingLast(Constraint c) {
  c.strength = [](const Left &left, std::size_t) { return left.unbound() == 1 ? Strength::kBounds : Strength::kNone; };
  return c;
}

// Starts over six values, durations from 0 on, and who is there.
Case disjunctiveTasks() {
  Case c{"DisjunctiveTasks", {"cs_DisjunctiveTasks"}, {}, {}, 20, {1, 2, 2}};
  c.fewPatternsFrom = 5;
  c.rooms = {{0, 4}};
  c.forms = {promisingLast(stated("cs_DisjunctiveTasks", {2})), promisingLast(allThere("cs_DisjunctiveTasks", {1})),
             promisingLast(allThere("cs_DisjunctiveTasks", {2})), promisingLast(allThere("cs_DisjunctiveTasks", {3}))};
  return c;
}

// Three times, of which one is 0, between two states.
Case transitions() {
  Case c{"DisjunctiveTransitions", {"cs_DisjunctiveTransitions"}, {}, {}, 8, {1, 1, 2, false}};
  c.fewPatternsFrom = 5;
  c.rooms = {{0, 5}, {0, 5}, {0, 4}, {0, 3}};
  const catalogue::Row &row = catalogue::rowOf("cs_DisjunctiveTransitions");
  const std::vector<Wide> times{1, 0, 2, 1};
  for (const unsigned nulls : {0U, 1U}) {
    c.forms.push_back(promisingLast(constraintOf({row, {0}, {0, 0}, {{}, {}, {}}, nulls})));
    c.forms.push_back(promisingLast(constraintOf({row, {1}, {1, 1}, {{0}, {0}, {3}}, nulls})));
    c.forms.push_back(promisingLast(constraintOf({row, {2}, {2, 2}, {{0, 1}, {1, 0}, times}, nulls})));
  }
  c.forms.push_back(promisingLast(constraintOf({row, {3}, {2, 2}, {{0, 1, 0}, {1, 0, 0}, times}, 1})));
  c.forms.push_back(promisingLast(constraintOf({row, {2}, {1, 1}, {{0, 1}, {0, 0}, {0}}, 1})));
  return c;
}

Case threeDisjunctiveTasks() {
  Case c{"DisjunctiveTasksOfThree",
         {"cs_DisjunctiveTasks"},
         {},
         {{0, 5}, {0, 5}, {0, 4}, {1, 2}, {2, 1}, {1, 1}, {0, 2}},
         6,
         {1, 1, 1, false}};
  c.fewPatternsFrom = 5;
  c.forms = {promisingLast(stated("cs_DisjunctiveTasks", {3})), promisingLast(allThere("cs_DisjunctiveTasks", {3}))};
  return c;
}

Case cumulativeTasks() {
  Case c{"CumulativeTasks", {"cs_CumulativeTasks"}, {}, {}, 8, {1, 1, 2, false}};
  c.fewPatternsFrom = 5;
  c.rooms = {{0, 3}};
  c.forms = {promisingLast(stated("cs_CumulativeTasks", {1})), promisingLast(stated("cs_CumulativeTasks", {2})),
             promisingLast(allThere("cs_CumulativeTasks", {0})), promisingLast(allThere("cs_CumulativeTasks", {1})),
             promisingLast(allThere("cs_CumulativeTasks", {2}))};
  return c;
}

// Durations and uses that leave something to be decided.
Case threeCumulativeTasks() {
  Case c{"CumulativeTasksOfThree",
         {"cs_CumulativeTasks"},
         {},
         {{0, 5}, {0, 4}, {0, 4}, {1, 2}, {2, 1}, {1, 1}, {1, 2}, {1, 1}, {0, 2}, {1, 2}},
         12,
         {1, 1, 1, false}};
  c.fewPatternsFrom = 5;
  c.forms = {promisingLast(allThere("cs_CumulativeTasks", {3}))};
  return c;
}

Case noOverlap() {
  Case c{"NoOverlap", {"cs_NoOverlap"}, {}, {}, 12, {1, 1, 2, false}};
  c.fewPatternsFrom = 5;
  c.rooms = {{0, 3}};
  c.forms = {promisingLast(stated("cs_NoOverlap", {0})), promisingLast(stated("cs_NoOverlap", {1})),
             promisingLast(stated("cs_NoOverlap", {2}))};
  return c;
}

// Sizes of three that leave something to be decided.
Case threeRectangles() {
  Case c{"NoOverlapOfThree",
         {"cs_NoOverlap"},
         {},
         {{0, 4}, {0, 4}, {0, 3}, {1, 2}, {2, 1}, {1, 1}, {0, 3}, {0, 3}, {0, 3}, {1, 1}, {0, 2}, {2, 1}},
         20,
         {1, 1, 1, false}};
  c.patterns = {distinctPositions(12)};
  c.forms = {promisingLast(stated("cs_NoOverlap", {3}))};
  return c;
}

// A level that begins anywhere between the limits, or outside.
Case reservoir() {
  Case c{"Reservoir", {"cs_Reservoir"}, {}, {{0, 3}}, 10, {1, 1, 2, false}};
  c.fewPatternsFrom = 5;
  c.rooms = {{-2, 4}};
  for (const std::vector<Wide> &levels : {std::vector<Wide>{0, 0, 1}, {1, 0, 2}, {0, -2, 0}, {3, 0, 2}})
    for (const int n : {0, 1, 2, 3})
      for (const unsigned nulls : {0U, 1U})
        if (n < 3 || nulls == 1)
          c.forms.push_back(promisingLast(constraintOf({catalogue::rowOf("cs_Reservoir"), {n}, levels, {}, nulls})));
  return c;
}

// One and two parts, with and without what may be null.
Case groupCase(const char *name) {
  Case c{std::string(name).substr(3), {name}, {}, {}, 8, {1, 1, 2, false}};
  c.fewPatternsFrom = 5;
  c.rooms = {{0, 3}};
  for (const unsigned nulls : {0U, 1U, 2U, 3U})
    for (const int n : {0, 1, 2})
      c.forms.push_back(promisingLast(constraintOf({catalogue::rowOf(name), {n}, {}, {}, nulls})));
  return c;
}

Constraint disjunctive(int n) { return stated("cs_Disjunctive", {n}); }

}  // namespace

Cases schedulingCases() {
  const Effort lean{1, 2, 2};
  // A variable that is the capacity is no use as well: that may abort.
  Case one{"CumulativeOfOneTask", {"cs_Cumulative"}, {cumulative(1)}, {{0, 4}, {0, 3}, {0, 3}, {0, 4}}, 600};
  one.patterns = {{0, 1, 2, 3}, {0, 0, 1, 2}, {0, 1, 0, 2}, {0, 1, 1, 2}, {0, 0, 0, 1}, {0, 1, 2, 0}, {0, 1, 2, 1}};
  Case two{"Cumulative", {"cs_Cumulative"}, {cumulative(2)}, {{0, 3}, {0, 3}, {0, 3}}, 60, lean};
  two.patterns = {{0, 1, 2, 3, 4, 5, 6}, {0, 1, 2, 0, 3, 4, 5}, {0, 1, 2, 3, 1, 4, 5}, {0, 1, 2, 3, 4, 2, 5},
                  {0, 1, 2, 0, 1, 2, 3}, {0, 1, 1, 2, 3, 4, 5}, {0, 1, 2, 3, 0, 4, 5}, {0, 1, 2, 3, 4, 3, 5}};
  Case three{"CumulativeOfThreeTasks",
             {"cs_Cumulative"},
             {cumulative(3)},
             {{0, 3}, {1, 2}, {1, 1}, {0, 3}, {1, 2}, {1, 1}, {0, 3}, {2, 1}, {1, 2}, {1, 2}},
             400,
             lean};
  three.patterns = {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, {0, 1, 2, 3, 1, 4, 5, 6, 7, 8}, {0, 1, 2, 3, 4, 2, 5, 6, 7, 8}};
  Case pair{"DisjunctiveOfTwoTasks", {"cs_Disjunctive"}, {disjunctive(1), disjunctive(2)}, {{0, 4}}, 60};
  Case more{"Disjunctive", {"cs_Disjunctive"}, {disjunctive(3)}, {{0, 5}, {0, 4}, {0, 4}, {1, 2}}, 500, lean};
  more.patterns = {{0, 1, 2, 3, 4, 5}, {0, 1, 2, 3, 3, 3}, {0, 1, 2, 3, 4, 3}};
  return {one,
          two,
          three,
          pair,
          more,
          disjunctiveTasks(),
          threeDisjunctiveTasks(),
          cumulativeTasks(),
          threeCumulativeTasks(),
          groupCase("cs_Alternative"),
          groupCase("cs_Span"),
          noOverlap(),
          threeRectangles(),
          reservoir(),
          transitions()};
}

}  // namespace koru::test::brute
