// SPDX-License-Identifier: MIT
#include "searches/quasigroup.h"

#include "searches/problem.h"

namespace koru::bench::searches {

void postQuasigroup(Model &model, int instance) {
  const int order = shape.order;
  Grid grid = quasigroup(instance);
  Array &cells = model.array(shape.cells(), 1, order);
  const auto at = [&](int row, int column) { return cells[static_cast<std::size_t>(row * order + column)]; };
  for (int r = 0; r < order; ++r)
    for (int c = 0; c < order; ++c) {
      if (grid.at(r, c) != 0) {
        model.require(cs_EQ(at(r, c), grid.at(r, c)));
      } else {
        model.vars.push_back(at(r, c));
      }
    }
  cs_beginPosting();
  for (int k = 0; k < order; ++k) {
    Array &row = model.array();
    Array &column = model.array();
    for (int i = 0; i < order; ++i) {
      row.push_back(at(k, i));
      column.push_back(at(i, k));
    }
    model.require(cs_AllNeqDomain(row.data(), order) && cs_AllNeqDomain(column.data(), order));
  }
  model.require(cs_endPosting());
  model.options.order = CS_ORDER_DOM_WDEG;
  model.options.value = CS_VALUE_RANDOM;
  model.options.restarts = CS_RESTARTS_LUBY;
  model.options.restartFails = 100;
  model.options.seed = static_cast<unsigned>(instance);
}

}  // namespace koru::bench::searches
