// SPDX-License-Identifier: MIT
// A case is one exported function, or a few that belong together: its forms (a constraint for each choice of
// constants), the domains it is run over and how much of that. A sweep posts every form on every combination of
// domains and on every pattern of shared variables, or on a seeded sample where there are too many.
//
// Each posting of a sweep has a number, by which it is drawn and can be run again alone: KORU_POSTING=17. With
// KORU_CALLS=1 the calls up to each posting are listed as they are digested, and those of a single one by one.
#pragma once

#include "semantic/harness/calls.h"
#include "semantic/harness/visits.h"

namespace koru::test::brute {

// The domains are the non-empty subsets of [low, low + width).
struct Room {
  int low;
  int width;
};

struct Case {
  std::string name;  // of the test: letters and digits
  std::vector<std::string> functions;
  std::vector<Constraint> forms;
  std::vector<Room> rooms;  // by position, the last one for all others
  int postings;             // at most, for each form and pattern
  Effort effort = {};
  std::vector<std::vector<int>> patterns = {};  // if not all
  std::optional<Room> wide = {};                // for further postings, a quarter as many: sampled at all positions
  int fewPatternsFrom = 99;                     // with so many positions no more than two of them share a variable
};

inline void PrintTo(const Case &c, std::ostream *out) { *out << c.name; }

inline std::vector<int> distinctPositions(int arity) {
  std::vector<int> positions(static_cast<std::size_t>(arity));
  std::iota(positions.begin(), positions.end(), 0);
  return positions;
}

// Which variable stands at each position, for every partition of the positions, the one with all distinct last.
inline std::vector<std::vector<int>> allPatterns(int arity) {
  std::vector<std::vector<int>> patterns{{}};
  for (int i = 0; i < arity; ++i) {
    std::vector<std::vector<int>> longer;
    for (const std::vector<int> &pattern : patterns) {
      const int used = pattern.empty() ? 0 : *std::ranges::max_element(pattern) + 1;
      for (int variable = 0; variable <= used; ++variable) {
        longer.push_back(pattern);
        longer.back().push_back(variable);
      }
    }
    patterns = std::move(longer);
  }
  return patterns;
}

// Of these the one with all distinct and those in which two positions share a variable.
inline std::vector<std::vector<int>> fewPatterns(int arity) {
  std::vector<std::vector<int>> patterns{distinctPositions(arity)};
  for (int second = 1; second < arity; ++second)
    for (int first = 0; first < second; ++first) {
      std::vector<int> pattern = patterns.front();
      for (int i = second; i < arity; ++i) pattern[static_cast<std::size_t>(i)] = i == second ? first : i - 1;
      patterns.push_back(pattern);
    }
  return patterns;
}

// What a sweep does more than the quick one when it has time.
struct Scale {
  int postings = 1;     // times as many
  long long share = 1;  // of which one in so many is made
  int wider = 0;        // rooms of more than one value
  int deeper = 0;       // one in so many is narrowed twice in full; 0: none
};

class Sweep {
 public:
  // A number of a posting: nothing but that one.
  explicit Sweep(const Case &test, Scale scale = {}, long long only = 0, std::ostream *list = nullptr)
      : case_(test), scale_(scale), only_(only), list_(list) {}

  long long states = 0;
  long long postings = 0;
  Calls calls;                 // of three postings in four; one that nobody observes may take another way
  Measure *measure = nullptr;  // adds up what has no support, if it is there
  bool single() const { return only_ != 0; }
  std::string finding;  // empty when nothing was

  void run() {
    for (const Constraint &form : case_.forms) {
      const int most = scale_.postings * case_.postings;
      runForm(form, case_.rooms, most);
      if (case_.wide) runForm(form, {*case_.wide}, most / 4);
      if (form.results && form.arity <= 3 && case_.patterns.empty())
        runForm(tied(form), case_.rooms, std::max(1, most / 8));
    }
  }

 private:
  void runForm(const Constraint &form, const std::vector<Room> &rooms, int most) {
    for (const std::vector<int> &pattern : patternsOf(form))
      if (finding.empty()) runPattern({form, {}, pattern}, roomsOf(pattern, rooms), most);
  }

  std::vector<std::vector<int>> patternsOf(const Constraint &form) const {
    if (!case_.patterns.empty()) return case_.patterns;
    return form.arity < case_.fewPatternsFrom ? allPatterns(form.arity) : fewPatterns(form.arity);
  }

  // Of each variable, by the first position that it stands at.
  std::vector<Room> roomsOf(const std::vector<int> &positions, const std::vector<Room> &rooms) const {
    std::vector<Room> result;
    for (std::size_t p = 0; p < positions.size(); ++p) {
      if (positions[p] != std::ssize(result)) continue;
      result.push_back(rooms[std::min(p, rooms.size() - 1)]);
      if (result.back().width > 1) result.back().width += scale_.wider;
    }
    return result;
  }

  void runPattern(Posting posting, const std::vector<Room> &rooms, int most) {
    std::mt19937 random(static_cast<unsigned>(number_ + 1));
    long long combinations = 1;
    for (const Room &room : rooms) combinations = std::min(combinations * ((1LL << room.width) - 1), 1LL << 40);
    const bool sampled = combinations > most;
    for (long long i = 0; i < (sampled ? most : combinations) && finding.empty(); ++i) {
      posting.domains.clear();
      long long code = i;
      for (const Room &room : rooms) {
        const long long subsets = (1LL << room.width) - 1;
        posting.domains.push_back(sampled ? randomDomain(random, room.low, room.width)
                                          : domainOf(room.low, static_cast<int>(code % subsets) + 1));
        code /= subsets;
      }
      runOne(posting);
    }
  }

  void runOne(const Posting &posting) {
    ++number_;
    const bool chosen = single() ? number_ == only_ : number_ % scale_.share == 0;
    if (!chosen || !fits(posting)) return;
    Effort effort = case_.effort;
    if (effort.depth > 0 && scale_.deeper > 0 && number_ % scale_.deeper == 0) ++effort.depth;
    Run run(posting);
    run.measure = measure;
    std::optional<Listener> listener;
    if (number_ % 4 != 0) listener.emplace(calls, single() ? list_ : nullptr);
    run.post([&](const Node &root) { Visits(run, effort, static_cast<unsigned>(number_)).all(root); });
    states += run.states;
    ++postings;
    if (listener && list_ != nullptr) *list_ << "posting " << number_ << ": " << calls << "\n";
    if (!run.sound()) finding = "posting " + std::to_string(number_) + ": " + run.finding();
  }

  static bool fits(const Posting &posting) {
    if (!posting.constraint.fits) return true;
    std::vector<std::vector<int>> domains;
    for (const int p : posting.positions) domains.push_back(posting.domains[static_cast<std::size_t>(p)].values);
    return posting.constraint.fits(domains);
  }

  const Case &case_;
  Scale scale_;
  long long number_ = 0;
  long long only_;
  std::ostream *list_;  // of the calls, if there is one
};

}  // namespace koru::test::brute
