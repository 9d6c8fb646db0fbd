// SPDX-License-Identifier: MIT
// Clauses, and comparisons and membership tied to a truth value.
#include "koru_extras.h"
#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

bool isTrue(int value) { return value >= 1; }

// How a statement is tied to a truth value, the first variable.
struct Tie {
  const char *suffix;
  bool (*holds)(bool b, bool statement);
};
constexpr Tie kIff{"Iff", [](bool b, bool statement) { return b == statement; }};
constexpr Tie kIf{"If", [](bool b, bool statement) { return !b || statement; }};

Relation tied(const Tie &tie, const Relation &statement) {
  return [&tie, statement](Values t) { return tie.holds(isTrue(t[0]), statement(t.subspan(1))); };
}

// ----- comparisons

template <auto Post>
bool postOnPair(CSint **x) {
  return Post(x[0], x[1], x[2]);
}

template <auto Iff, auto If>
void addComparison(Cases &cases, const std::string &name, bool (*holds)(int, int)) {
  const Relation statement = [holds](Values t) { return holds(t[0], t[1]); };
  const auto add = [&](const Tie &tie, std::function<bool(CSint **)> post) {
    const std::string function = "cs_" + name + tie.suffix;
    cases.push_back({name + tie.suffix,
                     {function},
                     {with(relation(function, 3, tied(tie, statement), std::move(post)), Strength::kDomain)},
                     {{-1, 3}, {-2, 4}},
                     120,
                     {},
                     {},
                     Room{-5, 11}});
  };
  add(kIff, postOnPair<Iff>);
  add(kIf, postOnPair<If>);
}

template <auto Iff, auto If>
void addConstComparison(Cases &cases, const std::string &name, bool (*holds)(int, int)) {
  const auto add = [&](const Tie &tie, bool (*post)(CSint *, CSint *, int)) {
    Case c{name + tie.suffix + "ofAnInt", {"cs_" + name + tie.suffix}, {}, {{-1, 3}, {-1, 4}}, 60, {2, 3, 3}};
    for (int v = -2; v <= 3; ++v)
      c.forms.push_back(with(relation(c.functions[0] + " " + std::to_string(v), 2,
                                      tied(tie, [holds, v](Values t) { return holds(t[0], v); }),
                                      [post, v](CSint **x) { return post(x[0], x[1], v); }),
                             Strength::kDomain));
    cases.push_back(c);
  };
  add(kIff, Iff);
  add(kIf, If);
}

// ----- membership

using PostArray = bool (*)(CSint *, CSint *, const int *, int);
using PostInterval = bool (*)(CSint *, CSint *, int, int);

void addArray(Cases &cases, const std::string &name, const Tie &tie, bool inside, PostArray post) {
  Case c{name + tie.suffix, {"cs_" + name + tie.suffix}, {}, {{-1, 3}, {-2, 6}}, 120, {2, 3, 3}};
  for (const std::vector<int> &values :
       std::vector<std::vector<int>>{{}, {1}, {2, -1, 2}, {0, 1, 2}, {-2, 0, 3}, {3, 2, 1, 0, -1, -2, -3}, {9, -9}})
    c.forms.push_back(
        with(relation(c.functions[0] + ::testing::PrintToString(values), 2,
                      tied(tie, [=](Values t) { return (std::ranges::count(values, t[0]) > 0) == inside; }),
                      [=](CSint **x) {
                        // What was handed over is gone at once.
                        std::vector<int> lent = values;
                        const bool posted = post(x[0], x[1], lent.data(), static_cast<int>(lent.size()));
                        std::ranges::fill(lent, 77);
                        return posted;
                      }),
             Strength::kDomain));
  cases.push_back(c);
}

void addInterval(Cases &cases, const std::string &name, const Tie &tie, bool inside, PostInterval post) {
  Case c{name + tie.suffix, {"cs_" + name + tie.suffix}, {}, {{-1, 3}, {-2, 6}}, 90, {2, 3, 3}};
  for (const auto &ends : std::vector<std::pair<int, int>>{
           {1, 1}, {-1, 1}, {0, 9}, {-9, 0}, {2, 1}, {-9, 9}, {INT_MIN, 0}, {1, INT_MAX}, {INT_MAX, INT_MIN}}) {
    const int low = ends.first;
    const int high = ends.second;
    c.forms.push_back(with(relation(c.functions[0] + " " + std::to_string(low) + ".." + std::to_string(high), 2,
                                    tied(tie, [=](Values t) { return (low <= t[0] && t[0] <= high) == inside; }),
                                    [=](CSint **x) { return post(x[0], x[1], low, high); }),
                           Strength::kDomain));
  }
  cases.push_back(c);
}

// ----- clauses

struct Shape {
  int positives;
  int negatives;
};
constexpr Shape kShapes[] = {{0, 0}, {1, 0}, {0, 1}, {2, 0}, {1, 1}, {0, 2}, {3, 0}, {2, 1}, {1, 2}, {0, 4}, {3, 2}};

bool someLiteral(const Shape &shape, Values t) {
  for (int i = 0; i < shape.positives + shape.negatives; ++i)
    if (isTrue(t[static_cast<std::size_t>(i)]) == (i < shape.positives)) return true;
  return false;
}

using PostClause = std::function<bool(CSint **x, CSint **pos, int p, CSint **neg, int q)>;

// A clause on the variables from `first` on, in arrays that are gone at once.
bool postCopy(CSint **x, int first, const Shape &shape, const PostClause &post) {
  std::vector<CSint *> pos(x + first, x + first + shape.positives);
  std::vector<CSint *> neg(x + first + shape.positives, x + first + shape.positives + shape.negatives);
  const bool posted = post(x, pos.data(), shape.positives, neg.data(), shape.negatives);
  std::ranges::fill(pos, nullptr);
  std::ranges::fill(neg, nullptr);
  return posted;
}

// A few values beyond 0..1: none of them is anything but true or false.
Case clauseCase(const std::string &name, const std::string &function) {
  return {name, {function}, {}, {{0, 2}}, 40, {1, 3, 3}, {}, Room{-1, 4}};
}

Case clause() {
  Case c = clauseCase("Clause", "cs_Clause");
  for (const Shape &shape : kShapes)
    c.forms.push_back(with(relation(
                               "cs_Clause " + std::to_string(shape.positives) + " " + std::to_string(shape.negatives),
                               shape.positives + shape.negatives, [shape](Values t) { return someLiteral(shape, t); },
                               [shape](CSint **x) {
                                 return postCopy(x, 0, shape, [](CSint **, CSint **pos, int p, CSint **neg, int q) {
                                   return cs_Clause(pos, p, neg, q);
                                 });
                               }),
                           Strength::kDomain));
  return c;
}

Case clauseTied(const Tie &tie, bool (*post)(CSint *, CSint **, int, CSint **, int)) {
  Case c = clauseCase(std::string("Clause") + tie.suffix, std::string("cs_Clause") + tie.suffix);
  for (const Shape &shape : kShapes)
    c.forms.push_back(with(
        relation(c.functions[0] + " " + std::to_string(shape.positives) + " " + std::to_string(shape.negatives),
                 1 + shape.positives + shape.negatives, tied(tie, [shape](Values t) { return someLiteral(shape, t); }),
                 [shape, post](CSint **x) {
                   return postCopy(x, 1, shape, [post](CSint **all, CSint **pos, int p, CSint **neg, int q) {
                     return post(all[0], pos, p, neg, q);
                   });
                 }),
        Strength::kDomain));
  return c;
}

Case reifClause() {
  Case c = clauseCase("ReifClause", "cs_ReifClause");
  for (const Shape &shape : kShapes)
    c.forms.push_back(with(
        function(
            "cs_ReifClause " + std::to_string(shape.positives) + " " + std::to_string(shape.negatives),
            shape.positives + shape.negatives, [shape](Values t) { return someLiteral(shape, t) ? 1 : 0; },
            [shape](CSint **x) { return cs_ReifClause(x, shape.positives, x + shape.positives, shape.negatives); }),
        Strength::kDomain));
  return c;
}

}  // namespace

Cases logicCases() {
  Cases cases{clause(), clauseTied(kIff, cs_ClauseIff), clauseTied(kIf, cs_ClauseIf), reifClause()};
  addComparison<cs_EqIff, cs_EqIf>(cases, "Eq", [](int x, int y) { return x == y; });
  addComparison<cs_NeqIff, cs_NeqIf>(cases, "Neq", [](int x, int y) { return x != y; });
  addComparison<cs_LeIff, cs_LeIf>(cases, "Le", [](int x, int y) { return x <= y; });
  addComparison<cs_LtIff, cs_LtIf>(cases, "Lt", [](int x, int y) { return x < y; });
  addComparison<cs_GeIff, cs_GeIf>(cases, "Ge", [](int x, int y) { return x >= y; });
  addComparison<cs_GtIff, cs_GtIf>(cases, "Gt", [](int x, int y) { return x > y; });
  addConstComparison<cs_EQIff, cs_EQIf>(cases, "EQ", [](int x, int y) { return x == y; });
  addConstComparison<cs_NEQIff, cs_NEQIf>(cases, "NEQ", [](int x, int y) { return x != y; });
  addConstComparison<cs_LEIff, cs_LEIf>(cases, "LE", [](int x, int y) { return x <= y; });
  addConstComparison<cs_LTIff, cs_LTIf>(cases, "LT", [](int x, int y) { return x < y; });
  addConstComparison<cs_GEIff, cs_GEIf>(cases, "GE", [](int x, int y) { return x >= y; });
  addConstComparison<cs_GTIff, cs_GTIf>(cases, "GT", [](int x, int y) { return x > y; });
  addArray(cases, "InArray", kIff, true, cs_InArrayIff);
  addArray(cases, "InArray", kIf, true, cs_InArrayIf);
  addArray(cases, "NotInArray", kIff, false, cs_NotInArrayIff);
  addArray(cases, "NotInArray", kIf, false, cs_NotInArrayIf);
  addInterval(cases, "InInterval", kIff, true, cs_InIntervalIff);
  addInterval(cases, "InInterval", kIf, true, cs_InIntervalIf);
  addInterval(cases, "NotInInterval", kIff, false, cs_NotInIntervalIff);
  addInterval(cases, "NotInInterval", kIf, false, cs_NotInIntervalIf);
  return cases;
}

}  // namespace koru::test::brute
