// SPDX-License-Identifier: MIT
#include "minizinc/statistics.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>

namespace koru::fzn {

namespace {

class Lines {
 public:
  void add(const char *key, long long value) { put(key, std::to_string(value)); }
  void addReal(const char *key, double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", value);
    put(key, text);
  }
  std::string take() { return std::move(text_); }

 private:
  void put(const char *key, const std::string &value) {
    text_.append("%%%mzn-stat: ").append(key).append("=").append(value).append("\n");
  }
  std::string text_;
};

double megabytes() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

}  // namespace

CSsearchStats Statistics::with(const CSsearch *search) const {
  CSsearchStats now = {}, sum = sum_;
  if (!cs_getSearchStats(search, &now, sizeof now)) return sum;
  sum.choicePoints += now.choicePoints;
  sum.fails += now.fails;
  sum.restarts += now.restarts;
  sum.noGoods += now.noGoods;
  sum.wakings += now.wakings;
  sum.peakDepth = std::max(sum.peakDepth, now.peakDepth);
  sum.seconds += now.seconds;
  if (now.solutions > 0) sum.objective = now.objective;
  sum.bound = now.bound;
  return sum;
}

void Statistics::add(const CSsearch *search) {
  sum_ = with(search);
  searched_ = true;
}

std::string Statistics::lines(const CSsearch *search, long long solutions) const {
  const CSsearchStats stats = with(search);
  Lines lines;
  lines.add("nodes", stats.choicePoints);
  lines.add("openNodes", 0);
  if (hasObjective_ && solutions > 0) lines.add("objective", stats.objective);
  if (hasObjective_ && (search != nullptr || searched_)) lines.add("objectiveBound", stats.bound);
  lines.add("failures", stats.fails);
  lines.add("restarts", stats.restarts);
  lines.add("variables", model_.variables.nbMade());
  lines.add("intVariables", model_.variables.nbMade() - model_.variables.nbBools());
  lines.add("boolVariables", model_.variables.nbBools());
  lines.add("propagators", model_.nbPosted());
  lines.add("propagations", stats.wakings);
  lines.add("peakDepth", stats.peakDepth);
  lines.add("nogoods", stats.noGoods);
  lines.add("backjumps", 0);
  lines.add("nSolutions", solutions);
  lines.addReal("peakMem", megabytes());
  lines.addReal("initTime", times_.parse + times_.post);
  lines.addReal("solveTime", stats.seconds);
  return lines.take();
}

}  // namespace koru::fzn
