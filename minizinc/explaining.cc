// SPDX-License-Identifier: MIT
// Each constraint is posted as a relation of variables that are there already, so that it can be left out: none is
// taken for a definition or another name. A constraint is a place, by its line, the calls and the loops around it.
#include "minizinc/explaining.h"

#include <koru_extras.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>

#include "minizinc/model.h"
#include "minizinc/places.h"

namespace koru::fzn {

namespace {

using Clock = std::chrono::steady_clock;

constexpr long long kTimes = 10;
constexpr long long kMoreFails = 10'000;
constexpr long long kShare = 10;  // of the time that is left, for one run

class Explaining {
 public:
  Explaining(const Syntax &syntax, long long milliseconds, Mistake &mistake)
      : syntax_(syntax), milliseconds_(milliseconds), mistake_(mistake) {}

  std::unique_ptr<const CSexplanation, decltype(&cs_freeExplanation)> go() {
    CSexplainOptions options = {};
    options.size = sizeof options;
    options.milliseconds = milliseconds_;
    return {cs_explainFailure(post, this, &options), cs_freeExplanation};
  }

 private:
  static int post(void *self) { return static_cast<Explaining *>(self)->answer(); }

  int answer() {
    Model model(syntax_, mistake_);
    Places places(syntax_, model, Places::Loops::kTold);
    const bool posted = model.post(Model::Definitions::kRelations);
    if (mistake_.isSet()) return CS_MODEL_STOP;
    if (!posted && fails_ == 0) fails_ = kMoreFails;
    return posted ? search(model) : CS_MODEL_NONE;
  }

  // Of other runs than the first, which has to say that there is no solution, the limit on fails is some times what
  // that has taken: one that finds no answer makes the set larger, no more.
  int search(Model &model) {
    Array all = model.everyVariable();
    CSsearchOptions how = {};
    how.size = sizeof how;
    how.order = CS_ORDER_DOM_WDEG;
    how.restarts = CS_RESTARTS_LUBY;
    const bool first = fails_ == 0;
    how.fails = fails_;
    if (milliseconds_ > 0) how.milliseconds = std::max(1LL, (milliseconds_ - passed()) / (first ? 1 : kShare));
    CSsearch *search = cs_createSearch(all.data(), sizeOf(all));
    cs_setSearchOptions(search, &how);
    const CSstatus status = cs_nextSolution(search);
    CSsearchStats stats;
    if (first && cs_getSearchStats(search, &stats, sizeof stats)) fails_ = kMoreFails + kTimes * stats.fails;
    cs_freeSearch(search);
    return status == CS_STATUS_SOLUTION    ? CS_MODEL_SOLUTION
           : status == CS_STATUS_EXHAUSTED ? CS_MODEL_NONE
                                           : CS_MODEL_UNKNOWN;
  }

  long long passed() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - started_).count();
  }

  const Syntax &syntax_;
  const long long milliseconds_;
  Mistake &mistake_;
  const Clock::time_point started_ = Clock::now();
  long long fails_ = 0;  // limit; 0: none yet
};

// The line of a source, without the blanks around it; empty where it cannot be read.
std::string sourceOf(const std::string &file, int line) {
  std::ifstream in(file);
  std::string text;
  for (int i = 0; i < line; ++i) {
    if (!std::getline(in, text)) return "";
  }
  const std::size_t begin = text.find_first_not_of(" \t");
  const std::size_t end = text.find_last_not_of(" \t\r");
  return begin == text.npos ? "" : text.substr(begin, end - begin + 1);
}

const char *headOf(const CSexplanation &e) {
  switch (e.status) {
    case CS_EXPLAINED_SOLUTION:
      return "there is a solution";
    case CS_EXPLAINED_NEVER:
      return "no solution, because of the domains of the variables and what cannot be left out";
    case CS_EXPLAINED_MINIMAL:
    case CS_EXPLAINED_PARTLY:
    case CS_EXPLAINED_UNSTABLE:
      return "no solution, because of";
    default:
      return "it is not known why there is no solution";
  }
}

std::string counted(std::size_t n, const char *what) { return std::to_string(n) + " " + what + (n == 1 ? "" : "s"); }

// A constraint of the file may come to several postings.
void write(const CSexplanation &e) {
  std::map<std::pair<std::string, int>, std::map<std::string, int>> lines;
  std::size_t constraints = 0;
  for (int i = 0; i < e.size; ++i) {
    const CSreason &r = e.reasons[i];
    if (lines[{r.file, r.line}][r.caller]++ == 0) ++constraints;
  }
  std::string text = std::string("% ") + headOf(e);
  if (e.size > 0) text += " " + counted(constraints, "constraint") + " at " + counted(lines.size(), "line");
  if (e.size > 0 && e.status != CS_EXPLAINED_MINIMAL) text += ", perhaps fewer";
  text += "; " + counted(static_cast<std::size_t>(e.checks), "check") + "\n";
  for (const auto &[place, calls] : lines) {
    const std::string source = sourceOf(place.first, place.second);
    text += "% " + place.first + (place.second > 0 ? ":" + std::to_string(place.second) : "");
    text += (source.empty() ? "" : "    " + source) + "\n";
    for (const auto &[call, times] : calls) text += call.empty() ? "" : "%   " + call + "\n";
  }
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

}  // namespace

bool explainFailure(const Syntax &syntax, long long milliseconds, Mistake &mistake) {
  const auto explanation = Explaining(syntax, milliseconds, mistake).go();
  if (mistake.isSet()) return false;
  if (explanation != nullptr) write(*explanation);
  return true;
}

}  // namespace koru::fzn
