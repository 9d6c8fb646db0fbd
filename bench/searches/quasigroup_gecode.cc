// SPDX-License-Identifier: MIT
#include <gecode/int.hh>
#include <gecode/minimodel.hh>
#include <gecode/search.hh>

#include <chrono>

#include "searches/problem.h"
#include "searches/quasigroup.h"

namespace koru::bench::searches {

namespace {

class Quasigroup : public Gecode::Space {
 public:
  explicit Quasigroup(int instance) : cells_(*this, shape.cells(), 1, shape.order) {
    const int order = shape.order;
    Grid grid = quasigroup(instance);
    Gecode::Matrix<Gecode::IntVarArray> matrix(cells_, order, order);
    for (int r = 0; r < order; ++r) {
      for (int c = 0; c < order; ++c)
        if (grid.at(r, c) != 0) Gecode::rel(*this, matrix(c, r), Gecode::IRT_EQ, grid.at(r, c));
      Gecode::distinct(*this, matrix.row(r), Gecode::IPL_DOM);
      Gecode::distinct(*this, matrix.col(r), Gecode::IPL_DOM);
    }
    Gecode::branch(*this, cells_, Gecode::INT_VAR_AFC_SIZE_MAX(0.95),
                   Gecode::INT_VAL_RND(Gecode::Rnd(static_cast<unsigned>(instance))));
  }
  Quasigroup(Quasigroup &other) : Gecode::Space(other) { cells_.update(*this, other.cells_); }
  Gecode::Space *copy() override { return new Quasigroup(*this); }
  bool master(const Gecode::MetaInfo &info) override { return Gecode::Space::master(info); }

 private:
  Gecode::IntVarArray cells_;
};

}  // namespace

Result searchQuasigroupByGecode(int instance, double seconds) {
  using Clock = std::chrono::steady_clock;
  Gecode::Search::TimeStop stop(static_cast<unsigned long>(seconds * 1000));
  Gecode::Search::Options options;
  options.threads = 1;
  options.cutoff = Gecode::Search::Cutoff::luby(100);
  options.nogoods_limit = 128;
  options.stop = &stop;
  const auto before = Clock::now();
  auto *problem = new Quasigroup(instance);
  Gecode::RBS<Quasigroup, Gecode::DFS> engine(problem, options);
  delete problem;
  const Quasigroup *solution = engine.next();
  Result result;
  result.seconds = std::chrono::duration<double>(Clock::now() - before).count();
  result.found = solution != nullptr;
  if (result.found) result.secondsToBest = result.seconds;
  result.status = result.found ? "solution" : engine.stopped() ? "time limit" : "exhausted";
  result.choicePoints = static_cast<long long>(engine.statistics().node);
  result.fails = static_cast<long long>(engine.statistics().fail);
  delete solution;
  return result;
}

}  // namespace koru::bench::searches
