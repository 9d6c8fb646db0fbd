// SPDX-License-Identifier: MIT
// The solutions of a posting, found by enumeration, and which of them stand within given domains.
#pragma once

#include <algorithm>

#include "semantic/harness/constraint.h"

namespace koru::test::brute {

// Rows of bit numbers, as many in each as there are columns (or variables).
class Rows {
 public:
  using Row = std::array<std::uint8_t, kMostColumns>;

  explicit Rows(std::size_t width = 0) : width_(width) {}
  void add(const Row &row) { rows_.push_back(row); }

  bool any(const Masks &within) const {
    return std::ranges::any_of(rows_, [&](const Row &row) { return lies(row, within); });
  }

  // All that the rows within the masks contain, column by column.
  Masks used(const Masks &within) const {
    Masks result{};
    for (const Row &row : rows_)
      if (lies(row, within))
        for (std::size_t i = 0; i < width_; ++i) result[i] |= Mask{1} << row[i];
    return result;
  }

 private:
  bool lies(const Row &row, const Masks &within) const {
    for (std::size_t i = 0; i < width_; ++i)
      if ((within[i] >> row[i] & 1) == 0) return false;
    return true;
  }

  std::size_t width_;
  std::vector<Row> rows_;
};

// Enumerates once, over everything between the bounds of the domains.
class Table {
 public:
  Table(const Constraint &c, const std::vector<Domain> &domains, const std::vector<int> &positions)
      : domains_(domains), positions_(positions) {
    for (const int p : positions) layout.variableAt.push_back(static_cast<std::size_t>(p));
    if (c.results) layout.variableAt.push_back(domains.size());
    enumerate(c);
    layOut();
  }

  Layout layout;
  Rows solutions;  // by variable: within the domains, and the same value wherever a variable stands
  Rows supports;   // by column: each column for itself, and holes filled

  // Of the variables only.
  Masks domains() const {
    Masks result{};
    for (std::size_t i = 0; i < domains_.size(); ++i)
      for (const int value : domains_[i].values) result[i] |= Mask{1} << (value - layout.base[i]);
    return result;
  }

 private:
  void enumerate(const Constraint &c) {
    std::vector<std::vector<int>> hulls;
    for (const int p : positions_) {
      const std::vector<int> &values = domains_[static_cast<std::size_t>(p)].values;
      hulls.emplace_back();
      for (int value = values.front(); value <= values.back(); ++value) hulls.back().push_back(value);
    }
    forEachTuple(hulls, [&](const Tuple &tuple) {
      if (!c.results) return keepSolution(c, tuple);
      for (const int result : c.results(tuple)) {
        Tuple all = tuple;
        all.push_back(result);
        keepSolution(c, all);
      }
    });
  }

  void keepSolution(const Constraint &c, const Tuple &tuple) {
    if (c.solution(tuple)) tuples_.push_back(tuple);
  }

  // Bit 0 stands for the least value of a domain; the results seen lie in the middle of their window.
  void layOut() {
    for (std::size_t i = 0; i < domains_.size(); ++i) layout.base[i] = domains_[i].values.front();
    if (layout.variableAt.size() > positions_.size() && !tuples_.empty()) {
      const auto [least, greatest] = std::ranges::minmax_element(tuples_, {}, [](const Tuple &t) { return t.back(); });
      layout.base[domains_.size()] = (least->back() + greatest->back()) / 2 - kWindow / 2;
    }
    solutions = Rows(domains_.size() + layout.variableAt.size() - positions_.size());
    supports = Rows(layout.variableAt.size());
    for (const Tuple &tuple : tuples_) add(tuple);
  }

  void add(const Tuple &tuple) {
    Rows::Row byColumn{};
    Rows::Row byVariable{};
    for (std::size_t c = 0; c < tuple.size(); ++c) {
      const std::size_t v = layout.variableAt[c];
      byColumn[c] = static_cast<std::uint8_t>(tuple[c] - layout.base[v]);
      byVariable[v] = byColumn[c];
    }
    supports.add(byColumn);
    if (isSolution(tuple, byVariable)) solutions.add(byVariable);
  }

  bool isSolution(const Tuple &tuple, const Rows::Row &byVariable) const {
    for (std::size_t c = 0; c < positions_.size(); ++c) {
      const std::size_t v = layout.variableAt[c];
      if (byVariable[v] != tuple[c] - layout.base[v]) return false;
      if (!std::ranges::binary_search(domains_[v].values, tuple[c])) return false;
    }
    return true;
  }

  const std::vector<Domain> &domains_;
  const std::vector<int> &positions_;
  std::vector<Tuple> tuples_;
};

}  // namespace koru::test::brute
