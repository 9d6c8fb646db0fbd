// SPDX-License-Identifier: MIT
// The selection of a search makes the choice that the function itself would make on the whole array, whatever happened
// in between; and it is left to one search at a time.
#include "search/selection.h"

#include "search/state.h"
#include "support/kit/random.h"
#include "unit/search/search_test.h"

namespace {

using namespace koru;
using namespace koru::test;

constexpr CSfindFreeVar kBuiltIn[] = {cs_findFreeVar, cs_findFreeVarNbElements, cs_findFreeVarNbElementsMin,
                                      cs_findFreeVarNbConstraints};

// An array with repetitions, gaps, constants and variables of more values than an int can count, and random steps on
// its variables and on the contexts, balanced or not.
class Walk {
 public:
  explicit Walk(unsigned seed) : random_(seed) {
    for (int i = 0; i < 90; ++i) array_.push_back(element());
    for (int i = 0; i < 40; ++i) relate(any(), any());
  }

  CSint **array() { return array_.data(); }
  int size() const { return static_cast<int>(array_.size()); }

  void step() {
    switch (below(12)) {
      case 0:
      case 1:
        cs_saveContext();
        break;
      case 2:
        cs_restoreContext();
        break;
      case 3:
        cs_acceptContext();
        break;
      case 4:
        cs_forgetSaveContext();
        break;
      case 5:
        cs_restoreContextUntil(1 + below(solver::contexts.count() + 1));
        break;
      case 6:
        cs_restoreAndSaveContext();
        break;
      default:
        narrow(any());
    }
  }

 private:
  int below(int n) { return random_.below(n); }
  CSint *any() { return array_[static_cast<std::size_t>(below(size()))]; }

  CSint *element() {
    switch (below(12)) {
      case 0:
        return nullptr;
      case 1:
        return array_.empty() ? nullptr : any();
      case 2:
        return CSINT(below(5));
      case 3:
        return cs_createCSint(INT_MIN, INT_MAX - below(2));
      case 4:
        return cs_createCSint(1, INT_MAX);
      case 5:
        return fromValues({0, 3, 4, 9});
      default:
        return cs_createCSint(below(3), 3 + below(3));
    }
  }

  // No hole is made in a wide domain: its bit array would be too large.
  static bool isWide(const CSint *v) { return v != nullptr && v->initialMax > 1000; }
  static void relate(CSint *x, CSint *y) {
    if (!isWide(x) && !isWide(y)) cs_Neq(x, y);
  }

  void narrow(CSint *v) {
    if (v == nullptr) return;
    const int value = below(3) == 0 ? cs_getMin(v) : cs_getNextValue(v, below(5));
    switch (below(4)) {
      case 0:
        cs_EQ(v, value);
        break;
      case 1:
        isWide(v) ? cs_LE(v, 1000) : cs_NEQ(v, below(7));
        break;
      case 2:
        cs_LE(v, below(9));
        break;
      default:
        cs_GE(v, below(4));
    }
  }

  Random random_;
  std::vector<CSint *> array_;
};

class SelectionTest : public SolverTest, public ::testing::WithParamInterface<int> {};

TEST_P(SelectionTest, ChoosesWhatTheFunctionWouldAtEveryStepOfARandomWalk) {
  const CSfindFreeVar select = kBuiltIn[GetParam()];
  int choices = 0;
  for (unsigned seed = 0; seed < 40; ++seed) {
    cs_end();
    cs_init();
    Walk walk(seed);
    Selection selection(walk.array(), walk.size(), select);
    for (int i = 0; i < 600; ++i) {
      walk.step();
      CSint *expected = select(walk.array(), walk.size());
      ASSERT_EQ(selection.next(), expected) << "seed " << seed << ", step " << i;
      choices += expected != nullptr ? 1 : 0;
    }
  }
  EXPECT_GT(choices, 10000) << "the walks do not end with everything bound";
}

INSTANTIATE_TEST_SUITE_P(, SelectionTest, ::testing::Range(0, 4));

using SelectionRoomTest = SearchTest;

TEST_F(SelectionRoomTest, IsHeldWhileASearchLastsAndGivenBack) {
  makeXy(2, 2);
  {
    const Selection selection(xy, 2, cs_findFreeVar);
    EXPECT_TRUE(selectionRoom.taken);
  }
  EXPECT_FALSE(selectionRoom.taken);
  const Selection host(xy, 2, select);
  EXPECT_FALSE(selectionRoom.taken) << "a host's function needs none";
}

TEST_F(SelectionRoomTest, ASecondSelectionAtTheSameTimeDoesWithout) {
  makeXy(2, 2);
  Selection outer(xy, 2, cs_findFreeVar);
  {
    CSint *other[] = {cs_createCSint(0, 1), xy[1]};
    Selection inner(other, 2, cs_findFreeVar);
    EXPECT_EQ(inner.next(), other[0]);
    EXPECT_EQ(outer.next(), xy[0]);
  }
  EXPECT_TRUE(selectionRoom.taken);
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(xy[0], 1));
  EXPECT_EQ(outer.next(), xy[1]);
}

TEST_F(SelectionRoomTest, AnArrayThatIsTooLongIsScannedInFull) {
  std::vector<CSint *> array(SelectionRoom::kSize + 1, CSINT(3));
  array.back() = cs_createCSint(0, 1);
  for (const CSfindFreeVar f : kBuiltIn) {
    Selection selection(array.data(), static_cast<int>(array.size()), f);
    EXPECT_FALSE(selectionRoom.taken);
    EXPECT_EQ(selection.next(), array.back());
    Selection fitting(array.data() + 1, static_cast<int>(array.size()) - 1, f);
    EXPECT_TRUE(selectionRoom.taken);
    EXPECT_EQ(fitting.next(), array.back());
  }
}

// docs/search.md names the sizes. On both sides of them the same solutions, in the same order.
TEST_F(SelectionRoomTest, ASearchOverMoreVariablesThanThereIsRoomForFindsTheSame) {
  EXPECT_EQ(SelectionRoom::kSize, kThreads ? 2048 : 65536);
  std::vector<CSint *> array(SelectionRoom::kSize - 3, CSINT(3));
  for (int i = 0; i < 4; ++i) array.push_back(cs_createCSint(i, i + 1 + i % 2));
  static std::vector<int> met;
  const auto meet = [](CSint **last, int size) {
    for (int i = size - 4; i < size; ++i) met.push_back(cs_getValue(last[i]));
  };
  for (const CSfindFreeVar f : kBuiltIn) {
    met.clear();
    ASSERT_TRUE(cs_findAll(array.data() + 1, SelectionRoom::kSize, f, meet));
    const std::vector<int> fitting = met;
    EXPECT_EQ(fitting.size(), 4U * 2 * 3 * 2 * 3);
    met.clear();
    ASSERT_TRUE(cs_findAll(array.data(), SelectionRoom::kSize + 1, f, meet));
    EXPECT_EQ(met, fitting);
  }
}

TEST_F(SelectionRoomTest, NoArrayAndNoSizeHaveNoVariable) {
  makeXy(2, 2);
  for (const CSfindFreeVar f : kBuiltIn) {
    EXPECT_EQ(Selection(nullptr, 2, f).next(), nullptr);
    EXPECT_EQ(Selection(xy, 0, f).next(), nullptr);
    EXPECT_EQ(Selection(xy, -1, f).next(), nullptr);
  }
}

// A search that is started by a constraint of another one, both with a built-in selection.
TEST_F(SelectionRoomTest, ASearchInsideASearchFindsItsOwnSolutions) {
  makeXy(2, 3);
  CSint *inner[] = {cs_createCSint(0, 1), cs_createCSint(0, 1)};
  int innerSolutions = 0;
  refuseY([&](int value) {
    EXPECT_TRUE(cs_search(inner, 2, cs_findFreeVar));
    innerSolutions += cs_isInstantiated(inner[0]) && cs_isInstantiated(inner[1]) ? 1 : 0;
    cs_restoreContext();
    cs_restoreContext();
    return value == 2;
  });
  EXPECT_TRUE(cs_search(xy, 2, cs_findFreeVar));
  EXPECT_EQ(values(xy[1]), std::vector{2});
  EXPECT_EQ(innerSolutions, 3);
  EXPECT_FALSE(selectionRoom.taken);
}

}  // namespace
