// SPDX-License-Identifier: MIT
// Strips for Koru: all places along the strip, the largest rectangle first, then all across.
#include "searches/rectangles.h"

#include "searches/problem.h"

namespace koru::bench::searches {

void postRectangles(Model &model, int instance) {
  const Strip &strip = strips()[static_cast<std::size_t>(instance - 1)];
  const auto n = static_cast<int>(strip.rectangles.size());
  CSint *height = cs_createCSint(strip.least(), strip.stacked());
  Array &x = model.array();
  Array &y = model.array();
  Array &widths = model.array();
  Array &heights = model.array();
  for (const Rectangle &r : strip.rectangles) {
    x.push_back(cs_createCSint(0, strip.width - r.width));
    y.push_back(cs_createCSint(0, strip.stacked() - r.height));
    widths.push_back(CSINT(r.width));
    heights.push_back(CSINT(r.height));
    model.require(cs_PrecedenceIf(nullptr, y.back(), heights.back(), 0, height));
  }
  model.require(cs_NoOverlap(x.data(), widths.data(), y.data(), heights.data(), n));
  model.vars = {height};
  model.vars.insert(model.vars.end(), y.begin(), y.end());
  model.vars.insert(model.vars.end(), x.begin(), x.end());
  model.options.minimize = height;
}

}  // namespace koru::bench::searches
