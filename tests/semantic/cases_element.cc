// SPDX-License-Identifier: MIT
// Elements of arrays of ints and of variables, and the index of a value.
#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

// ----- an array of ints

// Of several changes heard together, one may be passed over: its value then fails when it is chosen.
Constraint element(const std::vector<Wide> &table) {
  Constraint c = stated("cs_Element", {static_cast<int>(table.size())}, {}, {table});
  c.alsoTogether = false;
  return c;
}

Case elements() {
  Case c{"Element", {"cs_Element"}, {}, {{-1, 7}}, 127};
  for (const std::vector<Wide> &table :
       Lists{{4, 7, 4, -1}, {3}, {5, 5, 5, 5}, {0, 1, 2, 3}, {2, 0, 2, 0}, {1, 2, 1}, {2, 1, 2, -3, 0, 1}})
    c.forms.push_back(element(table));
  std::mt19937 random(7);
  for (unsigned i = 0; i < 40; ++i) {
    std::vector<Wide> table(1 + random() % 6);
    for (Wide &value : table) value = static_cast<int>(random() % (i % 2 == 0 ? 3U : 8U)) - 3;
    c.forms.push_back(element(table));
  }
  return c;
}

// Longer than any domain of the others; each index is drawn from the table's length and beyond.
Case longElements() {
  Case c{"ElementOfALongTable", {"cs_Element"}, {}, {{-2, 12}}, 150};
  std::mt19937 random(17);
  for (unsigned i = 0; i < 12; ++i) {
    std::vector<Wide> table(9 + random() % 8);
    for (Wide &value : table) value = static_cast<int>(random() % (3 + i % 4 * 4)) - 2;
    c.forms.push_back(element(table));
  }
  return c;
}

// values[i] = values[j], through two constraints over one array.
Case agreeingElements() {
  Case c{"ElementsThatAgree", {"cs_Element"}, {}, {{-1, 5}}, 150};
  for (const std::vector<Wide> &table : Lists{{0, 1, 0, 2}, {1, 1, 2}, {2, 0, 1, 2, 0}, {0, 1, 2}}) {
    const Constraint one = element(table);
    c.forms.push_back(relation(
        "two of " + one.name, 2,
        [one](Values t) {
          const std::vector<int> first = one.results(t.first(1));
          return !first.empty() && first == one.results(t.subspan(1));
        },
        [one](CSint **x) {
          CSint *first = nullptr;
          CSint *second = nullptr;
          return one.post(x, first) && one.post(x + 1, second) && cs_Eq(first, second);
        }));
  }
  return c;
}

// ----- the index of a value

// A position goes with its value; what is imposed waits for the position to be bound, so one that is the only one from
// the start imposes nothing. A removal that a bound has moved past before it was heard is not noticed, by an only
// position not at all.
Constraint index(int n, int val) {
  Constraint c = stated("cs_Index", {n}, {val});
  c.strength = [](const Left &left, std::size_t) {
    return left.posted().isBound(left.result()) ? Strength::kNone : Strength::kDomain;
  };
  c.alsoTogether = false;
  c.acceptedAnyway = [](const Left &left) { return left.branch.unheard && left.posted().isBound(left.result()); };
  return c;
}

Case indexes() {
  Case c{"Index", {"cs_Index"}, {}, {{-1, 4}}, 80};
  for (int n = 1; n <= 3; ++n)
    for (int val = -2; val <= 3; ++val) c.forms.push_back(index(n, val));
  return c;
}

// ----- an array of variables

// Position 0 is the index; the array follows. A value of the result that a moved bound had cut off and a restore
// brought back may be without support while the index is free.
Constraint varElement(int n) {
  Constraint c = stated("cs_VarElement", {n});
  c.excused = [](const Left &left, std::size_t column, int value) {
    return column == left.result() && !left.isBound(0) && left.wasLost(column, value);
  };
  return c;
}

bool boundsMeet(const Left &left, std::size_t a, std::size_t b) {
  return left.min(a) <= left.max(b) && left.max(a) >= left.min(b);
}

// Each position's variable can meet the result, the bounds of the result are reached by one each, and those of a
// selected variable are the result's.
bool rangeSupports(const Left &left, std::size_t column, int value) {
  const std::size_t result = left.result();
  const auto some = [&](auto reaches) {
    const std::vector<int> open = left.values(0);
    return std::ranges::any_of(open, [&](int i) { return reaches(static_cast<std::size_t>(i) + 1); });
  };
  if (column == 0) return boundsMeet(left, static_cast<std::size_t>(value) + 1, result);
  if (left.isBound(0) && (column == result || left.min(0) + 1 == static_cast<int>(column))) {
    const auto selected = static_cast<std::size_t>(left.min(0)) + 1;
    return left.min(selected) == left.min(result) && left.max(selected) == left.max(result);
  }
  if (column != result) return true;
  return some([&](std::size_t i) { return left.min(i) <= left.min(result); }) &&
         some([&](std::size_t i) { return left.max(i) >= left.max(result); });
}

Constraint varElementRange(int n) {
  Constraint c = stated("cs_VarElementRange", {n});
  c.supported = rangeSupports;
  return c;
}

Case selections(const char *name, Constraint (*form)(int)) {
  Case c{name, {std::string("cs_") + name}, {}, {{-1, 5}, {-2, 4}}, 150};
  for (int n = 1; n <= 3; ++n) c.forms.push_back(form(n));
  return c;
}

// Narrowed without a restore, no value of the result is ever without support.
Case selectionsOnTheWayDown() {
  Case c = selections("VarElement", varElement);
  c.name += "OnTheWayDown";
  for (Constraint &form : c.forms) form.excused = nullptr;
  c.postings = 250;
  c.effort = {0, 0, 1, false};
  return c;
}

}  // namespace

Cases elementCases() {
  return {selectionsOnTheWayDown(),
          elements(),
          longElements(),
          agreeingElements(),
          indexes(),
          selections("VarElement", varElement),
          selections("VarElementRange", varElementRange)};
}

}  // namespace koru::test::brute
