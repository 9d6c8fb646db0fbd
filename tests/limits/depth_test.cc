// SPDX-License-Identifier: MIT
// Deep searches: 50,000 levels within a stack of 8 MiB (64-bit Windows: 16), and the bytes that a level of each engine
// takes, as they are stated in docs/search.md. Frames of instrumented builds and of those that are not optimised are
// many times larger: there the same searches go 2,000 levels deep, and a level is held to its share of the stack.
#include <pthread.h>

#include <array>
#include <cstdint>
#include <functional>

#include "core/solver.h"
#include "support/kit/instrumented.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru;
using namespace koru::test;

constexpr bool kPlainFrames = kOptimised && !kSanitized;

// Each frame of 64-bit Windows has room for the register arguments of the functions it calls.
#ifdef _WIN64
constexpr std::size_t kStack = std::size_t{16} * 1024 * 1024;
constexpr double kHomeSpace = 32;
#else
constexpr std::size_t kStack = std::size_t{8} * 1024 * 1024;
constexpr double kHomeSpace = 0;
#endif
constexpr int kLevels = kPlainFrames ? 50000 : 2000;

// Runs `body` on a stack of so many bytes.
void onStack(std::function<void()> body, std::size_t bytes = kStack) {
  pthread_attr_t attributes;
  pthread_t thread;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, bytes), 0);
  const auto run = [](void *argument) -> void * {
    (*static_cast<std::function<void()> *>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &body), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

class DepthTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    solver::checked.period = solver::checked.untilNext = 1000000;
    deepen(kLevels);
  }
  void deepen(int levels) {
    for (int i = static_cast<int>(array.size()); i < levels; ++i) array.push_back(cs_createCSint(0, 1));
    level = 0;
  }
  void TearDown() override {
    solver::checked.period = solver::checked.untilNext = 1;
    SolverTest::TearDown();
  }

  // Takes the variables in turn, and notes how far down the stack the first and the last level are.
  static int nextIndex(CSint **, int size) {
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    if (level == 0) top = here;
    bottom = here;
    return level < size ? level++ : -1;
  }
  static CSint *nextVariable(CSint **variables, int size) {
    const int index = nextIndex(variables, size);
    return index < 0 ? nullptr : variables[index];
  }

  static void expectBytesPerLevel(double most) {
    const double bytes = static_cast<double>(top - bottom) / kLevels;
    EXPECT_LE(bytes, kPlainFrames ? most + kHomeSpace : static_cast<double>(kStack) / kLevels);
  }

  static inline int level = 0;
  static inline std::uintptr_t top = 0;
  static inline std::uintptr_t bottom = 0;
  std::vector<CSint *> array;
};

TEST_F(DepthTest, DepthFirstTakesEightyBytesALevel) {
  onStack([this] { EXPECT_TRUE(cs_search(array.data(), kLevels, nextVariable)); });
  EXPECT_EQ(solver::contexts.count(), kLevels);
  expectBytesPerLevel(80);
}

TEST_F(DepthTest, AllSolutionsTakesEightyBytesALevel) {
  int solutions = 0;
  static int *counted;
  counted = &solutions;
  const auto found = [](CSint **, int) {
    ++*counted;
    cs_cancelSearch();
  };
  onStack([&] { EXPECT_TRUE(cs_findAll(array.data(), kLevels, nextVariable, found)); });
  EXPECT_EQ(solutions, 1);
  expectBytesPerLevel(80);
}

TEST_F(DepthTest, TheSelectorEngineTakes160BytesALevel) {
  std::vector<CSvalueSelector *> selectors(kLevels, cs_getValueSelector(CS_SELECT_MEDIAN));
  onStack(
      [&] { EXPECT_TRUE(cs_searchValueSelectorFail(array.data(), selectors.data(), kLevels, nextIndex, 0, nullptr)); });
  EXPECT_EQ(solver::contexts.count(), kLevels);
  expectBytesPerLevel(160);
}

TEST_F(DepthTest, CriteriaTakes144BytesALevel) {
  const auto score = [](int, int value) { return value; };
  onStack([&] { EXPECT_TRUE(cs_searchCriteria(array.data(), kLevels, nextIndex, score)); });
  expectBytesPerLevel(144);
}

TEST_F(DepthTest, MatrixTakes160BytesALevel) {
  CSint **rows[] = {array.data()};
  const auto onlyRow = [](CSint ***, int, int columns) { return level < columns ? 0 : -1; };
  const auto nextColumn = [](int, CSint **row, int columns) { return nextIndex(row, columns); };
  const auto score = [](int, int, int value) { return value; };
  onStack([&] { EXPECT_TRUE(cs_searchMatrix(rows, 1, kLevels, onlyRow, nextColumn, score)); });
  EXPECT_EQ(level, kLevels);
  expectBytesPerLevel(160);
}

// On a stack that has the room there is no other limit to the depth.
class HeavyDepthTest : public DepthTest {
 protected:
  static constexpr int kDeep = 100000;
  static constexpr std::size_t kBytes = std::size_t{kPlainFrames ? 64 : 1024} * 1024 * 1024;

  void SetUp() override {
    DepthTest::SetUp();
    deepen(kDeep);
  }

  // All levels are open afterwards, the next search can use them again, and everything is taken back.
  void expectDeep(const std::function<bool()> &search) {
    for (int run = 0; run < 2; ++run) {
      level = 0;
      onStack([&] { EXPECT_TRUE(search()); }, kBytes);
      EXPECT_EQ(solver::contexts.count(), kDeep);
      EXPECT_TRUE(cs_isInstantiated(array.back()));
      cs_restoreAll();
      EXPECT_TRUE(cs_isFree(array.front()));
    }
  }
};

TEST_F(HeavyDepthTest, DepthFirstGoesAHundredThousandLevelsDeep) {
  expectDeep([this] { return cs_search(array.data(), kDeep, nextVariable); });
}

TEST_F(HeavyDepthTest, CriteriaGoesAHundredThousandLevelsDeep) {
  expectDeep(
      [this] { return cs_searchCriteria(array.data(), kDeep, nextIndex, [](int, int value) { return -value; }); });
}

TEST_F(HeavyDepthTest, TheSelectorEngineGoesAHundredThousandLevelsDeep) {
  std::vector<CSvalueSelector *> selectors(kDeep, cs_getValueSelector(CS_SELECT_LOWER_HALF));
  expectDeep([&] { return cs_searchValueSelectorFail(array.data(), selectors.data(), kDeep, nextIndex, 0, nullptr); });
}

TEST_F(HeavyDepthTest, AllSolutionsGoesAHundredThousandLevelsDeepAndBack) {
  const auto found = [](CSint **, int) { cs_cancelSearch(); };
  onStack([&] { EXPECT_TRUE(cs_findAll(array.data(), kDeep, nextVariable, found)); }, kBytes);
  cs_restoreAll();
  EXPECT_TRUE(cs_isFree(array.front()));
}

TEST_F(HeavyDepthTest, MinimizeGoesAHundredThousandLevelsDeepAndBack) {
  CSint *const cost = cs_createCSint(3, 4);
  array.push_back(cost);
  static int passes;
  passes = 0;
  const auto found = [](CSint **, int, CSint *) {
    ++passes;
    level = 0;
  };
  onStack([&] { EXPECT_TRUE(cs_minimize(array.data(), kDeep + 1, nextVariable, cost, found)); }, kBytes);
  EXPECT_EQ(passes, 1) << "the first solution has the least cost";
}

// With a built-in selection, which takes no walk over all variables at each level.
TEST_F(DepthTest, ABuiltInSelectionLabelsAsDeep) {
  onStack([this] { EXPECT_TRUE(cs_search(array.data(), kLevels, cs_findFreeVar)); });
  EXPECT_EQ(cs_getNbChoicePoints(), kLevels);
}

}  // namespace
