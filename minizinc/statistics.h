// SPDX-License-Identifier: MIT
// The statistics of a run under the names that MiniZinc's solvers share.
#ifndef KORU_MINIZINC_STATISTICS_H
#define KORU_MINIZINC_STATISTICS_H

#include "minizinc/model.h"

namespace koru::fzn {

// Times that are told of, in seconds.
struct Times {
  double parse = 0;
  double post = 0;
};

class Statistics {
 public:
  Statistics(const Model &model, Times times, bool hasObjective)
      : model_(model), times_(times), hasObjective_(hasObjective) {}

  // Of a search that has ended: its counts are added to those of the ones before.
  void add(const CSsearch *search);
  // "%%%mzn-stat: KEY=VALUE", a line each, with the counts of a search under way; null for none.
  std::string lines(const CSsearch *search, long long solutions) const;

 private:
  CSsearchStats with(const CSsearch *search) const;

  const Model &model_;
  Times times_;
  bool hasObjective_;
  CSsearchStats sum_ = {};
  bool searched_ = false;
};

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_STATISTICS_H
