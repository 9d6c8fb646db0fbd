// SPDX-License-Identifier: MIT
// A program for the tests of koru_mpi.hpp; see program.c. CASE: all, best, none.
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "koru_mpi.hpp"

namespace {

using koru::Result;
using koru::Search;

bool plain;

// All processes come to the same; what the others than the first have is seen by their status alone.
int show(const Result &r, const std::vector<koru::IntVar> &x) {
  std::cout << r.status << ", " << r.statistics.choicePoints << " choice points, " << r.statistics.fails << " fails, "
            << r.statistics.solutions << " solutions" << std::endl;
  if (!r.best) return r.statistics.solutions == 0 ? 0 : 1;
  if (r.statistics.objective != 0 && r.best[x.back()] != r.statistics.objective) return 1;
  for (const koru::IntVar v : x) std::cout << r.best[v] << " ";
  std::cout << std::endl;
  return 0;
}

int queens(int n) {
  koru::Model m;
  const std::vector<koru::IntVar> q = m.ints(static_cast<std::size_t>(n), 0, n - 1);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < i; ++j)
      for (const int d : {0, i - j, j - i})
        m.post(q[static_cast<std::size_t>(i)] != q[static_cast<std::size_t>(j)] + d);
  Search how{.vars = q, .order = koru::smallest, .value = koru::max_value};
  how.found = [&](const koru::Solution &s) {
    for (const koru::IntVar v : q) std::cout << s[v] << " ";
    std::cout << std::endl;
  };
  if (!plain) return show(koru::mpi::solve(m, how), q);
  koru::Solutions all = m.solutions(how);
  Result r;
  while (all.next()) {
    how.found(all.solution());
    r.best = koru::Solution(all.solution());
  }
  r.status = all.status();
  r.statistics = all.statistics();
  return show(r, q);
}

int ruler(int n, bool longest) {
  koru::Model m;
  const std::vector<koru::IntVar> marks = m.ints(static_cast<std::size_t>(n), 0, longest ? 20 : n * n);
  std::vector<koru::Linear> differences;
  for (std::size_t i = 0; i < marks.size(); ++i)
    for (std::size_t j = i + 1; j < marks.size(); ++j) {
      differences.push_back(marks[j] - marks[i]);
      m.post(differences.back() >= 1);
      for (std::size_t k = 0; k + 1 < differences.size(); ++k) m.post(differences[k] != differences.back());
    }
  m.post(marks[0] == 0);
  const Search how = longest ? Search{} : Search{.vars = marks};  // all variables, differences included
  if (longest) return show(plain ? m.maximize(marks.back(), how) : koru::mpi::maximize(m, marks.back(), how), marks);
  return show(plain ? m.minimize(marks.back(), how) : koru::mpi::minimize(m, marks.back(), how), marks);
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 4) return 2;
  plain = argv[1] == std::string("plain");
  if (!plain && koru::mpi::rank() >= koru::mpi::size()) return 2;
  const std::string name = argv[2];
  const int n = std::atoi(argv[3]);
  return name == "all" ? queens(n) : ruler(n, name == "longest");
}
