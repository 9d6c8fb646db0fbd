// SPDX-License-Identifier: MIT
// Every exported function that posts a constraint: under which name its sites go, on which line it is called here, and
// with which values the constraint is violated.
#pragma once

#include <ostream>

#include "koru.h"

namespace koru::test {

// x, y, z over 0..9, b over 0..1, and the result of a function that returns a variable.
struct Operands {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  CSint *z = cs_createCSint(0, 9);
  CSint *b = cs_createCSint(0, 1);
  CSint *result = nullptr;
  bool posted = false;
  CSint *array[3] = {x, y, z};
  CSint *units[3] = {b, b, b};
  int numbers[3] = {2, 3, 5};
};

struct PostingFunction {
  const char *name;
  const char *siteName;
  int line;
  bool (*post)(Operands &);
  // Of x, y, z and the result or b, in contradiction to the constraint; -v stands for the removal of v.
  int values[4];
};

inline void PrintTo(const PostingFunction &function, std::ostream *out) { *out << function.name; }

// Words of 0, 1 and 2 that begin with two equal symbols: state 1 + a after a, 4 after the second.
inline constexpr int kTwoEqualFirst[] = {1, 2, 3, 4, -1, -1, -1, 4, -1, -1, -1, 4, 4, 4, 4};
inline constexpr int kFinal[] = {4};

// x = 1 and y = 2 are not both to be.
inline bool forbidOneTwo(CSnoGoodSet *set) {
  const int indexes[] = {0, 1};
  const CSvalueSelection decisions[] = {{CS_METHOD_EQ, 1}, {CS_METHOD_EQ, 2}};
  cs_addNoGood(set, indexes, decisions, 2);
  return cs_getNbNoGoods(set) == 1;
}

inline bool acceptNone(CSint **, int, void *) { return false; }
inline bool acceptNoValue(int, int, CSint **, int, void *) { return false; }
inline bool acceptNoChange(CSint *, int, int, CSint **, int, void *) { return false; }

// One line each: __LINE__ is where the call is. It must not be the last thing done, or the compiler may make it a jump.
inline constexpr char kPostingFile[] = __FILE__;

// clang-format off
#define KORU_POSTS(name, siteName, call, ...) {name, siteName, __LINE__, [](Operands &o) -> bool { o.posted = call; return o.posted; }, __VA_ARGS__}
#define KORU_MAKES(name, siteName, call, ...) {name, siteName, __LINE__, [](Operands &o) -> bool { o.result = call; return o.result != nullptr; }, __VA_ARGS__}

inline const PostingFunction kPostingFunctions[] = {
    KORU_POSTS("cs_Eq", "cs_Eq", cs_Eq(o.x, o.y), {1, 2, 0, 0}),
    KORU_POSTS("cs_Neq", "cs_Neq", cs_Neq(o.x, o.y), {2, 2, 0, 0}),
    KORU_POSTS("cs_Le", "cs_Le", cs_Le(o.x, o.y), {2, 1, 0, 0}),
    KORU_POSTS("cs_Lt", "cs_Lt", cs_Lt(o.x, o.y), {2, 1, 0, 0}),
    KORU_POSTS("cs_Ge", "cs_Ge", cs_Ge(o.x, o.y), {1, 2, 0, 0}),
    KORU_POSTS("cs_Gt", "cs_Gt", cs_Gt(o.x, o.y), {1, 2, 0, 0}),
    KORU_MAKES("cs_Add", "cs_Add", cs_Add(o.x, o.y), {1, 2, 0, 4}),
    KORU_MAKES("cs_Sub", "cs_Sub", cs_Sub(o.x, o.y), {2, 1, 0, 4}),
    KORU_MAKES("cs_VAdd", "cs_Vadd", cs_VAdd(3, o.x, o.y, o.z), {1, 2, 3, 4}),
    KORU_MAKES("cs_VSub", "cs_VSub", cs_VSub(3, o.x, o.y, o.z), {6, 2, 1, 4}),
    KORU_MAKES("cs_Sigma", "cs_Sigma", cs_Sigma(o.array, 3), {1, 2, 3, 4}),
    KORU_MAKES("cs_Mul", "cs_Mul", cs_Mul(o.x, o.y), {2, 3, 0, 4}),
    KORU_MAKES("cs_VMul", "cs_VMul", cs_VMul(3, o.x, o.y, o.z), {2, 3, 4, 5}),
    KORU_MAKES("cs_Div", "cs_Div", cs_Div(o.x, o.y), {6, 3, 0, 4}),
    KORU_MAKES("cs_VDiv", "cs_VDiv", cs_VDiv(3, o.x, o.y, o.z), {8, 2, 2, 1}),
    KORU_MAKES("cs_Abs", "cs_Abs", cs_Abs(o.x), {2, 0, 0, 3}),
    KORU_MAKES("cs_ScalProd", "cs_ScalProd", cs_ScalProd(o.array, o.numbers, 3), {1, 1, 1, 9}),
    KORU_MAKES("cs_VScalProd", "cs_VScalProd", cs_VScalProd(3, o.x, o.y, o.z, 2, 3, 5), {1, 1, 1, 9}),
    KORU_MAKES("cs_ReifEQ", "cs_ReifEQ", cs_ReifEQ(o.x, 5), {5, 0, 0, 0}),
    KORU_MAKES("cs_ReifNEQ", "cs_ReifNEQ", cs_ReifNEQ(o.x, 5), {5, 0, 0, 1}),
    KORU_MAKES("cs_ReifLT", "cs_ReifLT", cs_ReifLT(o.x, 5), {5, 0, 0, 1}),
    KORU_MAKES("cs_ReifLE", "cs_ReifLE", cs_ReifLE(o.x, 5), {5, 0, 0, 0}),
    KORU_MAKES("cs_ReifGT", "cs_ReifGT", cs_ReifGT(o.x, 5), {5, 0, 0, 1}),
    KORU_MAKES("cs_ReifGE", "cs_ReifGE", cs_ReifGE(o.x, 5), {5, 0, 0, 0}),
    KORU_MAKES("cs_ReifEq", "cs_ReifEq", cs_ReifEq(o.x, o.y), {5, 5, 0, 0}),
    KORU_MAKES("cs_ReifNeq", "cs_ReifNeq", cs_ReifNeq(o.x, o.y), {5, 5, 0, 1}),
    KORU_MAKES("cs_ReifLt", "cs_ReifLt", cs_ReifLt(o.x, o.y), {5, 5, 0, 1}),
    KORU_MAKES("cs_ReifLe", "cs_ReifLe", cs_ReifLe(o.x, o.y), {5, 5, 0, 0}),
    KORU_MAKES("cs_ReifGt", "cs_ReifGt", cs_ReifGt(o.x, o.y), {5, 5, 0, 1}),
    KORU_MAKES("cs_ReifGe", "cs_ReifGe", cs_ReifGe(o.x, o.y), {5, 5, 0, 0}),
    KORU_POSTS("cs_IfEq", "cs_IfEq", cs_IfEq(o.x, o.y, 3, 4), {3, 5, 0, 0}),
    KORU_POSTS("cs_IfNeq", "cs_IfNeq", cs_IfNeq(o.x, o.y, 3, 4), {3, 4, 0, 0}),
    KORU_POSTS("cs_AllNeq", "cs_AllNeq", cs_AllNeq(o.array, 3), {1, 2, 2, 0}),
    KORU_MAKES("cs_Element", "cs_Element", cs_Element(o.x, o.numbers, 3), {1, 0, 0, 5}),
    KORU_MAKES("cs_Index", "cs_Cumulative", cs_Index(o.array, 3, 7), {1, 2, 7, 1}),
    KORU_MAKES("cs_Min", "cs_Min", cs_Min(o.array, 3), {1, 2, 3, 2}),
    KORU_MAKES("cs_VMin", "cs_VMin", cs_VMin(3, o.x, o.y, o.z), {1, 2, 3, 2}),
    KORU_MAKES("cs_Max", "cs_Max", cs_Max(o.array, 3), {1, 2, 3, 2}),
    KORU_MAKES("cs_VMax", "cs_VMax", cs_VMax(3, o.x, o.y, o.z), {1, 2, 3, 2}),
    KORU_POSTS("cs_Occur", "cs_Occur", cs_Occur(o.b, 7, o.array, 3) == 0, {7, 7, 7, 1}),
    KORU_MAKES("cs_OccurDomain", "cs_OccurDomain", cs_OccurDomain(7, o.array, 3), {7, 7, 7, 1}),
    KORU_POSTS("cs_OccurConstraints", "cs_OccurConstraints", cs_OccurConstraints(o.b, 7, o.array, 3), {7, 7, 7, 1}),
    KORU_POSTS("cs_Regular", "cs_Regular", cs_Regular(o.array, 3, kTwoEqualFirst, 5, 3, 0, kFinal, 1), {0, 1, 1, 0}),
    KORU_MAKES("cs_VarElement", "cs_VarElement", cs_VarElement(o.b, o.array, 3), {1, 2, 3, 4}),
    KORU_MAKES("cs_VarElementRange", "cs_VarElementRange", cs_VarElementRange(o.b, o.array, 3), {1, 2, 3, 4}),
    KORU_POSTS("cs_Cumulative", "cs_Cumulative", cs_Cumulative(o.array, o.array, o.units, 3, o.b), {2, 2, 2, 1}),
    KORU_POSTS("cs_Disjunctive", "cs_Disjunctive", cs_Disjunctive(o.array, o.array, 3), {2, 2, 2, 0}),
    KORU_POSTS("cs_eventAllKnown", "cs_eventAllKnown", cs_eventAllKnown(o.array, 3, acceptNone, nullptr), {1, 1, 1, 0}),
    KORU_POSTS("cs_eventKnown", "cs_eventKnown", cs_eventKnown(o.array, 3, acceptNoValue, nullptr), {1, 1, 1, 0}),
    KORU_POSTS("cs_eventNewMin", "cs_eventNewMin", (cs_eventNewMin(o.array, 3, acceptNoChange, nullptr), true), {9, 9, 9, 0}),
    KORU_POSTS("cs_eventNewMax", "cs_eventNewMax", (cs_eventNewMax(o.array, 3, acceptNoChange, nullptr), true), {0, 0, 0, 0}),
    KORU_POSTS("cs_eventNeq", "cs_eventNewMax", (cs_eventNeq(o.array, 3, acceptNoChange, nullptr), true), {-5, 0, 0, 0}),
    KORU_POSTS("cs_createNoGoodSet", "cs_createNoGoodSet", forbidOneTwo(cs_createNoGoodSet(o.array, 3, nullptr, 0, nullptr, nullptr)), {1, 2, 0, 0}),
};
// clang-format on

}  // namespace koru::test
