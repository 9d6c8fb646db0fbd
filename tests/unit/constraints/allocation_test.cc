// SPDX-License-Identifier: MIT
// Every poster with each of its allocations, and each growth of the trail, failing in turn: one report, the failure
// value, nothing leaked, and the same call succeeds afterwards.
#include "support/brute_probe.h"

namespace {

using namespace koru;
using namespace koru::test;

struct Operands {
  CSint *x[3];
};

constexpr int kTable[] = {4, 7, 4};

struct Poster {
  const char *name;
  bool (*post)(Operands &);
  int allocations;  // site, and a record and an entry per constraint and attachment; more is said where it is so
};

void PrintTo(const Poster &poster, std::ostream *out) { *out << poster.name; }

bool makeNoGoodSet(Operands &o) { return cs_createNoGoodSet(o.x, 3, nullptr, 0, nullptr, nullptr) != nullptr; }

class AllocationTest : public SolverTest, public ::testing::WithParamInterface<Poster> {
 protected:
  static Operands makeOperands() { return {{cs_createCSint(0, 9), cs_createCSint(0, 9), cs_createCSint(0, 9)}}; }
  static Operands makeHoles() { return {{CSINT(3), fromValues({0, 5, 9}), CSINT(4)}}; }

  // Leaves `room` trail records before the next block must be had.
  static void leaveRoom(int room) {
    while ((solver.trail.count() + room) % Trail::kCapacity != 0) cs_backtrack(nullptr, 0, nullptr);
  }
};

TEST_P(AllocationTest, EachFailureIsReportedOnceAndLeavesTheSolverUsable) {
  EXPECT_EQ(failEachAllocation(makeOperands, GetParam().post), GetParam().allocations);
}

TEST_P(AllocationTest, ATrailThatCannotGrowIsReportedOnceAndLeavesTheSolverUsable) {
  for (int room = 1; room <= 6; ++room) {
    const auto prepare = [room] {
      Operands operands = makeOperands();
      leaveRoom(room);
      return operands;
    };
    const int seen = failEachAllocation(prepare, GetParam().post);
    EXPECT_GE(seen, GetParam().allocations);
  }
}

// One task of three variables, which keeps them as arrays. Besides the rest there are the roles sorted, the windows,
// the order, the profile, the candidates and the record that the four constraints share.
bool postCumulative(Operands &o) { return cs_Cumulative(&o.x[0], &o.x[1], &o.x[2], 1, CSINT(9)); }

// With the holder and its entry, the unit and the array of uses; its roles are known.
bool postDisjunctive(Operands &o) { return cs_Disjunctive(&o.x[0], &o.x[1], 1); }

// cs_Neq and the like allocate a site, a constraint and an entry per variable; the n-ary sums also an array and a
// second constraint, cs_VSub a third; the variable elements a table and three constraints; a set of no-goods its watch
// lists. cs_Element takes a list of what the index reaches, a bit array and its table in two arrays, cs_Index a bit
// array, the occurrence constraints a block with both their sets.
const Poster kPosters[] = {
    {"cs_Eq", [](Operands &o) { return cs_Eq(o.x[0], o.x[1]); }, 4},
    {"cs_Neq", [](Operands &o) { return cs_Neq(o.x[0], o.x[1]); }, 4},
    {"cs_Le", [](Operands &o) { return cs_Le(o.x[0], o.x[1]); }, 4},
    {"cs_Lt", [](Operands &o) { return cs_Lt(o.x[0], o.x[1]); }, 4},
    {"cs_Ge", [](Operands &o) { return cs_Ge(o.x[0], o.x[1]); }, 4},
    {"cs_Gt", [](Operands &o) { return cs_Gt(o.x[0], o.x[1]); }, 4},
    {"cs_Add", [](Operands &o) { return cs_Add(o.x[0], o.x[1]) != nullptr; }, 5},
    {"cs_Sub", [](Operands &o) { return cs_Sub(o.x[0], o.x[1]) != nullptr; }, 5},
    {"cs_VAdd", [](Operands &o) { return cs_VAdd(3, o.x[0], o.x[1], o.x[2]) != nullptr; }, 8},
    {"cs_VSub", [](Operands &o) { return cs_VSub(3, o.x[0], o.x[1], o.x[2]) != nullptr; }, 11},
    {"cs_AllNeq", [](Operands &o) { return cs_AllNeq(o.x, 3) == 1; }, 7},
    {"cs_VarElement", [](Operands &o) { return cs_VarElement(o.x[0], o.x, 3) != nullptr; }, 10},
    {"cs_VarElementRange", [](Operands &o) { return cs_VarElementRange(o.x[0], o.x, 3) != nullptr; }, 10},
    {"cs_createNoGoodSet", makeNoGoodSet, 6},
    {"cs_Cumulative", postCumulative, 15},
    {"cs_Disjunctive", postDisjunctive, 18},
    {"cs_Element", [](Operands &o) { return cs_Element(o.x[0], kTable, 3) != nullptr; }, 8},
    {"cs_Index", [](Operands &o) { return cs_Index(o.x, 3, 5) != nullptr; }, 8},
    {"cs_Min", [](Operands &o) { return cs_Min(o.x, 3) != nullptr; }, 7},
    {"cs_VMax", [](Operands &o) { return cs_VMax(3, o.x[0], o.x[1], o.x[2]) != nullptr; }, 8},
    {"cs_OccurDomain", [](Operands &o) { return cs_OccurDomain(5, o.x, 3) != nullptr; }, 8},
    {"cs_OccurConstraints", [](Operands &o) { return cs_OccurConstraints(o.x[2], 5, o.x, 2); }, 7},
};
INSTANTIATE_TEST_SUITE_P(, AllocationTest, ::testing::ValuesIn(kPosters),
                         [](const auto &row) { return std::string(row.param.name); });

class HoleAllocationTest : public AllocationTest {};

TEST_P(HoleAllocationTest, TheResultsBitArrayMayFailToo) {
  EXPECT_EQ(failEachAllocation(makeHoles, GetParam().post), GetParam().allocations);
}

INSTANTIATE_TEST_SUITE_P(
    , HoleAllocationTest,
    ::testing::Values(Poster{"cs_Add", [](Operands &o) { return cs_Add(o.x[0], o.x[1]) != nullptr; }, 6},
                      Poster{"cs_Sub", [](Operands &o) { return cs_Sub(o.x[1], o.x[0]) != nullptr; }, 6},
                      Poster{"cs_Neq", [](Operands &o) { return cs_Neq(o.x[0], o.x[1]); }, 4},
                      // Of the three positions the middle one is undecided, the others are not: no bit array.
                      Poster{"cs_OccurDomain", [](Operands &o) { return cs_OccurDomain(5, o.x, 3) != nullptr; }, 6},
                      // The middle one is decided, which takes one for both sets.
                      Poster{"cs_OccurConstraints",
                             [](Operands &o) {
                               CSint *array[] = {o.x[1], o.x[0], o.x[1]};
                               return cs_OccurConstraints(cs_createCSint(0, 3), 5, array, 3);
                             },
                             9}),
    [](const auto &row) { return std::string(row.param.name); });

// The first filtering removes an inner value, for which the variable needs a bit array.
using FilteringAllocationTest = SolverTest;

TEST_F(FilteringAllocationTest, TheFirstFilteringMayFailForWantOfABitArray) {
  const auto prepare = [] { return Operands{{CSINT(5), cs_createCSint(0, 9), cs_createCSint(0, 8)}}; };
  EXPECT_EQ(failEachAllocation(prepare, [](Operands &o) { return cs_Neq(o.x[0], o.x[1]); }), 5);
  EXPECT_EQ(failEachAllocation(prepare, [](Operands &o) { return cs_AllNeq(o.x, 3) == 1; }), 9);
}

}  // namespace
