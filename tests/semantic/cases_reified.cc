// SPDX-License-Identifier: MIT
// The reified comparisons, their outcome taking part as a variable.
#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

Case ofVariables(const std::string &name) {
  return {name, {"cs_" + name}, {stated("cs_" + name)}, {{-2, 4}}, 225, {}, {}, Room{-5, 11}};
}

Case ofAnInt(const std::string &name) {
  Case c{name + "ofAnInt", {"cs_" + name}, {}, {{-1, 5}}, 31, {2, 3, 3}};
  for (int v = -2; v <= 4; ++v) c.forms.push_back(stated(c.functions[0], {}, {v}));
  return c;
}

// Outcomes that are compared themselves: the watches of one are woken by the control of another.
Case nested() {
  return {"ReifNested",
          {},
          {function(
               "(x < y) = (y <= 1)", 2, [](Values t) { return (t[0] < t[1]) == (t[1] <= 1) ? 1 : 0; },
               [](CSint **x) {
                 CSint *first = cs_ReifLt(x[0], x[1]);
                 return cs_ReifEq(first, cs_ReifLE(x[1], 1));
               }),
           function(
               "x > (x != y)", 2, [](Values t) { return t[0] > (t[0] != t[1] ? 1 : 0) ? 1 : 0; },
               [](CSint **x) { return cs_ReifGt(x[0], cs_ReifNeq(x[0], x[1])); })},
          {{-2, 5}},
          100};
}

}  // namespace

Cases reifiedCases() {
  Cases cases;
  for (const char *name : {"ReifEq", "ReifNeq", "ReifLt", "ReifLe", "ReifGt", "ReifGe"})
    cases.push_back(ofVariables(name));
  for (const char *name : {"ReifEQ", "ReifNEQ", "ReifLT", "ReifLE", "ReifGT", "ReifGE"}) cases.push_back(ofAnInt(name));
  cases.push_back(nested());
  return cases;
}

}  // namespace koru::test::brute
