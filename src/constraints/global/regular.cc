// SPDX-License-Identifier: MIT
// cs_Regular: the values of an array are a word that an automaton accepts.
// Consistency: domain, when no variable stands twice (Pesant, "A regular language membership constraint for finite
// sequences of variables", CP 2004).
// Cost: O(n states symbols) at posting; per event a look at each state of a layer, and a walk along each edge list
// whose support is lost, from that support on, which passes by edges that the posting found dead.
// State: the states of each layer, trailed; the support of each edge list, not trailed: one that was found valid
// deeper in the search is valid further up as well.
// Wakes: by every event of a variable, on one constraint; by every event of a layer, on another.
// Deliberate: a support is tested for the part that the event can have touched only, and a search that has come round
// to the support it began with fails without a look at it: it is known to be lost.
// Deliberate: values outside the alphabet leave the variables before the start state is found to be invalid.
#include <algorithm>

#include "constraints/global/regular_graph.h"
#include "core/bit_scan.h"
#include "core/domain_walk.h"
#include "core/post.h"

namespace koru::regular {

// Destroys the graph, and with it what is attached to the layers.
struct OnVars {
  Graph graph;
};

struct OnLayers {
  const Graph *graph;
};

// ----- rules

// What an event has taken away.
struct Below {
  int bound;
  explicit Below(const Event &e) : bound(e.newValue) {}
  bool operator()(int value) const { return value < bound; }
};

struct Above {
  int bound;
  explicit Above(const Event &e) : bound(e.newValue) {}
  bool operator()(int value) const { return value > bound; }
};

struct AllBut {
  int kept;
  explicit AllBut(const Event &e) : kept(valueOf(e.var)) {}
  bool operator()(int value) const { return value != kept; }
};

struct Only {
  int removed;
  explicit Only(const Event &e) : removed(e.newValue) {}
  explicit Only(int value) : removed(value) {}
  bool operator()(int value) const { return value == removed; }
};

// Visits the values within [from, to], the ends of v or values between them, 64 at a time.
template <class Visit>
[[gnu::noinline]] static bool forEachByWords(const CSint *v, int from, int to, Visit &visit) {
  if (v->bits == nullptr) {
    for (int value = from; value < to; ++value)
      if (!visit(value)) return false;
    return visit(to);
  }
  const int base = v->bits->low;
  const std::uint32_t first = v->bits->offset(from);
  const std::uint32_t last = v->bits->offset(to);
  for (std::uint32_t i = first / 64; i <= last / 64; ++i) {
    std::uint64_t left = v->bits->words()[i];
    if (i == first / 64) left &= ~std::uint64_t{0} << (first % 64);
    if (i == last / 64) left &= ~std::uint64_t{0} >> (63 - last % 64);
    if (!forEachBit(wrap(base + std::int64_t{i} * 64), left, visit)) return false;
  }
  return true;
}

// Visits the values within [low, high]: a visit removes no other value than the one it is told. They are mostly few,
// and no more than a word, for which there is a short way.
template <class Visit>
[[gnu::always_inline]] static inline bool forEachHeld(const CSint *v, int low, int high, Visit visit) {
  const int from = std::max(v->min, low);
  const int to = std::min(v->max, high);
  if (from > to) return true;
  const std::uint32_t width = distance(from, to);
  if (width >= 64 || (v->bits != nullptr && !v->bits->isOneWord())) return forEachByWords(v, from, to, visit);
  const std::uint64_t held = v->bits == nullptr ? ~std::uint64_t{0} : v->bits->onlyWord() >> v->bits->offset(from);
  return forEachBit(from, held & ~std::uint64_t{0} >> (63 - width), visit);
}

// Visits the values of v within [0, last] from the one after `place` on, around the end, without that at `place`.
template <class Visit>
[[gnu::always_inline]] static inline bool forEachHeldAround(const CSint *v, int place, int last, Visit visit) {
  if (isBound(v)) {
    const int value = valueOf(v);
    return value == place || value < 0 || value > last || visit(value);
  }
  return forEachHeld(v, place + 1, last, visit) && forEachHeld(v, 0, place - 1, visit);
}

// Each steps on from the current support of a list, around its end, to an edge that lies in all domains.

static bool findSource(const Graph &g, int k, int q) {
  Support &support = g.sources(k)[q];
  const CSint *targets = g.layer(k + 1);
  const auto isLost = [&](int a) {
    const int t = g.transitions().target(q, a);
    if (t == Transitions::kNone || !contains(targets, t) || !g.labels(k)[a].exists()) return true;
    support = {a, {a, t}};
    return false;
  };
  return !forEachHeldAround(g.variable(k), support.place, g.symbols() - 1, isLost);
}

static bool findLabel(const Graph &g, int k, int a) {
  Support &support = g.labels(k)[a];
  const CSint *targets = g.layer(k + 1);
  const auto isLost = [&](int q) {
    const int t = g.transitions().target(q, a);
    if (t == Transitions::kNone || !contains(targets, t)) return true;
    support = {q, {q, t}};
    return false;
  };
  return !forEachHeldAround(g.layer(k), support.place, kIntMax, isLost);
}

static bool findTarget(const Graph &g, int k, int t) {
  Support &support = g.targets(k)[t];
  const CSint *v = g.variable(k);
  const CSint *sources = g.layer(k);
  const Arc *arcs = g.transitions().arcs();
  const int first = g.transitions().arcsInto(t);
  const int end = g.transitions().arcsInto(t + 1);
  int i = support.place;
  for (int left = end - first - 1; left > 0; --left) {
    if (++i == end) i = first;
    const Arc arc = arcs[i];
    if (!contains(v, arc.symbol) || !contains(sources, arc.source) || !g.labels(k)[arc.symbol].exists()) continue;
    support = {i, {arc.symbol, arc.source}};
    return true;
  }
  return false;
}

template <class Visit>
static bool forEachState(const CSint *layer, Visit visit) {
  return forEachHeld(layer, kIntMin, kIntMax, visit);
}

// Between the bounds a state has a support, and few supports are stale: that is asked before the bits are.
static bool isWithin(const CSint *layer, int q) { return q >= layer->min && q <= layer->max; }

// A value that has just been found there, as it still is unless changes propagate at once.
static bool removeFound(CSint *v, int value) { return changesWait() ? removeHeld(v, value) : removeValue(v, value); }

template <int Edge::*part, class IsStale>
static bool filterSources(const Graph &g, int k, IsStale isStale) {
  CSint *layer = g.layer(k);
  return forEachState(layer, [&g, k, layer, isStale, supports = g.sources(k)](int q) {
    return !isStale(supports[q].edge.*part) || findSource(g, k, q) || removeFound(layer, q);
  });
}

template <int Edge::*part, class IsStale>
static bool filterTargets(const Graph &g, int k, IsStale isStale) {
  CSint *layer = g.layer(k + 1);
  return forEachState(layer, [&g, k, layer, isStale, supports = g.targets(k)](int t) {
    return !isStale(supports[t].edge.*part) || findTarget(g, k, t) || removeFound(layer, t);
  });
}

// A value that came back after the posting may have no edge at all; it stays until the variable is bound to it.
template <int Edge::*part, class IsStale>
static bool filterSymbols(const Graph &g, int k, IsStale isStale) {
  CSint *v = g.variable(k);
  return forEachHeld(v, 0, g.symbols() - 1, [&g, k, v, isStale, supports = g.labels(k)](int a) {
    const Support &support = supports[a];
    return !support.exists() || !isStale(support.edge.*part) || findLabel(g, k, a) || removeFound(v, a);
  });
}

// The same when nothing but state q has gone. Few supports are lost then, so while the variable still has a good part
// of the symbols, supports are looked at before it is: a loop whose jumps the processor foresees.
template <int Edge::*part>
static bool filterSymbols(const Graph &g, int k, Only gone) {
  CSint *v = g.variable(k);
  if (g.symbols() > 4 * v->count) return filterSymbols<part, Only>(g, k, gone);
  const Supports supports = g.labels(k);
  for (int a = 0; a < g.symbols(); ++a) {
    if (!gone(supports[a].edge.*part) || !supports[a].exists() || !contains(v, a)) continue;
    if (!findLabel(g, k, a) && !removeFound(v, a)) return false;
  }
  return true;
}

// And for states, when nothing but state q of layer k has gone: only those that an arc joins with q can have lost their
// support. With an arc for each symbol this is a look at as many states, instead of at all of a layer.

static bool filterSourcesInto(const Graph &g, int k, int q) {
  const int first = g.transitions().arcsInto(q);
  const int end = g.transitions().arcsInto(q + 1);
  CSint *layer = g.layer(k);
  if (end - first >= layer->count) return filterSources<&Edge::y>(g, k, Only{q});
  const Supports supports = g.sources(k);
  for (int i = first; i < end; ++i) {
    const int source = g.transitions().arc(i).source;
    if (!isWithin(layer, source) || supports[source].edge.y != q || !contains(layer, source)) continue;
    if (!findSource(g, k, source) && !removeFound(layer, source)) return false;
  }
  return true;
}

// In ascending order, each once, like the walk over the layer.
static bool filterTargetsFrom(const Graph &g, int k, int q) {
  constexpr int kMost = 16;
  CSint *layer = g.layer(k + 1);
  if (g.symbols() >= layer->count) return filterTargets<&Edge::y>(g, k, Only{q});
  const Supports supports = g.targets(k);
  const int *row = g.transitions().row(q);
  int lost[kMost];
  int count = 0;
  for (int a = 0; a < g.symbols(); ++a) {
    if (!isWithin(layer, row[a]) || supports[row[a]].edge.y != q || !contains(layer, row[a])) continue;
    if (count == kMost) return filterTargets<&Edge::y>(g, k, Only{q});
    int i = count++;
    for (; i > 0 && lost[i - 1] > row[a]; --i) lost[i] = lost[i - 1];
    lost[i] = row[a];
  }
  for (int i = 0; i < count; ++i) {
    if (i > 0 && lost[i] == lost[i - 1]) continue;
    if (!findTarget(g, k, lost[i]) && !removeFound(layer, lost[i])) return false;
  }
  return true;
}

// ----- handlers; the index is a position for variables and the number of a layer for layers

template <class IsStale>
static bool filter(const OnVars &c, int k, IsStale isStale) {
  return filterSources<&Edge::x>(c.graph, k, isStale) && filterTargets<&Edge::x>(c.graph, k, isStale);
}

template <class IsStale>
static bool filter(const OnLayers &c, int k, IsStale isStale) {
  const Graph &g = *c.graph;
  if (k < g.length() && (!filterSymbols<&Edge::x>(g, k, isStale) || !filterTargets<&Edge::y>(g, k, isStale)))
    return false;
  return filterSymbols<&Edge::y>(g, k - 1, isStale) && filterSources<&Edge::y>(g, k - 1, isStale);
}

static bool filter(const OnLayers &c, int k, Only gone) {
  const Graph &g = *c.graph;
  if (k < g.length() && (!filterSymbols<&Edge::x>(g, k, gone) || !filterTargetsFrom(g, k, gone.removed))) return false;
  return filterSymbols<&Edge::y>(g, k - 1, gone) && filterSourcesInto(g, k - 1, gone.removed);
}

template <class Record, class IsStale>
static bool changed(Record &c, const Event &e) {
  return filter(c, e.index, IsStale(e));
}

template <class Record>
constexpr auto kTable = handlers<Record>({.newMin = on<changed<Record, Below>>,
                                          .newMax = on<changed<Record, Above>>,
                                          .minBound = on<changed<Record, AllBut>>,
                                          .maxBound = on<changed<Record, AllBut>>,
                                          .bound = on<changed<Record, AllBut>>,
                                          .removed = on<changed<Record, Only>>});

// ----- posting

static bool hasFinal(const Automaton &automaton) {
  return automaton.finals != nullptr &&
         std::any_of(automaton.finals, automaton.finals + std::max(automaton.finalCount, 0),
                     [&](int q) { return automaton.isState(q); });
}

static bool restrictToAlphabet(CSint **vars, int n, int symbols) {
  for (int k = 0; k < n; ++k)
    if (!narrowMin(vars[k], 0) || !narrowMax(vars[k], satSub(symbols, 1))) return false;
  return true;
}

static bool labelsEdge(const Graph &g, int k, int a) { return a >= 0 && a < g.symbols() && g.labels(k)[a].exists(); }

// Removes the symbols that label no edge, in sweeps until one finds none: each removal propagates at once, and what a
// callback puts back is looked at again. Most positions have none, and nothing changes while they are looked at.
static bool removeUnusedSymbols(const Graph &g) {
  for (bool removed = true; removed;) {
    removed = false;
    for (int k = 0; k < g.length(); ++k) {
      CSint *v = g.variable(k);
      const auto isUsed = [&g, k](int a) { return labelsEdge(g, k, a); };
      if (forEachHeld(v, kIntMin, kIntMax, isUsed)) continue;
      removed = true;
      if (!forEachValue(v, [&](int a) { return isUsed(a) || removeValue(v, a); })) return false;
    }
  }
  return true;
}

static bool post(const Poster &poster, CSint **vars, int n, const Automaton &automaton) {
  if (n < 1) return true;
  if (vars == nullptr || automaton.table == nullptr || !allPresent(vars, n) || !hasFinal(automaton)) return false;
  if (!restrictToAlphabet(vars, n, automaton.symbols) || !automaton.isState(automaton.start)) return false;
  Posting posting{poster};
  if (!posting) return false;
  Graph graph(Transitions(automaton), vars, n);
  if (!graph.build(automaton)) return false;
  auto onVars = posting.add(kTable<OnVars>, OnVars{std::move(graph)});
  for (int k = 0; k < n; ++k) onVars.attach(vars[k], k);
  if (!posting) return false;
  auto onLayers = posting.add(kTable<OnLayers>, OnLayers{&onVars->graph});
  for (int k = 1; k <= n; ++k) onLayers.attach(onVars->graph.layer(k), k);
  return posting && removeUnusedSymbols(onVars->graph);
}

}  // namespace koru::regular

using koru::door;
using koru::leftOut;
using namespace koru::regular;

int cs_Regular(CSint **vars, int n, const int *table, int states, int symbols, int start, const int *finals,
               int finalCount) {
  return leftOut("cs_Regular") ||
         door(post("cs_Regular", vars, n, {table, states, symbols, start, finals, finalCount}));
}
