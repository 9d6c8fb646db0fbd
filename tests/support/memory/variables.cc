// SPDX-License-Identifier: MIT
// Variables, names, domains, choice points and formatted output.
#include <string>

#include "core/solver.h"
#include "support/kit/written_text.h"
#include "support/memory/scenario.h"

namespace koru::test {

namespace {

bool named(CSint *v, const std::string &name) {
  return v != nullptr && cs_getName(v) != nullptr && cs_getName(v) == name;
}

void addCreation(Scenarios &scenarios) {
  scenarios.add("cs_createCSint/interval", [](Stage &) { return cs_createCSint(0, 9) != nullptr; });
  scenarios.add("CSINT/constant", [](Stage &) { return CSINT(4) != nullptr; });
  scenarios.add("cs_createNamedCSint/short", [](Stage &) { return named(cs_createNamedCSint(0, 9, "v"), "v"); });
  scenarios.add("cs_createNamedCSint/null", [](Stage &) { return cs_createNamedCSint(0, 9, nullptr) != nullptr; });
  for (const int size : {-1, 0, 1, 5}) {
    scenarios.add("cs_createCSintArray/" + std::to_string(size),
                  [size](Stage &) { return cs_createCSintArray(size, 0, 9) != nullptr; });
  }
  static const std::vector<int> kDomains[] = {{7}, {3, 9, 3, 5}, {-4, -3, -2}, {}};
  for (const std::vector<int> &domain : kDomains) {
    scenarios.add("cs_createCSintFromDomain/" + std::to_string(domain.size()),
                  [&domain](Stage &) { return fromValues(domain) != nullptr; });
  }
}

void addNames(Scenarios &scenarios) {
  const auto setName = [](CSint *v, const char *name) {
    cs_setName(v, name);
    return named(v, name);
  };
  scenarios.add(
      "cs_setName/first", [setName](Stage &s) { return setName(s.x, "a name"); },
      [](Stage &s) { return cs_getName(s.x) == nullptr; });
  scenarios.add(
      "cs_setName/longer", [setName](Stage &s) { return setName(s.h, "longer than short"); },
      [](Stage &s) { return cs_getName(s.h) == nullptr; });
  scenarios.add("cs_setName/same", [setName](Stage &s) { return setName(s.h, "short"); });
  scenarios.add("cs_setName/none", [](Stage &s) {
    cs_setName(s.x, nullptr);
    return cs_getName(s.x) == nullptr;
  });
}

void addDomains(Scenarios &scenarios) {
  for (const char letter : {'x', 'h', 't'}) {
    scenarios.add(std::string("cs_getDomain/") + letter, [letter](Stage &s) {
      int *domain = cs_getDomain(s.at(letter));
      const bool complete = domain != nullptr && domain[0] == cs_getMin(s.at(letter));
      cs_freeDomain(domain);
      return complete;
    });
  }
}

void addChoicePoints(Scenarios &scenarios) {
  scenarios.add("cs_saveContext/opened", [](Stage &) {
    const int open = solver::contexts.count();
    return cs_saveContext() > open;
  });
  scenarios.add("cs_restoreAndSaveContext/changed", [](Stage &s) {
    const int open = solver::contexts.count();
    return cs_EQ(s.c, 4) && cs_restoreAndSaveContext() == open && cs_isFree(s.c);
  });
  using Register = void (*)(CSint *, int, CSbacktrackCallback);
  const auto registered = [](Register registerCallback, Stage &s) {
    const int noted = solver::trail.count();
    registerCallback(s.x, 7, [](CSint *, int) {});
    return solver::trail.count() > noted;
  };
  scenarios.add("cs_backtrack/registered", [registered](Stage &s) { return registered(cs_backtrack, s); });
  scenarios.add("cs_backtrackExt/registered", [registered](Stage &s) { return registered(cs_backtrackExt, s); });
}

// The text shows in the outcome; a piece that is missing makes the call a failed one.
template <class Print>
bool printsTo(Stage &s, const char *end, Print print) {
  s.seen = textOf(print);
  const std::size_t length = std::string(end).size();
  return s.seen.size() >= length && s.seen.compare(s.seen.size() - length, length, end) == 0;
}

void addOutput(Scenarios &scenarios) {
  scenarios.add("cs_fprintf/pieces", [](Stage &s) {
    return printsTo(s, "end\n",
                    [&s](std::FILE *f) { cs_fprintf(f, "%D %-5d|%s %T %5.2f end\n", s.h, 7, "text", s.x, 1.5); });
  });
  scenarios.add("cs_fprintf/variables", [](Stage &s) {
    return printsTo(s, "end\n", [&s](std::FILE *f) { cs_fprintf(f, "%A, %T end\n", s.array("xht"), 3, s.n); });
  });
  scenarios.add("cs_printf/pieces", [](Stage &) {
    cs_printf("%s%.0s", "", "");
    return cs_getErr() == CS_ERR_NONE;
  });
  scenarios.add("cs_getValue/free", [](Stage &s) {
    cs_setErrHandler(
        CS_ERR_NOT_INSTANTIATED, [](CSint *, void *) { cs_initErr(); }, nullptr);
    return cs_getValue(s.x) == 0;
  });
}

}  // namespace

void addVariables(Scenarios &scenarios) {
  addCreation(scenarios);
  addNames(scenarios);
  addDomains(scenarios);
  addChoicePoints(scenarios);
  addOutput(scenarios);
}

}  // namespace koru::test
