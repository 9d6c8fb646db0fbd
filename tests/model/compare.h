// SPDX-License-Identifier: MIT
// Runs the same random programs on the solver and on its twin, and compares what both say.
#pragma once

#include <gtest/gtest.h>

#include <string_view>

#include "koru.h"
#include "model/world.h"

namespace koru::test::model {

struct Programs {
  std::uint64_t firstSeed;
  int count;
  int steps;
};

template <class Side, class... Choices>
std::vector<Line> transcribe(std::uint64_t seed, int steps, Choices... choices) {
  Side side;
  World<Side> world(side, seed, choices...);
  side.world = &world;
  world.run(steps);
  return world.transcript;
}

// `choices` are those of the world. Returns how many lines of that kind were compared, so that a test can see that its
// programs do something.
template <class Solver, class Twin, class... Choices>
std::size_t compareWithTwin(const Programs &programs, std::string_view counted, Choices... choices) {
  std::size_t lines = 0;
  for (int i = 0; i < programs.count; ++i) {
    const std::uint64_t seed = programs.firstSeed + static_cast<std::uint64_t>(i);
    cs_init();
    const std::vector<Line> solverSaid = transcribe<Solver>(seed, programs.steps, choices...);
    cs_end();
    const std::vector<Line> twinSaid = transcribe<Twin>(seed, programs.steps, choices...);
    for (const Line &line : twinSaid) lines += line.what == counted;
    if (solverSaid == twinSaid) continue;
    ADD_FAILURE() << "seed " << seed << '\n' << difference(solverSaid, twinSaid);
    break;
  }
  return lines;
}

}  // namespace koru::test::model
