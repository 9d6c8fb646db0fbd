// SPDX-License-Identifier: MIT
// Every exported function that can allocate, with every one of its allocations failing: one report, the failure value,
// the error code, and a solver that goes on working. Leaks are for the leak checker to find.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/solver.h"
#include "profiler/profiler.h"
#include "support/model_failure.h"
#include "support/written_text.h"

namespace koru::test {
namespace {

// What a function finds: x, y, z over 0..9 (y with a hole), t bound to 3, an array of x, y, z.
struct Bench {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  CSint *z = cs_createCSint(0, 9);
  CSint *t = CSINT(3);
  CSint *array[3] = {x, y, z};
  int coefficients[3] = {2, -3, 1};
  CSprofiler *profiler = cs_createProfiler(0);
  Bench() {
    cs_NEQ(y, 4);
    cs_setName(y, "short");
  }
};

bool nothing(Bench &) { return true; }
bool noBitArray(Bench &b) { return cs_getNbElements(b.x) == 10 && cs_isIn(b.x, 5); }

bool addNoGood(Bench &b) {
  CSnoGoodSet *set = cs_createNoGoodSet(b.array, 3, nullptr, 0, nullptr, nullptr);
  const int indexes[] = {0, 1};
  const CSvalueSelection decisions[] = {{CS_METHOD_EQ, 1}, {CS_METHOD_EQ, 2}};
  cs_addNoGood(set, indexes, decisions, 2);
  return cs_getNbNoGoods(set) == 1;
}

// z = 0 is refused, the limit reached, and the no-good that says so recorded.
bool learn(Bench &b) {
  CSnoGoodSet *set = cs_createNoGoodSet(b.array, 3, nullptr, 0, nullptr, nullptr);
  if (set == nullptr || !cs_Eq(b.x, b.z) || !cs_Neq(b.x, b.z)) return false;
  CSvalueSelector *const ascending = cs_getValueSelector(CS_SELECT_ASCENDING);
  CSvalueSelector *selectors[] = {ascending, ascending, ascending};
  const auto chooseZ = [](CSint **, int) { return 2; };
  const auto one = [](void *) { return 1; };
  cs_searchValueSelectorRestartNG(b.array, selectors, 3, chooseZ, one, nullptr, 1, set, nullptr);
  return cs_getNbNoGoods(set) == 1;
}
constexpr int kApart[] = {0, 5, 9};

// `run` answers whether the call succeeded; `afterFailure` whether all is as a failed call must leave it.
struct Operation {
  const char *name;
  bool (*run)(Bench &);
  bool (*afterFailure)(Bench &) = nothing;
};

bool named(CSint *v) { return v != nullptr && cs_getName(v) != nullptr && std::string(cs_getName(v)) == "a name"; }

bool setName(CSint *v) {
  cs_setName(v, "a name");
  return named(v);
}

bool unnamed(Bench &b) { return cs_getName(b.x) == nullptr && cs_getName(b.t) == nullptr; }

bool getDomain(Bench &b) {
  int *domain = cs_getDomain(b.y);
  const bool result = domain != nullptr;
  cs_freeDomain(domain);
  return result;
}

bool fromDomain(Bench &) {
  const int domain[] = {3, 9, 3, 5};
  return cs_createCSintFromDomain(domain, 4) != nullptr;
}

bool print(Bench &b) {
  std::FILE *file = temporaryFile();
  cs_fprintf(file, "%D %-5d|%s %T\n", b.y, 7, "text", b.x);
  const bool complete = std::ftell(file) > 25;
  std::fclose(file);
  return complete;
}

bool createValueSelector(Bench &) {
  CSvalueSelector *selector = cs_createValueSelector(nullptr, nullptr, nullptr);
  cs_freeValueSelector(selector);
  return selector != nullptr;
}

bool createSearchNotify(Bench &) {
  CSsearchNotify *notify = cs_createSearchNotify(nullptr);
  cs_freeSearchNotify(notify);
  return notify != nullptr;
}

// Searches over x alone: its level needs a bit array.
int firstIfFree(CSint **array, int) { return cs_isFree(array[0]) ? 0 : -1; }

bool searchCriteria(Bench &b) {
  return cs_searchCriteria(b.array, 1, firstIfFree, [](int, int value) { return value; });
}

bool searchCriteriaFail(Bench &b) {
  return cs_searchCriteriaFail(
      b.array, 1, firstIfFree, [](int, int value) { return value; }, 9);
}

int rowIfFree(CSint ***rows, int, int) { return firstIfFree(rows[0], 1); }
int columnIfFree(int, CSint **row, int) { return firstIfFree(row, 1); }

bool searchMatrix(Bench &b) {
  CSint **rows[] = {b.array};
  return cs_searchMatrix(rows, 1, 1, rowIfFree, columnIfFree, [](int, int, int value) { return value; });
}

bool searchMatrixFail(Bench &b) {
  CSint **rows[] = {b.array};
  return cs_searchMatrixFail(
      rows, 1, 1, rowIfFree, columnIfFree, [](int, int, int value) { return value; }, 9);
}

bool allKnown(CSint **, int, void *) { return true; }
bool known(int, int, CSint **, int, void *) { return true; }
bool moved(CSint *, int, int, CSint **, int, void *) { return true; }
void conflicted(CSint *, int, CSconflictInfo *, CSint **, int, void *) {}

// The last variable is attached last.
bool watched(Bench &b, void (*post)(CSint **, int, CSeventBoundCallback, void *)) {
  post(b.array, 3, moved, nullptr);
  return b.z->constraints != nullptr;
}

bool heardConflicts(Bench &b) {
  cs_eventConflict(b.array, 3, conflicted, nullptr);
  return b.z->constraints != nullptr;
}

bool countsRuns(const CSprofiler *profiler) { return profiler != nullptr && profiler->counts != nullptr; }

const char *noPlace(void *) { return "asked"; }

bool setLocator(Bench &b) {
  cs_setProfilerLocator(nullptr, nullptr, nullptr);
  cs_setProfilerLocator("format", noPlace, nullptr);
  const bool installed = solver.ports.locator.text == noPlace;
  cs_setProfilerLocator(nullptr, nullptr, nullptr);
  return installed && b.x != nullptr;
}

bool writeReport(Bench &b) {
  std::FILE *file = temporaryFile();
  cs_profilerWrite(b.profiler, file);
  const bool complete = std::ftell(file) == 97;  // the head; with "error" it would be more
  std::fclose(file);
  return complete;
}

// State 1 is out of reach and symbol 1 leads nowhere, so layers and variables need bit arrays.
bool regular(Bench &b) {
  const int table[] = {0, -1, 2, 2, 2, 2, 0, -1, 2};
  const int finals[] = {0, 2};
  return cs_Regular(b.array, 3, table, 3, 3, 0, finals, 2) == 1;
}

const Operation kOperations[] = {
    {"cs_createNamedCSint", [](Bench &) { return named(cs_createNamedCSint(0, 9, "a name")); }},
    {"cs_createCSintArray", [](Bench &) { return cs_createCSintArray(5, 0, 9) != nullptr; }},
    {"cs_createCSintFromDomain", fromDomain},
    {"cs_setName", [](Bench &b) { return setName(b.x); }, unnamed},
    {"cs_setName", [](Bench &b) { return setName(b.y); }, [](Bench &b) { return cs_getName(b.y) == nullptr; }},
    {"cs_getDomain", getDomain},
    {"cs_NEQ", [](Bench &b) { return cs_NEQ(b.x, 5); }, noBitArray},
    {"cs_Eq", [](Bench &b) { return cs_Eq(b.x, b.y); }},
    {"cs_Neq", [](Bench &b) { return cs_Neq(b.x, b.t); }},
    {"cs_Le", [](Bench &b) { return cs_Le(b.x, b.y); }},
    {"cs_Lt", [](Bench &b) { return cs_Lt(b.x, b.y); }},
    {"cs_Ge", [](Bench &b) { return cs_Ge(b.x, b.y); }},
    {"cs_Gt", [](Bench &b) { return cs_Gt(b.x, b.y); }},
    {"cs_Add", [](Bench &b) { return cs_Add(b.t, b.y) != nullptr; }},
    {"cs_Sub", [](Bench &b) { return cs_Sub(b.t, b.y) != nullptr; }},
    {"cs_VAdd", [](Bench &b) { return cs_VAdd(3, b.x, b.y, b.z) != nullptr; }},
    {"cs_VAdd", [](Bench &b) { return cs_VAdd(1, b.x) == b.x; }},
    {"cs_VSub", [](Bench &b) { return cs_VSub(3, b.x, b.y, b.z) != nullptr; }},
    {"cs_VSub", [](Bench &b) { return cs_VSub(2, b.t, b.y) != nullptr; }},
    {"cs_Mul", [](Bench &b) { return cs_Mul(b.x, b.y) != nullptr; }},
    {"cs_VMul", [](Bench &b) { return cs_VMul(3, b.x, b.y, b.z) != nullptr; }},
    {"cs_Div", [](Bench &b) { return cs_Div(b.x, b.t) != nullptr; }},
    {"cs_VDiv", [](Bench &b) { return cs_VDiv(3, b.x, b.t, b.t) != nullptr; }},
    {"cs_Abs", [](Bench &b) { return cs_Abs(b.y) != nullptr; }},
    {"cs_Sigma", [](Bench &b) { return cs_Sigma(b.array, 3) != nullptr; }},
    {"cs_ScalProd", [](Bench &b) { return cs_ScalProd(b.array, b.coefficients, 3) != nullptr; }},
    {"cs_VScalProd", [](Bench &b) { return cs_VScalProd(2, b.x, b.y, 2, -3) != nullptr; }},
    {"cs_ReifEQ", [](Bench &b) { return cs_ReifEQ(b.x, 3) != nullptr; }},
    {"cs_ReifNEQ", [](Bench &b) { return cs_ReifNEQ(b.x, 3) != nullptr; }},
    {"cs_ReifLE", [](Bench &b) { return cs_ReifLE(b.x, 3) != nullptr; }},
    {"cs_ReifLT", [](Bench &b) { return cs_ReifLT(b.x, 3) != nullptr; }},
    {"cs_ReifGE", [](Bench &b) { return cs_ReifGE(b.x, 3) != nullptr; }},
    {"cs_ReifGT", [](Bench &b) { return cs_ReifGT(b.x, 3) != nullptr; }},
    {"cs_ReifEq", [](Bench &b) { return cs_ReifEq(b.x, b.y) != nullptr; }},
    {"cs_ReifNeq", [](Bench &b) { return cs_ReifNeq(b.x, b.y) != nullptr; }},
    {"cs_ReifLe", [](Bench &b) { return cs_ReifLe(b.x, b.y) != nullptr; }},
    {"cs_ReifLt", [](Bench &b) { return cs_ReifLt(b.x, b.y) != nullptr; }},
    {"cs_ReifGe", [](Bench &b) { return cs_ReifGe(b.x, b.y) != nullptr; }},
    {"cs_ReifGt", [](Bench &b) { return cs_ReifGt(b.x, b.y) != nullptr; }},
    {"cs_IfEq", [](Bench &b) { return cs_IfEq(b.x, b.y, 1, 2); }},
    {"cs_IfNeq", [](Bench &b) { return cs_IfNeq(b.x, b.y, 1, 2); }},
    {"cs_AllNeq", [](Bench &b) { return cs_AllNeq(b.array, 3) == 1; }},
    {"cs_Regular", regular},
    {"cs_VarElement", [](Bench &b) { return cs_VarElement(b.x, b.array, 3) != nullptr; }},
    {"cs_VarElementRange", [](Bench &b) { return cs_VarElementRange(b.x, b.array, 3) != nullptr; }},
    {"cs_eventAllKnown", [](Bench &b) { return cs_eventAllKnown(b.array, 3, allKnown, nullptr); }},
    {"cs_eventKnown", [](Bench &b) { return cs_eventKnown(b.array, 3, known, nullptr); }},
    {"cs_eventNewMin", [](Bench &b) { return watched(b, cs_eventNewMin); }},
    {"cs_eventNewMax", [](Bench &b) { return watched(b, cs_eventNewMax); }},
    {"cs_eventNeq", [](Bench &b) { return watched(b, cs_eventNeq); }},
    {"cs_eventConflict", [](Bench &b) { return heardConflicts(b); }},
    {"cs_createProfiler", [](Bench &) { return countsRuns(cs_createProfiler(0)); }},
    {"cs_setProfilerLocator", [](Bench &b) { return setLocator(b); }},
    {"cs_profilerWrite", [](Bench &b) { return writeReport(b); }},
    {"cs_createNoGoodSet",
     [](Bench &b) { return cs_createNoGoodSet(b.array, 3, nullptr, 0, nullptr, nullptr) != nullptr; }},
    {"cs_addNoGood", addNoGood},
    {"cs_searchValueSelectorRestartNG", learn},
    {"cs_Cumulative", [](Bench &b) { return cs_Cumulative(&b.array[0], &b.array[1], &b.array[2], 1, b.t); }},
    {"cs_Disjunctive", [](Bench &b) { return cs_Disjunctive(b.array, &b.array[1], 2); }},
    {"cs_Element", [](Bench &b) { return cs_Element(b.y, b.coefficients, 3) != nullptr; }},
    {"cs_Index", [](Bench &b) { return cs_Index(b.array, 3, 5) != nullptr; }},
    {"cs_InArray", [](Bench &b) { return cs_InArray(b.x, kApart, 3) == 1; }},
    {"cs_NotInArray", [](Bench &b) { return cs_NotInArray(b.x, kApart, 3) == 1; }},
    {"cs_NotInInterval", [](Bench &b) { return cs_NotInInterval(b.x, 5, 6) == 1; }},
    {"cs_Min", [](Bench &b) { return cs_Min(b.array, 3) != nullptr; }},
    {"cs_VMin", [](Bench &b) { return cs_VMin(3, b.x, b.y, b.z) != nullptr; }},
    {"cs_Max", [](Bench &b) { return cs_Max(b.array, 3) != nullptr; }},
    {"cs_VMax", [](Bench &b) { return cs_VMax(3, b.x, b.y, b.z) != nullptr; }},
    // It answers 0 always.
    {"cs_Occur", [](Bench &b) { return cs_Occur(b.t, 4, b.array, 3) == 0 && cs_getErr() == CS_ERR_NONE; }},
    {"cs_OccurDomain", [](Bench &b) { return cs_OccurDomain(4, b.array, 3) != nullptr; }},
    {"cs_OccurConstraints", [](Bench &b) { return cs_OccurConstraints(b.z, 4, b.array, 3); }},
    {"cs_Vsearch", [](Bench &b) { return cs_Vsearch(3, b.x, b.y, b.z, cs_findFreeVar); }},
    {"cs_searchCriteria", searchCriteria},
    {"cs_searchCriteriaFail", searchCriteriaFail},
    {"cs_searchMatrix", searchMatrix},
    {"cs_searchMatrixFail", searchMatrixFail},
    {"cs_createValueSelector", createValueSelector},
    {"cs_createSearchNotify", createSearchNotify},
    {"cs_fprintf", print},
};

// Posting calls leave no attachment behind that a restore would not remove.
void expectRestorable(Bench &b, int label) {
  cs_restoreContextUntil(label);
  EXPECT_EQ(values(b.x), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(values(b.y), (std::vector<int>{0, 1, 2, 3, 5, 6, 7, 8, 9}));
  EXPECT_EQ(cs_getNbElements(b.z), 10);
}

class EveryExport : public SolverTest, public ::testing::WithParamInterface<Failing> {
 protected:
  // True when the k-th allocation existed.
  bool failAllocation(const Operation &operation, int k) {
    SCOPED_TRACE(std::string(operation.name) + ", allocation " + std::to_string(k));
    Bench bench;
    const int label = cs_saveContext();
    cs_initErr();
    memoryReports = 0;
    bool result = false;
    {
      const FailingAllocator failing(k, GetParam());
      result = operation.run(bench);
    }
    const bool failed = FailingAllocator::failures() > 0;
    EXPECT_EQ(result, !failed);
    EXPECT_EQ(memoryReports, failed ? 1 : 0);
    EXPECT_EQ(cs_getErr(), failed ? CS_ERR_MEMORY : CS_ERR_NONE);
    EXPECT_TRUE(!failed || operation.afterFailure(bench));
    expectRestorable(bench, label);
    expectSolverUsable();
    return failed;
  }
};

TEST_P(EveryExport, ReportsEachFailedAllocationOnceAndLeavesTheSolverUsable) {
  for (const Operation &operation : kOperations) {
    int k = 0;
    while (failAllocation(operation, k) && !HasFailure()) ++k;
    EXPECT_GT(k, 0) << operation.name << " allocates";
  }
}

INSTANTIATE_TEST_SUITE_P(Memory, EveryExport, ::testing::Values(Failing::kOnce, Failing::kForEver),
                         [](const auto &each) { return each.param == Failing::kOnce ? "Once" : "ForEver"; });

// Functions whose only allocations are new blocks of a stack, or those made by the calls of others; cs_init has a
// test of its own.
const char *const kOnlyBlocks[] = {
    "CSINT",
    "cs_EQ",
    "cs_GE",
    "cs_GT",
    "cs_InInterval",
    "cs_LE",
    "cs_LT",
    "cs_backtrack",
    "cs_backtrackExt",
    "cs_createCSint",
    "cs_findAll",
    "cs_init",
    "cs_minimize",
    "cs_printf",
    "cs_profilerWriteFile",
    "cs_restoreAndSaveContext",
    "cs_saveContext",
    "cs_search",
    "cs_searchFail",
    "cs_searchValueSelectorFail",
    "cs_selectValue",
};

const char *const kNeverAllocating[] = {
    "cs_acceptAll",
    "cs_acceptContext",
    "cs_acceptContextUntil",
    "cs_cancelSearch",
    "cs_deleteProfiler",
    "cs_disableProfiler",
    "cs_enableProfiler",
    "cs_end",
    "cs_endValueSelector",
    "cs_filterNoGood",
    "cs_findFreeVar",
    "cs_findFreeVarNbConstraints",
    "cs_findFreeVarNbElements",
    "cs_findFreeVarNbElementsMin",
    "cs_forgetSaveContext",
    "cs_forgetSaveContextUntil",
    "cs_fprintStats",
    "cs_freeDomain",
    "cs_freeSearchNotify",
    "cs_freeValueSelector",
    "cs_getErr",
    "cs_getMax",
    "cs_getMin",
    "cs_getName",
    "cs_getNbChoicePoints",
    "cs_getNbConstraints",
    "cs_getNbElements",
    "cs_getNbFails",
    "cs_getNbNoGoodElements",
    "cs_getNbNoGoods",
    "cs_getNextValue",
    "cs_getNoGoodElementAt",
    "cs_getPreviousValue",
    "cs_getValue",
    "cs_getValueSelector",
    "cs_getVersion",
    "cs_initErr",
    "cs_initValueSelector",
    "cs_isFree",
    "cs_isIn",
    "cs_isInstantiated",
    "cs_printStats",
    "cs_restoreAll",
    "cs_restoreContext",
    "cs_restoreContextUntil",
    "cs_searchNotifySetAfterValueSelection",
    "cs_searchNotifySetBeforeValueSelection",
    "cs_searchNotifySetEnter",
    "cs_searchNotifySetFound",
    "cs_searchNotifySetLeave",
    "cs_searchNotifySetSearchEnd",
    "cs_searchNotifySetSearchStart",
    "cs_selectNextValue",
    "cs_setErr",
    "cs_setErrHandler",
    "cs_setMaxNbNoGoods",
};

bool known(const std::string &name) {
  const auto is = [&](const char *other) { return name == other; };
  return std::any_of(std::begin(kOperations), std::end(kOperations), [&](const Operation &o) { return is(o.name); }) ||
         std::any_of(std::begin(kOnlyBlocks), std::end(kOnlyBlocks), is) ||
         std::any_of(std::begin(kNeverAllocating), std::end(kNeverAllocating), is);
}

TEST(ExportList, NamesNoFunctionWhoseAllocationsAreNotAccountedForHere) {
  const auto root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
  std::ifstream list(root / "cmake" / "exports.txt");
  ASSERT_TRUE(list) << "the test runs inside the source tree";
  int names = 0;
  for (std::string name; std::getline(list, name);) {
    if (name.empty() || name[0] == '#') continue;
    ++names;
    EXPECT_TRUE(known(name)) << name << ": add it to a table above";
  }
  EXPECT_GT(names, 0);
}

}  // namespace
}  // namespace koru::test
