// SPDX-License-Identifier: MIT
// Rows of the table: the constraints of the catalogue.
#include <map>

#include "traces/machine.h"

namespace koru::traces {
namespace {

// How often the generator takes a constraint, 4 being usual.
const std::map<std::string_view, int> kWeights{
    {"cs_NEQ", 12},          {"cs_Neq", 6},       {"cs_Lt", 3},         {"cs_Gt", 3},
    {"cs_AllNeq", 6},        {"cs_InArray", 3},   {"cs_NotInArray", 3}, {"cs_InInterval", 3},
    {"cs_NotInInterval", 3}, {"cs_Occur", 3},     {"cs_Regular", 8},    {"cs_Cumulative", 6},
    {"cs_Disjunctive", 5},   {"cs_Add", 6},       {"cs_Sub", 6},        {"cs_VAdd", 3},
    {"cs_VSub", 3},          {"cs_Mul", 5},       {"cs_VMul", 2},       {"cs_VDiv", 2},
    {"cs_Abs", 5},           {"cs_ScalProd", 5},  {"cs_VScalProd", 3},  {"cs_ReifEQ", 3},
    {"cs_ReifNEQ", 2},       {"cs_ReifLT", 2},    {"cs_ReifLE", 2},     {"cs_ReifGT", 2},
    {"cs_ReifGE", 2},        {"cs_ReifNeq", 3},   {"cs_ReifLt", 2},     {"cs_ReifLe", 2},
    {"cs_ReifGt", 2},        {"cs_ReifGe", 2},    {"cs_Element", 5},    {"cs_VMin", 2},
    {"cs_VMax", 2},          {"cs_VarElement", 5}};

int weightOf(const char *name) {
  const auto found = kWeights.find(name);
  return found != kWeights.end() ? found->second : 4;
}

Row rowOf(const catalogue::Row &constraint) {
  const bool makes = constraint.makes();
  return {constraint.name,
          makes ? 'v' : 'b',
          constraint.kinds,
          makes ? Group::kFunction : Group::kRelation,
          weightOf(constraint.name),
          [](Machine &m, const Line &line) { m.callConstraint(line); },
          &constraint};
}

}  // namespace

std::span<const Row> constraintRows() {
  static const std::vector<Row> rows = [] {
    std::vector<Row> result;
    for (const catalogue::Row *constraint : catalogue::rows()) result.push_back(rowOf(*constraint));
    return result;
  }();
  return rows;
}

}  // namespace koru::traces
