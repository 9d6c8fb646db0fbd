// SPDX-License-Identifier: MIT
// Builds the layered graph: a pass forward finds what the start reaches, a pass backward what reaches a final state and
// counts the edges left, and the lists are then made to measure. Three looks at each transition of each position.
#include "constraints/global/regular_graph.h"

#include "constraints/global/state_sets.h"
#include "core/domain_walk.h"
#include "core/errors.h"
#include "core/narrow.h"

namespace koru::regular {

class Builder {
 public:
  Builder(Graph &graph, const Automaton &automaton)
      : graph_(graph), automaton_(automaton), live_(static_cast<std::uint64_t>(graph.n_) + 1, automaton.states) {}

  bool run() {
    if (!live_ || !makeAlphabet() || !makeHeads()) return false;
    passForward();
    return acceptFinals() && passBackward() && makeLists() && makeLayers();
  }

 private:
  // The symbols that the variable at a position can take, read once per pass.
  void readAlphabet(int k) {
    count_ = 0;
    forEachValue(graph_.variable(k), 0, automaton_.symbols - 1, [&](int a) {
      alphabet_[count_++] = a;
      return true;
    });
  }

  // Visits (symbol, target) for the transitions from q at the position whose alphabet was read.
  template <class Visit>
  void forEachTransition(int q, Visit visit) const {
    for (int i = 0; i < count_; ++i) {
      const int target = automaton_.target(q, alphabet_[i]);
      if (automaton_.isState(target)) visit(alphabet_[i], target);
    }
  }

  // Visits (source, symbol, target) for the edges of position k that are live.
  template <class Visit>
  void forEachLiveEdge(int k, Visit visit) {
    readAlphabet(k);
    live_.forEach(k, [&](int q) {
      forEachTransition(q, [&](int a, int target) {
        if (live_.has(k + 1, target)) visit(q, a, target);
      });
    });
  }

  bool makeAlphabet() {
    alphabet_ = Buffer<int>(automaton_.symbols);
    return static_cast<bool>(alphabet_);
  }

  bool makeHeads();
  void passForward();
  bool acceptFinals();
  bool passBackward();
  bool makeLists();
  bool makeLayers();
  void placeLists();
  bool keepLive(int k) const;

  Graph &graph_;
  const Automaton &automaton_;
  StateSets live_;
  Buffer<int> alphabet_;
  int count_ = 0;
  std::uint64_t edges_ = 0;
};

bool Builder::makeHeads() {
  const std::uint64_t count = static_cast<std::uint64_t>(graph_.n_) * graph_.listsPerPosition();
  graph_.lists_ = Buffer<EdgeList>(count);
  if (!graph_.lists_) return false;
  std::fill_n(graph_.lists_.get(), count, EdgeList{});
  return true;
}

void Builder::passForward() {
  live_.add(0, automaton_.start);
  for (int k = 0; k < graph_.n_; ++k) {
    readAlphabet(k);
    live_.forEach(k, [&](int q) { forEachTransition(q, [&](int, int target) { live_.add(k + 1, target); }); });
  }
}

bool Builder::acceptFinals() {
  StateSets finals(1, automaton_.states);
  if (!finals) return false;
  for (int i = 0; i < automaton_.finalCount; ++i)
    if (automaton_.isState(automaton_.finals[i])) finals.add(0, automaton_.finals[i]);
  live_.intersect(graph_.n_, finals);
  return !live_.isEmpty(graph_.n_);
}

// States without an edge to the next layer go. The edges that are left are counted, list by list.
bool Builder::passBackward() {
  for (int k = graph_.n_ - 1; k >= 0; --k) {
    EdgeList *sources = graph_.sources(k);
    EdgeList *targets = graph_.targets(k);
    EdgeList *labels = graph_.labels(k);
    forEachLiveEdge(k, [&](int q, int a, int target) {
      ++sources[q].size;
      ++targets[target].size;
      ++labels[a].size;
      ++edges_;
    });
    live_.forEach(k, [&](int q) {
      if (sources[q].size == 0) live_.remove(k, q);
    });
    if (live_.isEmpty(k)) return false;
  }
  return true;
}

// Gives each list its place, as long as it was counted, and empties it.
void Builder::placeLists() {
  Edge *next = graph_.edges_.get();
  EdgeList *end = graph_.sources(graph_.n_);
  for (EdgeList *list = graph_.sources(0); list != end; ++list) {
    list->edges = next;
    next += list->size;
    list->size = 0;
  }
}

bool Builder::makeLists() {
  graph_.edges_ = Buffer<Edge>(3 * edges_);
  if (!graph_.edges_) return false;
  placeLists();
  for (int k = 0; k < graph_.n_; ++k) {
    EdgeList *sources = graph_.sources(k);
    EdgeList *targets = graph_.targets(k);
    EdgeList *labels = graph_.labels(k);
    forEachLiveEdge(k, [&](int q, int a, int target) {
      sources[q].append({a, target});
      targets[target].append({a, q});
      labels[a].append({q, target});
    });
  }
  return true;
}

bool Builder::makeLayers() {
  graph_.layers_ = PrivateVariables(graph_.n_ + 1);
  if (!graph_.layers_) return false;
  graph_.layers_.init(0, automaton_.start, automaton_.start);
  for (int k = 1; k <= graph_.n_; ++k) {
    graph_.layers_.init(k, 0, automaton_.states - 1);
    if (!keepLive(k)) return false;
  }
  return true;
}

// The ends first, so that a layer without holes needs no bit array.
bool Builder::keepLive(int k) const {
  CSint *layer = graph_.layer(k);
  while (!live_.has(k, layer->min)) removeValueNoTrail(layer, layer->min);
  while (!live_.has(k, layer->max)) removeValueNoTrail(layer, layer->max);
  return forEachValue(layer, [&](int q) { return live_.has(k, q) || removeValueNoTrail(layer, q); });
}

// The size of a list is an int, and so is the number of a layer.
bool Graph::build(const Automaton &automaton) {
  if (std::int64_t{states_} * symbols_ > kIntMax || n_ == kIntMax) {
    reportMemoryExhausted();
    return false;
  }
  return Builder(*this, automaton).run();
}

}  // namespace koru::regular
