// SPDX-License-Identifier: MIT
// Errors, variables, choice points, profilers and output.
#include <algorithm>
#include <cstdint>

#include "limits/table.h"
#include "support/kit/written_text.h"

namespace koru::test::limits {

namespace {

bool isInterval(CSint *v, int min, int max) { return v != nullptr && cs_getMin(v) == min && cs_getMax(v) == max; }

bool createInterval(Operands &, const Arguments &a) {
  CSint *v = cs_createCSint(a[0], a[1]);
  if (a[0] > a[1]) return v == nullptr && cs_getErr() == CS_ERR_NONE;
  return isInterval(v, a[0], a[1]) && cs_getNbElements(v) == wrap(std::int64_t{a[1]} - a[0] + 1);
}

bool createNamed(Operands &, const Arguments &a) {
  CSint *v = cs_createNamedCSint(a[0], a[1], a.pointer(0, "name"));
  if (a[0] > a[1]) return v == nullptr;
  return isInterval(v, a[0], a[1]) && (cs_getName(v) == nullptr) == a.anyNull();
}

bool createArray(Operands &, const Arguments &a) {
  CSint **array = cs_createCSintArray(a[0], a[1], a[2]);
  if (a[0] >= 1000000) return array == nullptr && refused();
  if (a[0] < 1) return array != nullptr;
  return a[1] > a[2] ? array == nullptr : array != nullptr && isInterval(array[a[0] - 1], a[1], a[2]);
}

bool createFromDomain(Operands &, const Arguments &a) {
  const int domain[] = {a[1], a[2], a[3]};
  CSint *v = cs_createCSintFromDomain(a.pointer(0, domain), a[0]);
  if (a[0] < 1 || a.anyNull()) return v == nullptr;
  const auto [min, max] = std::minmax_element(domain, domain + a[0]);
  if (std::int64_t{*max} - *min > 1000000) return v == nullptr && refused();
  return isInterval(v, *min, *max) && cs_isIn(v, domain[a[0] - 1]);
}

bool nextValue(Operands &o, const Arguments &a) {
  const int next = cs_getNextValue(a.pointer(0, o.x), a[0]);
  if (a.anyNull() || a[0] >= 5) return next == INT_MAX;
  const int ofWide = cs_getNextValue(o.w, a[0]);
  return next == (a[0] < -5 ? -5 : a[0] + 1) && ofWide == a[0] + 1;
}

bool previousValue(Operands &o, const Arguments &a) {
  const int previous = cs_getPreviousValue(a.pointer(0, o.x), a[0]);
  if (a.anyNull() || a[0] <= -5) return previous == INT_MIN;
  const int ofWide = cs_getPreviousValue(o.w, a[0]);
  return previous == (a[0] > 5 ? 5 : a[0] - 1) && ofWide == a[0] - 1;
}

bool isIn(Operands &o, const Arguments &a) {
  return cs_isIn(a.pointer(0, o.x), a[0]) == (!a.anyNull() && a[0] >= -5 && a[0] <= 5) && cs_isIn(o.w, a[0]);
}

template <auto query>
bool queryIs(Operands &o, const Arguments &a, int present) {
  return static_cast<int>(query(a.pointer(0, o.x))) == (a.anyNull() ? 0 : present);
}

bool setHandler(Operands &, const Arguments &a) {
  const auto handler = [](CSint *, void *) {};
  const CSerrHandler installed = cs_setErrHandler(a[0], a.pointer(0, +handler), nullptr);
  if (a[0] != CS_ERR_NOT_INSTANTIATED) return reinterpret_cast<std::intptr_t>(installed) == a[0];
  return a.anyNull() ? installed == printNotInstantiated : installed == +handler;
}

// Two contexts are open.
template <auto closeUntil>
bool closes(Operands &, const Arguments &a) {
  closeUntil(a[0]);
  return solver::contexts.count() == (a[0] == 1 ? 0 : 2);
}

int heard = 0;

template <auto registerCallback>
bool hearsOfRestore(Operands &o, const Arguments &a) {
  heard = a[0] == 0 ? 1 : 0;
  const CSbacktrackCallback hear = [](CSint *, int index) { heard = index; };
  registerCallback(a.pointer(0, o.x), a[0], a.pointer(1, hear));
  cs_restoreContext();
  return a.anyNull() || heard == a[0];
}

bool printVariables(Operands &o, const Arguments &a) {
  const std::string text = textOf([&](std::FILE *f) {
    cs_fprintf(a.pointer(0, f), a.pointer(1, "%A|%d|%D|%T|%*d"), a.pointer(2, o.array), a[0], a[1], a.pointer(3, o.x),
               a.pointer(4, o.w), 3, a[1]);
  });
  return a.anyNull() ||
         text.find("|" + std::to_string(a[1]) + "|{-5..5}|{-2147483648..2147483647}|") != std::string::npos;
}

bool printNothing(Operands &, const Arguments &a) {
  cs_printf(a.pointer(0, ""));
  return cs_getErr() == CS_ERR_NONE;
}

bool makeProfiler(Operands &, const Arguments &a) { return (cs_createProfiler(a[0]) != nullptr) == (a[0] == 0); }

// A profiler that is deleted stays allocated, so none is here.
bool deleteNoProfiler(Operands &, const Arguments &) {
  cs_deleteProfiler(nullptr);
  return cs_getErr() == CS_ERR_NONE;
}

template <auto use>
bool usesProfiler(Operands &, const Arguments &a) {
  use(a.pointer(0, cs_createProfiler(0)));
  return cs_getErr() == CS_ERR_NONE;
}

bool writeProfile(Operands &, const Arguments &a) {
  const std::string text =
      textOf([&](std::FILE *f) { cs_profilerWrite(a.pointer(0, cs_createProfiler(0)), a.pointer(1, f)); });
  return text.empty() == a.anyNull();
}

bool writeProfileFile(Operands &, const Arguments &a) {
  cs_profilerWriteFile(a.pointer(0, cs_createProfiler(0)), a.pointer(1, "/dev/null"));
  return cs_getErr() == CS_ERR_NONE;
}

bool setLocator(Operands &o, const Arguments &a) {
  const CSprofilerLocator nowhere = [](void *) -> const char * { return nullptr; };
  cs_setProfilerLocator(a.pointer(0, "format"), a.pointer(1, nowhere), nullptr);
  const bool posted = cs_Neq(o.x, o.y);
  cs_setProfilerLocator(nullptr, nullptr, nullptr);
  return posted;
}

bool domainOf(Operands &o, const Arguments &a) {
  int *domain = cs_getDomain(a.pointer(0, o.x));
  const bool complete = a.anyNull() ? domain == nullptr : domain != nullptr && domain[10] == 5;
  cs_freeDomain(domain);
  return complete && cs_getDomain(o.w) == nullptr && refused();
}

bool rename(Operands &o, const Arguments &a) {
  cs_setName(a.pointer(0, o.x), a.pointer(1, "name"));
  return (cs_getName(o.x) != nullptr) == !a.anyNull();
}

}  // namespace

std::vector<LimitsRow> variableRows() {
  return {
      {"cs_setErr", "v", 0,
       [](Operands &, const Arguments &a) { return cs_setErr(a[0]) == a[0] && cs_getErr() == a[0]; }},
      {"cs_setErrHandler", "v", 1, setHandler},
      {"cs_createCSint", "vv", 0, createInterval},
      {"CSINT", "v", 0, [](Operands &, const Arguments &a) { return isInterval(CSINT(a[0]), a[0], a[0]); }},
      {"cs_createNamedCSint", "vv", 1, createNamed},
      {"cs_createCSintArray", "vvv", 0, createArray},
      {"cs_createCSintFromDomain", "svvv", 1, createFromDomain},
      {"cs_setName", "", 2, rename},
      {"cs_getName", "", 1, [](Operands &o, const Arguments &a) { return cs_getName(a.pointer(0, o.x)) == nullptr; }},
      {"cs_isFree", "", 1, [](Operands &o, const Arguments &a) { return queryIs<cs_isFree>(o, a, 1); }},
      {"cs_isInstantiated", "", 1, [](Operands &o, const Arguments &a) { return queryIs<cs_isInstantiated>(o, a, 0); }},
      {"cs_getMin", "", 1, [](Operands &o, const Arguments &a) { return queryIs<cs_getMin>(o, a, -5); }},
      {"cs_getMax", "", 1, [](Operands &o, const Arguments &a) { return queryIs<cs_getMax>(o, a, 5); }},
      {"cs_getNbElements", "", 1, [](Operands &o, const Arguments &a) { return queryIs<cs_getNbElements>(o, a, 11); }},
      {"cs_getNbConstraints", "", 1,
       [](Operands &o, const Arguments &a) { return queryIs<cs_getNbConstraints>(o, a, 0); }},
      {"cs_getValue", "", 1, [](Operands &o, const Arguments &a) { return queryIs<cs_getValue>(o, a, -5); }},
      {"cs_getNextValue", "v", 1, nextValue},
      {"cs_getPreviousValue", "v", 1, previousValue},
      {"cs_isIn", "v", 1, isIn},
      {"cs_getDomain", "", 1, domainOf},
      {"cs_freeDomain", "", 1,
       [](Operands &o, const Arguments &a) {
         int *domain = a.anyNull() ? nullptr : cs_getDomain(o.x);
         cs_freeDomain(domain);
         return true;
       }},
      {"cs_forgetSaveContextUntil", "v", 0, closes<cs_forgetSaveContextUntil>},
      {"cs_acceptContextUntil", "v", 0, closes<cs_acceptContextUntil>},
      {"cs_restoreContextUntil", "v", 0, closes<cs_restoreContextUntil>},
      {"cs_backtrack", "v", 2, hearsOfRestore<cs_backtrack>},
      {"cs_backtrackExt", "v", 2, hearsOfRestore<cs_backtrackExt>},
      {"cs_createProfiler", "v", 0, makeProfiler},
      {"cs_enableProfiler", "", 1, usesProfiler<cs_enableProfiler>},
      {"cs_disableProfiler", "", 1, usesProfiler<cs_disableProfiler>},
      {"cs_deleteProfiler", "", 1, deleteNoProfiler},
      {"cs_profilerWrite", "", 2, writeProfile},
      {"cs_profilerWriteFile", "", 2, writeProfileFile},
      {"cs_setProfilerLocator", "", 2, setLocator},
      {"cs_printf", "", 1, printNothing},
      {"cs_fprintf", "sv", 5, printVariables},
      {"cs_fprintStats", "", 1,
       [](Operands &, const Arguments &a) {
         return textOf([&](std::FILE *f) { cs_fprintStats(a.pointer(0, f)); }).empty() == a.anyNull();
       }},
  };
}

}  // namespace koru::test::limits
