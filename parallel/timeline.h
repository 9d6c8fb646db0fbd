// SPDX-License-Identifier: MIT
// What each process did over the time of a search, as the first one hears of it: when it had work, and how many choice
// points it reported. Shown as a page of its own.
//
// Cost: a column for each share of the time and process, 400 of them at most, some 5 KB for each process.
#pragma once

#include <string>
#include <vector>

#include "parallel/piece.h"

namespace koru::parallel {

class Timeline {
 public:
  enum class What { kBegins, kReports, kEnds, kSilent };

  Timeline(int processes, double now) : rows_(static_cast<std::size_t>(processes)), began_(now) {}

  void note(int process, What what, double now, long long choicePoints = 0);
  // What was searched in vain.
  void noteVain(long long choicePoints) { vain_ += choicePoints; }
  // A page of HTML that needs nothing else.
  std::string page(const Counts &counts, double now) const;

 private:
  struct Cell {
    double busy = 0, choicePoints = 0;  // seconds
  };
  struct Row {
    bool busy = false, silent = false;
    double since = 0;  // when it was last noted
    std::vector<Cell> cells;
  };

  void spread(Row &row, double from, double to, double choicePoints);
  void halve();
  std::string data(const Counts &counts, double now) const;

  std::vector<Row> rows_;
  double began_;
  double width_ = 0.025;  // of a column, in seconds
  long long vain_ = 0;
};

}  // namespace koru::parallel
