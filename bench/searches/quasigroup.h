// SPDX-License-Identifier: MIT
// Quasigroups with holes at the phase transition: Latin squares of order 30 of which 42 % of the cells are left out.
#pragma once

#include "instances.h"

namespace koru::bench::searches {

constexpr int kOrder = 30;
constexpr int kHoles = kOrder * kOrder * 42 / 100;

inline Grid quasigroup(int instance) {
  Random random(static_cast<unsigned>(instance));
  Grid grid = LatinSquare(random, kOrder).take();
  removeCells(random, grid, kHoles);
  return grid;
}

}  // namespace koru::bench::searches
