// SPDX-License-Identifier: MIT
// Copyright (c) The Koru authors
//
// Part of koru.hpp: what a model owns, variables, and which of several models is the running one.
//
// A model's State owns its solver, the arrays that constraints keep and the host's callbacks. Variables are handles to
// it. One solver runs at a time (in programs that define KORU_THREADS, as those of koru::koru_threads are to: one in
// each thread); whatever is asked of a model makes its solver the running one, and parks the one that was.
#pragma once

#include <climits>
#include <concepts>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <functional>
#include <initializer_list>
#include <memory>
#include <new>
#include <ostream>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "../koru_extras.h"

#ifdef KORU_THREADS
#define KORU_OF_THREAD thread_local
#else
#define KORU_OF_THREAD
#endif

// What writes a model down runs once: to inline it would only take the compiler's time.
#define KORU_APART __attribute__((noinline, cold))

namespace koru {
// The library has names of its own in koru; an inline namespace keeps them apart where both are linked statically.
inline namespace v1 {

/// A line of the program: as a default argument, that of the caller. (std::source_location, which clang 14 lacks.)
struct Place {
  constexpr Place(const char *f = __builtin_FILE(), int l = __builtin_LINE(), const char *n = __builtin_FUNCTION())
      : file(f), line(l), function(n) {}

  const char *file;
  int line;
  const char *function;
};

namespace detail {
struct State;
}  // namespace detail

/// A variable: a light handle, good as long as its model. All of it asks the model's solver and costs constant time.
class IntVar {
 public:
  IntVar() = default;  ///< of no model: good for nothing but to be assigned to

  bool given() const { return state_ != nullptr; }  ///< is it one of a model?
  int min() const;
  int max() const;
  int size() const;  ///< the number of values
  bool fixed() const;
  int value() const;               ///< throws std::logic_error when it is not fixed
  bool contains(int value) const;  ///< is the value left?
  std::vector<int> domain() const;
  std::string name() const;
  void name(const char *text) const;
  void name(const std::string &text) const { name(text.c_str()); }
  CSint *get() const;  ///< for calls of the C interface, while the model is the running one; see Model::use

 private:
  friend struct detail::State;
  friend class Solution;
  IntVar(detail::State *state, std::size_t index) : state_(state), index_(index) {}

  detail::State *state_ = nullptr;
  std::size_t index_ = 0;
};

/// What functions take for several variables: a vector, a span, an array, or {x, y, z}. A view.
class Vars : public std::span<const IntVar> {
 public:
  template <class R>  // not by a conversion to a span: to see whether there is one takes the compiler long
  requires requires(const R &vars) {
    { vars.data() } -> std::convertible_to<const IntVar *>;
    { vars.size() } -> std::convertible_to<std::size_t>;
  }
  Vars(const R &vars) : span(vars.data(), vars.size()) {}
  template <std::size_t n>
  Vars(const IntVar (&vars)[n]) : span(vars, n) {}
  Vars(std::initializer_list<IntVar> vars) : span(vars.begin(), vars.size()) {}
};

namespace detail {

inline int sizeOf(std::size_t n) {
  if (n > INT_MAX) throw std::length_error("koru: more than 2147483647 elements");
  return static_cast<int>(n);
}

inline void sameSize(std::size_t a, std::size_t b) {
  if (a != b) throw std::invalid_argument("koru: arrays that differ in size");
}

// A copy that has an address also when it is empty: the library refuses null arrays.
KORU_APART inline std::vector<int> copyOf(std::vector<int> copy) {
  copy.reserve(1);
  return copy;
}

// A callback of the host's on an array of variables.
struct Hook {
  State *state;
  std::vector<IntVar> vars;
  std::function<bool(std::span<const IntVar>)> run;
  Hook *next;
};

// The callbacks of a model. A list, as a vector of them would take longer to compile.
struct Hooks {
  Hook *first = nullptr;

  Hooks() = default;
  Hooks(const Hooks &) = delete;
  Hooks &operator=(const Hooks &) = delete;
  KORU_APART ~Hooks() {
    while (first != nullptr) delete std::exchange(first, first->next);
  }
};

struct State {
  std::vector<CSint *> vars;                 // those that handles stand for, in the order of their making
  std::vector<std::vector<CSint *>> arrays;  // constraints of koru.h keep what they are given
  Hooks hooks;
  std::exception_ptr thrown;   // by a callback; on its way to the caller
  Place place{"", 0, ""};      // of the posting under way
  std::string placeText;       // what the locator has told last
  CSsearch *active = nullptr;  // the search under way
  CSsolver *parked = nullptr;
  CSint *zero = nullptr;
  CSprofiler *profiler = nullptr;
  bool profileDetails = false;
  bool outOfMemory = false;

  KORU_APART State() {
    if (running() != nullptr) running()->park();
    if (CSINT(0) != nullptr) throw std::logic_error("koru: a solver runs that belongs to no model");
    cs_init();
    cs_setErrHandler(CS_ERR_MEMORY, noteMemory, this);
    zero = CSINT(0);
    if (zero == nullptr) {
      cs_end();
      throw std::bad_alloc();
    }
    running() = this;
  }
  State(const State &) = delete;
  State &operator=(const State &) = delete;

  // Where a callback of another model is running, the solver can't be parked to end this one: better lost than wrong.
  KORU_APART ~State() {
    State *other = running() != this ? running() : nullptr;
    if (other != nullptr && !other->tryPark()) return;
    if (running() == this || cs_attachSolver(parked)) cs_end();
    running() = nullptr;
    if (other != nullptr && cs_attachSolver(other->parked)) running() = other;
  }

  __attribute__((visibility("default"))) static State *&running() {
    static KORU_OF_THREAD State *state = nullptr;
    return state;
  }

  KORU_APART bool tryPark() {
    CSsolver *solver = cs_detachSolver();
    if (solver == nullptr) return false;
    parked = solver;
    running() = nullptr;
    return true;
  }

  KORU_APART void park() {
    if (running() == this && !tryPark())
      throw std::logic_error("koru: another model cannot be used within a callback of the library");
  }

  void use() {
    if (running() != this) attach();
  }

  KORU_APART void attach() {
    if (running() != nullptr) running()->park();
    if (!cs_attachSolver(parked)) throw std::logic_error("koru: another solver is running");
    running() = this;
  }

  static void noteMemory(CSint *, void *self) { static_cast<State *>(self)->outOfMemory = true; }

  // Throws what a callback has thrown, or the lack of memory: then a constraint is missing, and the model not to be
  // used.
  KORU_APART void rethrow() {
    if (thrown) std::rethrow_exception(std::exchange(thrown, nullptr));
    if (outOfMemory) throw std::bad_alloc();
  }

  // To be called with the result of each posting: a refusal is counted by the solver and taken back with its context.
  KORU_APART bool check(bool posted) {
    if (!posted && cs_getNbRefused() == 0) static_cast<void>(cs_NEQ(zero, 0));
    rethrow();
    return posted;
  }

  // The handle of a variable that a function has made. After a refusal there is none, and the model has failed.
  KORU_APART IntVar add(CSint *v) {
    check(v != nullptr);
    vars.push_back(v != nullptr ? v : zero);
    return {this, vars.size() - 1};
  }

  KORU_APART CSint *create(int min, int max) {
    if (min > max) throw std::invalid_argument("koru: a variable without a value");
    CSint *v = cs_createCSint(min, max);
    rethrow();
    return v;
  }

  // Handles of all variables, in the order of their making.
  KORU_APART std::vector<IntVar> all() {
    std::vector<IntVar> handles;
    for (std::size_t i = 0; i < vars.size(); ++i) handles.push_back({this, i});
    return handles;
  }

  KORU_APART CSint *pointer(IntVar v) const {
    if (v.state_ != this) throw std::invalid_argument("koru: a variable of another model, or of none");
    return vars[v.index_];
  }

  KORU_APART std::vector<CSint *> pointers(std::span<const IntVar> from) const {
    std::vector<CSint *> all;
    all.reserve(from.size() + 1);
    for (const IntVar &v : from) all.push_back(pointer(v));
    return all;
  }

  // Stays where it is, as those do that are kept later.
  KORU_APART CSint **keep(std::span<const IntVar> from) {
    arrays.push_back(pointers(from));
    return arrays.back().data();
  }

  // Runs a callback of the host's. What it throws waits for the caller, and the search ends.
  template <class Result, class Callback>
  Result guard(Result otherwise, Callback callback) {
    if (thrown) return otherwise;
    try {
      return callback();
    } catch (...) {
      thrown = std::current_exception();
      cs_stopSearch(active);
      return otherwise;
    }
  }
};

// The state of a variable, with its solver running.
KORU_APART inline void refuseNothing() { throw std::logic_error("koru: a variable or model of nothing"); }

inline State &stateOf(State *state) {
  if (state == nullptr) refuseNothing();
  state->use();
  return *state;
}

}  // namespace detail

inline CSint *IntVar::get() const { return detail::stateOf(state_).vars[index_]; }
inline int IntVar::min() const { return cs_getMin(get()); }
inline int IntVar::max() const { return cs_getMax(get()); }
inline int IntVar::size() const { return cs_getNbElements(get()); }
inline bool IntVar::fixed() const { return min() == max(); }
inline bool IntVar::contains(int value) const { return cs_isIn(get(), value); }

inline int IntVar::value() const {
  if (!fixed()) throw std::logic_error("koru: the value of a variable that has several");
  return min();
}

KORU_APART inline std::vector<int> IntVar::domain() const {
  CSint *v = get();
  std::vector<int> values{cs_getMin(v)};
  for (const int last = cs_getMax(v); values.back() < last;) values.push_back(cs_getNextValue(v, values.back()));
  return values;
}

KORU_APART inline std::string IntVar::name() const {
  const char *text = cs_getName(get());
  return text != nullptr ? text : "";
}

KORU_APART inline void IntVar::name(const char *text) const {
  cs_setName(get(), text);
  state_->rethrow();
}

/// A variable as cs_printf's %T shows it: "x: {0..3, 7}", "x: 5".
KORU_APART inline std::ostream &operator<<(std::ostream &out, const IntVar &v) {
  if (const std::string name = v.name(); !name.empty()) out << name << ": ";
  if (v.fixed()) return out << v.min();
  CSint *pointer = v.get();
  const char *before = "{";
  for (int from = v.min();; from = cs_getNextValue(pointer, from)) {
    int to = from;
    while (to < v.max() && cs_isIn(pointer, to + 1)) ++to;
    out << before << from;
    if (to > from) out << (to == from + 1 ? ", " : "..") << to;
    if (to == v.max()) return out << '}';
    before = ", ";
    from = to;
  }
}

/// Rows of a matrix that is stored row by row; its width must divide the number of variables.
KORU_APART inline std::vector<std::vector<IntVar>> rows(Vars vars, std::size_t width) {
  if (width == 0 || vars.size() % width != 0) throw std::invalid_argument("koru: rows of different width");
  std::vector<std::vector<IntVar>> all;
  for (std::size_t i = 0; i < vars.size(); i += width)
    all.emplace_back(vars.begin() + static_cast<std::ptrdiff_t>(i),
                     vars.begin() + static_cast<std::ptrdiff_t>(i + width));
  return all;
}

/// Columns of a matrix that is stored row by row.
KORU_APART inline std::vector<std::vector<IntVar>> columns(Vars vars, std::size_t width) {
  if (width == 0 || vars.size() % width != 0) throw std::invalid_argument("koru: rows of different width");
  std::vector<std::vector<IntVar>> all(width);
  for (std::size_t i = 0; i < vars.size(); ++i) all[i % width].push_back(vars[i]);
  return all;
}

}  // namespace v1
}  // namespace koru
