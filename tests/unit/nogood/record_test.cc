// SPDX-License-Identifier: MIT
// The no-goods that are read off a path of decisions.
#include "nogood/record.h"

#include "support/no_goods/no_goods.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::nogood;

// A level of a path: the decision being tried, and the first one that failed, if any.
struct Step {
  Literal decision;
  bool isLast = false;
  std::optional<Literal> firstFailed = std::nullopt;
};

Step last(const Literal &decision) { return {decision, true}; }
Step after(const Literal &firstFailed, const Literal &decision) { return {decision, false, firstFailed}; }

class RecordTest : public NoGoodTest {
 protected:
  void record(const std::vector<Step> &path) {
    recorder->beginRun();
    recordWithin(path);
  }
  void recordWithin(const std::vector<Step> &path) {
    std::vector<LevelNode> nodes(path.size());
    for (std::size_t i = 0; i < path.size(); ++i) {
      const Literal &d = path[i].decision;
      const Literal failed = path[i].firstFailed.value_or(eq(0, 0));
      nodes[i] = {i > 0 ? &nodes[i - 1] : nullptr, d.index,       {d.method, d.value}, {failed.method, failed.value},
                  path[i].firstFailed.has_value(), path[i].isLast};
    }
    const PathRecorder hook = recorder->hook();
    hook.record(hook.argument, nodes.back(), static_cast<int>(path.size()) - 1);
  }
  std::vector<Literals> recorded(const std::vector<Step> &path) {
    filterBy([](CSnoGood *) { return false; });
    record(path);
    return contents(set);
  }
  void SetUp() override {
    NoGoodTest::SetUp();
    recorder.emplace(set);
  }

  std::optional<Recorder> recorder;
};

using Sets = std::vector<Literals>;

TEST_F(RecordTest, TheDecisionsOfAPathWithoutLastOnesAreOneNoGood) {
  EXPECT_EQ(recorded({{eq(0, 1)}, {eq(1, 2)}, {eq(2, 3)}}), (Sets{{eq(0, 1), eq(1, 2), eq(2, 3)}}));
  EXPECT_EQ(recorded({{neq(3, 1)}}), (Sets{{neq(3, 1)}}));
}

TEST_F(RecordTest, LastDecisionsAreLeftOut) { EXPECT_EQ(recorded({{eq(0, 1)}, last(gt(1, 4))}), (Sets{{eq(0, 1)}})); }

TEST_F(RecordTest, APathOfLastDecisionsOnlyRecordsNothing) {
  EXPECT_EQ(recorded({last(eq(0, 1)), last(gt(1, 4))}), Sets{});
  EXPECT_EQ(recorded({last(eq(0, 1))}), Sets{});
}

TEST_F(RecordTest, ALastDecisionAboveIsNegatedAfterThoseAboveIt) {
  EXPECT_EQ(recorded({{eq(0, 1)}, last(gt(1, 4)), {eq(2, 3)}}), (Sets{{eq(0, 1), eq(2, 3)}, {eq(0, 1), le(1, 4)}}));
}

TEST_F(RecordTest, ALastDecisionAtTheRootIsNegatedAlone) {
  EXPECT_EQ(recorded({last(neq(0, 4)), {eq(1, 2)}}), (Sets{{eq(1, 2)}, {eq(0, 4)}}));
}

TEST_F(RecordTest, LastDecisionsBelowTheDeepestThatIsNotLastAreNotNegated) {
  EXPECT_EQ(recorded({{eq(0, 1)}, last(gt(1, 4)), {eq(2, 3)}, last(gt(3, 4))}),
            (Sets{{eq(0, 1), eq(2, 3)}, {eq(0, 1), le(1, 4)}}));
}

TEST_F(RecordTest, LastDecisionsAreNegatedFromTheDeepestTowardsTheRoot) {
  EXPECT_EQ(recorded({last(lt(0, 5)), {eq(1, 1)}, last(ge(2, 5)), {eq(3, 1)}}),
            (Sets{{eq(1, 1), eq(3, 1)}, {eq(1, 1), lt(2, 5)}, {ge(0, 5)}}));
}

TEST_F(RecordTest, TheFirstFailedDecisionNearestTheRootFollowsThoseAboveIt) {
  EXPECT_EQ(recorded({{eq(0, 1)}, after(eq(1, 1), eq(1, 2)), after(eq(2, 4), eq(2, 5))}),
            (Sets{{eq(0, 1), eq(1, 2), eq(2, 5)}, {eq(0, 1), eq(1, 1)}}));
}

TEST_F(RecordTest, TheFirstFailedDecisionOfTheRootStandsAlone) {
  EXPECT_EQ(recorded({after(eq(0, 1), eq(0, 2)), {eq(1, 3)}}), (Sets{{eq(0, 2), eq(1, 3)}, {eq(0, 1)}}));
}

TEST_F(RecordTest, ALevelAtItsLastDecisionGivesNoFirstFailedOne) {
  Step root = last(eq(0, 9));
  root.firstFailed = eq(0, 1);
  EXPECT_EQ(recorded({root, after(eq(1, 1), eq(1, 2))}), (Sets{{eq(1, 2)}, {neq(0, 9)}, {eq(1, 1)}}));
}

TEST_F(RecordTest, ThePrefixOfTheFirstFailedDecisionIsThatOfThePath) {
  EXPECT_EQ(recorded({{eq(0, 1)}, last(gt(1, 4)), after(eq(2, 1), eq(2, 2)), {eq(3, 3)}}),
            (Sets{{eq(0, 1), eq(2, 2), eq(3, 3)}, {eq(0, 1), le(1, 4)}, {eq(0, 1), eq(2, 1)}}));
}

TEST_F(RecordTest, RecordedNoGoodsAreInsertedLikeAllOthers) {
  cs_setMaxNbNoGoods(set, 1);
  std::vector<Literals> asked;
  filter = [&](CSnoGood *noGood) {
    asked.push_back(literalsOf(noGood));
    return true;
  };
  record({{eq(0, 1)}, last(gt(1, 4)), {eq(2, 3)}});
  EXPECT_EQ(asked, (Sets{{eq(0, 1), eq(2, 3)}, {eq(0, 1), le(1, 4)}}));
  EXPECT_EQ(contents(set), (Sets{{eq(0, 1), le(1, 4)}}));
}

TEST_F(RecordTest, ADecisionOutsideTheArrayOfTheSetDiscardsItsNoGoods) {
  EXPECT_EQ(recorded({{eq(0, 1)}, last(gt(1, 4)), {eq(kSize, 3)}}), (Sets{{eq(0, 1), le(1, 4)}}));
}

TEST_F(RecordTest, WithoutASetThereIsNobodyToTell) { EXPECT_EQ(Recorder(nullptr).hook().record, nullptr); }

// ----- memory

TEST_F(RecordTest, ThePathIsCollectedInOneArrayThatGrowsWhenAPathIsLonger) {
  const auto allocations = [&](const std::vector<Step> &path) {
    for (int k = 0;; ++k) {
      recorder.emplace(set);
      const FailingAllocation failing(k);
      record(path);
      if (!FailingAllocation::failed()) return k;
    }
  };
  EXPECT_EQ(allocations({{eq(0, 1)}}), 2);
  EXPECT_EQ(allocations({{eq(0, 1)}, last(gt(1, 4)), {eq(2, 3)}}), 3);
  record({{eq(0, 1)}, {eq(1, 1)}, {eq(2, 1)}});
  const FailingAllocation failing(1);  // the no-good is the only one
  record({{eq(0, 2)}, {eq(1, 1)}});
  EXPECT_FALSE(FailingAllocation::failed());
}

TEST_F(RecordTest, AnArrayThatCannotBeHadIsReportedOnceAndNothingIsRecorded) {
  {
    const FailingAllocation failing(0);
    record({{eq(0, 1)}, {eq(1, 1)}});
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(contents(set), Sets{});
  record({{eq(0, 1)}, {eq(1, 1)}});
  EXPECT_EQ(contents(set), (Sets{{eq(0, 1), eq(1, 1)}}));
}

TEST_F(RecordTest, ANoGoodThatCannotBeHadIsReportedOnceAndTheOthersAreRecorded) {
  const FailingAllocation failing(1);
  record({{eq(0, 1)}, last(gt(1, 4)), {eq(2, 3)}});
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(contents(set), (Sets{{eq(0, 1), le(1, 4)}}));
}

TEST_F(RecordTest, NothingIsRecordedOfARunInWhichMemoryWasExhausted) {
  recorder->beginRun();
  {
    const FailingAllocation failing(0);
    EXPECT_FALSE(cs_NEQ(x[0], 5));
  }
  cs_initErr();
  recordWithin({{eq(0, 1)}});
  EXPECT_EQ(contents(set), Sets{});
  record({{eq(0, 1)}});
  EXPECT_EQ(contents(set), (Sets{{eq(0, 1)}}));
}

}  // namespace
