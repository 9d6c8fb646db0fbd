// SPDX-License-Identifier: MIT
// Car lines for Koru: a class for each slot, whose options follow by tables; an automaton for each station; and what
// the first slots must have done, as the others cannot take more.
#include "searches/cars.h"

#include <numeric>

#include "searches/problem.h"

namespace koru::bench::searches {

namespace {

void postStation(Model &model, const CarLine &line, const Station &station, const Array &slots) {
  const auto n = static_cast<int>(slots.size());
  Array &has = model.array(n, 0, 1);
  for (std::size_t i = 0; i < slots.size(); ++i)
    model.require(cs_ElementOf(slots[i], station.has.data(), static_cast<int>(station.has.size()), has[i]));
  std::vector<int> table;
  for (const std::vector<int> &row : statesOf(station)) table.insert(table.end(), row.begin(), row.end());
  std::vector<int> finals(table.size() / 2);
  std::iota(finals.begin(), finals.end(), 0);
  const auto states = static_cast<int>(finals.size());
  model.require(cs_Regular(has.data(), n, table.data(), states, 2, 0, finals.data(), states) == 1);
  const std::vector<long long> ones(slots.size(), 1);
  for (int first = n; first > 0; first -= station.block)
    model.require(
        cs_Linear(has.data(), ones.data(), first, CS_METHOD_GE, line.demandOf(station) - station.most(n - first)));
}

void postLine(Model &model, int instance) {
  const CarLine &line = carLines()[static_cast<std::size_t>(instance - 1)];
  const auto classes = static_cast<int>(line.demands.size());
  Array &slots = model.array(line.cars(), 0, classes - 1);
  std::vector<int> values(line.demands.size());
  std::iota(values.begin(), values.end(), 0);
  Array &counts = model.array();
  for (const int demand : line.demands) counts.push_back(CSINT(demand));
  model.require(cs_CardinalityDomain(slots.data(), line.cars(), values.data(), counts.data(), classes, true));
  for (const Station &station : line.stations) postStation(model, line, station, slots);
  model.vars = slots;
  model.options.solutions = 1;
}

}  // namespace

void postCars(Model &model, int instance) { postLine(model, instance); }

void postCarsByFailures(Model &model, int instance) {
  postLine(model, instance);
  model.options.order = CS_ORDER_DOM_WDEG;
  model.options.restarts = CS_RESTARTS_GEOMETRIC;
}

}  // namespace koru::bench::searches
