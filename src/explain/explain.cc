// SPDX-License-Identifier: MIT
// cs_explainFailure, cs_writeExplanation, cs_freeExplanation: why a model has no solution, or what would have to go.
//
// Consistency: exact where the model's answers are.  Cost: the runs; memory linear in the postings.
// State: none but the censor (core/ports), which is there while the model runs.
#include <new>

#include "core/solver.h"
#include "explain/explanation.h"
#include "explain/place_text.h"

namespace koru::explain {

namespace {

// The host's solver, if there is one, while others run.
class Aside {
 public:
  Aside() : running_(solver::initialised), handlers_(solver::errors) {
    if (running_) parked_ = cs_detachSolver();
  }
  Aside(const Aside &) = delete;
  Aside &operator=(const Aside &) = delete;
  ~Aside() {
    if (running_) {
      cs_attachSolver(parked_);
    } else {
      solver::errors = handlers_;
    }
  }

  explicit operator bool() const { return !running_ || parked_ != nullptr; }
  const Errors &handlers() const { return handlers_; }

 private:
  bool running_;
  Errors handlers_;
  CSsolver *parked_ = nullptr;
};

// Between two runs there is no solver: what is looked up then is forgotten here.
struct PlacesLookedUp {
  PlacesLookedUp() = default;
  PlacesLookedUp(const PlacesLookedUp &) = delete;
  PlacesLookedUp &operator=(const PlacesLookedUp &) = delete;
  ~PlacesLookedUp() { forgetPlaces(); }
};

bool isAcceptable(const CSexplainOptions &o) {
  return o.size == sizeof(CSexplainOptions) && o.maxChecks >= 0 && o.milliseconds >= 0;
}

Explanation *create() {
  void *memory = allocate(sizeof(Explanation));
  return memory != nullptr ? new (memory) Explanation : nullptr;
}

void explain(CSmodel model, void *extra, const CSexplainOptions &options, const Errors &handlers, Explanation &e) {
  const PlacesLookedUp lookedUp;
  Runs runs(model, extra, handlers);
  Reasons reasons(runs, options);
  e.nearest = options.nearest;
  const auto early = [&] {
    e.status = CS_EXPLAINED_PARTLY;
    if (options.placesKnown != nullptr && e.nameReasons(runs, reasons)) options.placesKnown(&e, options.extra);
  };
  e.status = reasons.find(early);
  if (!e.nameReasons(runs, reasons)) e.status = CS_EXPLAINED_MEMORY;
}

// ----- the text

void writeReason(std::FILE *f, const CSreason &reason) {
  writePlace(f, reason.file, reason.line);
  std::fprintf(f, "  %s", reason.function);
  if (reason.numberOf > 1) std::fprintf(f, "  no. %d of %d", reason.number, reason.numberOf);
  writeSource(f, reason.file, reason.line);
  std::fputc('\n', f);
}

const char *plural(int n) { return n == 1 ? "" : "s"; }

const char *headOf(const CSexplanation &e) {
  switch (e.status) {
    case CS_EXPLAINED_SOLUTION:
      return "there is a solution";
    case CS_EXPLAINED_UNKNOWN:
      return "not known whether there is a solution";
    case CS_EXPLAINED_NEVER:
      return "no solution, whatever is left out";
    case CS_EXPLAINED_MEMORY:
      return "memory exhausted";
    case CS_EXPLAINED_UNSTABLE:
      return e.nearest ? "a solution, but not each time, without" : "no solution, but not each time, because of";
    default:
      return e.nearest ? "a solution without" : "no solution, because of";
  }
}

void writeHead(std::FILE *f, const CSexplanation &e) {
  std::fputs(headOf(e), f);
  if (e.size > 0) {
    std::fputs(e.status == CS_EXPLAINED_MEMORY ? ": " : " ", f);
    std::fprintf(f, "%d posting%s at %d place%s (of %d at %d)", e.size, plural(e.size), e.places, plural(e.places),
                 e.allPostings, e.allPlaces);
  }
  if (e.status != CS_EXPLAINED_MINIMAL && e.size > 0) std::fputs(", perhaps fewer", f);
  std::fprintf(f, "; %d check%s\n", e.checks, plural(e.checks));
}

}  // namespace
}  // namespace koru::explain

using namespace koru;
using namespace koru::explain;

const CSexplanation *cs_explainFailure(CSmodel model, void *extra, const CSexplainOptions *options) {
  CSexplainOptions defaults = {};
  defaults.size = sizeof defaults;
  if (options == nullptr) options = &defaults;
  if (model == nullptr || !isAcceptable(*options) || solver::censor.leavesOut != nullptr) return nullptr;
  if (!hostHasCalled() || solver::hostAsked > 0) return nullptr;
  Explanation *e = create();
  if (e == nullptr) return nullptr;
  const Aside aside;
  if (!aside) {
    cs_freeExplanation(e);
    return nullptr;
  }
  koru::explain::explain(model, extra, *options, aside.handlers(), *e);
  return e;
}

void cs_writeExplanation(const CSexplanation *explanation, FILE *f) {
  if (explanation == nullptr || f == nullptr) return;
  writeHead(f, *explanation);
  for (int i = 0; i < explanation->size; ++i) writeReason(f, explanation->reasons[i]);
}

void cs_freeExplanation(const CSexplanation *explanation) {
  if (explanation == nullptr) return;
  auto *e = const_cast<Explanation *>(static_cast<const Explanation *>(explanation));
  e->~Explanation();
  deallocate(e);
}
