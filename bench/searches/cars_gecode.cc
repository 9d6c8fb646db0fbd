// SPDX-License-Identifier: MIT
// The same car lines for Gecode, all constraints domain consistent but sums.
#include <gecode/int.hh>
#include <gecode/minimodel.hh>

#include "searches/cars.h"
#include "searches/gecode_search.h"

namespace koru::bench::searches {

namespace {

using Gecode::IntArgs;

class Line : public Gecode::Space {
 public:
  Line(const CarLine &line, bool byFailures)
      : slots_(*this, line.cars(), 0, static_cast<int>(line.demands.size()) - 1) {
    Gecode::IntSetArgs demands;
    for (const int demand : line.demands) demands << Gecode::IntSet(demand, demand);
    Gecode::count(*this, slots_, demands, IntArgs::create(demands.size(), 0), Gecode::IPL_DOM);
    for (const Station &station : line.stations) postStation(line, station);
    if (byFailures)
      Gecode::branch(*this, slots_, Gecode::INT_VAR_AFC_SIZE_MAX(0.95), Gecode::INT_VAL_MIN());
    else
      Gecode::branch(*this, slots_, Gecode::INT_VAR_NONE(), Gecode::INT_VAL_MIN());
  }
  Line(Line &other) : Gecode::Space(other) { slots_.update(*this, other.slots_); }
  Gecode::Space *copy() override { return new Line(*this); }
  bool master(const Gecode::MetaInfo &info) override { return Gecode::Space::master(info); }
  static int objective() { return 0; }

 private:
  void postStation(const CarLine &line, const Station &station) {
    const int n = slots_.size();
    Gecode::BoolVarArgs has(*this, n, 0, 1);
    for (int i = 0; i < n; ++i) Gecode::element(*this, IntArgs(station.has), slots_[i], has[i], Gecode::IPL_DOM);
    const std::vector<std::vector<int>> states = statesOf(station);
    std::vector<Gecode::DFA::Transition> transitions;
    std::vector<int> finals;
    for (int state = 0; state < static_cast<int>(states.size()); ++state) {
      for (int symbol = 0; symbol < 2; ++symbol)
        if (const int next = states[static_cast<std::size_t>(state)][static_cast<std::size_t>(symbol)]; next >= 0)
          transitions.emplace_back(state, symbol, next);
      finals.push_back(state);
    }
    transitions.emplace_back(-1, 0, -1);
    finals.push_back(-1);
    Gecode::DFA automaton(0, transitions.data(), finals.data());
    Gecode::extensional(*this, has, automaton);
    for (int first = n; first > 0; first -= station.block)
      Gecode::linear(*this, has.slice(0, 1, first), Gecode::IRT_GQ, line.demandOf(station) - station.most(n - first));
  }

  Gecode::IntVarArray slots_;
};

Line *make(int instance, bool byFailures) {
  return new Line(carLines()[static_cast<std::size_t>(instance - 1)], byFailures);
}

}  // namespace

Result searchCarsByGecode(int instance, double seconds) {
  return searchOnce<Line, Gecode::DFS>(make(instance, false), seconds, true);
}

Result searchCarsByFailuresByGecode(int instance, double seconds) {
  return searchAgain<Line, Gecode::DFS>(make(instance, true), Gecode::Search::Cutoff::geometric(100, 1.5), seconds,
                                        true);
}

}  // namespace koru::bench::searches
