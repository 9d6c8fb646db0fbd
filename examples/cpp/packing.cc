// SPDX-License-Identifier: MIT
// A removal: boxes into as few vans as will do, where some boxes must not travel together.
//
// The loads of the vans are variables, so that the first van is the fullest: the vans could change places otherwise.
#include <iostream>
#include <koru.hpp>
#include <utility>
#include <vector>

namespace {

constexpr int kCapacity = 100;
const std::vector<int> sizes = {56, 49, 44, 42, 40, 37, 36, 33, 31, 30, 28, 27, 24, 21, 19, 18, 16, 14, 11, 8};
const std::vector<std::pair<std::size_t, std::size_t>> apart = {{0, 12}, {1, 2}, {3, 9}, {4, 15}, {5, 6}, {10, 13}};

}  // namespace

int main() {
  koru::Model m;
  const int vans = static_cast<int>(sizes.size()) / 2;
  const auto van = m.ints(sizes.size(), 0, vans - 1, "van");
  const auto load = m.ints(static_cast<std::size_t>(vans), 0, kCapacity, "load");
  m.post(koru::bin_packing(van, sizes, load));
  for (const auto &[a, b] : apart) m.post(van[a] != van[b]);
  for (std::size_t i = 1; i < load.size(); ++i) m.post(load[i - 1] >= load[i]);

  std::vector<koru::IntVar> used;
  for (const auto &l : load) used.push_back(m.reify(l > 0));
  const auto r =
      m.minimize(koru::sum(used), {.vars = van, .order = koru::dom_wdeg, .restart = koru::luby(100), .seconds = 30});
  if (!r.best) return 1;
  std::cout << r.status << ": " << r.best[koru::sum(used)] << " vans\n";
  for (std::size_t i = 0; i < load.size() && r.best[load[i]] > 0; ++i) {
    std::cout << "van " << i + 1 << ", " << r.best[load[i]] << " full:";
    for (std::size_t box = 0; box < van.size(); ++box)
      if (r.best[van[box]] == static_cast<int>(i)) std::cout << ' ' << sizes[box];
    std::cout << '\n';
  }
}
