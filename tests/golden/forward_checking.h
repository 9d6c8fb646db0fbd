// SPDX-License-Identifier: MIT
// A reference search that shares nothing with the library: labelling with forward checking over sets of values, for
// models in which every constraint says that x_i + d differs from x_j.
#pragma once

#include <set>
#include <tuple>
#include <vector>

namespace koru::test {

struct Differs {
  std::size_t i;
  std::size_t j;
  int d;  // x_i + d != x_j
};

class ForwardChecking {
 public:
  using Domains = std::vector<std::set<int>>;

  // With `fewest`, the first of the variables with the fewest values is labelled next, else the first unbound one.
  ForwardChecking(std::vector<Differs> differs, bool fewest) : differs_(std::move(differs)), fewest_(fewest) {}

  int choicePoints = 0;
  int fails = 0;
  std::vector<std::vector<int>> solutions;

  // True when labelling stopped at a solution.
  bool label(const Domains &domains, bool all) {
    const std::size_t chosen = choose(domains);
    if (chosen == domains.size()) {
      std::vector<int> solution;
      for (const auto &domain : domains) solution.push_back(*domain.begin());
      solutions.push_back(solution);
      return !all;
    }
    for (const int value : domains[chosen]) {
      ++choicePoints;
      Domains next = domains;
      next[chosen] = {value};
      if (!propagate(next, chosen)) {
        ++fails;
      } else if (label(next, all)) {
        return true;
      }
    }
    return false;
  }

  // Takes the values of bound variables from their neighbours until nothing changes.
  bool propagate(Domains &domains, std::size_t start) const {
    std::vector<std::size_t> bound{start};
    while (!bound.empty()) {
      const std::size_t b = bound.back();
      bound.pop_back();
      for (const Differs &c : differs_) {
        if (c.i != b && c.j != b) continue;
        const std::size_t other = c.i == b ? c.j : c.i;
        const int value = *domains[b].begin() + (c.i == b ? c.d : -c.d);
        if (domains[other].erase(value) == 0) continue;
        if (domains[other].empty()) return false;
        if (domains[other].size() == 1) bound.push_back(other);
      }
    }
    return true;
  }

 private:
  std::size_t choose(const Domains &domains) const {
    std::size_t best = domains.size();
    for (std::size_t i = 0; i < domains.size(); ++i) {
      if (domains[i].size() < 2) continue;
      if (best == domains.size() || (fewest_ && domains[i].size() < domains[best].size())) best = i;
      if (!fewest_) break;
    }
    return best;
  }

  std::vector<Differs> differs_;
  bool fewest_;
};

}  // namespace koru::test
