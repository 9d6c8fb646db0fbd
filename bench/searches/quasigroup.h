// SPDX-License-Identifier: MIT
// Quasigroups with holes: Latin squares of which some cells are left out at random. At order 30, 42 % is where a square
// that was begun at random has a completion or not; those that are known to have one are hardest at fewer holes.
#pragma once

#include "instances.h"

namespace koru::bench::searches {

struct Shape {
  int order = 30;
  int percent = 42;  // of the cells

  int cells() const { return order * order; }
  int holes() const { return cells() * percent / 100; }
};
inline Shape shape;  // of all

inline Grid quasigroup(int instance) {
  Random random(static_cast<unsigned>(instance));
  Grid grid = LatinSquare(random, shape.order).take();
  removeCells(random, grid, shape.holes());
  return grid;
}

}  // namespace koru::bench::searches
