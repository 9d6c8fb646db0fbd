// SPDX-License-Identifier: MIT
// The table of calls: a row for each exported function, and a few for the harness itself. Parser, printer, interpreter,
// generator and model are driven by it, so a new export is one row.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "catalogue/row.h"
#include "traces/trace.h"

namespace koru::traces {

class Machine;

enum class Group {
  kLife,      // start, end, errors
  kCreate,    // variables
  kQuery,     // changes nothing
  kContext,   // choice points
  kRelation,  // answers whether it holds
  kFunction,  // answers with a variable
  kEvent,     // user-defined constraints
  kSearch,
  kSelector,
  kNoGood,
  kProfiler,
  kOutput,
  kHarness,
};

// Kinds of arguments, a letter each:
//   i int   n size of the arrays before it (cut down to theirs)   v variable   a array of variables   A one without
//   nulls k array of ints   s callback   q value selector   Q array of them   h search hooks   g no-good set   p
//   profiler t text   x supplied by the interpreter, not in the text; and those of the catalogue of constraints
// Kinds of results: those of references, and b number, a array of variables, d domain, t text, - nothing.
struct Row {
  const char *name;
  char result;
  const char *kinds;
  Group group;
  int weight;  // how often the generator takes it within its group
  void (*run)(Machine &, const Line &);
  const catalogue::Row *constraint = nullptr;
  bool isFunction() const { return constraint != nullptr && constraint->makes(); }
  // Its result follows from its arguments.
  bool computes() const { return constraint != nullptr && constraint->meaning.value != nullptr; }
};

std::span<const Row> coreRows();
std::span<const Row> constraintRows();
std::span<const Row> searchRows();

const std::vector<const Row *> &rows();
const Row *findRow(std::string_view name);
std::size_t indexOf(const Row *row);
inline bool isExport(const Row &row) { return row.group != Group::kHarness; }
// The letter of what the row's result is kept as; 0 when it is not kept.
char targetLetter(const Row &row);
// The letter of the references that an argument consists of; 0 for ints and text.
char referenceLetter(char kind);

}  // namespace koru::traces
