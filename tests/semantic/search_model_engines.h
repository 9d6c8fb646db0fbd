// SPDX-License-Identifier: MIT
// The searches once more, on the model: each as plain as it can be written, with everything it calls written down.
#pragma once

#include <algorithm>
#include <climits>
#include <functional>
#include <optional>
#include <string>

#include "semantic/search_model.h"
#include "support/kit/search_trace.h"

namespace koru::test::search {

// What a run decides besides the domains, drawn from a seed and the number of the call, so that the library and the
// model come to the same answers.
struct Whims {
  std::uint64_t seed = 0;
  int refusals = 0;   // one answer of so many is no; none when 0
  int cancelAt = -1;  // the number of the call that cancels

  bool says(std::size_t call) const { return refusals == 0 || Random(seed ^ (call * 977)).below(refusals) != 0; }
  int score(int index, int value) const {
    const int s = Random(seed ^ static_cast<std::uint64_t>(index * 64 + value)).between(-3, 3);
    return s == 3 ? INT_MAX : s;
  }
};

struct Engines {
  Model &model;
  Whims whims;
  int limit = 0;

  int fails = 0;
  int choicePoints = 0;
  bool cancelled = false;
  std::vector<std::string> lines = {};
  std::vector<std::vector<int>> solutions = {};

  void log(const std::string &line) {
    lines.push_back(line);
    if (static_cast<int>(lines.size()) == whims.cancelAt) cancelled = true;
  }
  bool answer() const { return whims.says(lines.size()); }
  bool limitReached(int counted) const { return limit > 0 && counted >= limit; }

  std::vector<int> assignment() const {
    std::vector<int> values;
    for (int i = 0; i < model.size(); ++i) values.push_back(*model.element(i).begin());
    return values;
  }

  // ----- selection: the position chosen, -1 for none

  using Select = int (*)(const Model &);

  static int first(const Model &m) {
    for (int i = 0; i < m.size(); ++i)
      if (m.element(i).size() > 1) return i;
    return -1;
  }
  static int fewest(const Model &m) {
    return best(m, [](const Model::Domain &a, const Model::Domain &b) { return a.size() < b.size(); });
  }
  static int fewestThenLowest(const Model &m) {
    return best(m, [](const Model::Domain &a, const Model::Domain &b) {
      return a.size() != b.size() ? a.size() < b.size() : *a.begin() < *b.begin();
    });
  }
  template <class Better>
  static int best(const Model &m, Better better) {
    int chosen = -1;
    for (int i = 0; i < m.size(); ++i)
      if (m.element(i).size() > 1 && (chosen < 0 || better(m.element(i), m.element(chosen)))) chosen = i;
    return chosen;
  }

  // ----- the engines

  bool depthFirst(Select select) {
    const int i = select(model);
    if (i < 0) return true;
    const Model::Domain values = model.element(i);
    model.save();
    for (const int value : values) {
      ++choicePoints;
      if (cancelled) return false;
      const bool accepted = model.post(model.variableAt(i), {CS_METHOD_EQ, value});
      if (!accepted) ++fails;
      if (accepted && depthFirst(select)) return true;
      if (limitReached(fails)) return false;
      model.restore();
      model.save();
    }
    model.close();
    return false;
  }

  void allSolutions(Select select) {
    const int i = select(model);
    if (i < 0) {
      solutions.push_back(assignment());
      log("found");
      return;
    }
    const Model::Domain values = model.element(i);
    model.save();
    for (const int value : values) {
      ++choicePoints;
      if (cancelled) return;
      if (model.post(model.variableAt(i), {CS_METHOD_EQ, value}))
        allSolutions(select);
      else
        ++fails;
      model.restore();
      model.save();
    }
    model.close();
  }

  bool minimize(Select select, int cost) {
    const int root = model.save();
    if (!depthFirst(select)) return false;
    do {
      const int bound = *model.variable(cost).begin();
      solutions.push_back(assignment());
      solutions.back().push_back(bound);
      log("found");
      model.restoreUntil(root);
      if (!model.post(cost, {CS_METHOD_LT, bound})) break;
    } while (depthFirst(select));
    return true;
  }

  // The level of the criteria and the matrix search at a position; `name` and `key` say what the score is asked for.
  bool scored(int i, int key, const std::function<bool()> &descend) {
    const Model::Domain values = model.element(i);
    Model::Domain left = values;
    model.save();
    for (std::size_t n = values.size(); n > 0; --n) {
      std::optional<int> choice;
      int lowest = INT_MAX;
      for (const int value : left) {
        log("score " + std::to_string(key) + " " + std::to_string(value));
        if (whims.score(key, value) < lowest) {
          lowest = whims.score(key, value);
          choice = value;
        }
      }
      if (choice) left.erase(*choice);
      ++choicePoints;
      if (cancelled) return false;
      const bool accepted = choice && model.post(model.variableAt(i), {CS_METHOD_EQ, *choice});
      if (!accepted) ++fails;
      if (accepted && descend()) return true;
      if (limitReached(fails)) return false;
      model.restore();
      model.save();
    }
    model.close();
    return false;
  }

  bool criteria() {
    const int i = first(model);
    return i < 0 || scored(i, i, [this] { return criteria(); });
  }

  // Rows of `columns` positions each, the last one may be shorter. The first with a free variable is chosen.
  int freeColumn(int row, int columns) const {
    for (int i = row * columns; i < std::min((row + 1) * columns, model.size()); ++i)
      if (model.element(i).size() > 1) return i - row * columns;
    return -1;
  }
  int freeRow(int columns) {
    int row = 0;
    while (row * columns < model.size() && freeColumn(row, columns) < 0) ++row;
    if (row * columns >= model.size()) row = -1;
    log("row " + std::to_string(row));
    return row;
  }
  bool matrix(int row, int columns) {
    if (row < 0) return true;
    const int column = freeColumn(row, columns);
    log("column " + std::to_string(row) + " " + std::to_string(column));
    const int i = row * columns + column;
    return scored(i, i, [&] { return matrix(freeRow(columns), columns); });
  }

  // ----- selectors

  struct Level {
    int index;
    int kind;
    int cursor;
  };

  std::optional<CSvalueSelection> next(Level &level) {
    const auto r = decision(level, model.element(level.index));
    log("next " + std::to_string(level.index) + " " + (r ? decisionText(*r) : "no"));
    return r;
  }

  static std::optional<CSvalueSelection> decision(Level &level, const Model::Domain &domain) {
    const int low = *domain.begin();
    const int high = *domain.rbegin();
    const int middle = low + (high - low) / 2;
    switch (level.kind) {
      case 0: {
        const auto at = domain.lower_bound(level.cursor);
        if (at == domain.end()) return std::nullopt;
        level.cursor = *at + 1;
        return CSvalueSelection{CS_METHOD_EQ, *at};
      }
      case 1: {
        auto at = domain.upper_bound(level.cursor);
        if (at == domain.begin()) return std::nullopt;
        level.cursor = *--at - 1;
        return CSvalueSelection{CS_METHOD_EQ, *at};
      }
      case 2:
        return split(level, {CS_METHOD_LE, middle}, {CS_METHOD_GT, middle}, middle < high);
      case 3: {
        const int upper = domain.size() >= 2 && middle == low ? low + 1 : middle;
        return split(level, {CS_METHOD_GE, upper}, {CS_METHOD_LT, upper}, upper > low);
      }
      default: {
        const int median = *std::next(domain.begin(), static_cast<int>(domain.size() + 1) / 2 - 1);
        return split(level, {CS_METHOD_EQ, median}, {CS_METHOD_NEQ, median}, domain.size() >= 2);
      }
    }
  }
  static std::optional<CSvalueSelection> split(Level &level, CSvalueSelection one, CSvalueSelection other, bool both) {
    if (level.cursor > 1 || (level.cursor == 1 && !both)) return std::nullopt;
    return level.cursor++ == 0 ? one : other;
  }

  int runFails = 0;
  void countFail() {
    ++runFails;
    ++fails;
  }

  bool endOf(const Level &level) {
    log(lineOf("endSelector", level.index));
    return answer();
  }

  // kinds[i] is the selector of position i.
  bool selectors(const std::vector<int> &kinds, int depth) {
    const int i = first(model);
    if (i < 0) {
      log(lineOf("found", depth - 1));
      if (answer()) return true;
      solutions.push_back(assignment());
      countFail();
      return false;
    }
    log(lineOf("enter", depth, i));
    Level level{i, kinds[static_cast<std::size_t>(i)], 0};
    if (level.kind == 0) level.cursor = *model.element(i).begin();
    if (level.kind == 1) level.cursor = *model.element(i).rbegin();
    log(lineOf("init", i));
    if (!answer()) return false;
    std::optional<CSvalueSelection> current = next(level);
    while (current) {
      const std::optional<CSvalueSelection> following = next(level);
      model.save();
      ++choicePoints;
      log(lineOf("before", depth, i, &*current));
      if (cancelled) return false;
      const bool accepted = model.post(model.variableAt(i), *current);
      if (!accepted) countFail();
      log(lineOf("after", accepted, depth, i, &*current));
      if (accepted && selectors(kinds, depth + 1)) return endOf(level);
      if (limitReached(runFails)) break;
      model.restore();
      current = following;
    }
    if (!endOf(level)) return false;
    if (!limitReached(runFails)) log(lineOf("leave", depth, i));
    return false;
  }
};

}  // namespace koru::test::search
