// SPDX-License-Identifier: MIT
// What a censor is asked about: each call of the host's that restricts and returns no variable, once; and what becomes
// of those that are left out.
#include <string>
#include <vector>

#include "catalogue/posting.h"
#include "core/ports.h"
#include "core/site.h"
#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

struct Censoring {
  bool leaveOut;
  std::vector<std::string> asked;

  explicit Censoring(bool leavesOut) : leaveOut(leavesOut) { setCensor({ask, this}); }
  Censoring(const Censoring &) = delete;
  Censoring &operator=(const Censoring &) = delete;
  ~Censoring() { setCensor({}); }

  static bool ask(void *self, const Poster &poster) {
    auto &censoring = *static_cast<Censoring *>(self);
    censoring.asked.emplace_back(poster.name);
    return censoring.leaveOut;
  }
};

using Names = std::vector<std::string>;

class EachDoor : public ::testing::TestWithParam<const catalogue::Row *> {
 protected:
  void SetUp() override { cs_init(); }
  void TearDown() override { cs_end(); }

  const catalogue::Row &row() const { return *GetParam(); }
  Names expected() const { return row().makes() ? Names{} : Names{row().name}; }
};

TEST_P(EachDoor, IsAskedAboutOnce) {
  catalogue::Posting posting(row());
  const Censoring censoring(false);
  EXPECT_TRUE(posting.post());
  EXPECT_EQ(censoring.asked, expected());
}

TEST_P(EachDoor, DoesNothingWhenLeftOutAndSaysThatAllIsWell) {
  if (row().makes()) return;
  catalogue::Posting posting(row());
  std::vector<int> attached;
  for (CSint *v : posting.variables()) attached.push_back(cs_getNbConstraints(v));
  {
    const Censoring censoring(true);
    EXPECT_TRUE(posting.post());
    EXPECT_EQ(censoring.asked, expected());
  }
  EXPECT_EQ(cs_getNbRefused(), 0);
  for (std::size_t i = 0; i < attached.size(); ++i) {
    CSint *v = posting.variables()[i];
    EXPECT_EQ(cs_getNbConstraints(v), attached[i]);
    EXPECT_EQ(cs_getNbElements(v), 10);
  }
}

std::vector<const catalogue::Row *> rowsAndEvents() {
  std::vector<const catalogue::Row *> all = catalogue::rows();
  for (const catalogue::Row &row : catalogue::hostRows())
    if (std::string(row.name).starts_with("cs_event")) all.push_back(&row);
  return all;
}

std::string nameOf(const ::testing::TestParamInfo<const catalogue::Row *> &info) {
  return std::string(info.param->name).substr(3);
}

INSTANTIATE_TEST_SUITE_P(Row, EachDoor, ::testing::ValuesIn(rowsAndEvents()), nameOf);

class DoorTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    x = cs_createCSint(0, 9);
  }
  CSint *x = nullptr;
};

bool knownOf(CSint **array, int, void *) { return cs_NEQ(array[0], 9); }

TEST_F(DoorTest, OfARunAndADecisionIsAskedAboutOnceAndTheRelationsUnderThemAreNot) {
  const Censoring censoring(false);
  const CSvalueSelection decision{CS_METHOD_NEQ, 5};
  EXPECT_TRUE(cs_eventRun(&x, 1, knownOf, nullptr));
  EXPECT_TRUE(cs_selectValue(x, &decision));
  EXPECT_FALSE(cs_selectValue(x, nullptr));
  EXPECT_EQ(censoring.asked, (Names{"cs_eventRun", "cs_selectValue", "cs_selectValue"}));
  EXPECT_EQ(cs_getNbElements(x), 8);
  EXPECT_EQ(cs_getNbRefused(), 1);
}

TEST_F(DoorTest, OfARunAndADecisionMayBeLeftOut) {
  const Censoring censoring(true);
  const CSvalueSelection decision{CS_METHOD_NEQ, 5};
  EXPECT_TRUE(cs_eventRun(&x, 1, knownOf, nullptr));
  EXPECT_TRUE(cs_selectValue(x, &decision));
  EXPECT_TRUE(cs_selectValue(nullptr, nullptr));
  EXPECT_TRUE(cs_EQ(nullptr, 1));
  EXPECT_EQ(cs_getNbElements(x), 10);
}

TEST_F(DoorTest, IsNotAskedAboutInsideAContextASearchOrACallback) {
  EXPECT_TRUE(cs_eventRun(&x, 1, knownOf, nullptr));
  const Censoring censoring(true);
  cs_saveContext();
  EXPECT_TRUE(cs_GE(x, 3));
  cs_restoreContext();
  EXPECT_TRUE(cs_search(&x, 1, cs_findFreeVar));
  EXPECT_EQ(censoring.asked, Names{});
}

TEST_F(DoorTest, IsNotAskedAboutWithoutASolver) {
  const Censoring censoring(true);
  cs_end();
  CSint *none[] = {nullptr};
  EXPECT_FALSE(cs_AllNeq(none, 1));
  EXPECT_EQ(censoring.asked, Names{});
}

TEST_F(DoorTest, IsAskedAboutInEverySolverThatBegins) {
  const Censoring censoring(true);
  CSsolver *parked = cs_detachSolver();
  cs_init();
  EXPECT_TRUE(cs_EQ(nullptr, 1));
  cs_end();
  ASSERT_TRUE(cs_attachSolver(parked));
  EXPECT_TRUE(cs_EQ(x, 10));
  EXPECT_EQ(censoring.asked, (Names{"cs_EQ", "cs_EQ"}));
}

// What counts a known number makes its result that: one call, one refusal.
TEST_F(DoorTest, OfACountThatIsKnownAnswersForTheRelationUnderIt) {
  CSint *five = CSINT(5);
  EXPECT_FALSE(cs_OccurConstraints(CSINT(0), 5, &five, 1));
  EXPECT_EQ(cs_getNbRefused(), 1);
  const Censoring censoring(false);
  EXPECT_TRUE(cs_OccurConstraints(x, 5, &five, 1));
  EXPECT_EQ(censoring.asked, Names{"cs_OccurConstraints"});
}

}  // namespace
}  // namespace koru::test
