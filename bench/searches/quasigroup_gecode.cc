// SPDX-License-Identifier: MIT
#include <gecode/int.hh>
#include <gecode/minimodel.hh>

#include "searches/gecode_search.h"
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

  static int objective() { return 0; }

 private:
  Gecode::IntVarArray cells_;
};

}  // namespace

Result searchQuasigroupByGecode(int instance, double seconds) {
  return searchAgain<Quasigroup, Gecode::DFS>(new Quasigroup(instance), Gecode::Search::Cutoff::luby(100), seconds,
                                              true);
}

}  // namespace koru::bench::searches
