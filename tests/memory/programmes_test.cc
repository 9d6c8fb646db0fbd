// SPDX-License-Identifier: MIT
// Whole programmes and cs_init with every allocation failing in turn: they end in an orderly way whatever is missing,
// say so, and leave nothing behind.
#include <array>

#include "support/model_failure.h"
#include "support/written_text.h"

namespace koru::test {
namespace {

int reports = 0;
void countReports(CSint *, void *) { ++reports; }

// A host that checks what it is given, as hosts do. The answer, or -1 when something could not be had.
int sendMoreMoney() {
  static std::array<CSint *, 8> letters;
  for (CSint *&v : letters) v = cs_createNamedCSint(0, 9, "letter");
  for (CSint *v : letters)
    if (v == nullptr) return -1;
  const auto [s, e, n, d, m, o, r, y] = letters;
  const int label = cs_saveContext();
  if (cs_AllNeq(letters.data(), 8) == 0 || !cs_NEQ(s, 0) || !cs_NEQ(m, 0)) return -1;
  const auto times10 = [](CSint *v) { return cs_VAdd(10, v, v, v, v, v, v, v, v, v, v); };
  const auto word = [&](CSint *a, CSint *b, CSint *c, CSint *last) {
    CSint *total = a;
    for (CSint *next : {b, c, last}) total = total != nullptr ? cs_Add(times10(total), next) : nullptr;
    return total;
  };
  CSint *sum = cs_Add(word(s, e, n, d), word(m, o, r, e));
  CSint *money = word(m, o, n, e) != nullptr ? cs_Add(times10(word(m, o, n, e)), y) : nullptr;
  if (sum == nullptr || money == nullptr || !cs_Eq(sum, money)) return -1;
  if (!cs_search(letters.data(), 8, cs_findFreeVarNbElements)) return -1;
  const int answer = cs_getValue(money);
  std::FILE *file = temporaryFile();
  cs_fprintf(file, "%A, %T\n", letters.data(), 8, money);
  cs_fprintStats(file);
  std::fclose(file);
  cs_restoreContextUntil(label);
  return answer;
}

int solutions = 0;
void countSolution(CSint **, int) { ++solutions; }

// v0 != v1 < v2: all solutions.
int smallFindAll() {
  CSint **v = cs_createCSintArray(3, 0, 2);
  if (v == nullptr) return -1;
  cs_setName(v[0], "first");
  if (!cs_Neq(v[0], v[1]) || !cs_Lt(v[1], v[2])) return -1;
  cs_backtrack(v[0], 1, [](CSint *, int) {});
  const int label = cs_saveContext();
  solutions = 0;
  const bool found = cs_findAll(v, 3, cs_findFreeVar, countSolution);
  cs_restoreContextUntil(label);
  return found ? solutions : -1;
}

struct WholeProgramme {
  int (*run)();
  int answer;
};

class Programmes : public ::testing::TestWithParam<Failing> {
 protected:
  // True when the k-th allocation existed.
  static bool failAllocation(const WholeProgramme &programme, int k) {
    SCOPED_TRACE("allocation " + std::to_string(k));
    cs_init();
    cs_setErrHandler(CS_ERR_MEMORY, countReports, nullptr);
    reports = 0;
    int answer = 0;
    {
      const FailingAllocator failing(k, GetParam());
      answer = programme.run();
    }
    const int failures = FailingAllocator::failures();
    if (failures == 0) {
      EXPECT_EQ(answer, programme.answer);
      EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
    } else {
      EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
    }
    EXPECT_EQ(reports, failures) << "each failed allocation is reported once";
    cs_restoreAll();
    expectSolverUsable();
    cs_end();
    return failures > 0;
  }

  static void failEveryAllocation(const WholeProgramme &programme) {
    int k = 0;
    while (failAllocation(programme, k) && !HasFailure()) ++k;
    EXPECT_GT(k, 5) << "the programme allocates";
  }
};

TEST_P(Programmes, APuzzleSurvivesTheFailureOfEachOfItsAllocations) { failEveryAllocation({sendMoreMoney, 10652}); }

TEST_P(Programmes, AnEnumerationSurvivesTheFailureOfEachOfItsAllocations) { failEveryAllocation({smallFindAll, 6}); }

TEST_P(Programmes, CsInitRecordsTheFailureOfEachOfItsAllocationsAndCanBeTriedAgain) {
  int k = 0;
  for (bool more = true; more && !HasFailure(); ++k) {
    SCOPED_TRACE("allocation " + std::to_string(k));
    {
      const FailingAllocator failing(k, GetParam());
      cs_init();
    }
    more = FailingAllocator::failures() > 0;
    EXPECT_EQ(cs_getErr(), more ? CS_ERR_MEMORY : CS_ERR_NONE);
    EXPECT_LE(FailingAllocator::failures(), 1) << "the first failure ends the set-up";
    cs_init();
    EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
    expectSolverUsable();
    cs_end();
  }
  EXPECT_EQ(k, 6) << "four stacks and the site table fail, then none";
}

TEST(FailedInit, LeavesTheSolverUnusableAndFurtherFailuresOnlyRecorded) {
  for (int k = 0; k < 4; ++k) {
    SCOPED_TRACE("stack " + std::to_string(k));
    {
      const FailingAllocator failing(k, Failing::kForEver);
      cs_init();
      EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
      cs_initErr();
      EXPECT_FALSE(cs_Vsearch(1, nullptr, cs_findFreeVar)) << "with the default handler this would abort";
      EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
    }
    cs_end();
    EXPECT_FALSE(cs_EQ(nullptr, 1));
    EXPECT_EQ(cs_AllNeq(nullptr, 3), 0);
    EXPECT_EQ(cs_createCSintArray(3, 0, 9), nullptr);
    cs_init();
    EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
    expectSolverUsable();
    cs_end();
  }
}

TEST(FailedInit, WithoutTheSiteTableTheSolverStillWorks) {
  {
    const FailingAllocator failing(4, Failing::kOnce);
    cs_init();
  }
  EXPECT_EQ(FailingAllocator::failures(), 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  expectSolverUsable();
  cs_end();
}

INSTANTIATE_TEST_SUITE_P(Memory, Programmes, ::testing::Values(Failing::kOnce, Failing::kForEver),
                         [](const auto &each) { return each.param == Failing::kOnce ? "Once" : "ForEver"; });

TEST(DefaultMemoryHandler, Aborts) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_DEATH(
      {
        cs_init();
        CSint *v = cs_createCSint(0, 9);
        const FailingAllocator failing(0, Failing::kOnce);
        cs_NEQ(v, 4);
      },
      "");
}

}  // namespace
}  // namespace koru::test
