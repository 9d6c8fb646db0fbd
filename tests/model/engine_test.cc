// SPDX-License-Identifier: MIT
// The propagation engine against its twin: the same sequence of handler calls with the same arguments, the same
// results, domains and last-reported bounds, on random programmes whose handlers narrow, post, create, fail and open
// choice points.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "support/model_sides.h"

namespace koru::test {
namespace {

std::size_t totalCalls = 0;

template <class Side>
std::vector<Line> transcribe(std::uint64_t seed, int steps) {
  Side side;
  World<Side> world(side, seed);
  side.world = &world;
  world.run(steps);
  return world.transcript;
}

void compareWithTwin(std::uint64_t firstSeed, int count, int steps) {
  for (std::uint64_t seed = firstSeed; seed < firstSeed + static_cast<std::uint64_t>(count); ++seed) {
    cs_init();
    const std::vector<Line> solverSaid = transcribe<RecordingSide>(seed, steps);
    cs_end();
    const std::vector<Line> twinSaid = transcribe<TwinSide>(seed, steps);
    for (const Line &line : twinSaid) totalCalls += std::string_view(line.what) == "called";
    ASSERT_TRUE(solverSaid == twinSaid) << "seed " << seed << '\n' << difference(solverSaid, twinSaid);
  }
}

TEST(EngineTwin, SeesTheSameHandlerCallsDomainsAndReportedBounds) {
  totalCalls = 0;
  compareWithTwin(1, 4000, 30);
  EXPECT_GT(totalCalls, 50000U) << "the programmes do something";
}

TEST(EngineTwin, HeavySeesTheSameHandlerCallsOnManyMoreProgrammes) { compareWithTwin(1000000, 30000, 40); }

}  // namespace
}  // namespace koru::test
