// SPDX-License-Identifier: MIT
// Constraints that a host writes itself, in the simplest form: what they are told they refuse.
#include <algorithm>

#include "catalogue/row.h"
#include "koru_extras.h"

namespace koru::catalogue {
namespace {

bool acceptNone(CSint **, int, void *) { return false; }
bool acceptNoValue(int, int, CSint **, int, void *) { return false; }
bool acceptNoChange(CSint *, int, int, CSint **, int, void *) { return false; }

template <auto Register, auto Callback>
struct Hears {
  static constexpr int kLine = __LINE__ + 2;
  static Answer call(const Actual *a) {
    Register(a[0].variables, static_cast<int>(a[1].number), Callback, nullptr);
    return answer(1);
  }
};

template <auto Register, auto Callback>
Row hears(const char *name, int value, const char *site) {
  using Call = Hears<Register, Callback>;
  Row row{name,
          "an",
          {&Call::call, Call::kLine, false, __FILE__},
          [](const Terms &) { return false; },
          Consistency::kNone,
          {{value, value, value}}};
  row.site = site;
  row.keepsArrays = true;
  return row;
}

// Hears of every change, and refuses what is complete.
bool refuseComplete(CSint **array, int size, void *) { return !std::all_of(array, array + size, cs_isInstantiated); }

struct RunsUntilComplete {
  static constexpr int kLine = __LINE__ + 2;
  static Answer call(const Actual *a) {
    const bool posted = cs_eventRun(a[0].variables, static_cast<int>(a[1].number), refuseComplete, nullptr);
    return answer(posted);
  }
};

// x = 1 and y = 2 are not both to be.
struct ForbidsOneTwo {
  static constexpr int kLine = __LINE__ + 3;
  static Answer call(const Actual *a) {
    const auto n = static_cast<int>(a[1].number);
    CSnoGoodSet *set = cs_createNoGoodSet(a[0].variables, n, nullptr, 0, nullptr, nullptr);
    const int indexes[] = {0, 1};
    const CSvalueSelection decisions[] = {{CS_METHOD_EQ, 1}, {CS_METHOD_EQ, 2}};
    cs_addNoGood(set, indexes, decisions, 2);
    return answer(cs_getNbNoGoods(set));
  }
};

const Row kRows[] = {
    hears<cs_eventAllKnown, acceptNone>("cs_eventAllKnown", 1, "cs_eventAllKnown"),
    hears<cs_eventKnown, acceptNoValue>("cs_eventKnown", 1, "cs_eventKnown"),
    hears<cs_eventNewMin, acceptNoChange>("cs_eventNewMin", 9, "cs_eventNewMin"),
    hears<cs_eventNewMax, acceptNoChange>("cs_eventNewMax", 0, "cs_eventNewMax"),
    hears<cs_eventNeq, acceptNoChange>("cs_eventNeq", -5, "cs_eventNewMax"),
    {.name = "cs_eventRun",
     .kinds = "an",
     .door = {RunsUntilComplete::call, RunsUntilComplete::kLine, false, __FILE__},
     .meaning = [](const Terms &) { return false; },
     .consistency = Consistency::kNone,
     .example = {{1, 2, 0}}},
    {.name = "cs_createNoGoodSet",
     .kinds = "an",
     .door = {ForbidsOneTwo::call, ForbidsOneTwo::kLine, false, __FILE__},
     .meaning = [](const Terms &t) { return t.x[0] != 1 || t.x[1] != 2; },
     .consistency = Consistency::kNone,
     .example = {{1, 2, 0}},
     .keepsArrays = true},
};

}  // namespace

std::span<const Row> hostRows() { return kRows; }

}  // namespace koru::catalogue
