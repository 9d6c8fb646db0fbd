// SPDX-License-Identifier: MIT
// Social golfers: 15 players in 5 groups of 3, in 6 weeks, so that no two play together twice. The value of a player's
// week is a group.
#include "searches/problem.h"

namespace koru::bench::searches {

namespace {

constexpr int kGroups = 5;
constexpr int kSize = 3;
constexpr int kWeeks = 6;
constexpr int kPlayers = kGroups * kSize;

// The first week is the players in order; later the first three, who have met, are in the first three groups.
int fixedGroup(int player, int week) {
  if (week == 0) return player / kSize;
  return player < kSize ? player : -1;
}

}  // namespace

void postGolfers(Model &model, int instance) {
  std::vector<Array *> weeks;
  for (int week = 0; week < kWeeks; ++week) {
    Array &groups = *weeks.emplace_back(&model.array(kPlayers, 0, kGroups - 1));
    for (int g = 0; g < kGroups; ++g) model.require(cs_OccurConstraints(CSINT(kSize), g, groups.data(), kPlayers));
    for (int p = 0; p < kPlayers; ++p)
      if (fixedGroup(p, week) >= 0) model.require(cs_EQ(groups[static_cast<std::size_t>(p)], fixedGroup(p, week)));
    model.vars.insert(model.vars.end(), groups.begin(), groups.end());
  }
  for (std::size_t p = 0; p < kPlayers; ++p)
    for (std::size_t q = p + 1; q < kPlayers; ++q) {
      Array &meetings = model.array();
      for (const Array *groups : weeks) meetings.push_back(cs_ReifEq((*groups)[p], (*groups)[q]));
      model.require(cs_LE(cs_Sigma(meetings.data(), kWeeks), 1));
    }
  model.options.order = CS_ORDER_DOM_WDEG;
  model.options.value = CS_VALUE_RANDOM;
  model.options.restarts = CS_RESTARTS_LUBY;
  model.options.restartFails = 100;
  model.options.seed = static_cast<unsigned>(instance);
}

}  // namespace koru::bench::searches
