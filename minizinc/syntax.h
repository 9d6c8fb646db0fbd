// SPDX-License-Identifier: MIT
// A FlatZinc file as it was read: items, and expressions in two arrays that they point into by number.
#ifndef KORU_MINIZINC_SYNTAX_H
#define KORU_MINIZINC_SYNTAX_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "minizinc/lexer.h"

namespace koru::fzn {

enum class Kind : std::uint8_t {
  kNone,
  kBool,      // number: 0 or 1
  kInt,       // number
  kFloat,     // in annotations only
  kRange,     // two numbers, from `first` on; empty when the first is the greater one
  kSet,       // numbers, ascending, each once
  kArray,     // expressions
  kDeclared,  // number: the index of a declaration
  kAccess,    // expressions: a declared array and an int
  kName,      // in annotations only: a name that nothing declares
  kString,    // in annotations only
  kCall       // in annotations only; expressions: the arguments
};

struct Part {
  std::uint32_t first = 0;
  std::uint32_t count = 0;
};

// The name of a call, and the text of a name or string, begins at `at`.
struct Expr {
  Kind kind = Kind::kNone;
  std::uint32_t at = 0;
  Part part;
  long long number = 0;
};

enum class Base : std::uint8_t { kBool, kInt, kSet };

// A parameter, a variable, or an array of either.
struct Declaration {
  std::string_view name;
  std::uint32_t at = 0;
  Base base = Base::kInt;
  bool isVar = false;
  bool isArray = false;
  Expr domain;  // kRange, kSet or kNone
  Expr value;   // kNone for a variable without one
  Part annotations;
};

struct Constraint {
  std::uint32_t at = 0;  // its name
  Part arguments;
  Part annotations;
};

enum class Goal : std::uint8_t { kSatisfy, kMinimize, kMaximize };

struct Solve {
  std::uint32_t at = 0;
  Goal goal = Goal::kSatisfy;
  Expr objective;
  Part annotations;
};

struct Syntax {
  std::string file;
  std::string text;
  std::vector<Expr> exprs;
  std::vector<long long> numbers;
  std::vector<Declaration> declarations;
  std::vector<Constraint> constraints;
  Solve solve;

  std::string_view name(std::uint32_t at) const { return nameAt(text, at); }
  std::span<const Expr> list(Part part) const { return std::span(exprs).subspan(part.first, part.count); }
  std::span<const long long> numbersOf(const Expr &e) const {
    return std::span(numbers).subspan(e.part.first, e.part.count);
  }
  // The call or name in a list of annotations; null when it is not there.
  const Expr *find(Part annotations, std::string_view name) const;
  // A string without its quotes.
  std::string_view string(const Expr &e) const;
};

// The first mistake that was met; without one the message is empty.
struct Mistake {
  std::uint32_t at = 0;
  std::string message;

  bool isSet() const { return !message.empty(); }
  void set(std::uint32_t where, std::string what) {
    if (!isSet()) at = where, message = std::move(what);
  }
};

// "FILE:LINE:COLUMN: MESSAGE".
std::string describe(const Syntax &syntax, const Mistake &mistake);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_SYNTAX_H
