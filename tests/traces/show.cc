// SPDX-License-Identifier: MIT
#include "traces/show.h"

namespace koru::traces {

std::vector<int> valuesOf(CSint *v) {
  std::vector<int> values;
  for (int value = cs_getMin(v);; value = cs_getNextValue(v, value)) {
    values.push_back(value);
    if (value >= cs_getMax(v)) return values;
  }
}

std::string show(CSint *v) {
  const int count = cs_getNbElements(v);
  std::string result = std::to_string(cs_getMin(v)) + ".." + std::to_string(cs_getMax(v));
  if (count < 1 || count > 40) return result + " (" + std::to_string(count) + " values)";
  result.clear();
  for (const int value : valuesOf(v)) result += (result.empty() ? "" : " ") + std::to_string(value);
  return "{" + result + "}";
}

}  // namespace koru::traces
