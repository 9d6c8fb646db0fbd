// SPDX-License-Identifier: MIT
// cs_Neq, cs_Le, cs_Lt and cs_Add against rules written a second time on a second engine: observers hear the same
// handler runs in the same order, and all domains agree.
#include <gtest/gtest.h>

#include <string_view>

#include "support/model_observed.h"

namespace koru::test {
namespace {

int observed = 0;

template <class Side>
std::vector<Line> transcribe(std::uint64_t seed, int steps) {
  Side side;
  World<Side> world(side, seed, false);
  side.world = &world;
  world.run(steps);
  return world.transcript;
}

void compareWithTwin(std::uint64_t firstSeed, int count, int steps) {
  for (std::uint64_t seed = firstSeed; seed < firstSeed + static_cast<std::uint64_t>(count); ++seed) {
    cs_init();
    const std::vector<Line> solverSaid = transcribe<ObservedSide>(seed, steps);
    cs_end();
    const std::vector<Line> twinSaid = transcribe<ObservedTwin>(seed, steps);
    for (const Line &line : twinSaid) observed += std::string_view(line.what) == "observed";
    ASSERT_TRUE(solverSaid == twinSaid) << "seed " << seed << '\n' << difference(solverSaid, twinSaid);
  }
}

TEST(RelationsTwin, ObserversHearTheSameHandlerRunsAndAllDomainsAgree) {
  observed = 0;
  compareWithTwin(1, 3000, 30);
  EXPECT_GT(observed, 50000) << "the programmes do something";
}

TEST(RelationsTwin, HeavyObserversHearTheSameOnManyMoreProgrammes) { compareWithTwin(1000000, 30000, 40); }

}  // namespace
}  // namespace koru::test
