// SPDX-License-Identifier: MIT
// cs_Element against enumeration, and its domain consistency at every node of whole searches.
#include "support/brute_support.h"

namespace {

using namespace koru::test::brute;

// Indices outside the array are no solution, so the result is given by a relation over index and value.
Constraint element(std::vector<int> table) {
  const auto shared = std::make_shared<const std::vector<int>>(std::move(table));
  const int n = static_cast<int>(shared->size());
  Constraint c = function(
      "cs_Element " + ::testing::PrintToString(*shared),
      [=](std::span<const int> t) { return t[0] < 0 || t[0] >= n ? 0 : (*shared)[static_cast<std::size_t>(t[0])]; },
      [=](CSint **x) { return cs_Element(x[0], shared->data(), n); });
  c.solution = [=](std::span<const int> t) {
    return t[0] >= 0 && t[0] < n && (*shared)[static_cast<std::size_t>(t[0])] == t[1];
  };
  return c;
}

std::vector<int> randomTable(std::mt19937 &random, int low, int width, unsigned longest = 6) {
  std::vector<int> table(1 + random() % longest);
  for (int &value : table) value = low + static_cast<int>(random() % static_cast<unsigned>(width));
  return table;
}

TEST(ElementSemantics, AllIndexDomainsAgreeWithEnumeration) {
  for (const std::vector<int> &table : {std::vector{4, 7, 4, -1}, {3}, {5, 5, 5, 5}, {0, 1, 2, 3}, {2, 0, 2, 0}})
    for (const Domain &index : allDomains(-1, 6))
      if (!holds({element(table), {index}, {0}, 1, 6, 1})) return;
}

TEST(ElementSemantics, PairsOfNarrowingsAgreeWithEnumeration) {
  for (const std::vector<int> &table : {std::vector{1, 2, 1}, {2, 1, 2}})
    for (const Domain &index : allDomains(-1, 4))
      if (!holds({element(table), {index}, {0}, 2, 6, 1})) return;
}

TEST(ElementSemantics, RandomTablesAgreeWithEnumeration) {
  std::mt19937 random(7);
  for (unsigned i = 0; i < 150; ++i) {
    const Constraint c = element(randomTable(random, -3, i % 2 == 0 ? 3 : 8));
    if (!holds({c, {randomDomain(random, -1, 8)}, {0}, 1, 8, i})) return;
  }
}

TEST(ElementSemantics, EachValueIsSupportedAtEveryNode) {
  std::mt19937 random(11);
  int nodes = 0;
  for (int i = 0; i < 400; ++i)
    nodes += checkSupportedRandom(element(randomTable(random, -2, i % 2 == 0 ? 3 : 7)), {0}, -1, 8, 2);
  EXPECT_GT(nodes, 3000);
}

TEST(ElementSemantics, EachValueOfALongTableIsSupportedAtEveryNode) {
  std::mt19937 random(17);
  int nodes = 0;
  for (int i = 0; i < 60; ++i) {
    const Constraint c = element(randomTable(random, -2, 3 + i % 4 * 4, 16));
    nodes += checkSupportedRandom(c, {0}, -2, 18, 2);
  }
  EXPECT_GT(nodes, 1000);
}

// values[i] == values[j] through two elements over one array, with the same index for both when the positions say so.
Constraint agreeing(std::vector<int> table) {
  const auto shared = std::make_shared<const std::vector<int>>(std::move(table));
  const int n = static_cast<int>(shared->size());
  const auto at = [=](int i) { return (*shared)[static_cast<std::size_t>(i)]; };
  return relation(
      "two elements " + ::testing::PrintToString(*shared),
      [=](std::span<const int> t) { return t[0] >= 0 && t[0] < n && t[1] >= 0 && t[1] < n && at(t[0]) == at(t[1]); },
      [=](CSint **x) { return cs_Eq(cs_Element(x[0], shared->data(), n), cs_Element(x[1], shared->data(), n)); });
}

TEST(ElementSemantics, TwoElementsThatAgreeLoseNoSolutionAndAcceptNoOther) {
  std::mt19937 random(13);
  int nodes = 0;
  for (int i = 0; i < 120; ++i) {
    const Constraint c = agreeing(randomTable(random, 0, 3));
    nodes += checkSupportedRandom(c, {0, 1}, -1, 7, 2, Support::kNothing);
    nodes += checkSupportedRandom(c, {0, 0}, -1, 7, 2, Support::kNothing);
  }
  EXPECT_GT(nodes, 1000);
}

}  // namespace
