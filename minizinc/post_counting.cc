// SPDX-License-Identifier: MIT
// How often values are taken: counts, cardinalities, numbers of values, bins.
#include <algorithm>
#include <climits>

#include "minizinc/postings.h"

namespace koru::fzn {

namespace {

// A count that is fixed already is told to cs_OccurConstraints as a change.
bool countOfConstant(const Call &call, int value) {
  Array &array = call.keep(call.array(0));
  const Operand count = call.operand(2);
  if (!count.isConstant) return cs_OccurConstraints(call.variable(2), value, array.data(), sizeOf(array));
  if (count.value < 0 || count.value > sizeOf(array)) return false;
  CSint *made = cs_OccurDomain(value, array.data(), sizeOf(array));
  return cs_EQ(made, static_cast<int>(count.value));
}

// count(x, y) = c
bool countOf(const Call &call) {
  const Operand value = call.operand(1);
  if (value.isConstant && (value.value < INT_MIN || value.value > INT_MAX)) return cs_EQ(call.variable(2), 0);
  if (value.isConstant) return countOfConstant(call, static_cast<int>(value.value));
  Array array = call.array(0);
  return cs_CountOf(array.data(), sizeOf(array), call.variable(1), call.variable(2));
}

// y stands in x.
bool member(const Call &call) {
  Array array = call.array(0);
  CSint *count = array.empty() ? nullptr : cs_createCSint(1, sizeOf(array));
  return count != nullptr && cs_CountOf(array.data(), sizeOf(array), call.variable(1), count);
}

// --- Cardinalities ---

// Values that are stated twice have one count.
bool mergeTwins(std::vector<int> &values, Array &counts) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto first = std::find(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(i), values[i]);
    if (first == values.begin() + static_cast<std::ptrdiff_t>(i)) continue;
    if (!cs_Eq(counts[static_cast<std::size_t>(first - values.begin())], counts[i])) return false;
    values.erase(values.begin() + static_cast<std::ptrdiff_t>(i));
    counts.erase(counts.begin() + static_cast<std::ptrdiff_t>(i));
    --i;
  }
  return true;
}

bool postCardinality(const Call &call, std::vector<int> values, Array counts, bool closed) {
  Array array = call.array(0);
  if (values.size() != counts.size()) return call.refuse("there are not as many counts as values");
  const bool domain = call.hasAnnotation("domain") || call.hasAnnotation("domain_propagation");
  return mergeTwins(values, counts) &&
         (domain ? cs_CardinalityDomain : cs_Cardinality)(array.data(), sizeOf(array), values.data(), counts.data(),
                                                          sizeOf(counts), closed);
}

template <bool closed>
bool cardinality(const Call &call) {
  return postCardinality(call, call.ints(1), call.array(2), closed);
}

// Arguments: variables, values, least and greatest counts.
template <bool closed>
bool cardinalityWithin(const Call &call) {
  const std::vector<long long> least = call.constants(2), most = call.constants(3);
  const long long n = static_cast<long long>(call.list(0).size());
  Array counts;
  if (least.size() != most.size()) return call.refuse("there are not as many upper bounds as lower bounds");
  for (std::size_t i = 0; i < least.size(); ++i) {
    const long long low = std::max(0LL, least[i]), high = std::min(n, most[i]);
    if (low > high) return false;
    counts.push_back(cs_createCSint(static_cast<int>(low), static_cast<int>(high)));
  }
  return postCardinality(call, call.ints(1), std::move(counts), closed);
}

bool numberOfValues(const Call &call) {
  Array array = call.array(1);
  return cs_NValues(array.data(), sizeOf(array), call.variable(0));
}

// --- Bins ---

// Bins that the file does not have come before, and stay empty.
bool pack(const Call &call, Array bins, const std::vector<int> &sizes, Array loads, long long begin) {
  if (bins.size() != sizes.size()) return call.refuse("there are not as many sizes as items");
  const long long end = begin + sizeOf(loads);
  for (CSint *bin : bins) {
    if (loads.empty() || cs_InInterval(bin, static_cast<int>(begin), static_cast<int>(end - 1)) == 0) return false;
  }
  if (begin >= 0 && begin <= 16) {
    loads.insert(loads.begin(), static_cast<std::size_t>(begin), call.variables.constant(0));
  } else {
    for (CSint *&bin : bins) bin = cs_Sub(bin, call.variables.constant(begin));
  }
  return cs_BinPacking(bins.data(), sizes.data(), sizeOf(bins), loads.data(), sizeOf(loads));
}

// Arguments: loads, bins, sizes, the number of the first bin.
bool packWithLoads(const Call &call) { return pack(call, call.array(1), call.ints(2), call.array(0), call.intAt(3)); }

// A variable for a load that has a limit; null when that is negative.
CSint *loadUpTo(long long limit, const std::vector<int> &sizes) {
  long long all = 0;
  for (const int size : sizes) all += size;
  const long long most = std::min({limit, all, static_cast<long long>(INT_MAX)});
  return most < 0 ? nullptr : cs_createCSint(0, static_cast<int>(most));
}

bool packWithin(const Call &call, const std::vector<long long> &limits, long long begin) {
  const std::vector<int> sizes = call.ints(2);
  Array loads;
  for (const long long limit : limits) loads.push_back(loadUpTo(limit, sizes));
  const bool possible = std::find(loads.begin(), loads.end(), nullptr) == loads.end();
  return possible && pack(call, call.array(1), sizes, std::move(loads), begin);
}

// Arguments: capacities, bins, sizes, the number of the first bin.
bool packWithCapacities(const Call &call) { return packWithin(call, call.constants(0), call.intAt(3)); }

// Arguments: the capacity of every bin, bins, sizes.
bool packEqually(const Call &call) {
  const Array bins = call.array(1);
  if (bins.empty()) return true;
  long long low = INT_MAX, high = INT_MIN;
  for (CSint *v : bins) low = std::min<long long>(low, cs_getMin(v)), high = std::max<long long>(high, cs_getMax(v));
  if (high - low > 1'000'000) return call.refuse("there are more than a million bins");
  return packWithin(call, std::vector<long long>(static_cast<std::size_t>(high - low + 1), call.constant(0)), low);
}

constexpr Row kRows[] = {
    {"koru_count", "Xxx", countOf},
    {"koru_member", "Xx", member},
    {"koru_global_cardinality", "XCX", cardinality<false>},
    {"koru_global_cardinality_closed", "XCX", cardinality<true>},
    {"koru_global_cardinality_low_up", "XCCC", cardinalityWithin<false>},
    {"koru_global_cardinality_low_up_closed", "XCCC", cardinalityWithin<true>},
    {"koru_nvalue", "xX", numberOfValues},
    {"koru_bin_packing_load", "XXCc", packWithLoads},
    {"koru_bin_packing_capa", "CXCc", packWithCapacities},
    {"koru_bin_packing", "cXC", packEqually},
};

}  // namespace

std::span<const Row> countingRows() { return kRows; }

}  // namespace koru::fzn
