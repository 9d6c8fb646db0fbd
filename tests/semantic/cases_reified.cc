// SPDX-License-Identifier: MIT
// The reified comparisons, their outcome taking part as a variable.
#include "semantic/cases.h"
#include "support/constraints/reified_forms.h"

namespace koru::test::brute {
namespace {

// Deciding and imposing an equality looks at values; a difference of two is decided and imposed by bound variables,
// which is as much as any reasoning could do.
Strength strengthOf(bool order) { return order ? Strength::kBounds : Strength::kDomain; }

std::string testName(const char *function) { return std::string(function).substr(3); }

Case caseOf(const reif::Form &form) {
  const Constraint c = function(
      form.name, 2, [form](Values t) { return form.holds(t[0], t[1]) ? 1 : 0; },
      [form](CSint **x) { return form.post(x[0], x[1]); });
  return {testName(form.name), {form.name}, {with(c, strengthOf(form.order))}, {{-2, 4}}, 225, {}, {}, Room{-5, 11}};
}

Case caseOf(const reif::ConstForm &form) {
  Case result{testName(form.name) + "ofAnInt", {form.name}, {}, {{-1, 5}}, 31, {2, 3, 3}};
  for (int v = -2; v <= 4; ++v)
    result.forms.push_back(with(function(
                                    std::string(form.name) + " " + std::to_string(v), 1,
                                    [form, v](Values t) { return form.holds(t[0], v) ? 1 : 0; },
                                    [form, v](CSint **x) { return form.post(x[0], v); }),
                                strengthOf(form.order)));
  return result;
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
  for (const reif::Form &form : reif::kForms) cases.push_back(caseOf(form));
  for (const reif::ConstForm &form : reif::kConstForms) cases.push_back(caseOf(form));
  cases.push_back(nested());
  return cases;
}

}  // namespace koru::test::brute
