// SPDX-License-Identifier: MIT
// cs_recordSearches, read back: what every engine counts is in the record, nodes can be gone to, and searches do the
// same with a record as without.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "core/solver.h"
#include "koru_extras.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/random.h"
#include "support/kit/solver_test.h"
#include "support/kit/temporary_path.h"
#include "tree/tree.h"

namespace koru::test {
namespace {

using tree::Node;
using tree::Tree;

std::string bytesOf(const std::filesystem::path &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Tree read(const std::string &bytes) {
  Tree tree;
  std::string error;
  EXPECT_TRUE(tree::readTree(bytes, tree, error)) << error;
  return tree;
}

// The bytes that are recorded while `search` runs.
std::string recordOf(const std::function<void()> &search) {
  const std::filesystem::path path = temporaryPath();
  EXPECT_TRUE(cs_recordSearches(path.string().c_str()));
  search();
  EXPECT_TRUE(cs_recordSearches(nullptr));
  std::string bytes = bytesOf(path);
  std::filesystem::remove(path);
  return bytes;
}

class RecordTest : public SolverTest {
 protected:
  // Variables over 0..4 with random relations, some of which may be refused.
  void makeModel(unsigned long long seed, int n) {
    cs_setProfilerLocator(
        "text", [](void *) { return "model.c\t1\t0\tmain"; }, nullptr);
    Random random(seed);
    x.clear();
    for (int i = 0; i < n; ++i) x.push_back(cs_createCSint(0, 4));
    cs_setName(x[0], "first");
    for (int k = 0; k < 2 * n; ++k) {
      CSint *a = random.pick(x);
      CSint *b = random.pick(x);
      if (a == b) continue;
      cs_saveContext();
      const int v = random.between(3, 6);
      const bool posted = random.chance(50) ? cs_Neq(a, b) : random.chance(50) ? cs_Le(a, b) : cs_NEQ(cs_Add(a, b), v);
      posted ? cs_forgetSaveContext() : cs_restoreContext();
    }
  }
  CSint **array() { return x.data(); }
  int size() const { return static_cast<int>(x.size()); }

  std::vector<CSint *> x;
};

tree::Totals totals(const std::string &bytes) { return tree::totalsOf(read(bytes)); }

int scoreOf(int index, int value) { return (index * 3 + value * 2) % 5; }
int cellScore(int row, int column, int value) { return (row + column + value) % 5; }
int firstFree(CSint **array, int n) {
  for (int i = 0; i < n; ++i)
    if (cs_isFree(array[i])) return i;
  return -1;
}
int findRow(CSint ***matrix, int rows, int columns) {
  for (int i = 0; i < rows; ++i)
    if (firstFree(matrix[i], columns) >= 0) return i;
  return -1;
}
int findColumn(int, CSint **row, int columns) { return firstFree(row, columns); }
int fewFails(void *) { return 4; }

// ----- counters

TEST_F(RecordTest, HasWhatTheSearchesOfKoruHCount) {
  for (unsigned long long seed = 0; seed < 12; ++seed) {
    makeModel(seed, 6);
    CSint **rows[] = {array(), array() + 3};
    CSvalueSelector *selectors[6];
    for (int i = 0; i < 6; ++i)
      selectors[i] = cs_getValueSelector(static_cast<int>(seed + static_cast<unsigned>(i)) % 5);
    CSnoGoodSet *set = cs_createNoGoodSet(array(), 6, nullptr, 0, nullptr, nullptr);
    const std::function<bool()> searches[] = {
        [&] { return cs_search(array(), 6, cs_findFreeVarNbElements); },
        [&] { return cs_searchFail(array(), 6, cs_findFreeVar, 2); },
        [&] { return cs_findAll(array(), 6, cs_findFreeVar, nullptr); },
        [&] { return cs_minimize(array(), 6, cs_findFreeVarNbElements, x[5], nullptr); },
        [&] { return cs_searchCriteria(array(), 6, firstFree, scoreOf); },
        [&] { return cs_searchMatrix(rows, 2, 3, findRow, findColumn, cellScore); },
        [&] { return cs_searchValueSelectorFail(array(), selectors, 6, firstFree, 0, nullptr); },
        [&] {
          return cs_searchValueSelectorRestartNG(array(), selectors, 6, firstFree, fewFails, nullptr, 40, set, nullptr);
        }};
    for (std::size_t i = 0; i < std::size(searches); ++i) {
      cs_saveContext();
      bool found = false;
      const Tree tree = read(recordOf([&] { found = searches[i](); }));
      const tree::Totals t = tree::totalsOf(tree);
      EXPECT_EQ(t.choicePoints, cs_getNbChoicePoints()) << "search " << i << " of model " << seed;
      EXPECT_EQ(t.refused, cs_getNbFails()) << "search " << i << " of model " << seed;
      EXPECT_EQ(tree.searches, 1);
      EXPECT_EQ(!tree.solutions.empty(), found) << "search " << i << " of model " << seed;
      cs_restoreContextUntil(1);
    }
  }
}

TEST_F(RecordTest, HasSolutionsThatAHookRejects) {
  makeModel(1, 4);
  std::vector<CSvalueSelector *> selectors(4, cs_getValueSelector(0));
  CSsearchNotify *notify = cs_createSearchNotify(nullptr);
  cs_searchNotifySetFound(notify, [](int, CSint **, int, void *) { return false; });
  const Tree tree = read(
      recordOf([&] { EXPECT_FALSE(cs_searchValueSelectorFail(array(), selectors.data(), 4, firstFree, 0, notify)); }));
  EXPECT_TRUE(tree.solutions.empty());
  EXPECT_EQ(tree::totalsOf(tree).choicePoints, cs_getNbChoicePoints());
  EXPECT_GT(tree::totalsOf(tree).choicePoints, 4);
  cs_freeSearchNotify(notify);
}

// Each way of branching, learning and improving.
CSsearchOptions optionsOf(int kind, CSint *objective) {
  CSsearchOptions o = {};
  o.size = sizeof o;
  o.branching = kind % 2;
  o.value = kind % 3;
  o.restarts = kind % 4 == 3 ? CS_RESTARTS_LUBY : CS_RESTARTS_NONE;
  o.restartFails = 3;
  o.minimize = kind >= 4 ? objective : nullptr;
  o.neighbours = kind >= 6 ? CS_NEIGHBOURS_RANDOM : CS_NEIGHBOURS_NONE;
  o.neighbourFails = 3;
  return o;
}

TEST_F(RecordTest, HasWhatSearchObjectsCount) {
  for (unsigned long long seed = 0; seed < 8; ++seed) {
    makeModel(seed, 6);
    for (int kind = 0; kind < 8; ++kind) {
      const CSsearchOptions options = optionsOf(kind, x[5]);
      CSsearchStats stats;
      const Tree tree = read(recordOf([&] {
        CSsearch *search = cs_createSearch(array(), 6);
        ASSERT_TRUE(cs_setSearchOptions(search, &options));
        while (cs_nextSolution(search) == CS_STATUS_SOLUTION) continue;
        cs_getSearchStats(search, &stats, sizeof stats);
        cs_freeSearch(search);
      }));
      const tree::Totals t = tree::totalsOf(tree);
      EXPECT_EQ(t.choicePoints, stats.choicePoints) << kind << " of model " << seed;
      EXPECT_EQ(t.refused, stats.fails) << kind << " of model " << seed;
      EXPECT_EQ(static_cast<long long>(tree.solutions.size()), stats.solutions);
      if (stats.solutions > 0 && kind >= 4) {
        EXPECT_EQ(tree.solutions.back().worth, stats.objective);
      }
    }
  }
}

// ----- one tree in full

std::string written(const Tree &tree) {
  std::string text;
  for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
    const Node &n = tree.nodes[i];
    text += std::to_string(n.parent) + ": " + tree.decisionOf(static_cast<int>(i));
    text += n.isRefused() ? " refused" : n.is(tree::kSolution) ? " solution" : "";
    if (n.place >= 0) text += " by " + tree.places[static_cast<std::size_t>(n.place)].text();
    text += "\n";
  }
  return text;
}

TEST_F(RecordTest, NamesDecisionsAndWhoRefusesThem) {
  cs_setProfilerLocator(
      "text", [](void *) { return "main.c\t7\t0\tmain"; }, nullptr);
  CSint *ab[] = {cs_createNamedCSint(0, 2, "a"), cs_createCSint(0, 1)};
  ASSERT_TRUE(cs_Neq(ab[0], ab[1]));
  CSint *c = cs_createCSint(0, 1);
  ASSERT_TRUE(cs_Le(c, ab[1]) && cs_Le(ab[1], c) && cs_Neq(ab[0], c));
  const Tree tree = read(recordOf([&] { cs_findAll(ab, 2, cs_findFreeVar, nullptr); }));
  EXPECT_EQ(written(tree),
            "-1: the root\n0: a = 0 solution\n0: a = 1 solution\n0: a = 2\n3: v1 = 0 solution\n3: v1 = 1 solution\n");
}

TEST_F(RecordTest, HasAStartThatIsPutOffAsTheOppositeOfItsDecision) {
  CSint *starts[] = {cs_createCSint(0, 1), cs_createCSint(0, 2)};
  const char *names[] = {"a", "b"};
  for (int i = 0; i < 2; ++i) cs_setName(starts[i], names[i]);
  ASSERT_TRUE(cs_Neq(starts[0], starts[1]));
  CSsearchOptions options{};
  options.size = sizeof options;
  options.order = CS_ORDER_SET_TIMES;
  const Tree tree = read(recordOf([&] {
    CSsearch *search = cs_createSearch(starts, 2);
    ASSERT_TRUE(cs_setSearchOptions(search, &options));
    while (cs_nextSolution(search) == CS_STATUS_SOLUTION) continue;
    cs_freeSearch(search);
  }));
  EXPECT_EQ(written(tree),
            "-1: the root\n0: a = 0\n1: b = 1 solution\n1: b != 1\n0: a != 0\n4: b = 0 solution\n4: b != 0\n");
}

TEST_F(RecordTest, NamesWhoRefuses) {
  cs_setProfilerLocator(
      "text", [](void *) { return "main.c\t7\t0\tmain"; }, nullptr);
  CSint *abc[] = {cs_createNamedCSint(0, 1, "a"), cs_createCSint(0, 1), cs_createCSint(0, 1)};
  ASSERT_TRUE(cs_Neq(abc[0], abc[1]) && cs_Neq(abc[1], abc[2]) && cs_Neq(abc[0], abc[2]));
  const Tree tree = read(recordOf([&] { cs_search(abc, 3, cs_findFreeVar); }));
  EXPECT_EQ(written(tree),
            "-1: the root\n0: a = 0 refused by cs_Neq  main.c:7\n0: a = 1 refused by cs_Neq  main.c:7\n");
}

TEST_F(RecordTest, TakesLittleRoom) {
  const auto queens = [&](int n) {
    x.clear();
    for (int i = 0; i < n; ++i) x.push_back(cs_createCSint(0, n - 1));
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < i; ++j)
        EXPECT_TRUE(
            cs_Neq(x[static_cast<std::size_t>(i)], x[static_cast<std::size_t>(j)]) &&
            cs_Neq(cs_Add(x[static_cast<std::size_t>(i)], CSINT(i)),
                   cs_Add(x[static_cast<std::size_t>(j)], CSINT(j))) &&
            cs_Neq(cs_Sub(x[static_cast<std::size_t>(i)], CSINT(i)), cs_Sub(x[static_cast<std::size_t>(j)], CSINT(j))));
  };
  cs_setProfilerLocator(
      "text", [](void *) { return "queens.c\t1\t0\tmain"; }, nullptr);
  queens(8);
  const std::string bytes = recordOf([&] { cs_findAll(array(), 8, cs_findFreeVarNbElements, nullptr); });
  const tree::Totals t = totals(bytes);
  EXPECT_EQ(t.choicePoints, cs_getNbChoicePoints());
  EXPECT_LT(bytes.size(), static_cast<std::size_t>(3 * t.choicePoints) + 200);
}

// ----- going to nodes

using State = std::vector<std::vector<int>>;

std::vector<State> seen;

State stateOf(CSint **array, int n) {
  State state;
  for (int i = 0; i < n; ++i) state.push_back(values(array[i]));
  return state;
}

CSint *selectAndLook(CSint **array, int n) {
  seen.push_back(stateOf(array, n));
  return cs_findFreeVar(array, n);
}

// The selection is asked at the root and after each decision that is accepted.
TEST_F(RecordTest, AnyNodeCanBeGoneTo) {
  for (unsigned long long seed = 0; seed < 20; ++seed) {
    cs_end();
    SetUp();
    makeModel(seed, 5);
    seen.clear();
    const Tree tree = read(recordOf([&] { cs_findAll(array(), 5, selectAndLook, nullptr); }));
    std::size_t k = 0;
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
      if (tree.nodes[i].isRefused()) continue;
      std::vector<CSstep> path;
      for (const int step : tree.pathTo(static_cast<int>(i))) {
        const Node &n = tree.nodes[static_cast<std::size_t>(step)];
        path.push_back({n.variable, {n.method, n.value}});
      }
      const int length = static_cast<int>(path.size());
      path.push_back({});
      EXPECT_EQ(cs_goToNode(path.data(), length), length);
      EXPECT_EQ(stateOf(array(), 5), seen[k++]) << "node " << i << " of model " << seed;
      cs_restoreAll();
    }
    EXPECT_EQ(k, seen.size());
  }
}

TEST_F(RecordTest, APathIsTakenAsFarAsItGoes) {
  CSint *a = cs_createCSint(0, 3);
  const CSstep path[] = {{0, {CS_METHOD_GE, 1}}, {0, {CS_METHOD_EQ, 0}}};
  EXPECT_EQ(cs_goToNode(path, 2), 1);
  EXPECT_EQ(solver::contexts.count(), 1);
  EXPECT_EQ(cs_getMin(a), 1);
  EXPECT_EQ(cs_getNbRefused(), 0);
  const CSstep wrong[] = {{7, {CS_METHOD_EQ, 0}}};
  const CSstep before[] = {{-1, {CS_METHOD_EQ, 0}}};
  const CSstep unknown[] = {{0, {6, 0}}};
  for (const CSstep *each : {wrong, before, unknown}) EXPECT_EQ(cs_goToNode(each, 1), 0);
  EXPECT_EQ(cs_goToNode(nullptr, 1), 0);
  EXPECT_EQ(cs_goToNode(path, -1), 0);
  cs_end();
  EXPECT_EQ(cs_goToNode(path, 1), 0);
}

// ----- what may happen to a record

CSint *second[2];

void searchInside(CSint **, int) {
  const int label = cs_saveContext();
  cs_search(second, 2, cs_findFreeVar);
  cs_restoreContextUntil(label);
}

TEST_F(RecordTest, HasSearchesInsideOthersWhereTheyRun) {
  CSint *a[] = {cs_createCSint(0, 1)};
  second[0] = cs_createCSint(5, 6);
  second[1] = cs_createCSint(5, 6);
  const Tree tree = read(recordOf([&] { cs_findAll(a, 1, cs_findFreeVar, searchInside); }));
  EXPECT_EQ(tree.searches, 3);
  EXPECT_EQ(written(tree),
            "-1: the root\n0: v0 = 0 solution\n1: the root\n2: v1 = 5\n3: v2 = 5 solution\n"
            "0: v0 = 1 solution\n5: the root\n6: v1 = 5\n7: v2 = 5 solution\n");
}

std::filesystem::path begunInside;

void beginRecord(CSint **, int) { EXPECT_TRUE(cs_recordSearches(begunInside.string().c_str())); }

TEST_F(RecordTest, HasNothingOfASearchThatWasUnderWay) {
  begunInside = temporaryPath();
  CSint *a[] = {cs_createCSint(0, 1), cs_createCSint(0, 1)};
  EXPECT_TRUE(cs_findAll(a, 2, cs_findFreeVar, beginRecord));
  const CSsearchOptions options = optionsOf(0, nullptr);
  CSsearch *search = cs_createSearch(a, 2);
  EXPECT_TRUE(cs_setSearchOptions(search, &options));
  EXPECT_EQ(cs_nextSolution(search), CS_STATUS_SOLUTION);
  cs_freeSearch(search);
  EXPECT_TRUE(cs_recordSearches(nullptr));
  const Tree tree = read(bytesOf(begunInside));
  std::filesystem::remove(begunInside);
  EXPECT_EQ(tree.searches, 1);
  EXPECT_EQ(tree::totalsOf(tree).choicePoints, 2);
}

// The variables of another solver have no numbers there.
TEST_F(RecordTest, GoesOnInAnotherSolver) {
  CSint *a = cs_createCSint(0, 1);
  CSint *b = nullptr;
  const Tree tree = read(recordOf([&] {
    const CSsearchOptions options = optionsOf(1, nullptr);
    CSsearch *search = cs_createSearch(&a, 1);
    EXPECT_TRUE(cs_setSearchOptions(search, &options));
    EXPECT_EQ(cs_nextSolution(search), CS_STATUS_SOLUTION);
    CSsolver *first = cs_detachSolver();
    cs_init();
    b = cs_createCSint(0, 1);
    EXPECT_TRUE(cs_search(&b, 1, cs_findFreeVar));
    cs_end();
    EXPECT_TRUE(cs_attachSolver(first));
    EXPECT_TRUE(cs_freeSearch(search));
  }));
  EXPECT_EQ(tree.searches, 2);
  EXPECT_EQ(written(tree), "-1: the root\n0: v0 = 1 solution\n1: the root\n2: v-1 = 0 solution\n");
}

int asked = 0;

CSint *selectSlowly(CSint **array, int n) {
  if (++asked == 500) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(120);
    while (std::chrono::steady_clock::now() < until) continue;
  }
  return cs_findFreeVar(array, n);
}

TEST_F(RecordTest, TellsTheTimeNowAndThen) {
  asked = 0;
  for (int i = 0; i < 5; ++i) x.push_back(cs_createCSint(0, 4));
  const Tree tree = read(recordOf([&] { cs_findAll(array(), 5, selectSlowly, nullptr); }));
  EXPECT_EQ(tree.solutions.size(), 3125U);
  EXPECT_EQ(tree.solutions.front().milliseconds, 0);
  EXPECT_GE(tree.solutions.back().milliseconds, 110);
}

TEST_F(RecordTest, NeedsAFile) {
  EXPECT_FALSE(cs_recordSearches("/no such folder/run.tree"));
  EXPECT_TRUE(cs_recordSearches(nullptr));
  EXPECT_TRUE(cs_recordSearches(nullptr)) << "there is none to end";
}

TEST_F(RecordTest, EndsWhereMemoryDoesAndTheSearchGoesOn) {
  makeModel(3, 6);
  cs_findAll(array(), 6, cs_findFreeVar, nullptr);
  const int choicePoints = cs_getNbChoicePoints();
  for (int k = 0;; ++k) {
    const long blocks = blocksAlive;
    const std::filesystem::path path = temporaryPath();
    {
      const FailingAllocator failing(k, Failing::kOnce);
      cs_recordSearches(path.string().c_str());
      cs_findAll(array(), 6, cs_findFreeVar, nullptr);
    }
    EXPECT_EQ(cs_getNbChoicePoints(), choicePoints) << k;
    cs_recordSearches(nullptr);
    if (std::filesystem::exists(path)) read(bytesOf(path));
    std::filesystem::remove(path);
    EXPECT_LE(blocksAlive - blocks, 3) << "places that were looked up";
    if (FailingAllocator::failures() == 0) break;
  }
}

// ----- bytes

// All solutions, and then the best one.
std::string twoSearches() {
  CSint *abc[] = {cs_createCSint(0, 4), cs_createNamedCSint(0, 4, "b"), cs_createCSint(0, 4)};
  EXPECT_TRUE(cs_AllNeq(abc, 3) && cs_Neq(cs_Add(abc[0], abc[1]), abc[2]));
  return recordOf([&] {
    cs_findAll(abc, 3, cs_findFreeVar, nullptr);
    cs_minimize(abc, 3, cs_findFreeVar, abc[2], nullptr);
  });
}

TEST_F(RecordTest, IsASmallerTreeWhereverItIsCut) {
  const std::string bytes = twoSearches();
  const Tree whole = read(bytes);
  EXPECT_FALSE(whole.cut);
  EXPECT_GT(whole.nodes.size(), 20U);
  std::size_t last = 0;
  for (std::size_t n = 12; n <= bytes.size(); ++n) {
    const Tree part = read(bytes.substr(0, n));
    EXPECT_GE(part.nodes.size(), last);
    last = part.nodes.size();
    for (std::size_t i = 0; i < last; ++i) {
      EXPECT_EQ(part.nodes[i].parent, whole.nodes[i].parent);
      EXPECT_EQ(part.nodes[i].value, whole.nodes[i].value);
    }
  }
  EXPECT_EQ(last, whole.nodes.size());
}

TEST_F(RecordTest, IsRefusedOrReadWhateverIsChanged) {
  const std::string bytes = twoSearches();
  Random random(1);
  int refused = 0;
  for (int k = 0; k < 3000; ++k) {
    std::string changed = bytes;
    for (int times = random.between(1, 3); times > 0; --times)
      changed[static_cast<std::size_t>(random.between(12, static_cast<int>(changed.size()) - 1))] =
          static_cast<char>(random.below(256));
    Tree tree;
    std::string error;
    if (!tree::readTree(changed, tree, error)) {
      ++refused;
      EXPECT_NE(error, "");
    }
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) ASSERT_LT(tree.nodes[i].parent, static_cast<int>(i));
  }
  EXPECT_GT(refused, 100);
}

// Twelve bytes for a level of ten values, so that trees are deep and wide.
TEST_F(RecordTest, AMillionNodesAreReadInSecondsAndInLittleMemory) {
  std::string bytes = "koru-tree 1\n\xcb";
  bytes += '\0';
  int nodes = 0;
  for (int k = 0; k < 10; ++k) bytes += "\x82\x40";  // a level, and its first value accepted
  while (nodes < 1'000'000) {
    bytes += '\x82';
    for (int value = 0; value < 10; ++value, ++nodes) bytes += '\0';
    bytes += "\xc0\x40";  // left, and the next value above accepted
  }
  const auto start = std::chrono::steady_clock::now();
  const Tree tree = read(bytes);
  std::ostringstream page;
  tree::writePage(page, tree, "large", 20000);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_GT(tree.nodes.size(), 1'000'000U);
  EXPECT_LT(tree.nodes.capacity() * sizeof(Node), 60'000'000U);
  EXPECT_LT(page.str().size(), 2'000'000U);
}

}  // namespace
}  // namespace koru::test
