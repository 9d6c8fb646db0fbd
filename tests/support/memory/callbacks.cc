// SPDX-License-Identifier: MIT
// Constraints of the host's own, profilers, selectors, hooks and sets of no-goods.
#include <algorithm>
#include <cstring>
#include <string>

#include "core/solver.h"
#include "koru_extras.h"
#include "profiler/profiler.h"
#include "support/kit/written_text.h"
#include "support/memory/scenario.h"

namespace koru::test {

namespace {

bool allKnown(CSint **, int, void *) { return true; }
bool known(int, int, CSint **, int, void *) { return true; }
bool moved(CSint *, int, int, CSint **, int, void *) { return true; }
void conflicted(CSint *, int, CSconflictInfo *, CSint **, int, void *) {}

// Nothing is answered: what shows is that each variable of the array is attached.
template <class Post>
bool attachesAll(int n, Post post) {
  const int before = solver::trail.count();
  post();
  return solver::trail.count() == before + n;
}

void addRegistrations(Scenarios &scenarios) {
  using Bound = void (*)(CSint **, int, CSeventBoundCallback, void *);
  static constexpr std::pair<const char *, Bound> kBounds[] = {
      {"cs_eventNewMin", cs_eventNewMin}, {"cs_eventNewMax", cs_eventNewMax}, {"cs_eventNeq", cs_eventNeq}};
  for (const char *letters : {"x", "xyz", "ttt", "thx", "tcx", "xyx"}) {
    const int n = static_cast<int>(std::strlen(letters));
    const auto name = [letters](const char *function) { return std::string(function) + "/" + letters; };
    scenarios.add(name("cs_eventAllKnown"),
                  [letters, n](Stage &s) { return cs_eventAllKnown(s.array(letters), n, allKnown, nullptr); });
    scenarios.add(name("cs_eventRun"),
                  [letters, n](Stage &s) { return cs_eventRun(s.array(letters), n, allKnown, nullptr); });
    scenarios.add(name("cs_eventKnown"),
                  [letters, n](Stage &s) { return cs_eventKnown(s.array(letters), n, known, nullptr); });
    for (const auto &[function, post] : kBounds) {
      scenarios.add(name(function), [letters, n, post = post](Stage &s) {
        return attachesAll(n, [&] { post(s.array(letters), n, moved, nullptr); });
      });
    }
    scenarios.add(name("cs_eventConflict"), [letters, n](Stage &s) {
      return attachesAll(n, [&] { cs_eventConflict(s.array(letters), n, conflicted, nullptr); });
    });
  }
}

// A callback that creates, posts and searches: x known makes y an even number above it.
bool deriveNext(int value, int index, CSint **array, int size, void *) {
  if (index > 0) return true;
  CSint *half = cs_createCSint(0, 4);
  return half != nullptr && cs_Eq(cs_Add(half, half), array[1]) && cs_GT(array[1], value) && size == 2;
}

// A run that creates and posts: y is even.
bool makeEven(CSint **array, int size, void *) {
  CSint *half = cs_createCSint(0, 4);
  return half != nullptr && cs_Eq(cs_Add(half, half), array[1]) && size == 2;
}

void addPostingCallbacks(Scenarios &scenarios) {
  scenarios.add("callback/run-posts", [](Stage &s) {
    return cs_eventRun(s.array("xy"), 2, makeEven, nullptr) && cs_getMax(s.y) == 8 && cs_GE(s.y, 3) &&
           cs_getMin(s.y) == 4;
  });
  scenarios.add("callback/run-waits-for-the-end", [](Stage &s) {
    return cs_beginPosting() && cs_eventRun(s.array("xy"), 2, makeEven, nullptr) && cs_GE(s.y, 3) &&
           cs_getMin(s.y) == 3 && cs_endPosting() && cs_getMin(s.y) == 4;
  });
  scenarios.add("callback/posts", [](Stage &s) {
    return cs_eventKnown(s.array("xy"), 2, deriveNext, nullptr) && cs_EQ(s.x, 3) && cs_getMin(s.y) == 4;
  });
  scenarios.add("callback/posts-at-registration",
                [](Stage &s) { return cs_eventKnown(s.array("ty"), 2, deriveNext, nullptr) && cs_getMin(s.y) == 4; });
  scenarios.add("callback/conflict", [](Stage &s) {
    return attachesAll(2, [&] { cs_eventConflict(s.array("cd"), 2, conflicted, nullptr); }) && !cs_Eq(s.c, s.d) &&
           cs_getErr() == CS_ERR_NONE;
  });
  scenarios.addLenient("callback/opens-a-context", [](Stage &s) {
    const auto probe = [](CSint *v, int, int, CSint **array, int, void *) {
      const int open = solver::contexts.count();
      if (cs_saveContext() == open) return false;
      const bool possible = cs_EQ(array[1], cs_getMin(v));
      cs_restoreContext();
      return possible || cs_NEQ(array[1], cs_getMin(v));
    };
    cs_eventNewMin(s.array("xy"), 2, probe, nullptr);
    return cs_Neq(s.x, s.y) && cs_GE(s.x, 4) && cs_GE(s.x, 6);
  });
}

// A search inside a propagation, its choices taken back: x known asks whether y < z can be labelled.
bool searchBelow(int, int index, CSint **array, int size, void *) {
  if (index > 0) return true;
  const int open = solver::contexts.count();
  if (cs_saveContext() == open) return false;
  const bool found = cs_search(array + 1, size - 1, cs_findFreeVarNbConstraints);
  cs_restoreContextUntil(open + 1);
  return found;
}

bool enumerateBelow(int value, int index, CSint **array, int size, void *) {
  return index > 0 || (cs_LE(array[1], value) && cs_findAll(array + 1, size - 1, cs_findFreeVar, nullptr));
}

void addSearchingCallbacks(Scenarios &scenarios) {
  using Named = std::pair<const char *, CSeventKnownCallback>;
  for (const auto &[name, callback] :
       {Named{"callback/searches", searchBelow}, Named{"callback/enumerates", enumerateBelow}}) {
    scenarios.addLenient(name, [callback = callback](Stage &s) {
      return cs_LE(s.z, 3) && cs_Lt(s.y, s.z) && cs_NEQ(s.y, 1) &&
             cs_eventKnown(s.array("xyz"), 3, callback, nullptr) && cs_EQ(s.x, 3);
    });
  }
}

const char *somewhere(void *) { return "main\thost.c\t7"; }
const char *nowhere(void *) { return nullptr; }

std::string rowsOf(CSprofiler *profiler) {
  const std::string report = textOf([profiler](std::FILE *f) { cs_profilerWrite(profiler, f); });
  std::string rows = report.substr(report.find("__DATA__"));
  std::sort(rows.begin(), rows.end());
  return rows;
}

// Everything is counted, or reported as missing.
bool profile(Stage &s, CSprofilerLocator locator) {
  cs_setProfilerLocator("three fields", locator, nullptr);
  CSprofiler *profiler = cs_createProfiler(0);
  cs_enableProfiler(profiler);
  const auto tellEqual = [](int value, int index, CSint **array, int, void *) {
    return cs_EQ(array[1 - index], value);
  };
  const bool posted = cs_eventKnown(s.array("xy"), 2, tellEqual, nullptr) && cs_Lt(s.x, s.z) && cs_Neq(s.y, s.d);
  const bool bound = posted && cs_EQ(s.x, 3);
  cs_disableProfiler(profiler);
  if (profiler != nullptr) s.seen = rowsOf(profiler);
  cs_setProfilerLocator(nullptr, nullptr, nullptr);
  return bound && profiler != nullptr && profiler->counts != nullptr;
}

void addProfilers(Scenarios &scenarios) {
  scenarios.add("cs_createProfiler/counting", [](Stage &) {
    const CSprofiler *profiler = cs_createProfiler(0);
    return profiler != nullptr && profiler->counts != nullptr;
  });
  scenarios.add("cs_setProfilerLocator/format", [](Stage &) {
    cs_setProfilerLocator(nullptr, nullptr, nullptr);
    cs_setProfilerLocator("three fields", somewhere, nullptr);
    const bool installed = solver::ports.locator.text == somewhere;
    cs_setProfilerLocator(nullptr, nullptr, nullptr);
    return installed;
  });
  scenarios.addLenient("profiler/places", [](Stage &s) { return profile(s, somewhere); });
  scenarios.addLenient("profiler/no-places", [](Stage &s) { return profile(s, nowhere); });
  scenarios.addLenient("profiler/built-in", [](Stage &s) { return profile(s, nullptr); });
  scenarios.addLenient("cs_profilerWrite/rows", [](Stage &s) {
    CSprofiler *profiler = cs_createProfiler(0);
    cs_enableProfiler(profiler);
    const bool bound = cs_EQ(s.c, 4);
    cs_disableProfiler(profiler);
    if (profiler == nullptr) return false;
    s.seen = rowsOf(profiler);
    return bound && profiler->counts != nullptr;
  });
  scenarios.addLenient("cs_profilerWriteFile/rows", [](Stage &) {
    CSprofiler *profiler = cs_createProfiler(0);
    cs_profilerWriteFile(profiler, "/dev/null");
    return profiler != nullptr && cs_getErr() == CS_ERR_NONE;
  });
}

// A no-good of the first two variables of the set; `filter` may be asked.
bool addNoGood(Stage &s, CSnoGoodFilter filter, int most) {
  CSnoGoodSet *set = cs_createNoGoodSet(s.array("xyz"), 3, filter, most, nullptr, nullptr);
  const int indexes[] = {0, 1};
  for (int value = 1; value <= 2; ++value) {
    const CSvalueSelection decisions[] = {{CS_METHOD_EQ, value}, {CS_METHOD_GE, 2}};
    cs_addNoGood(set, indexes, decisions, 2);
    if (cs_getErr() != CS_ERR_NONE) return false;
  }
  s.seen = std::to_string(cs_getNbNoGoods(set));
  return cs_EQ(s.x, 2) && cs_getMax(s.y) == 1;
}

void addNoGoods(Scenarios &scenarios) {
  for (const char *letters : {"x", "xyz", "thx", "cxy", "xyx"}) {
    const int n = static_cast<int>(std::strlen(letters));
    scenarios.add(std::string("cs_createNoGoodSet/") + letters, [letters, n](Stage &s) {
      return cs_createNoGoodSet(s.array(letters), n, nullptr, 0, nullptr, nullptr) != nullptr;
    });
  }
  scenarios.add("cs_addNoGood/two", [](Stage &s) { return addNoGood(s, nullptr, 0); });
  scenarios.add("cs_addNoGood/oldest-goes", [](Stage &s) { return addNoGood(s, nullptr, 1); });
  scenarios.add("cs_addNoGood/filtered", [](Stage &s) {
    return addNoGood(
        s, [](CSnoGoodSet *, CSnoGood *, CSint **, int, void *) { return true; }, 0);
  });
}

void addRecords(Scenarios &scenarios) {
  scenarios.add("cs_createValueSelector/freed", [](Stage &) {
    CSvalueSelector *selector = cs_createValueSelector(nullptr, nullptr, nullptr);
    cs_freeValueSelector(selector);
    return selector != nullptr;
  });
  scenarios.add("cs_createSearchNotify/freed", [](Stage &) {
    CSsearchNotify *notify = cs_createSearchNotify(nullptr);
    cs_freeSearchNotify(notify);
    return notify != nullptr;
  });
  for (const char letter : {'x', 'h', 'c'}) {
    for (int method = CS_METHOD_EQ; method <= CS_METHOD_GT; ++method) {
      scenarios.add(std::string("cs_selectValue/") + letter + std::to_string(method), [letter, method](Stage &s) {
        const CSvalueSelection decision{method, 5};
        return cs_selectValue(s.at(letter), &decision);
      });
    }
  }
}

}  // namespace

void addCallbacks(Scenarios &scenarios) {
  addRegistrations(scenarios);
  addPostingCallbacks(scenarios);
  addSearchingCallbacks(scenarios);
  addProfilers(scenarios);
  addNoGoods(scenarios);
  addRecords(scenarios);
}

}  // namespace koru::test
