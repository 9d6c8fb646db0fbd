// SPDX-License-Identifier: MIT
// cs_Mdd: the values of an array are those along a path of a graph, from its root to its terminal (a decision diagram;
// Cheng, Yap, An MDD-based generalized arc consistency algorithm for positive and negative table constraints, 2010).
// Consistency: domain, a variable that stands several times counting as several.
// The diagram is a chain of tables: the arcs between two layers are the rows (node, value, node) of one, and the nodes
// of a layer are the values of a variable of the constraint's own. A chain has no cycles, so that tables which are
// domain consistent each are so together. Cost: that of cs_Table for the layers beside those that have changed. State:
// a table for each variable; the variables of the nodes, trailed. Wakes: a table at every change of its variable, on
// one constraint, and of the nodes on both sides, on another.
#include "constraints/strong/diagram.h"
#include "constraints/strong/table.h"
#include "core/private_variable.h"
#include "koru_extras.h"

namespace koru::mdd {

// Attached to the host's variables, and destroys the layers with what is attached to them.
struct Keeper {
  PrivateVariables layers;
  Buffer<table::Table *> tables;  // by position; each belongs to its variable
};

// Wakes the tables on both sides of a layer that has lost a node.
struct OnLayers {
  table::Table *const *tables;
};

static bool changed(OnLayers &c, const Event &e) { return ask(*c.tables[e.index - 1]) && ask(*c.tables[e.index]); }

constexpr auto kKeeper = handlers<Keeper>({});
constexpr auto kOnLayers = handlers<OnLayers>({.newMin = on<changed>,
                                               .newMax = on<changed>,
                                               .minBound = on<changed>,
                                               .maxBound = on<changed>,
                                               .bound = on<changed>,
                                               .removed = on<changed>});

struct Ends {
  int root;
  int terminal;
};

// Null when memory is exhausted (reported).
static table::Table *postTable(Posting &posting, const Diagram &diagram, CSint *from, CSint *variable, CSint *to) {
  CSint *const vars[] = {from, variable, to};
  RowSet rows;
  if (!rows.build({vars, 3, diagram.cells(), diagram.rows(), false})) return nullptr;
  auto c = posting.add(table::kTable, table::Table{{}, std::move(rows)});
  c.attach(variable, 1);
  return posting ? &*c : nullptr;
}

// False as well when a layer is empty.
static bool postTables(Posting &posting, CSint *const *vars, int n, Diagram &diagram, const Ends &ends,
                       const Keeper &keeper) {
  const PrivateVariables &layers = keeper.layers;
  diagram.begin(ends.root);
  layers.init(0, ends.root, ends.root);
  layers.init(n, ends.terminal, ends.terminal);
  for (int k = 0; k < n; ++k) {
    diagram.step();
    if (diagram.isEmpty()) return false;
    if (k + 1 < n) layers.init(k + 1, diagram.firstNode(), diagram.lastNode());
    keeper.tables[k] = postTable(posting, diagram, layers[k], vars[k], layers[k + 1]);
    if (keeper.tables[k] == nullptr) return false;
  }
  return true;
}

// Nobody runs before all are there.
static bool runAll(const Keeper &keeper, int n) {
  for (int k = 0; k < n - 1; ++k) ask(*keeper.tables[k]);
  return runSoon(*keeper.tables[n - 1]);
}

static bool isSound(CSint *const *vars, int n, const Given &given) {
  if (n < 0 || n == kIntMax || given.count < 0 || given.count > GivenRows::kMostCells / 3) return false;
  if (n > 0 && (vars == nullptr || !allPresent(vars, n))) return false;
  return given.count == 0 || (given.sources != nullptr && given.values != nullptr && given.targets != nullptr);
}

static bool post(const Poster &poster, CSint *const *vars, int n, const Given &given, int root, int terminal) {
  if (!isSound(vars, n, given)) return false;
  Posting posting{poster};
  if (!posting || n == 0) return posting && root == terminal;
  Diagram diagram;
  if (!diagram.build(given)) return false;
  const Ends ends{diagram.find(root), diagram.find(terminal)};
  if (ends.root == Diagram::kNone || ends.terminal == Diagram::kNone) return false;
  Keeper record{PrivateVariables(n + 1), {}};
  if (!record.layers || !make(record.tables, static_cast<unsigned>(n))) return false;
  auto keeper = posting.add(kKeeper, std::move(record), kNeverWoken);
  for (int k = 0; k < n; ++k) keeper.attach(vars[k]);
  if (!posting || !postTables(posting, vars, n, diagram, ends, *keeper)) return false;
  auto onLayers = posting.add(kOnLayers, OnLayers{keeper->tables.get()});
  for (int k = 1; k < n; ++k) onLayers.attach(keeper->layers[k], k);
  return posting && runAll(*keeper, n);
}

}  // namespace koru::mdd

bool cs_Mdd(CSint **vars, int n, const int *sources, const int *values, const int *targets, int count, int root,
            int terminal) {
  return koru::leftOut("cs_Mdd") ||
         koru::door(koru::mdd::post("cs_Mdd", vars, n, {sources, values, targets, count}, root, terminal));
}
