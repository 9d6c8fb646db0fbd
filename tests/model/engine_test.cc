// SPDX-License-Identifier: MIT
// The propagation engine against its twin: the same sequence of handler calls with the same arguments, the same
// results, domains and last-reported bounds, on random programs whose handlers narrow, post, create, fail and open
// choice points.
#include "model/compare.h"
#include "model/sides.h"

namespace koru::test::model {
namespace {

std::size_t totalCalls = 0;

void compareEnginesWithTwin(std::uint64_t firstSeed, int count, int steps) {
  totalCalls += compareWithTwin<RecordingSide, TwinSide>({firstSeed, count, steps}, "called");
}

TEST(EngineTwin, SeesTheSameHandlerCallsDomainsAndReportedBounds) {
  totalCalls = 0;
  compareEnginesWithTwin(1, 4000, 30);
  EXPECT_GT(totalCalls, 50000U) << "the programs do something";
}

TEST(EngineTwin, HeavySeesTheSameHandlerCallsOnManyMorePrograms) { compareEnginesWithTwin(1000000, 30000, 40); }

}  // namespace
}  // namespace koru::test::model
