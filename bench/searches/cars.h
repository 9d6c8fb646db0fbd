// SPDX-License-Identifier: MIT
// Car lines to fill: of any `block` cars in a row, at most `capacity` may have an option; the cars of a class have the
// same options (Dincbas, Simonis, Van Hentenryck 1988; CSPLib 1).
#pragma once

#include <string>
#include <vector>

namespace koru::bench::searches {

struct Station {
  int capacity;
  int block;
  std::vector<int> has;  // 0 or 1 by class

  // What so many slots in a row can take at the most.
  int most(int slots) const { return slots / block * capacity + (slots % block < capacity ? slots % block : capacity); }
};

// Classes are sorted: those whose options are scarce come first.
struct CarLine {
  std::string name;
  std::vector<int> demands;  // by class
  std::vector<Station> stations;

  int cars() const;
  int demandOf(const Station &station) const;
};

// Of a station, as an automaton: a state is the set of those among the last cars that have the option, the newest one
// being bit 0; -1 is none.
std::vector<std::vector<int>> statesOf(const Station &station);

const std::vector<CarLine> &carLines();

}  // namespace koru::bench::searches
