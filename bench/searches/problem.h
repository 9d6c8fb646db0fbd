// SPDX-License-Identifier: MIT
// What the problems of koru_searches share: a model in a running solver, and how it is searched.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "koru_extras.h"

namespace koru::bench::searches {

using Array = std::vector<CSint *>;

// The arrays live as long as the constraints that keep them.
class Model {
 public:
  Model() {
    cs_init();
    options.size = sizeof options;
  }
  Model(const Model &) = delete;
  Model &operator=(const Model &) = delete;
  ~Model() { cs_end(); }

  Array &array() { return arrays_.emplace_back(); }
  Array &array(int size, int min, int max) {
    Array &result = array();
    while (static_cast<int>(result.size()) < size) result.push_back(cs_createCSint(min, max));
    return result;
  }
  void require(bool posted) { consistent = consistent && posted; }

  Array vars;                   // labelled
  std::vector<CSorder> orders;  // then these
  int ordersBy = CS_ORDER_SLACK;
  Array then;  // and then these, the least value first
  int thenBy = CS_ORDER_SMALLEST_MIN;
  CSsearchOptions options{};  // but for limits
  bool consistent = true;

 private:
  std::deque<Array> arrays_;
};

// What a search came to.
struct Result {
  std::string status;
  bool found = false;
  int objective = 0;
  double secondsToBest = -1;
  double seconds = 0;
  long long choicePoints = 0;
  long long fails = 0;
};

// How often a search ended well, for problems that are many of a kind.
inline bool isProof(const Result &r) { return r.status == "optimal" || r.status == "exhausted"; }

struct Problem {
  const char *name;
  int instances;  // numbered from 1; 0: those that were read or drawn
  bool optimizes;
  void (*post)(Model &model, int instance);
  Result (*peer)(int instance, double seconds) = nullptr;  // the same by another solver
};

void postQuasigroup(Model &model, int instance);
void postGolfers(Model &model, int instance);
void postJobShop(Model &model, int instance);  // la01 to la05

// Those of schedules.h.
void postJobShops(Model &model, int instance);
void postOpenShops(Model &model, int instance);
void postProject(Model &model, int instance);            // sets times
void postProjectByFailures(Model &model, int instance);  // weighted degrees and restarts
void postChoices(Model &model, int instance);            // the first schedule

// Those of cars.h and rectangles.h, with the variables in order, the least value first: the same tree where the same
// values are taken out.
void postCars(Model &model, int instance);
void postCarsByFailures(Model &model, int instance);  // weighted degrees and restarts
void postRectangles(Model &model, int instance);

// How soon a search ends in the middle of one long propagation; printed.
void measureStopping();

// What a search object costs over cs_findAll, in so many runs of each, on the problems with `only` in their names.
void measureOverhead(const char *only, int rounds);

#if KORU_BENCH_HAS_GECODE
// The same quasigroup by Gecode: accumulated failure counts, Luby restarts with no-goods, domain-consistent distinct.
Result searchQuasigroupByGecode(int instance, double seconds);
// Unary and cumulative at their highest level, accumulated failure counts, restarts with no-goods.
Result searchJobShopByGecode(int instance, double seconds);
Result searchOpenShopByGecode(int instance, double seconds);
Result searchProjectByGecode(int instance, double seconds);
Result searchChoicesByGecode(int instance, double seconds);
Result searchCarsByGecode(int instance, double seconds);
Result searchCarsByFailuresByGecode(int instance, double seconds);
Result searchRectanglesByGecode(int instance, double seconds);
#endif

}  // namespace koru::bench::searches
