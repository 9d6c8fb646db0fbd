// SPDX-License-Identifier: MIT
// Examples of constraints over arrays, of tables, elements, automata.
#include <algorithm>
#include <numeric>

#include "costs/row.h"

namespace koru::bench::costs {

namespace {

constexpr int kN = 30;

// Variables that may take the value of a hidden solution and few others.
Array &scarce(Model &m, const std::vector<int> &hidden, int values, int others) {
  Array &x = m.array(sizeOf(hidden), 0, values - 1);
  for (std::size_t i = 0; i < x.size(); ++i) {
    std::vector<int> allowed = randomValues(m.random, others, 0, values - 1);
    allowed.push_back(hidden[i]);
    m.require(cs_InArray(x[i], allowed.data(), sizeOf(allowed)));
  }
  return x;
}
Array &permutation(Model &m) { return scarce(m, m.random.permutation(kN), kN, 5); }
std::vector<int> fiveOfEach(Model &m) {
  std::vector<int> hidden = m.random.permutation(kN);
  for (int &value : hidden) value %= 6;
  return hidden;
}

void allNeqPairs(Model &m) {
  const Array &x = permutation(m);
  for (std::size_t i = 0; i < x.size(); ++i)
    for (std::size_t j = i + 1; j < x.size(); ++j) m.require(cs_Neq(x[i], x[j]));
}
template <auto post>
void permuted(Model &m) {
  m.require(post(permutation(m).data(), kN));
}
template <auto post>
void ofAll(Model &m) {
  m.require(post(m.array(kN, 0, kN - 1).data(), kN));
}

// Each of six values five times.
void occurrences(Model &m) {
  Array &x = scarce(m, fiveOfEach(m), 6, 1);
  for (int value = 0; value < 6; ++value) m.require(cs_OccurConstraints(CSINT(5), value, x.data(), kN) != 0);
}
template <auto post>
void cardinality(Model &m) {
  constexpr int kValues[] = {0, 1, 2, 3, 4, 5};
  Array &counts = m.constants({5, 5, 5, 5, 5, 5});
  m.require(post(scarce(m, fiveOfEach(m), 6, 1).data(), kN, kValues, counts.data(), 6, true));
}
void countOf(Model &m) {
  Array &x = m.array(kN, 0, 5);
  m.require(cs_CountOf(x.data(), kN, m.variable(0, 5), m.variable(10, 20)));
}
void nValues(Model &m) { m.require(cs_NValues(m.array(kN, 0, 9).data(), kN, CSINT(4))); }
void increasing(Model &m) { m.require(cs_Increasing(m.array(kN, 0, 99).data(), kN)); }
template <auto post>
void twoWords(Model &m) {
  Array &x = m.array(kN, 0, 1);
  m.require(post(x.data(), m.array(kN, 0, 1).data(), kN));
}
void precede(Model &m) {
  Array &x = m.array(kN, 0, 5);
  for (int value = 1; value < 6; ++value) m.require(cs_Precede(x.data(), kN, value - 1, value));
}
void inverse(Model &m) {
  Array &x = m.array(kN, 0, kN - 1);
  m.require(cs_Inverse(x.data(), m.array(kN, 0, kN - 1).data(), kN));
}
void packing(Model &m) {
  std::vector<int> sizes;
  for (int i = 0; i < kN; ++i) sizes.push_back(20 + m.random.below(31));
  const int total = std::accumulate(sizes.begin(), sizes.end(), 0);
  Array &loads = m.others(10, 0, total / 10 + 10);
  m.require(cs_BinPacking(m.array(kN, 0, 9).data(), sizes.data(), kN, loads.data(), 10));
}

// ----- elements

std::vector<int> randomTable(Model &m) { return randomValues(m.random, 50, 0, 20); }

void elementMade(Model &m) {
  for (int i = 0; i < 5; ++i) {
    CSint *index = m.variable(0, 49);
    CSint *z = cs_Element(index, m.ints(randomTable(m)).data(), 50);
    m.require(z != nullptr && cs_Le(z, m.variable(0, 20)));
  }
}
void elementGiven(Model &m) {
  for (int i = 0; i < 5; ++i) {
    CSint *index = m.variable(0, 49);
    CSint *z = m.others(1, 0, 20)[0];
    m.require(cs_ElementOf(index, randomTable(m).data(), 50, z) && cs_Le(z, m.variable(0, 20)));
  }
}
void varElementGiven(Model &m) {
  for (int i = 0; i < 5; ++i) {
    Array &x = m.array(10, 0, 9);
    m.require(cs_VarElementOf(m.variable(0, 9), x.data(), 10, m.variable(0, 9)));
  }
}

// ----- tables

std::vector<int> randomRows(Model &m, int columns, int count, int values) {
  return randomValues(m.random, columns * count, 0, values - 1);
}
void table(Model &m) { m.require(cs_Table(m.array(6, 0, 9).data(), 6, randomRows(m, 6, 1000, 10).data(), 1000)); }
void shortTable(Model &m) {
  std::vector<int> rows = randomRows(m, 6, 100, 10);
  for (int &cell : rows)
    if (m.random.below(4) == 0) cell = CS_ANY;
  m.require(cs_ShortTable(m.array(6, 0, 9).data(), 6, rows.data(), 100));
}
void notTable(Model &m) { m.require(cs_NotTable(m.array(3, 0, 9).data(), 3, randomRows(m, 3, 700, 10).data(), 700)); }

// Words over 0 and 1 with no more than three equal letters in a row. State 0 is the start, 1 to 3 follow zeros, 4 to 6
// ones.
constexpr int kNext[7][2] = {{1, 4}, {2, 4}, {3, 4}, {-1, 4}, {1, 5}, {1, 6}, {1, -1}};

void automaton(Model &m) {
  constexpr int kFinals[] = {0, 1, 2, 3, 4, 5, 6};
  m.require(cs_Regular(m.array(kN, 0, 1).data(), kN, kNext[0], 7, 2, 0, kFinals, 7) != 0);
}
// The same: the terminal is entered with the last letter.
void diagram(Model &m) {
  std::vector<int> sources;
  std::vector<int> letters;
  std::vector<int> targets;
  const auto add = [&](int source, int letter, int target) {
    sources.push_back(source);
    letters.push_back(letter);
    targets.push_back(target);
  };
  for (int i = 0; i < kN; ++i)
    for (int state = 0; state < 7; ++state)
      for (int letter = 0; letter < 2; ++letter)
        if (kNext[state][letter] >= 0)
          add(i * 7 + state, letter, i == kN - 1 ? kN * 7 : (i + 1) * 7 + kNext[state][letter]);
  m.require(cs_Mdd(m.array(kN, 0, 1).data(), kN, sources.data(), letters.data(), targets.data(),
                   static_cast<int>(sources.size()), 0, kN * 7));
}

constexpr Row kRows[] = {
    {"cs_Neq", "30 over up to 6 of 0..29, all pairs", allNeqPairs},
    {"cs_AllNeq", "the same", permuted<cs_AllNeq>},
    {"cs_AllNeqBounds", "the same", permuted<cs_AllNeqBounds>},
    {"cs_AllNeqDomain", "the same", permuted<cs_AllNeqDomain>},
    {"cs_OccurConstraints", "30 over one or two of 0..5, each value five times", occurrences},
    {"cs_Cardinality", "the same", cardinality<cs_Cardinality>},
    {"cs_CardinalityDomain", "the same", cardinality<cs_CardinalityDomain>},
    {"cs_CountOf", "30 over 0..5, 10 to 20 are equal to another one", countOf},
    {"cs_NValues", "30 over 0..9, four values", nValues},
    {"cs_Increasing", "30 over 0..99", increasing},
    {"cs_LexLe", "two of 30 over 0..1", twoWords<cs_LexLe>},
    {"cs_Precede", "30 over 0..5, five of them", precede},
    {"cs_Inverse", "two of 30 over 0..29", inverse},
    {"cs_Circuit", "30 over 0..29", ofAll<cs_Circuit>},
    {"cs_Subcircuit", "the same", ofAll<cs_Subcircuit>},
    {"cs_BinPacking", "30 items of 20 to 50 in 10 bins with 10 to spare in each", packing},
    {"cs_Element", "five tables of 50, each element <= a variable", elementMade},
    {"cs_ElementOf", "the same", elementGiven},
    {"cs_VarElementOf", "five arrays of 10 over 0..9", varElementGiven},
    {"cs_Table", "6 over 0..9, 1000 rows", table},
    {"cs_ShortTable", "6 over 0..9, 100 rows, a quarter of the cells any", shortTable},
    {"cs_NotTable", "3 over 0..9, 700 rows", notTable},
    {"cs_Regular", "30 over 0..1, at most three equal in a row", automaton},
    {"cs_Mdd", "the same", diagram},
};

}  // namespace

std::span<const Row> arrayRows() { return kRows; }

}  // namespace koru::bench::costs
