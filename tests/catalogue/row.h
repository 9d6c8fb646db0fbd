// SPDX-License-Identifier: MIT
// A row of the catalogue: all that the tests must know of a constraint to post it, to enumerate its solutions and to
// violate it. The semantic, memory, limits and profiler tests and the random API traces are made from the rows.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/door.h"
#include "catalogue/terms.h"

namespace koru::catalogue {

// What is promised of the values that are left, all variables being different. The header and the documents say it in
// these words; "./dev semantics table" measures it.
enum class Consistency {
  kNone,    // only that no solution is lost, and that what is complete is a solution
  kKnown,   // forward checking: as kDomain, once no other variable is left unbound
  kBounds,  // least and greatest value are part of a solution within the bounds of the other variables
  kDomain,  // each value is part of a solution within the other variables' domains
};

struct Span {
  int low;
  int high;
};

// One posting, for tests that need no more: the sizes of its arrays, its ints, and values of its variables (the result
// last) that contradict it; -v is the removal of v. The variables are over 0..9, all different.
struct Example {
  std::vector<int> violated;                  // as many as there are variables, and a result
  std::vector<int> sizes = {};                // one for each n or r; 3 when left out
  std::vector<Wide> k = {};                   // one for each i, l, b or c
  std::vector<std::vector<Wide>> lists = {};  // one for each k, L, m or T
};

// Kinds of arguments, a letter each:
//   v variable                      o variable, or null
//   a array of variables            O array of variables, or null
//   k array of ints                 L array of 64-bit ints
//   n size of all arrays since the n before it
//   m rows of ints, each as long as the n before says       r their number
//   T table of ints, as many as the product of the two ints after it
//   i int   l 64-bit int   b 0 or 1   c one of CS_METHOD_EQ to CS_METHOD_GT
struct Row {
  const char *name;
  const char *kinds;
  Door door;  // door<F>, spread<F> for f(n, ...)
  Meaning meaning;
  Consistency consistency;
  Example example;

  // ----- what most rows leave as it is
  Consistency ofResult = consistency;
  const char *site = name;  // what profiles call it
  int most = 1000000;       // no more variables are handed over
  int fewest = 0;  // with less elements it is refused; a negative size is 0 in koru.h, and refused in koru_extras.h
  int fewestRows = fewest;    // of a matrix
  Span results = {-6, 8};     // where results mostly lie
  Span domain = {-1, 2};      // values of variables for which the meaning is of interest
  bool alsoShared = true;     // the consistency is promised with a variable in several places as well,
  bool alsoTogether = true;   // and when several changes come before it hears of the first
  bool saysNothing = false;   // the answer says nothing of success
  bool mayRefuse = false;     // a solution may be refused by design
  bool mayAccept = false;     // what is none may be accepted by design
  bool postsNothing = false;  // it narrows once and is done
  bool keepsArrays = false;   // the arrays that it is given must live on, as for all of koru.h

  bool makes() const { return door.makes; }
  int fewestOf(char size) const { return size == 'r' ? fewestRows : fewest; }
};

inline bool isArray(char kind) { return kind == 'a' || kind == 'O'; }
inline bool isVariable(char kind) { return kind == 'v' || kind == 'o'; }
inline bool isList(char kind) { return kind == 'k' || kind == 'L' || kind == 'm' || kind == 'T'; }
inline bool isSize(char kind) { return kind == 'n' || kind == 'r'; }
inline bool isNumber(char kind) { return kind == 'i' || kind == 'l' || kind == 'b' || kind == 'c'; }
inline bool mayBeNull(char kind) { return kind == 'o' || kind == 'O'; }

// Each family in a file of its own.
std::span<const Row> relationRows();
std::span<const Row> arithmeticRows();
std::span<const Row> reifiedRows();
std::span<const Row> arrayRows();
std::span<const Row> extraRows();       // of koru_extras.h
std::span<const Row> truthRows();       // of koru_extras.h
std::span<const Row> relationalRows();  // of koru_extras.h
std::span<const Row> scheduleRows();    // of koru_extras.h

std::span<const Row> hostRows();   // what a host writes itself; not among the following
std::span<const Row> modelRows();  // to copy; tested as the others are, but not exported

const std::vector<const Row *> &rows();
bool isOfKoruH(const Row &row);
// And the models.
const std::vector<const Row *> &rowsWithModels();
// Those that post, the models and the host's included.
const std::vector<const Row *> &postingRows();
const Row &rowOf(std::string_view name);  // ends the program when there is none
const Row *findRow(std::string_view name);

}  // namespace koru::catalogue
