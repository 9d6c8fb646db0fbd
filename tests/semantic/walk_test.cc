// SPDX-License-Identifier: MIT
// Walks over random models of all constraints, cut after every few choice points, against the searches of koru.h: the
// same solutions in the same order, the same counts, the same state in the end, whichever piece is walked first.
#include <list>
#include <set>

#include "semantic/random_model.h"
#include "support/kit/instrumented.h"

namespace koru::test::brute {
namespace {

constexpr long long kSlice = 5;
constexpr int kMostSteps = 64;
constexpr long long kMostChoicePoints = 5000;  // of a search

// The next piece to walk, of those that are left.
enum class Order { kLeftmost, kRightmost, kRandom };

class InPieces {
 public:
  InPieces(RandomModel &m, Order order) : m_(m), order_(order) {}

  Outcome run(Mode mode) {
    walk_ = cs_openWalk(m_.array(), m_.size(), m_.select());
    if (mode == Mode::kAll) {
      walkAll(false);
      leave();
    } else if (mode == Mode::kFirst) {
      walkAll(true) ? stand() : leave();
    } else {
      minimize();
    }
    const CSwalk *walk = walk_;
    o_.end = m_.state();
    cs_closeWalk(walk_);
    EXPECT_NE(walk, nullptr);
    return o_;
  }

 private:
  struct Solution {
    State state;
    std::vector<CSwalkStep> steps;
  };
  struct Piece {
    std::vector<CSwalkStep> steps;
    CSwalkPosition position;
    bool walked = false;
    std::vector<Solution> solutions = {};
    CSwalkCounts counts = {};
  };
  using Pieces = std::list<Piece>;

  Piece here() const {
    Piece piece{std::vector<CSwalkStep>(kMostSteps), {}};
    piece.position = cs_getWalkPosition(walk_, piece.steps.data(), kMostSteps);
    piece.steps.resize(static_cast<std::size_t>(piece.position.depth));
    return piece;
  }

  void goTo(const std::vector<CSwalkStep> &steps, const CSwalkPosition &position) {
    EXPECT_EQ(cs_setWalkPosition(walk_, steps.data(), &position), position.depth) << m_.text();
  }
  // All contexts closed that the walk has opened.
  void leave() { goTo({}, {0, 0, false}); }

  Pieces::iterator choose() {
    std::vector<Pieces::iterator> left;
    for (auto p = pieces_.begin(); p != pieces_.end(); ++p)
      if (!p->walked) left.push_back(p);
    if (left.empty()) return pieces_.end();
    if (order_ == Order::kLeftmost) return left.front();
    return order_ == Order::kRightmost ? left.back() : m_.random().pick(left);
  }

  template <class Note>
  CSstatus goTelling(Note &note) {
    const auto found = [](CSwalk *, void *extra) { return (*static_cast<Note *>(extra))(); };
    return cs_goWalkTelling(walk_, kSlice, found, &note);
  }

  // A slice of a piece; what is left of it follows it as pieces of their own.
  void walkSlice(Pieces::iterator piece, bool first) {
    if (m_.random().chance(50)) leave();
    goTo(piece->steps, piece->position);
    const CSwalkCounts before = cs_getWalkCounts(walk_);
    auto note = [&] {
      piece->solutions.push_back({m_.state(), here().steps});
      return !first;
    };
    const bool returns = m_.random().chance(50);
    CSstatus status = returns ? cs_goWalk(walk_, kSlice, true) : goTelling(note);
    while (returns && status == CS_STATUS_SOLUTION && note()) status = cs_goWalk(walk_, kSlice, true);
    const CSwalkCounts after = cs_getWalkCounts(walk_);
    piece->counts = {after.choicePoints - before.choicePoints, after.fails - before.fails, 0};
    piece->walked = true;
    if (status == CS_STATUS_SOLUTION) {
      pieces_.erase(std::next(piece), pieces_.end());
    } else if (status == CS_STATUS_CHOICE_POINTS) {
      auto next = std::next(piece);
      std::vector<CSwalkStep> steps(kMostSteps);
      while (const int depth = cs_splitWalk(walk_, 0, steps.data(), kMostSteps))
        next = pieces_.insert(next, {{steps.begin(), steps.begin() + depth}, {depth, depth - 1, true}});
      pieces_.insert(next, here());
    } else {
      EXPECT_EQ(status, CS_STATUS_EXHAUSTED);
    }
  }

  // All pieces, or with `first` those to the left of the first solution.
  bool walkAll(bool first) {
    pieces_ = {{{}, {0, 0, false}}};
    for (auto piece = choose(); piece != pieces_.end(); piece = choose()) walkSlice(piece, first);
    found_.clear();
    for (const Piece &piece : pieces_) {
      o_.choicePoints += piece.counts.choicePoints;
      o_.fails += piece.counts.fails;
      for (const Solution &solution : piece.solutions) found_.push_back(solution);
    }
    for (const Solution &solution : found_) o_.solutions.push_back(solution.state);
    o_.result = o_.result || !found_.empty();
    return !found_.empty();
  }

  // At the last solution.
  void stand() {
    const auto &steps = found_.back().steps;
    goTo(steps, {static_cast<int>(steps.size()), 0, false});
  }

  void minimize() {
    const int root = cs_saveContext();
    cs_closeWalk(walk_);
    walk_ = cs_openWalk(m_.array(), m_.size(), m_.select());
    if (!walkAll(true)) return leave();
    do {
      stand();
      const int bound = cs_getMin(m_.cost());
      cs_restoreContextUntil(root);
      cs_closeWalk(walk_);
      walk_ = cs_openWalk(m_.array(), m_.size(), m_.select());
      if (!cs_LT(m_.cost(), bound)) return;
    } while (walkAll(true));
    leave();
  }

  RandomModel &m_;
  Order order_;
  CSwalk *walk_ = nullptr;
  Pieces pieces_;
  std::vector<Solution> found_;
  Outcome o_;
};

// Runs a model in a solver of its own.
template <class Do>
Outcome inSolver(std::uint64_t seed, Do action) {
  cs_init();
  RandomModel m(seed);
  const Outcome o = action(m);
  cs_end();
  return o;
}

struct Totals {
  long long models = 0;
  long long choicePoints = 0;
};

void compareModel(std::uint64_t seed, Totals &totals) {
  cs_init();
  const RandomModel m(seed);
  const bool walkable = m.consistent() && cs_findConstraintWithMemory() == nullptr;
  const std::string text = m.text();
  cs_end();
  if (!walkable) return;
  ++totals.models;
  for (const Mode mode : {Mode::kAll, Mode::kFirst, Mode::kMinimize}) {
    const Outcome expected = inSolver(seed, [&](RandomModel &each) { return bySearch(each, mode); });
    if (expected.choicePoints > kMostChoicePoints) continue;
    totals.choicePoints += expected.choicePoints;
    for (const Order order : {Order::kLeftmost, Order::kRightmost, Order::kRandom}) {
      const Outcome o = inSolver(seed, [&](RandomModel &each) { return InPieces(each, order).run(mode); });
      EXPECT_EQ(o.solutions, expected.solutions);
      EXPECT_TRUE(o == expected) << "seed " << seed << " mode " << static_cast<int>(mode) << " order "
                                 << static_cast<int>(order) << ": " << text << " " << o.choicePoints << " of "
                                 << expected.choicePoints << " choice points, " << o.fails << " of " << expected.fails
                                 << " fails";
    }
  }
}

void compareModels(std::uint64_t firstSeed, int models) {
  Totals totals;
  for (std::uint64_t seed = firstSeed; totals.models < models; ++seed) compareModel(seed, totals);
  std::printf("%lld models, %lld choice points\n", totals.models, totals.choicePoints);
}

TEST(WalksInPieces, AreTheSearchesOfRandomModels) { compareModels(1, rounds(200)); }

TEST(WalksInPieces, AreTheSearchesOfManyRandomModelsHeavy) { compareModels(100000, 5000); }

// ----- the state of a node

struct Node {
  std::vector<int> values;  // from the root on
  State state;
};

// The state at every node of the tree, as cs_findAll comes to it: its selection function looks.
class Nodes {
 public:
  static std::vector<Node> of(RandomModel &m) {
    Nodes nodes(m);
    self = &nodes;
    cs_findAll(m.array(), m.size(), look, [](CSint **, int) {});
    return std::move(nodes.seen_);
  }

 private:
  static constexpr std::size_t kMost = 2000;

  explicit Nodes(RandomModel &m) : m_(m), root_(m.state().front()) {}

  static CSint *look(CSint **array, int size) { return self->select(array, size); }
  CSint *select(CSint **array, int size) {
    Node node{{}, m_.state()};
    chosen_.resize(static_cast<std::size_t>(node.state.front() - root_));
    for (CSint *v : chosen_) node.values.push_back(cs_getValue(v));
    seen_.push_back(std::move(node));
    if (seen_.size() == kMost) cs_cancelSearch();
    chosen_.push_back(m_.select()(array, size));
    return chosen_.back();
  }

  static inline Nodes *self = nullptr;
  RandomModel &m_;
  int root_;  // contexts that are open there
  std::vector<CSint *> chosen_;
  std::vector<Node> seen_;
};

// Whether the state is what it was when the values are taken at once, in a solver that has searched elsewhere.
bool isSame(RandomModel &m, const Node &node) {
  const int root = cs_saveContext();
  cs_restoreContext();
  bool reached = true;
  for (std::size_t i = 0; i < node.values.size() && reached; ++i) {
    CSint *v = m.select()(m.array(), m.size());
    cs_saveContext();
    reached = v != nullptr && cs_EQ(v, node.values[i]);
  }
  if (reached) m.select()(m.array(), m.size());
  const bool same = reached && m.state() == node.state;
  if (!node.values.empty()) cs_restoreContextUntil(root);
  return same;
}

struct Compared {
  std::size_t nodes = 0, different = 0;
  const char *withMemory = nullptr;
  std::string text;
};

// From the right to the left, each from the root.
Compared compareStates(std::uint64_t seed, const Case *only) {
  Compared c;
  cs_init();
  RandomModel first(seed, only);
  const std::vector<Node> nodes = first.consistent() ? Nodes::of(first) : std::vector<Node>{};
  cs_end();
  cs_init();
  RandomModel second(seed, only);
  if (second.consistent()) c.withMemory = cs_findConstraintWithMemory();
  for (auto node = nodes.rbegin(); node != nodes.rend(); ++node)
    if (!isSame(second, *node)) ++c.different;
  c.nodes = nodes.size();
  c.text = second.text();
  cs_end();
  return c;
}

class StateOfANode : public ::testing::TestWithParam<Case> {};

TEST_P(StateOfANode, DependsOnThePathToItAlone) {
  std::size_t nodes = 0;
  for (std::uint64_t seed = 1; seed <= rounds(12U); ++seed) {
    const Compared c = compareStates(seed, &GetParam());
    EXPECT_TRUE(c.different == 0 || c.withMemory != nullptr) << c.different << " of " << c.nodes << ": " << c.text;
    nodes += c.nodes;
  }
  EXPECT_GT(nodes, 0U);
}

INSTANTIATE_TEST_SUITE_P(Of, StateOfANode, ::testing::ValuesIn(allCases()),
                         [](const auto &test) { return test.param.name; });

// Several constraints together. Returns the constraints in whose models states have differed.
std::set<std::string> compareStatesOfModels(std::uint64_t first, std::uint64_t models) {
  std::set<std::string> differing;
  std::size_t nodes = 0;
  for (std::uint64_t seed = first; seed < first + models; ++seed) {
    const Compared c = compareStates(seed, nullptr);
    nodes += c.nodes;
    if (c.different == 0) continue;
    EXPECT_NE(c.withMemory, nullptr) << "seed " << seed << ": " << c.different << " of " << c.nodes << ": " << c.text;
    if (c.withMemory != nullptr) differing.insert(c.withMemory);
  }
  std::printf("%zu nodes\n", nodes);
  return differing;
}

TEST(StatesOfNodes, DependOnThePathInModelsOfManyConstraints) { compareStatesOfModels(1, rounds(2000)); }

// And those that are said to have a memory do.
TEST(StatesOfNodes, DependOnThePathInVeryManyModelsHeavy) {
  const std::set<std::string> differing = compareStatesOfModels(100000, 100000);
  EXPECT_TRUE(differing.contains("cs_VarElement") && differing.contains("cs_createNoGoodSet"));
}

}  // namespace
}  // namespace koru::test::brute
