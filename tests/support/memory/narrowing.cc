// SPDX-License-Identifier: MIT
// Propagation: what is posted while there is memory is narrowed when there is none. Handlers note, signal and make bit
// arrays.
#include "core/solver.h"
#include "support/memory/scenario.h"

namespace koru::test {

namespace {

using Narrow = bool (*)(CSint *, int);

enum class Step { kDone, kWithoutMemory, kSucceededWithoutMemory };

// A narrowing in a context of its own, taken back when the constraint refuses it.
Step step(Narrow narrow, CSint *v, int value) {
  const int open = solver::contexts.count();
  cs_saveContext();
  if (solver::contexts.count() == open) return Step::kWithoutMemory;
  const bool narrowed = narrow(v, value);
  if (cs_getErr() != CS_ERR_NONE) return narrowed ? Step::kSucceededWithoutMemory : Step::kWithoutMemory;
  if (!narrowed) cs_restoreContext();
  return Step::kDone;
}

// Bit arrays of others would be as large as memory.
bool isSmall(const CSint *v) { return distance(v->initialMin, v->initialMax) < 10000; }

// A hole next to the minimum, a value less at either end, and then the second of those left.
Step narrowInManyWays(CSint *v) {
  Step made = Step::kDone;
  if (!isBound(v) && isSmall(v)) made = step(cs_NEQ, v, valueAfter(v, v->min));
  if (made == Step::kDone && !isBound(v)) made = step(cs_GE, v, valueAfter(v, v->min));
  if (made == Step::kDone && !isBound(v)) made = step(cs_LE, v, valueBefore(v, v->max));
  if (made == Step::kDone && !isBound(v)) made = step(cs_EQ, v, valueAfter(v, v->min));
  return made;
}

// Its variables are the stage's as far as it has some.
void addPosting(Scenarios &scenarios, const catalogue::Row &row) {
  const std::size_t variables = catalogue::exampleOf(row).arity() + (row.makes() ? 1 : 0);
  for (std::size_t i = 0; i < variables; ++i) {
    scenarios.addPrepared(
        std::string("narrowing/") + row.name + "-" + std::to_string(i),
        [&row](Stage &s) {
          s.postings.emplace_back(row, std::vector{s.x, s.y, s.z}).post();
        },
        [i](Stage &s) { return narrowInManyWays(s.postings.back().variables()[i]) != Step::kWithoutMemory; });
  }
}

// The second of three positions goes, from the middle of the index: for want of a common value,
void addLossOfAPosition(Scenarios &scenarios) {
  const auto prepare = [](Stage &s) {
    CSint *second = fromValues({1, 5, 8, 9});
    CSint *index = cs_createCSint(0, 2);
    CSint *value = cs_VarElement(index, s.keep({s.x, second, s.y}), 3);
    s.variables = {second, index};
    cs_NEQ(value, 1);
    cs_LE(value, 7);
  };
  const auto isLost = [](const Stage &s) { return values(s.variables[1]) == std::vector{0, 2}; };
  scenarios.addPrepared("narrowing/position-lost", prepare,
                        [isLost](Stage &s) { return cs_NEQ(s.variables[0], 5) && isLost(s); });
  scenarios.addPrepared("narrowing/position-lost-by-bound", prepare,
                        [isLost](Stage &s) { return cs_GE(s.variables[0], 6) && isLost(s); });
}

// and of a common range.
void addLossOfAPositionByRange(Scenarios &scenarios) {
  scenarios.addPrepared(
      "narrowing/position-lost-by-range",
      [](Stage &s) {
        CSint *index = cs_createCSint(0, 2);
        CSint *value = cs_VarElementRange(index, s.array("xyz"), 3);
        s.variables = {index};
        cs_LE(value, 6);
      },
      [](Stage &s) {
        return cs_GE(s.y, 8) && values(s.variables[0]) == std::vector{0, 2};
      });
}

// Tasks that need more than there is left must not take any time.
void addRefusalOfTasks(Scenarios &scenarios) {
  scenarios.addPrepared(
      "narrowing/tasks-refused",
      [](Stage &s) {
        CSint *capacity = cs_createCSint(0, 9);
        cs_Cumulative(s.array("xy"), s.array("zc"), s.array("tt"), 2, capacity);
        s.variables = {capacity};
      },
      [](Stage &s) { return cs_LE(s.variables[0], 1) && cs_getMax(s.z) == 0 && cs_getMax(s.c) == 0; });
}

}  // namespace

void addNarrowings(Scenarios &scenarios) {
  for (const catalogue::Row *row : catalogue::postingRows()) addPosting(scenarios, *row);
  addLossOfAPosition(scenarios);
  addLossOfAPositionByRange(scenarios);
  addRefusalOfTasks(scenarios);
}

}  // namespace koru::test
