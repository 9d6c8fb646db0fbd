// SPDX-License-Identifier: MIT
// Arithmetic, linear sums and reified comparisons.
#include <cstring>
#include <string>

#include "support/memory/scenario.h"

namespace koru::test {

namespace {

struct Binary {
  const char *name;
  CSint *(*post)(CSint *, CSint *);
};

void addBinary(Scenarios &scenarios, const Binary &each, std::initializer_list<const char *> pairs) {
  for (const std::string pair : pairs) {
    const auto run = [each, pair](Stage &s) { return each.post(s.at(pair[0]), s.at(pair[1])) != nullptr; };
    scenarios.add(std::string(each.name) + "/" + pair, run);
  }
}

struct OverArray {
  const char *name;
  CSint *(*post)(CSint **array, int n);
};

void addOverArray(Scenarios &scenarios, const OverArray &each) {
  for (const char *letters : {"", "x", "xy", "tt", "xyz", "xtx", "thc", "hnx"}) {
    const auto run = [each, letters](Stage &s) {
      return each.post(s.array(letters), static_cast<int>(std::strlen(letters))) != nullptr;
    };
    scenarios.add(std::string(each.name) + "/" + (*letters != '\0' ? letters : "none"), run);
  }
}

// The variadic forms; what stands behind the first n arguments is not read.
template <class Variadic>
CSint *spread(Variadic post, CSint **array, int n) {
  CSint *const given[] = {n > 0 ? array[0] : nullptr, n > 1 ? array[1] : nullptr, n > 2 ? array[2] : nullptr};
  return post(n, given[0], given[1], given[2]);
}

int coefficients[] = {2, -3, 1};

CSint *scalarProduct(CSint **array, int n) { return cs_ScalProd(array, coefficients, n); }

CSint *variadicScalarProduct(CSint **array, int n) {
  if (n < 1) return cs_VScalProd(0);
  if (n == 1) return cs_VScalProd(1, array[0], 2);
  if (n == 2) return cs_VScalProd(2, array[0], array[1], 2, -3);
  return cs_VScalProd(3, array[0], array[1], array[2], 2, -3, 1);
}

struct AgainstInt {
  const char *name;
  CSint *(*post)(CSint *, int);
};

constexpr AgainstInt kAgainstInt[] = {{"cs_ReifEQ", cs_ReifEQ}, {"cs_ReifNEQ", cs_ReifNEQ}, {"cs_ReifLT", cs_ReifLT},
                                      {"cs_ReifLE", cs_ReifLE}, {"cs_ReifGT", cs_ReifGT},   {"cs_ReifGE", cs_ReifGE}};

constexpr Binary kReified[] = {{"cs_ReifEq", cs_ReifEq}, {"cs_ReifNeq", cs_ReifNeq}, {"cs_ReifLt", cs_ReifLt},
                               {"cs_ReifLe", cs_ReifLe}, {"cs_ReifGt", cs_ReifGt},   {"cs_ReifGe", cs_ReifGe}};

}  // namespace

void addArithmetic(Scenarios &scenarios) {
  for (const Binary &each : {Binary{"cs_Add", cs_Add}, Binary{"cs_Sub", cs_Sub}, Binary{"cs_Mul", cs_Mul}})
    addBinary(scenarios, each, {"xy", "th", "ht", "tt", "hn", "xx", "cn", "tx"});
  addBinary(scenarios, {"cs_Div", cs_Div}, {"xy", "xt", "ht", "tt", "hn", "xx", "cn", "tx"});
  for (const char letter : {'x', 'n', 'h', 't', 'c'}) {
    scenarios.add(std::string("cs_Abs/") + letter, [letter](Stage &s) { return cs_Abs(s.at(letter)) != nullptr; });
  }
  for (const OverArray &each : {OverArray{"cs_Sigma", cs_Sigma}, OverArray{"cs_ScalProd", scalarProduct},
                                OverArray{"cs_VScalProd", variadicScalarProduct},
                                OverArray{"cs_VAdd", [](CSint **array, int n) { return spread(cs_VAdd, array, n); }},
                                OverArray{"cs_VSub", [](CSint **array, int n) { return spread(cs_VSub, array, n); }}})
    addOverArray(scenarios, each);
  for (const char *letters : {"x", "xy", "tt", "xyz", "xtx", "thc", "hnx"}) {
    const int n = static_cast<int>(std::strlen(letters));
    scenarios.add(std::string("cs_VMul/") + letters,
                  [letters, n](Stage &s) { return spread(cs_VMul, s.array(letters), n) != nullptr; });
    scenarios.add(std::string("cs_VDiv/") + letters,
                  [letters, n](Stage &s) { return spread(cs_VDiv, s.array(letters), n) != nullptr; });
  }
}

void addReified(Scenarios &scenarios) {
  for (const AgainstInt &each : kAgainstInt) {
    for (const char letter : {'x', 'h', 'n', 't', 'c'}) {
      const auto run = [each, letter](Stage &s) { return each.post(s.at(letter), 5) != nullptr; };
      scenarios.add(std::string(each.name) + "/" + letter, run);
    }
  }
  for (const Binary &each : kReified) addBinary(scenarios, each, {"xy", "xh", "hn", "tx", "xt", "xx", "cd", "ct"});
}

}  // namespace koru::test
