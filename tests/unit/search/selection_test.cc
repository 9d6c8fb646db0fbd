// SPDX-License-Identifier: MIT
// The selection of a search makes the choice that the function itself would make on the whole array, whatever happened
// in between; and it is left to one search at a time.
#include "search/selection.h"

#include <climits>

#include "search/state.h"
#include "support/kit/random.h"
#include "unit/core/allocation_rule.h"
#include "unit/search/search_test.h"

namespace {

using namespace koru;
using namespace koru::test;

constexpr CSfindFreeVar kBuiltIn[] = {cs_findFreeVar, cs_findFreeVarNbElements, cs_findFreeVarNbElementsMin,
                                      cs_findFreeVarNbConstraints};

// An array with repetitions, gaps, constants and variables of more values than an int can count, each followed by so
// many constants, and random steps on its variables and on the contexts, balanced or not.
class Walk {
 public:
  Walk(unsigned seed, int constants) : random_(seed) {
    for (int i = 0; i < 90; ++i) elements_.push_back(element());
    for (int i = 0; i < 40; ++i) relate(any(), any());
    for (CSint *v : elements_) {
      array_.push_back(v);
      array_.insert(array_.end(), static_cast<std::size_t>(constants), CSINT(1));
    }
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
  CSint *any() { return elements_[static_cast<std::size_t>(below(static_cast<int>(elements_.size())))]; }

  CSint *element() {
    switch (below(12)) {
      case 0:
        return nullptr;
      case 1:
        return elements_.empty() ? nullptr : any();
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
  std::vector<CSint *> elements_;
  std::vector<CSint *> array_;
};

class SelectionTest : public SolverTest, public ::testing::WithParamInterface<int> {
 protected:
  // How many times a variable was chosen.
  static int compare(int seeds, int steps, int constants) {
    const CSfindFreeVar select = kBuiltIn[GetParam()];
    int choices = 0;
    for (int seed = 0; seed < seeds; ++seed) {
      cs_end();
      cs_init();
      Walk walk(static_cast<unsigned>(seed), constants);
      Selection selection(walk.array(), walk.size(), select);
      for (int i = 0; i < steps; ++i) {
        walk.step();
        CSint *expected = select(walk.array(), walk.size());
        EXPECT_EQ(selection.next(), expected) << "seed " << seed << ", step " << i;
        choices += expected != nullptr ? 1 : 0;
      }
    }
    return choices;
  }
};

TEST_P(SelectionTest, ChoosesWhatTheFunctionWouldAtEveryStepOfARandomWalk) {
  EXPECT_GT(compare(40, 600, 0), 10000) << "the walks do not end with everything bound";
}

TEST_P(SelectionTest, ChoosesTheSameFromLongArrays) { EXPECT_GT(compare(8, 300, 40), 1000); }

TEST_P(SelectionTest, ChoosesTheSameFromArraysThatAreLongerThanTheRoom) { EXPECT_GT(compare(2, 150, 2000), 100); }

INSTANTIATE_TEST_SUITE_P(, SelectionTest, ::testing::Range(0, 4));

class SelectionRoomTest : public SearchTest {
 protected:
  // Two variables, and so many constants behind them that they are no longer few.
  static std::vector<CSint *> many(CSint *x, CSint *y) {
    std::vector<CSint *> array(Selection::kFew + 1, CSINT(1));
    array[0] = x;
    array[1] = y;
    return array;
  }
};

constexpr int kMany = Selection::kFew + 1;

TEST_F(SelectionRoomTest, IsHeldWhileASearchLastsAndGivenBack) {
  makeXy(2, 2);
  std::vector<CSint *> array = many(xy[0], xy[1]);
  {
    const Selection selection(array.data(), kMany, cs_findFreeVar);
    EXPECT_TRUE(selectionRoom.taken);
  }
  EXPECT_FALSE(selectionRoom.taken);
  const Selection host(array.data(), kMany, select);
  EXPECT_FALSE(selectionRoom.taken) << "a host's function needs none";
  const Selection few(array.data(), kMany - 1, cs_findFreeVar);
  EXPECT_FALSE(selectionRoom.taken) << "nor do few variables";
}

TEST_F(SelectionRoomTest, ASecondSelectionAtTheSameTimeDoesWithout) {
  makeXy(2, 2);
  std::vector<CSint *> array = many(xy[0], xy[1]);
  Selection outer(array.data(), kMany, cs_findFreeVar);
  {
    std::vector<CSint *> other = many(cs_createCSint(0, 1), xy[1]);
    Selection inner(other.data(), kMany, cs_findFreeVar);
    EXPECT_EQ(inner.next(), other[0]);
    EXPECT_EQ(outer.next(), xy[0]);
  }
  EXPECT_TRUE(selectionRoom.taken);
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(xy[0], 1));
  EXPECT_EQ(outer.next(), xy[1]);
}

TEST_F(SelectionRoomTest, ServesAnArrayOfAnyLength) {
  std::vector<CSint *> array(3 * SelectionRoom::kSize, CSINT(3));
  array.back() = cs_createCSint(0, 1);
  for (const CSfindFreeVar f : kBuiltIn) {
    Selection selection(array.data(), static_cast<int>(array.size()), f);
    EXPECT_TRUE(selectionRoom.taken);
    EXPECT_EQ(selection.next(), array.back());
    cs_saveContext();
    ASSERT_TRUE(cs_EQ(array.back(), 0));
    EXPECT_EQ(selection.next(), nullptr);
    cs_restoreContext();
    EXPECT_EQ(selection.next(), array.back());
  }
}

// What a search does, and what becomes of it when one of its allocations fails.
struct Told {
  std::vector<int> met;
  int choicePoints, fails, reports;
  CSstatus status;
  bool operator==(const Told &) const = default;
};

// Some free variables far apart in an array of so many, among constants.
class LongArrayTest : public SearchTest {
 protected:
  // In a new solver. The first context of the search takes the last place of a block, so that an allocation follows.
  void make(int size) {
    TearDown();
    SetUp();
    memoryReports = 0;
    array.assign(static_cast<std::size_t>(size), CSINT(3));
    for (int i = 0; i < 5; ++i) {
      free[i] = cs_createCSint(0, 2 + i % 3);
      array[static_cast<std::size_t>(size - 1) * static_cast<std::size_t>(i) / 4] = free[i];
    }
    ASSERT_TRUE(cs_AllNeq(free, 3));
    ASSERT_TRUE(cs_Lt(free[4], free[3]));
    ASSERT_TRUE(cs_Eq(free[0], free[4]));
    leaveRoomForContexts(1);
  }

  Told search(int size, CSfindFreeVar f, int refused) {
    make(size);
    met.clear();
    const AllocationRule rule(refuseOnly(refused));
    cs_findAll(array.data(), size, f, [](CSint **, int) {
      for (CSint *v : free) met.push_back(cs_getValue(v));
    });
    allocations = AllocationRule::count();
    return {met, cs_getNbChoicePoints(), cs_getNbFails(), memoryReports, cs_searchStatus()};
  }
  // The function without the room.
  template <int i>
  static CSint *plain(CSint **variables, int size) {
    return kBuiltIn[i](variables, size);
  }
  static constexpr CSfindFreeVar kPlain[] = {plain<0>, plain<1>, plain<2>, plain<3>};

  static inline CSint *free[5];
  static inline std::vector<int> met;
  int allocations = 0;
  std::vector<CSint *> array;
};

// docs/search.md names the sizes. On both sides of them the same tree, whichever allocation fails.
TEST_F(LongArrayTest, IsSearchedAsTheFunctionAloneWouldHaveIt) {
  EXPECT_EQ(SelectionRoom::kSize, kThreads ? 2048 : 65536);
  for (const int size : {2048, 2049, 65536, 65537, 140000}) {
    for (int i = 0; i < 4; ++i) {
      const Told plain = search(size, kPlain[i], INT_MAX);
      const int count = allocations;
      EXPECT_GT(count, 0);
      EXPECT_GT(plain.met.size(), 20U);
      EXPECT_EQ(search(size, kBuiltIn[i], INT_MAX), plain) << size << ", selection " << i;
      EXPECT_EQ(allocations, count) << "the selection allocates nothing";
      for (int k = 0; k < count; ++k)
        EXPECT_EQ(search(size, kBuiltIn[i], k), search(size, kPlain[i], k)) << size << ", " << k;
    }
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
  std::vector<CSint *> outer = many(xy[0], xy[1]);
  std::vector<CSint *> inner = many(cs_createCSint(0, 1), cs_createCSint(0, 1));
  int innerSolutions = 0;
  refuseY([&](int value) {
    EXPECT_TRUE(selectionRoom.taken);
    EXPECT_TRUE(cs_search(inner.data(), kMany, cs_findFreeVar));
    innerSolutions += cs_isInstantiated(inner[0]) && cs_isInstantiated(inner[1]) ? 1 : 0;
    cs_restoreContext();
    cs_restoreContext();
    return value == 2;
  });
  EXPECT_TRUE(cs_search(outer.data(), kMany, cs_findFreeVar));
  EXPECT_EQ(values(xy[1]), std::vector{2});
  EXPECT_EQ(innerSolutions, 3);
  EXPECT_FALSE(selectionRoom.taken);
}

}  // namespace
