// SPDX-License-Identifier: MIT
// cs_Neq, cs_Le, cs_Lt and cs_Add against rules written a second time on a second engine: observers hear the same
// handler runs in the same order, and all domains agree.
#include "model/compare.h"
#include "model/observed.h"

namespace koru::test::model {
namespace {

std::size_t observed = 0;

void compareRelationsWithTwin(std::uint64_t firstSeed, int count, int steps) {
  observed += compareWithTwin<ObservedSide, ObservedTwin>({firstSeed, count, steps}, "observed", false);
}

TEST(RelationsTwin, ObserversHearTheSameHandlerRunsAndAllDomainsAgree) {
  observed = 0;
  compareRelationsWithTwin(1, 3000, 30);
  EXPECT_GT(observed, 50000U) << "the programs do something";
}

TEST(RelationsTwin, HeavyObserversHearTheSameOnManyMorePrograms) { compareRelationsWithTwin(1000000, 30000, 40); }

}  // namespace
}  // namespace koru::test::model
