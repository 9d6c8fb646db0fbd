// SPDX-License-Identifier: MIT
// cs_Circuit, cs_Subcircuit: next[i] is the node after node i; the nodes form one circuit. In a subcircuit a node that
// is its own successor is left out, and all may be. Consistency: that of the following rules, to their common fixpoint;
// complete assignments are told exactly.
// - all-different, domain consistent (Matching)
// - a chain of known successors closes only when all nodes that must be in are on it (Caseau, Laburthe, Solving small
//   TSPs with constraints, 1997)
// - rules on the graph of what may follow what (TourGraph)
// Cost: a run of O(edges) for each time that one rule has given another one work.  State: that of the matching.
// Wakes: at every change.  Deliberate: a variable that stands twice fails, since two nodes then have one successor.
#include "constraints/strong/matching.h"
#include "constraints/strong/tour_graph.h"
#include "core/post.h"
#include "koru_extras.h"

namespace koru::circuit {

// What a walk along the chains has met a node on.
enum class Place { kNone, kChain, kRing };

struct Circuit : Deferred {
  Buffer<CSint *> successors;
  int count;
  bool partial;  // nodes may be left out
  Matching matching;
  TourGraph graph;
  Buffer<Place> places;
  Buffer<bool> entered;  // somebody's successor is known to be this node
};

static bool mayBeOut(const Circuit &c, int i) { return c.partial && contains(c.successors[i], i); }

// Values beyond the nodes are there at the posting, and when an accepted context inside a restored one brings them
// back.
static bool keepToNodes(const Circuit &c) {
  for (int i = 0; i < c.count; ++i) {
    if (!narrowMin(c.successors[i], 0) || !narrowMax(c.successors[i], c.count - 1)) return false;
    if (!c.partial && c.count > 1 && !removeIfPresent(c.successors[i], i)) return false;
  }
  return true;
}

static std::int64_t edges(const Circuit &c) {
  std::int64_t sum = 0;
  for (int i = 0; i < c.count; ++i) sum += c.successors[i]->count;
  return sum;
}

// ----- chains: nodes whose successors are known, one behind the other

static bool hasKnownSuccessor(const Circuit &c, int i) {
  return isBound(c.successors[i]) && valueOf(c.successors[i]) != i;
}

static void findEntered(const Circuit &c) {
  for (int i = 0; i < c.count; ++i) {
    c.entered[i] = false;
    c.places[i] = Place::kNone;
  }
  for (int i = 0; i < c.count; ++i)
    if (hasKnownSuccessor(c, i)) c.entered[valueOf(c.successors[i])] = true;
}

static int countMandatory(const Circuit &c) {
  int mandatory = 0;
  for (int i = 0; i < c.count; ++i) mandatory += mayBeOut(c, i) ? 0 : 1;
  return mandatory;
}

// The chain from `start`, which nobody is known to lead to. All its nodes must be in: a node that somebody leads to is
// nobody else's successor, not even its own.
static bool keepOpen(const Circuit &c, int start, int mandatory) {
  int end = start;
  int length = 1;
  c.places[start] = Place::kChain;
  for (; hasKnownSuccessor(c, end); ++length) {
    end = valueOf(c.successors[end]);
    if (length == c.count) return false;  // into a ring: a variable stands twice, and the host goes on all the same
    c.places[end] = Place::kChain;
  }
  return length == 1 || length == mandatory || removeIfPresent(c.successors[end], start);
}

static bool keepChainsOpen(const Circuit &c) {
  const int mandatory = countMandatory(c);
  for (int i = 0; i < c.count; ++i)
    if (!c.entered[i] && !keepOpen(c, i, mandatory)) return false;
  return true;
}

// What no chain reaches lies on a ring of known successors: one that leaves all others out.
static bool leaveOutBesideRing(const Circuit &c) {
  int start = 0;
  while (start < c.count && c.places[start] != Place::kNone) ++start;
  if (start == c.count) return true;
  for (int i = start; c.places[i] == Place::kNone; i = valueOf(c.successors[i])) c.places[i] = Place::kRing;
  for (int i = 0; i < c.count; ++i)
    if (c.places[i] != Place::kRing && !(mayBeOut(c, i) && bindValue(c.successors[i], i))) return false;
  return true;
}

// ----- the run

static bool filterOnce(Circuit &c) {
  if (!keepToNodes(c) || !c.matching.covers(c.successors.get()) || !c.matching.filter(c.successors.get())) return false;
  findEntered(c);
  return keepChainsOpen(c) && leaveOutBesideRing(c) && c.graph.filter(c.successors.get());
}

static bool filter(Circuit &c) {
  std::int64_t before;
  do {
    before = edges(c);
    if (!filterOnce(c)) return false;
  } while (edges(c) != before);
  return true;
}

constexpr auto kTable = deferred<filter>(Rank::kQuadratic);

static bool post(const Poster &poster, CSint **next, int count, bool partial) {
  Buffer<CSint *> copy = copyVariables(next, count);
  if (!copy) return false;
  Posting posting{poster};
  if (!posting) return false;
  if (count == 0) return true;
  Circuit record{{}, std::move(copy), count, partial, Matching(count, 0, count), {}, {}, {}};
  const auto n = static_cast<unsigned>(count);
  if (!record.matching || !make(record.places, n) || !make(record.entered, n)) return false;
  record.graph = TourGraph(count);
  if (!record.graph) return false;
  auto c = posting.add(kTable, std::move(record));
  for (int i = 0; i < count; ++i) c.attach(next[i], i);
  return posting && !c->hearsItself && runSoon(*c);
}

}  // namespace koru::circuit

using koru::door;
using koru::leftOut;
using namespace koru::circuit;

bool cs_Circuit(CSint **next, int n) { return leftOut("cs_Circuit") || door(post("cs_Circuit", next, n, false)); }
bool cs_Subcircuit(CSint **next, int n) {
  return leftOut("cs_Subcircuit") || door(post("cs_Subcircuit", next, n, true));
}
