// SPDX-License-Identifier: MIT
#include "solve/options.h"

namespace koru::solve {

static bool isWithin(long long value, long long low, long long high) { return low <= value && value <= high; }

bool isOrder(int order, bool ofOrders, const CSsearchOptions &o) {
  if (order == CS_ORDER_SET_TIMES) return !ofOrders;
  return isWithin(order, CS_ORDER_INPUT, ofOrders ? CS_ORDER_SLACK_WDEG : CS_ORDER_ACTIVITY) &&
         (order != CS_ORDER_HOST || o.chooseVariable != nullptr);
}

bool isValueOrder(int value, bool ofOrders, const CSsearchOptions &o) {
  return isWithin(value, CS_VALUE_MIN, ofOrders ? CS_VALUE_SLACK : CS_VALUE_SELECTOR) &&
         (value != CS_VALUE_HOST || o.chooseValue != nullptr) && (value != CS_VALUE_SELECTOR || o.selectors != nullptr);
}

static bool areLimits(const CSsearchOptions &o) {
  return o.milliseconds >= 0 && o.fails >= 0 && o.choicePoints >= 0 && o.solutions >= 0 && o.memory >= 0 &&
         o.progressMilliseconds >= 0;
}

static bool areRestarts(const CSsearchOptions &o) {
  return isWithin(o.restarts, CS_RESTARTS_NONE, CS_RESTARTS_GEOMETRIC) && o.restartFails >= 0 && o.restartGrowth >= 0;
}

static bool areNeighbourhoods(const CSsearchOptions &o) {
  if (!isWithin(o.neighbours, CS_NEIGHBOURS_NONE, CS_NEIGHBOURS_TASKS)) return false;
  if (o.neighbours != CS_NEIGHBOURS_NONE && o.minimize == nullptr && o.maximize == nullptr) return false;
  if (o.neighbours == CS_NEIGHBOURS_HOST && o.chooseRelaxed == nullptr) return false;
  return o.neighbourFails >= 0 && isWithin(o.relaxed, 0, 100);
}

bool isAcceptable(const CSsearchOptions &o) {
  return o.size == sizeof(CSsearchOptions) && isOrder(o.order, false, o) && isValueOrder(o.value, false, o) &&
         isWithin(o.branching, CS_BRANCH_BINARY, CS_BRANCH_VALUES) &&
         (o.minimize == nullptr || o.maximize == nullptr) && areRestarts(o) && areNeighbourhoods(o) && areLimits(o);
}

// Complete runs between neighbourhoods have to end.
CSsearchOptions withDefaults(CSsearchOptions o) {
  if (o.neighbours != CS_NEIGHBOURS_NONE && o.restarts == CS_RESTARTS_NONE) o.restarts = CS_RESTARTS_LUBY;
  if (o.restartFails == 0) o.restartFails = 100;
  if (o.restartGrowth == 0) o.restartGrowth = 50;
  if (o.neighbourFails == 0) o.neighbourFails = 100;
  if (o.relaxed == 0) o.relaxed = 20;
  return o;
}

}  // namespace koru::solve
