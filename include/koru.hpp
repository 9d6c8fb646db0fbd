// SPDX-License-Identifier: MIT
// Copyright (c) The Koru authors
//
// Koru for C++20: models as C++ writes them, over koru.h and koru_extras.h. Headers only; link with koru as ever.
//
//     koru::Model m;
//     auto q = m.ints(8, 0, 7, "q");
//     std::vector<koru::IntVar> up, down;
//     for (int i = 0; i < 8; ++i) {
//       up.push_back(m.var(q[i] + i));
//       down.push_back(m.var(q[i] - i));
//     }
//     m.post(koru::all_different(q), koru::all_different(up), koru::all_different(down));
//     auto r = m.solve({.vars = q, .order = koru::smallest});
//     if (r.best) std::cout << r.best[q[0]] << '\n' << r.statistics << '\n';
//
// Weak: one solver runs at a time, so a program that goes to and fro between models parks and attaches at each change
// (constant time). A handle must not outlive its model, and no check tells. Whatever is created stays until the model
// ends, also what was posted in a context that is closed.
//
// - Failures: a constraint that is refused makes failed() true, until the context that it was posted in is closed. A
//   search then says `exhausted`, so nothing needs to be looked at in between. std::invalid_argument and
//   std::logic_error tell of misuse, std::bad_alloc of exhausted memory: after one from a posting a constraint is
//   missing, and the model throws it again at every search.
// - Callbacks may throw: the search stops, everything is undone, and the exception arrives at the caller.
// - Several models: see state.hpp. A model is used by one thread at a time. Where koru_threads is linked, define
//   KORU_THREADS in all of the program, and call park() before another thread goes on with the model.
// - Calls of the C interface mix freely after m.use(). Do not call cs_init, cs_end, cs_detachSolver, cs_attachSolver or
//   cs_setErrHandler for CS_ERR_MEMORY there.
#ifndef KORU_HPP
#define KORU_HPP

#include "koru/schedules.hpp"
#include "koru/search.hpp"

namespace koru {
inline namespace v1 {

/// A context: what is posted while it lives is undone when it ends. Contexts and searches end in the opposite order of
/// their beginning.
class Context {
 public:
  explicit Context(std::shared_ptr<detail::State> state) : state_(std::move(state)), label_(cs_saveContext()) {
    state_->rethrow();
  }
  Context(Context &&) noexcept = default;
  Context &operator=(Context &&) = delete;
  ~Context() {
    if (!state_) return;
    try {
      state_->use();
      cs_restoreContextUntil(label_);
    } catch (const std::logic_error &) {  // within a callback of another model: it stays open
    }
  }
  /// What was posted stays, until a context around this one ends.
  void keep() {
    state_->use();
    cs_forgetSaveContextUntil(label_);
    state_.reset();
  }

 private:
  std::shared_ptr<detail::State> state_;
  int label_;
};

struct Explain;
struct Explanation;

/// A model: variables, constraints and what they need, in a solver of its own.
class Model {
 public:
  KORU_APART Model() : state_(new detail::State()) {}
  Model(Model &&) noexcept = default;
  Model &operator=(Model &&) noexcept = default;
  KORU_APART ~Model() = default;

  // --- Variables ---

  IntVar var(int min, int max, const std::string &name = {}) { return named(state().create(min, max), name); }
  IntVar boolean(const std::string &name = {}) { return var(0, 1, name); }

  /// A variable over these values.
  KORU_APART IntVar var_of(const std::vector<int> &values, const std::string &name = {}) {
    if (values.empty()) throw std::invalid_argument("koru: a variable without a value");
    CSint *v = cs_createCSintFromDomain(values.data(), (state(), detail::sizeOf(values.size())));
    state().rethrow();
    return named(v, name);
  }

  /// n variables over min..max. With a name they are called name[0], name[1], ...
  KORU_APART std::vector<IntVar> ints(std::size_t n, int min, int max, const std::string &name = {}) {
    std::vector<IntVar> all;
    std::vector<char> text(name.size() + 32);
    for (std::size_t i = 0; i < n; ++i) {
      all.push_back(var(min, max));
      std::snprintf(text.data(), text.size(), "%s[%zu]", name.c_str(), i);
      if (!name.empty()) all[i].name(text.data());
    }
    return all;
  }
  std::vector<IntVar> bools(std::size_t n, const std::string &name = {}) { return ints(n, 0, 1, name); }

  /// All that the model has made, results included, in the order of their making.
  std::vector<IntVar> all() { return state().all(); }

  /// Constants, for constraints that want variables.
  IntVar constant(int value) { return var(value, value); }
  KORU_APART std::vector<IntVar> constants(const std::vector<int> &values) {
    std::vector<IntVar> all;
    for (const int value : values) all.push_back(constant(value));
    return all;
  }

  /// A variable that equals a sum: the variable itself where the sum is one. std::range_error when its bounds, as
  /// those of its variables are now, are no ints.
  KORU_APART IntVar var(const Linear &sum, const std::string &name = {}, Place where = {}) {
    const auto &terms = sum.terms();
    if (name.empty() && terms.size() == 1 && terms[0].coefficient == 1 && sum.constant() == 0) return terms[0].var;
    const Range range = bounds(sum);
    if (range.lo < INT_MIN || range.hi > INT_MAX) throw std::range_error("koru: a sum beyond the ints");
    const IntVar result = over(range);
    if (!name.empty()) result.name(name);
    post(Constraint(sum == result, where));
    return result;
  }

  /// A variable over 0..1 that is 1 exactly when the condition holds; of a truth value, the variable that it is.
  KORU_APART IntVar reify(const Condition &condition, Place where = {}) {
    state().place = where;
    return state().add(detail::Speaker(state()).truth(condition));
  }

  // --- Variables that are results; what they are stands with the C functions named ---

  IntVar min(Vars vars, Place where = {}) { return ofArray(cs_Min, vars, where); }
  IntVar max(Vars vars, Place where = {}) { return ofArray(cs_Max, vars, where); }
  /// cs_Abs.
  IntVar abs(IntVar x, Place where = {}) { return at(where).add(cs_Abs(state().pointer(x))); }
  /// cs_Mul: products beyond the ints count as the nearest int.
  KORU_APART IntVar product(IntVar x, IntVar y, Place where = {}) {
    return at(where).add(cs_Mul(state().pointer(x), state().pointer(y)));
  }
  /// x / y, cut off towards 0: cs_DivTrunc.
  KORU_APART IntVar div(IntVar x, IntVar y, Place where = {}) {
    const long long most = magnitude(x);
    return given(cs_DivTrunc, x, y, {-most, most}, where);
  }
  /// x % y as in C: cs_Mod.
  KORU_APART IntVar mod(IntVar x, IntVar y, Place where = {}) {
    Range range;
    range.widen(x.min());
    range.widen(x.max());
    return given(cs_Mod, x, y, range, where);
  }
  /// x to the power of y: cs_Pow.
  KORU_APART IntVar pow(IntVar x, IntVar y, Place where = {}) {
    const long long base = magnitude(x);
    long long most = 1;
    for (int i = 0; i < y.max() && most <= INT_MAX && base > 1; ++i) most *= base;
    return given(cs_Pow, x, y, {x.min() < 0 ? -most : 0, most}, where);
  }
  /// values[index]: cs_ElementOf.
  KORU_APART IntVar element(const std::vector<int> &values, IntVar index, Place where = {}) {
    if (values.empty()) throw std::invalid_argument("koru: an element of nothing");
    Range range{values[0], values[0]};
    for (const int value : values) range.widen(value);
    const IntVar result = over(range);
    post(koru::element(values, index, result, where));
    return result;
  }
  /// vars[index]: cs_VarElementOf.
  KORU_APART IntVar element(Vars vars, IntVar index, Place where = {}) {
    if (vars.empty()) throw std::invalid_argument("koru: an element of nothing");
    Range range{vars[0].min(), vars[0].max()};
    for (const IntVar &v : vars) {
      range.widen(v.min());
      range.widen(v.max());
    }
    const IntVar result = over(range);
    post(koru::element(vars, index, result, where));
    return result;
  }
  /// How many of the variables take the value.
  KORU_APART IntVar count(Vars vars, int value, Place where = {}) {
    const IntVar result = var(0, detail::sizeOf(vars.size()));
    post(koru::count(vars, value).is(result, where));
    return result;
  }
  /// How many different values the variables take.
  KORU_APART IntVar nvalues(Vars vars, Place where = {}) {
    const IntVar result = var(0, detail::sizeOf(vars.size()));
    post(koru::nvalues(vars, result, where));
    return result;
  }

  // --- Constraints ---

  /// Posts a constraint or a condition. @return false when it is refused; failed() remembers that.
  bool post(const Constraint &a) { return a.post(state()); }
  /// Several, in this order, up to the first that is refused. No parameter pack: with one, the line would be lost that
  /// a condition is posted by; and no default arguments, which take as long to compile as the others.
  bool post(const Constraint &a, const Constraint &b) { return post(a) && post(b); }
  bool post(const Constraint &a, const Constraint &b, const Constraint &c) { return post(a, b) && post(c); }
  bool post(const Constraint &a, const Constraint &b, const Constraint &c, const Constraint &d) {
    return post(a, b) && post(c, d);
  }
  bool post(const Constraint &a, const Constraint &b, const Constraint &c, const Constraint &d, const Constraint &e) {
    return post(a, b, c) && post(d, e);
  }
  bool post(const Constraint &a, const Constraint &b, const Constraint &c, const Constraint &d, const Constraint &e,
            const Constraint &f) {
    return post(a, b, c) && post(d, e, f);
  }
  KORU_APART bool post(const std::vector<Constraint> &all) {
    for (const Constraint &c : all)
      if (!post(c)) return false;
    return true;
  }

  /// Was a constraint refused? Then there is no solution, and no search finds one.
  bool failed() { return state(), cs_getNbRefused() > 0; }

  Context context() { return state(), Context(state_); }

  // --- Searching ---

  /// The first solution, or as many as .solutions says.
  KORU_APART Result solve(const Search &how = {}) { return run(Solutions(shared(), how), how, how.solutions > 0); }
  /// The solution with the least or the greatest sum. A sum that is no variable gets one, and stays a part of the
  /// model.
  KORU_APART Result minimize(const Linear &cost, const Search &how = {}) {
    return run(minimizing(cost, how), how, true);
  }
  KORU_APART Result maximize(const Linear &gain, const Search &how = {}) {
    return run(maximizing(gain, how), how, true);
  }
  /// Better and better solutions, one after the other.
  KORU_APART Solutions minimizing(const Linear &cost, const Search &how = {}) {
    CSint *objective = state().pointer(var(cost));
    return Solutions(shared(), how, objective, nullptr);
  }
  KORU_APART Solutions maximizing(const Linear &gain, const Search &how = {}) {
    CSint *objective = state().pointer(var(gain));
    return Solutions(shared(), how, nullptr, objective);
  }
  /// All solutions, one after the other: for (const auto &s : m.solutions({.vars = x})). The model stands at each; what
  /// is posted there is undone with the next one.
  Solutions solutions(const Search &how = {}) { return Solutions(shared(), how); }

  // --- The profiler ---

  /// Counts what constraints do from here on; those that are posted from here on by the lines that say them. With
  /// `details` also how long it takes, how often it is in vain, and how much it narrows (cs_setProfilerDetails).
  void profile(bool details = false) {
    State &s = state();
    name_places();
    if (s.profiler == nullptr) s.profiler = cs_createProfiler(0);
    s.profileDetails = details;
    cs_setProfilerDetails(s.profiler, details);
    cs_enableProfiler(s.profiler);
    s.rethrow();
  }
  /// What is posted from here on is known by the lines that say it.
  void name_places() { cs_setProfilerLocator(nullptr, locate, &state()); }
  /// The report, for koru-profile.
  void profile_report(const std::string &path) {
    const State &s = state();
    (s.profileDetails ? cs_profilerWriteDetailsFile : cs_profilerWriteFile)(s.profiler, path.c_str());
  }

  // --- Why there is no solution ---

  /// koru::explain, below: why the model that `build` makes has no solution. It makes models of its own, and this one
  /// stays as it is: m.explain(build).
  static Explanation explain(const std::function<void(Model &)> &build);
  static Explanation explain(const std::function<void(Model &)> &build, const Explain &how);

  // --- Several models ---

  /// Make this the running model, for calls of the C interface.
  void use() { state(); }
  /// Leave no model running, so that another thread, or a solver of the C interface, may go on.
  void park() {
    if (!state_) return;
    state_->park();
  }

 private:
  using State = detail::State;

  State &state() const { return detail::stateOf(state_.get()); }
  State &at(Place where) const {
    state().place = where;
    return state();
  }
  std::shared_ptr<State> shared() const { return state(), state_; }

  KORU_APART IntVar named(CSint *v, const std::string &name) {
    const IntVar handle = state().add(v);
    if (!name.empty()) handle.name(name);
    return handle;
  }

  KORU_APART IntVar ofArray(CSint *(*function)(CSint **, int), Vars vars, Place where) {
    State &s = at(where);
    return s.add(function(s.keep(vars), detail::sizeOf(vars.size())));
  }

  // From lo to hi; at first, 0 alone.
  struct Range {
    long long lo = 0;
    long long hi = 0;

    void widen(long long v) {
      lo = v < lo ? v : lo;
      hi = v > hi ? v : hi;
    }
  };

  // A variable over the ints of a range.
  KORU_APART IntVar over(Range r) {
    return var(static_cast<int>(r.lo < INT_MIN ? INT_MIN : r.lo), static_cast<int>(r.hi > INT_MAX ? INT_MAX : r.hi));
  }

  KORU_APART IntVar given(bool (*function)(CSint *, CSint *, CSint *), IntVar x, IntVar y, Range range, Place where) {
    const IntVar result = over(range);
    State &s = at(where);
    s.check(function(s.pointer(x), s.pointer(y), s.pointer(result)));
    return result;
  }

  static long long magnitude(IntVar x) {
    Range range;
    range.widen(x.max());
    range.widen(-static_cast<long long>(x.min()));
    return range.hi;
  }

  static Range bounds(const Linear &sum) {
    Range all{sum.constant(), sum.constant()};
    for (const Term &term : sum.terms()) {
      const long long a = detail::multiplied(term.coefficient, term.var.min());
      const long long b = detail::multiplied(term.coefficient, term.var.max());
      all.lo = detail::added(all.lo, a < b ? a : b);
      all.hi = detail::added(all.hi, a < b ? b : a);
    }
    return all;
  }

  KORU_APART static Result run(Solutions search, const Search &how, bool all) {
    Result result;
    while (search.next()) {
      if (how.found) how.found(search.solution());
      result.best = Solution(search.solution());
      if (!all) break;
    }
    result.status = search.status();
    result.statistics = search.statistics();
    return result;
  }

  // Runs within the library: without memory the place stays the last one.
  static const char *locate(void *self) {
    auto *s = static_cast<State *>(self);
    try {
      s->placeText = std::string(s->place.file) + '\t' + std::to_string(s->place.line) + "\t0\t" + s->place.function;
    } catch (const std::bad_alloc &) {
    }
    return s->placeText.c_str();
  }

  std::shared_ptr<State> state_;
};

}  // namespace v1
}  // namespace koru

#include "koru/explain.hpp"

#endif  // KORU_HPP
