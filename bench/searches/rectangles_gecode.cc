// SPDX-License-Identifier: MIT
// The same strips for Gecode: no overlap, and along each axis a cumulative at its highest level.
#include <gecode/int.hh>
#include <gecode/minimodel.hh>

#include "searches/gecode_search.h"
#include "searches/rectangles.h"

namespace koru::bench::searches {

namespace {

using Gecode::IntArgs;
using Gecode::IntVarArgs;

class Packing : public Gecode::IntMinimizeSpace {
 public:
  explicit Packing(const Strip &strip) : height_(*this, strip.least(), strip.stacked()) {
    IntVarArgs x;
    IntVarArgs y;
    IntArgs widths;
    IntArgs heights;
    for (const Rectangle &r : strip.rectangles) {
      x << Gecode::IntVar(*this, 0, strip.width - r.width);
      y << Gecode::IntVar(*this, 0, strip.stacked() - r.height);
      widths << r.width;
      heights << r.height;
      Gecode::rel(*this, y[y.size() - 1] + r.height <= height_);
    }
    Gecode::nooverlap(*this, x, widths, y, heights);
    Gecode::cumulative(*this, strip.width, y, heights, widths, Gecode::IPL_BASIC_ADVANCED);
    Gecode::cumulative(*this, height_, x, widths, heights, Gecode::IPL_BASIC_ADVANCED);
    Gecode::branch(*this, height_, Gecode::INT_VAL_MIN());
    places_ = Gecode::IntVarArray(*this, y + x);
    Gecode::branch(*this, places_, Gecode::INT_VAR_NONE(), Gecode::INT_VAL_MIN());
  }
  Packing(Packing &other) : Gecode::IntMinimizeSpace(other) {
    height_.update(*this, other.height_);
    places_.update(*this, other.places_);
  }
  Gecode::Space *copy() override { return new Packing(*this); }
  Gecode::IntVar cost() const override { return height_; }
  int objective() const { return height_.val(); }

 private:
  Gecode::IntVar height_;
  Gecode::IntVarArray places_;
};

}  // namespace

Result searchRectanglesByGecode(int instance, double seconds) {
  return searchOnce<Packing, Gecode::BAB>(new Packing(strips()[static_cast<std::size_t>(instance - 1)]), seconds,
                                          false);
}

}  // namespace koru::bench::searches
