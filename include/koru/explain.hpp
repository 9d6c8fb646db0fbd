// SPDX-License-Identifier: MIT
// Copyright (c) The Koru authors
//
// Part of koru.hpp: why a model has no solution, by cs_explainFailure, where more is said; and at the end why a value
// is gone, by cs_whyRemoved.
//
//     auto why = koru::explain([](koru::Model &m) {
//       auto x = m.ints(3, 0, 9);
//       m.post(x[0] < x[1], x[1] < x[2]);
//       m.post(x[2] <= 1);
//     });
//     std::cout << why;                  // no solution, because of 3 postings at 3 places ...
//
// The model is written as a function, which is called again and again, each time with a new model.
#pragma once

#include "../koru.hpp"

namespace koru {
inline namespace v1 {

/// What an explanation has come to.
enum class Explained {
  minimal = CS_EXPLAINED_MINIMAL,
  partly = CS_EXPLAINED_PARTLY,
  solution = CS_EXPLAINED_SOLUTION,
  unknown = CS_EXPLAINED_UNKNOWN,
  never = CS_EXPLAINED_NEVER,
  unstable = CS_EXPLAINED_UNSTABLE,
  memory = CS_EXPLAINED_MEMORY
};

/// A posting: the function of the C interface that it came to, and the line that says it. A condition of several parts
/// comes to several postings on one line.
struct Reason {
  std::string function;
  std::string file;
  int line = 0;
  std::string caller{};
  int number = 1;     ///< how manyth of the same function it is on this line,
  int number_of = 1;  ///< of so many
  int position = 1;   ///< how manyth it is of all postings
};

struct Explanation {
  Explained status = Explained::unknown;
  std::vector<Reason> reasons{};
  int places = 0;
  int checks = 0;  ///< the model was made so many times
  bool nearest = false;
};

KORU_APART inline std::ostream &operator<<(std::ostream &out, const Reason &r) {
  out << r.file << ':' << r.line << "  " << r.function;
  if (r.number_of > 1) out << "  no. " << r.number << " of " << r.number_of;
  return out;
}

/// A line that sums up, and one for each posting.
KORU_APART inline std::ostream &operator<<(std::ostream &out, const Explanation &e) {
  static constexpr const char *others[] = {"there is a solution", "not known whether there is a solution",
                                           "no solution, whatever is left out"};
  const bool hasNone = e.status >= Explained::solution && e.status <= Explained::never;
  if (hasNone) return out << others[static_cast<int>(e.status) - CS_EXPLAINED_SOLUTION] << '\n';
  const auto head = [&] {
    switch (e.status) {
      case Explained::memory:
        return "memory exhausted:";
      case Explained::unstable:
        return e.nearest ? "a solution, but not each time, without" : "no solution, but not each time, because of";
      default:
        return e.nearest ? "a solution without" : "no solution, because of";
    }
  };
  out << head();
  if (!e.reasons.empty())
    out << ' ' << e.reasons.size() << (e.reasons.size() == 1 ? " posting at " : " postings at ") << e.places
        << (e.places == 1 ? " place" : " places") << (e.status == Explained::minimal ? "" : ", perhaps fewer");
  out << '\n';
  for (const Reason &r : e.reasons) out << r << '\n';
  return out;
}

/// How to explain. A model that is posted without a refusal is searched with `search`; of one that has a limit, what is
/// not found by then is not known.
struct Explain {
  bool nearest = false;  ///< what would have to go for a solution, instead
  Search search{};
  int checks = 0;      ///< limits; 0: none
  double seconds = 0;  ///< looked at between two calls
};

namespace detail {

// One explanation under way.
struct Explaining {
  const std::function<void(Model &)> &build;
  const Explain &how;
  std::exception_ptr thrown{};

  // With a solver running that is no model's: the model begins its own.
  static int run(void *self) {
    auto &explaining = *static_cast<Explaining *>(self);
    cs_end();
    try {
      return explaining.answer();
    } catch (...) {
      explaining.thrown = std::current_exception();
      return CS_MODEL_STOP;
    }
  }

  KORU_APART int answer() const {
    Model m;
    m.name_places();
    build(m);
    if (m.failed()) return CS_MODEL_NONE;
    const Result r = m.solve(how.search);
    if (r.best) return CS_MODEL_SOLUTION;
    return r.status == Status::exhausted ? CS_MODEL_NONE : CS_MODEL_UNKNOWN;
  }
};

KORU_APART inline Explanation copyOf(const CSexplanation &e) {
  Explanation copy{static_cast<Explained>(e.status), {}, e.places, e.checks, e.nearest};
  for (int i = 0; i < e.size; ++i) {
    const CSreason &r = e.reasons[i];
    copy.reasons.push_back({r.function, r.file, r.line, r.caller, r.number, r.numberOf, r.position});
  }
  return copy;
}

}  // namespace detail

/// Why the model that `build` makes has no solution. Throws what `build` throws; std::logic_error within a callback,
/// for limits below 0, and without memory to begin with.
KORU_APART inline Explanation explain(const std::function<void(Model &)> &build, const Explain &how = {}) {
  if (detail::State *running = detail::State::running()) running->park();
  detail::Explaining explaining{build, how};
  CSexplainOptions options{};
  options.size = sizeof options;
  options.nearest = how.nearest;
  options.maxChecks = how.checks;
  options.milliseconds = detail::milliseconds(how.seconds);
  const std::unique_ptr<const CSexplanation, decltype(&cs_freeExplanation)> e(
      cs_explainFailure(detail::Explaining::run, &explaining, &options), cs_freeExplanation);
  if (explaining.thrown) std::rethrow_exception(explaining.thrown);
  if (!e) throw std::logic_error("koru: nothing can be explained here");
  return detail::copyOf(*e);
}

KORU_APART inline Explanation Model::explain(const std::function<void(Model &)> &build) { return koru::explain(build); }
KORU_APART inline Explanation Model::explain(const std::function<void(Model &)> &build, const Explain &how) {
  return koru::explain(build, how);
}

/// A change of a domain, and who made it.
struct Removal {
  std::string variable;  ///< its name
  std::string relation;  ///< to the value: "=", "!=", "<=" or ">="
  int value = 0;
  bool by_search = false;  ///< a decision, or a bound on an objective
  std::string function{};  ///< of the C interface; empty for a search, and where it is not known
  std::string file{};
  int line = 0;
  std::string caller{};
};

KORU_APART inline std::ostream &operator<<(std::ostream &out, const Removal &r) {
  out << r.variable << ' ' << r.relation << ' ' << r.value << "  ";
  if (r.function.empty()) return out << (r.by_search ? "a search" : "not known by whom");
  return out << r.function << "  " << r.file << ':' << r.line;
}

/// Records who changes domains from here on, by the lines that post; see cs_recordRemovals. Throws std::logic_error
/// within a callback or a search.
KORU_APART inline void record_removals(Model &m, bool on = true) {
  m.use();
  if (on) m.name_places();
  if (!cs_recordRemovals(on)) throw std::logic_error("koru: removals cannot be recorded here");
}

/// Who has taken the value from the variable, and what had made it do so, back to a posting or a decision; nothing for
/// a value that is there, never was, or went before record_removals. Throws std::logic_error when nothing is recorded.
KORU_APART inline std::vector<Removal> why_removed(const IntVar &x, int value) {
  static constexpr const char *relations[] = {"=", "!=", "<=", "<", ">=", ">"};
  const std::unique_ptr<const CSremovals, decltype(&cs_freeRemovals)> found(cs_whyRemoved(x.get(), value),
                                                                            cs_freeRemovals);
  if (!found) throw std::logic_error("koru: removals are not recorded");
  std::vector<Removal> steps;
  for (int i = 0; i < found->size; ++i) {
    const CSremoval &s = found->steps[i];
    const char *name = cs_getName(s.variable);
    steps.push_back({name != nullptr ? name : "a variable", relations[s.change.method], s.change.value, s.bySearch,
                     s.function, s.file, s.line, s.caller});
  }
  return steps;
}

}  // namespace v1
}  // namespace koru
