// SPDX-License-Identifier: MIT
// The exported functions and memory: those that never allocate, and how often the scenarios of all others do. One that
// allocates more often than it says here has grown an allocation that nobody thought of.
#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/headers.h"
#include "memory/point.h"
#include "support/kit/written_text.h"

namespace koru::test {
namespace {

const Filling kFull{{0, 0, 0, 0}};

int allocationsOf(const Scenario &scenario, const Filling &filling) {
  Trial trial(scenario, filling);
  const FailingAllocator none(INT_MAX, Failing::kOnce);
  trial.run();
  return FailingAllocator::asked();
}

// By the names of the scenarios.
using Table = std::map<std::string, int>;

Table readTable(std::istream &lines) {
  Table table;
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream row(line);
    std::string name;
    int allocations = -1;
    row >> name >> allocations;
    EXPECT_TRUE(row.eof() && allocations >= 0) << "\"" << line << "\" is not a name and a number";
    EXPECT_TRUE(table.emplace(name, allocations).second) << name << " has two lines";
  }
  return table;
}

// A text for each place that the platform can name.
constexpr const char *kVarying = "profiler/built-in";

Table countAllocations() {
  Table counted;
  for (const Scenario &each : allScenarios()) {
    if (each.name == kVarying) continue;
    EXPECT_TRUE(counted.emplace(each.name, allocationsOf(each, Filling{})).second) << "two scenarios " << each.name;
  }
  return counted;
}

// A constraint of koru_extras.h may go without, and so do the models.
bool needsLine(const std::string &scenario) {
  const auto isOf = [&](const catalogue::Row *row) {
    const std::string name = row->name;
    return scenario.starts_with(name + "/") || scenario.starts_with("narrowing/" + name + "-");
  };
  return std::ranges::none_of(catalogue::rowsWithModels(),
                              [&](const catalogue::Row *row) { return !isOfKoruH(*row) && isOf(row); });
}

// The lines of the table that are wrong, as they should be.
std::string corrections(const Table &table, const Table &counted) {
  std::string text;
  for (const auto &[name, allocations] : counted) {
    const auto row = table.find(name);
    if (row != table.end() ? row->second == allocations : !needsLine(name)) continue;
    text += name + " " + std::to_string(allocations);
    text += row == table.end() ? "  (has no line)\n" : "  (not " + std::to_string(row->second) + ")\n";
  }
  for (const auto &[name, allocations] : table)
    if (!counted.contains(name)) text += name + "  (there is no such scenario)\n";
  return text;
}

const std::filesystem::path kTable = std::filesystem::path(__FILE__).parent_path() / "allocations.txt";

// With KORU_PIN set the table is written anew; the comment above it stays.
void pin(const Table &counted) {
  std::ifstream old(kTable);
  std::string text;
  for (std::string line; std::getline(old, line) && line[0] == '#';) text += line + "\n";
  for (const auto &[name, allocations] : counted)
    if (needsLine(name)) text += name + " " + std::to_string(allocations) + "\n";
  std::ofstream(kTable) << text;
}

TEST(Allocations, OfEachScenarioAreAsManyAsItsTableSays) {
  if (std::getenv("KORU_PIN") != nullptr) pin(countAllocations());
  std::ifstream file(kTable);
  EXPECT_TRUE(file) << "the test runs inside the source tree";
  EXPECT_EQ(corrections(readTable(file), countAllocations()), "");
}

TEST(Allocations, ThatDifferAreNamedOneByOne) {
  std::istringstream lines("# a comment\n\ncs_Eq/xy 4\ncs_Eq/xx 0\ngone 2\n");
  EXPECT_EQ(corrections(readTable(lines), {{"cs_Eq/xy", 5}, {"cs_Eq/xx", 0}, {"new/x", 1}}),
            "cs_Eq/xy 5  (not 4)\nnew/x 1  (has no line)\ngone  (there is no such scenario)\n");
}

TEST(Allocations, AreMadeByEveryFunctionWithAScenarioWhenAllStacksAreFull) {
  std::map<std::string, int> most;
  for (const Scenario &each : allScenarios())
    most[each.function()] = std::max(most[each.function()], allocationsOf(each, kFull));
  most.erase("cs_getValue");
  for (const auto &[name, allocations] : most) EXPECT_GT(allocations, 0) << name << " belongs to the others";
}

// What the functions that never allocate are called with.
struct Kit : Stage {
  CSint **const array = Stage::array("xyh");
  CSprofiler *const profiler = cs_createProfiler(0);
  CSprofiler *const enabled = cs_createProfiler(0);
  CSsearchNotify *notify = cs_createSearchNotify(nullptr);
  CSvalueSelector *selector = cs_createValueSelector(nullptr, cs_getValueSelector(CS_SELECT_MEDIAN)->next, nullptr);
  CSnoGoodSet *const set = cs_createNoGoodSet(array, 3, nullptr, 0, nullptr, nullptr);
  int *domain = cs_getDomain(h);
  std::FILE *const file = temporaryFile();
  CSvalueSelection decision{};
  int index = 0;
  void *word = nullptr;
  static inline CSnoGood *noGood = nullptr;

  Kit() {
    cs_enableProfiler(enabled);
    const int indexes[] = {0, 1};
    for (int value = 1; value <= 2; ++value) {
      const CSvalueSelection decisions[] = {{CS_METHOD_EQ, value}, {CS_METHOD_EQ, value}};
      cs_addNoGood(set, indexes, decisions, 2);
    }
    cs_filterNoGood(set, [](CSnoGoodSet *, CSnoGood *each, CSint **, int, void *) {
      noGood = each;
      return true;
    });
    cs_saveContext();
    cs_saveContext();
    cs_Le(x, z);
    cs_GE(x, 3);
    cs_createCSintArray(2, 0, 9);
    fillStacks(kFull);
  }
  ~Kit() {
    cs_freeDomain(domain);
    cs_freeSearchNotify(notify);
    cs_freeValueSelector(selector);
    std::fclose(file);
  }
};

struct Call {
  const char *name;
  void (*run)(Kit &);
};

const Call kNeverAllocating[] = {
    {"cs_acceptAll", [](Kit &) { cs_acceptAll(); }},
    {"cs_acceptContext", [](Kit &) { cs_acceptContext(); }},
    {"cs_acceptContextUntil", [](Kit &) { cs_acceptContextUntil(1); }},
    {"cs_cancelSearch", [](Kit &) { cs_cancelSearch(); }},
    {"cs_deleteProfiler", [](Kit &k) { cs_deleteProfiler(k.enabled); }},
    {"cs_disableProfiler", [](Kit &k) { cs_disableProfiler(k.enabled); }},
    {"cs_enableProfiler", [](Kit &k) { cs_enableProfiler(k.profiler); }},
    {"cs_end", [](Kit &) { cs_end(); }},
    {"cs_endValueSelector", [](Kit &k) { cs_endValueSelector(k.selector, 0, k.array, 3, &k.word); }},
    {"cs_filterNoGood",
     [](Kit &k) { cs_filterNoGood(k.set, [](CSnoGoodSet *, CSnoGood *, CSint **, int, void *) { return false; }); }},
    {"cs_findFreeVar", [](Kit &k) { cs_findFreeVar(k.array, 3); }},
    {"cs_findFreeVarNbConstraints", [](Kit &k) { cs_findFreeVarNbConstraints(k.array, 3); }},
    {"cs_findFreeVarNbElements", [](Kit &k) { cs_findFreeVarNbElements(k.array, 3); }},
    {"cs_findFreeVarNbElementsMin", [](Kit &k) { cs_findFreeVarNbElementsMin(k.array, 3); }},
    {"cs_forgetSaveContext", [](Kit &) { cs_forgetSaveContext(); }},
    {"cs_forgetSaveContextUntil", [](Kit &) { cs_forgetSaveContextUntil(1); }},
    {"cs_fprintStats", [](Kit &k) { cs_fprintStats(k.file); }},
    {"cs_freeDomain", [](Kit &k) { cs_freeDomain(std::exchange(k.domain, nullptr)); }},
    {"cs_freeSearchNotify", [](Kit &k) { cs_freeSearchNotify(std::exchange(k.notify, nullptr)); }},
    {"cs_freeValueSelector", [](Kit &k) { cs_freeValueSelector(std::exchange(k.selector, nullptr)); }},
    {"cs_getErr", [](Kit &) { cs_getErr(); }},
    {"cs_getMax", [](Kit &k) { cs_getMax(k.x); }},
    {"cs_getMin", [](Kit &k) { cs_getMin(k.x); }},
    {"cs_getName", [](Kit &k) { cs_getName(k.h); }},
    {"cs_getNbChoicePoints", [](Kit &) { cs_getNbChoicePoints(); }},
    {"cs_getNbConstraints", [](Kit &k) { cs_getNbConstraints(k.x); }},
    {"cs_getNbElements", [](Kit &k) { cs_getNbElements(k.x); }},
    {"cs_getNbFails", [](Kit &) { cs_getNbFails(); }},
    {"cs_getNbNoGoodElements", [](Kit &) { cs_getNbNoGoodElements(Kit::noGood); }},
    {"cs_getNbNoGoods", [](Kit &k) { cs_getNbNoGoods(k.set); }},
    {"cs_getNextValue", [](Kit &k) { cs_getNextValue(k.h, 0); }},
    {"cs_getNoGoodElementAt", [](Kit &k) { cs_getNoGoodElementAt(&k.index, &k.decision, Kit::noGood, 0); }},
    {"cs_getPreviousValue", [](Kit &k) { cs_getPreviousValue(k.h, 9); }},
    {"cs_getValue", [](Kit &k) { cs_getValue(k.t); }},
    {"cs_getValueSelector", [](Kit &) { cs_getValueSelector(CS_SELECT_MEDIAN); }},
    {"cs_getVersion", [](Kit &) { cs_getVersion(); }},
    {"cs_initErr", [](Kit &) { cs_initErr(); }},
    {"cs_initValueSelector", [](Kit &k) { cs_initValueSelector(k.selector, 0, k.array, 3, &k.word); }},
    {"cs_isFree", [](Kit &k) { cs_isFree(k.x); }},
    {"cs_isIn", [](Kit &k) { cs_isIn(k.h, 4); }},
    {"cs_isInstantiated", [](Kit &k) { cs_isInstantiated(k.x); }},
    {"cs_printStats", [](Kit &) { cs_printStats(); }},
    {"cs_restoreAll", [](Kit &) { cs_restoreAll(); }},
    {"cs_restoreContext", [](Kit &) { cs_restoreContext(); }},
    {"cs_restoreContextUntil", [](Kit &) { cs_restoreContextUntil(1); }},
    {"cs_searchNotifySetAfterValueSelection", [](Kit &k) { cs_searchNotifySetAfterValueSelection(k.notify, nullptr); }},
    {"cs_searchNotifySetBeforeValueSelection",
     [](Kit &k) { cs_searchNotifySetBeforeValueSelection(k.notify, nullptr); }},
    {"cs_searchNotifySetEnter", [](Kit &k) { cs_searchNotifySetEnter(k.notify, nullptr); }},
    {"cs_searchNotifySetFound", [](Kit &k) { cs_searchNotifySetFound(k.notify, nullptr); }},
    {"cs_searchNotifySetLeave", [](Kit &k) { cs_searchNotifySetLeave(k.notify, nullptr); }},
    {"cs_searchNotifySetSearchEnd", [](Kit &k) { cs_searchNotifySetSearchEnd(k.notify, nullptr); }},
    {"cs_searchNotifySetSearchStart", [](Kit &k) { cs_searchNotifySetSearchStart(k.notify, nullptr); }},
    {"cs_selectNextValue", [](Kit &k) { cs_selectNextValue(&k.decision, k.selector, 0, k.array, 3, &k.word); }},
    {"cs_setErr", [](Kit &) { cs_setErr(CS_ERR_NONE); }},
    {"cs_setErrHandler", [](Kit &) { cs_setErrHandler(CS_ERR_OVERFLOW, nullptr, nullptr); }},
    {"cs_setMaxNbNoGoods", [](Kit &k) { cs_setMaxNbNoGoods(k.set, 1); }},
};

TEST(Allocations, AreNotMadeByTheOthersWhateverStackIsFull) {
  for (const Call &call : kNeverAllocating) {
    cs_init();
    {
      Kit kit;
      const FailingAllocator none(INT_MAX, Failing::kOnce);
      call.run(kit);
      EXPECT_EQ(FailingAllocator::asked(), 0) << call.name;
    }
    cs_end();
  }
}

std::set<std::string> exportedNames(const char *file) {
  const auto root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
  std::ifstream list(root / "cmake" / file);
  EXPECT_TRUE(list) << "the test runs inside the source tree";
  std::set<std::string> names;
  for (std::string name; std::getline(list, name);)
    if (!name.empty() && name[0] != '#') names.insert(name);
  return names;
}

// cs_init has tests of its own.
TEST(ExportList, IsCoveredByTheScenariosAndTheFunctionsThatNeverAllocate) {
  std::set<std::string> covered{"cs_init"};
  for (const Scenario &each : allScenarios()) covered.insert(each.function());
  for (const Call &call : kNeverAllocating) covered.insert(call.name);
  std::set<std::string> exported = exportedNames("exports.txt");
  exported.merge(catalogue::statingFunctions("koru_extras.h"));
  for (const std::string &name : exported) EXPECT_TRUE(covered.contains(name)) << name << " needs a scenario or a call";
  exported.merge(exportedNames("exports_extras.txt"));
  for (const std::string &name : covered)
    EXPECT_TRUE(exported.contains(name) || name.find("cs_") != 0) << name << " is not exported";
}

}  // namespace
}  // namespace koru::test
