// SPDX-License-Identifier: MIT
// Builds the layered graph: a pass forward finds what the start reaches, a pass backward what reaches a final state and
// the first edge of each list. Both stop at the first edge that tells, so that an automaton with many transitions costs
// little more than one look at each state.
#include "constraints/global/regular_graph.h"

#include "constraints/global/state_sets.h"
#include "core/domain_walk.h"
#include "core/errors.h"
#include "core/narrow.h"

namespace koru::regular {

class Builder {
 public:
  Builder(Graph &graph, const Automaton &automaton)
      : graph_(graph),
        transitions_(graph.transitions_),
        live_(static_cast<std::uint64_t>(graph.n_) + 1, automaton.states) {}

  bool run(const Automaton &automaton) {
    if (!live_ || !makeAlphabet()) return false;
    passForward(automaton.start);
    return acceptFinals(automaton) && makeRows() && passBackward() && makeLayers();
  }

 private:
  // The symbols that the variable at a position can take, read once per pass.
  void readAlphabet(int k) {
    count_ = 0;
    forEachValue(graph_.variable(k), 0, transitions_.symbols() - 1, [&](int a) {
      alphabet_[count_++] = a;
      return true;
    });
  }

  bool makeAlphabet() {
    alphabet_ = Buffer<int>(transitions_.symbols());
    return static_cast<bool>(alphabet_);
  }

  void passForward(int start);
  int reachFrom(int k, int q, int left);
  bool acceptFinals(const Automaton &automaton);
  bool makeRows();
  bool passBackward();
  void findSources(int k);
  void findTargets(int k);
  void findLabels(int k);
  bool makeLayers();
  bool keepLive(int k) const;

  Graph &graph_;
  const Transitions &transitions_;
  StateSets live_;
  Buffer<int> alphabet_;
  int count_ = 0;
};

// Nothing is left to reach when every state with an arc into it has been reached.
void Builder::passForward(int start) {
  const int targets = transitions_.targetCount();
  live_.add(0, start);
  for (int k = 0; k < graph_.n_; ++k) {
    readAlphabet(k);
    int left = targets;
    live_.forEach(k, [&](int q) {
      if (left > 0) left = reachFrom(k, q, left);
    });
  }
}

int Builder::reachFrom(int k, int q, int left) {
  const int *row = transitions_.row(q);
  for (int i = 0; i < count_ && left > 0; ++i) {
    const int t = row[alphabet_[i]];
    if (t != Transitions::kNone && live_.insert(k + 1, t)) --left;
  }
  return left;
}

bool Builder::acceptFinals(const Automaton &automaton) {
  StateSets finals(1, automaton.states);
  if (!finals) return false;
  for (int i = 0; i < automaton.finalCount; ++i)
    if (automaton.isState(automaton.finals[i])) finals.add(0, automaton.finals[i]);
  live_.intersect(graph_.n_, finals);
  return !live_.isEmpty(graph_.n_);
}

// Makes room for the states from the first to the last one reached, and for all symbols.
bool Builder::makeRows() {
  graph_.rows_ = Buffer<Graph::Row>(graph_.n_);
  if (!graph_.rows_) return false;
  std::uint64_t end = 0;
  const auto place = [&end](int first, std::int64_t last) {
    const auto row = static_cast<std::ptrdiff_t>(end) - first;
    end += static_cast<std::uint64_t>(last - first + 1);
    return row;
  };
  for (int k = 0; k < graph_.n_; ++k) {
    if (live_.isEmpty(k + 1)) return false;
    Graph::Row &row = graph_.rows_[k];
    row.sources = place(live_.first(k), live_.last(k));
    row.targets = place(live_.first(k + 1), live_.last(k + 1));
    row.labels = place(0, std::int64_t{transitions_.symbols()} - 1);
  }
  graph_.supports_ = Buffer<Support>(end);
  if (graph_.supports_) std::fill_n(graph_.supports_.get(), end, Support{Transitions::kNone, {}});
  return static_cast<bool>(graph_.supports_);
}

// States without an edge to the next layer go.
bool Builder::passBackward() {
  for (int k = graph_.n_ - 1; k >= 0; --k) {
    readAlphabet(k);
    findSources(k);
    if (live_.isEmpty(k)) return false;
    findLabels(k);
    findTargets(k);
  }
  return true;
}

void Builder::findSources(int k) {
  live_.forEach(k, [&](int q) {
    const int *row = transitions_.row(q);
    for (int i = 0; i < count_; ++i) {
      const int a = alphabet_[i];
      const int t = row[a];
      if (t == Transitions::kNone || !live_.has(k + 1, t)) continue;
      graph_.sources(k)[q] = {a, {a, t}};
      return;
    }
    live_.remove(k, q);
  });
}

// The symbols that have no edge yet are kept at the front of the alphabet.
void Builder::findLabels(int k) {
  int left = count_;
  live_.forEach(k, [&](int q) {
    const int *row = transitions_.row(q);
    int kept = 0;
    for (int i = 0; i < left; ++i) {
      const int a = alphabet_[i];
      const int t = row[a];
      if (t != Transitions::kNone && live_.has(k + 1, t))
        graph_.labels(k)[a] = {q, {q, t}};
      else
        alphabet_[kept++] = a;
    }
    left = kept;
  });
}

// A symbol without a support is not in the alphabet.
void Builder::findTargets(int k) {
  live_.forEach(k + 1, [&](int t) {
    int i = transitions_.arcsInto(t);
    while (!live_.has(k, transitions_.arc(i).source) || !graph_.labels(k)[transitions_.arc(i).symbol].exists()) ++i;
    graph_.targets(k)[t] = {i, {transitions_.arc(i).symbol, transitions_.arc(i).source}};
  });
}

bool Builder::makeLayers() {
  graph_.layers_ = PrivateVariables(graph_.n_ + 1);
  if (!graph_.layers_) return false;
  graph_.layers_.init(0, live_.first(0), live_.last(0));
  for (int k = 1; k <= graph_.n_; ++k) {
    graph_.layers_.init(k, 0, transitions_.states() - 1);
    if (!keepLive(k)) return false;
  }
  return true;
}

// The ends first, so that a layer without holes needs no bit array.
bool Builder::keepLive(int k) const {
  CSint *layer = graph_.layer(k);
  // GCOVR_EXCL_BR_START: a bound moves without memory
  while (layer->min < live_.first(k))
    if (!removeValueNoTrail(layer, layer->min)) return false;
  while (layer->max > live_.last(k))
    if (!removeValueNoTrail(layer, layer->max)) return false;
  // GCOVR_EXCL_BR_STOP
  for (int q = layer->min + 1; q < layer->max; ++q)
    if (!live_.has(k, q) && !removeValueNoTrail(layer, q)) return false;
  return true;
}

// The number of a layer is an int.
bool Graph::build(const Automaton &automaton) {
  if (n_ == kIntMax) {  // GCOVR_EXCL_START: takes more variables than a test has memory for
    reportMemoryExhausted();
    return false;
  }  // GCOVR_EXCL_STOP
  return transitions_ && Builder(*this, automaton).run(automaton);
}

}  // namespace koru::regular
