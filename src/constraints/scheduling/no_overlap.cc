// SPDX-License-Identifier: MIT
// cs_NoOverlap: rectangles [x, x + width) by [y, y + height); no two share a point.
// Consistency: bounds. Of two rectangles one is left of, right of, below or above the other one: when one way is left,
// it is imposed. Along each axis rectangles share what lies between the least and the greatest place across, as tasks
// share a resource (SharedResource; Aggoun, Beldiceanu, Extending CHIP in order to solve complex scheduling and
// placement problems, 1993). Complete assignments are told exactly. Cost: a run of O(n^2), until it finds nothing.
// State: none.  Wakes: when a bound of any variable moves. Deliberate: a rectangle that may have no area is in nobody's
// way.
#include <algorithm>

#include "constraints/scheduling/shared_resource.h"
#include "constraints/scheduling/tasks.h"
#include "koru_extras.h"

namespace koru::scheduling {

// Places and sizes in one direction.
struct Axis {
  Buffer<CSint *> places;
  Buffer<CSint *> sizes;

  bool copy(CSint *const *givenPlaces, CSint *const *givenSizes, int n) {
    places = copyVariables(givenPlaces, n);
    if (!places) return false;
    sizes = copyVariables(givenSizes, n);
    return static_cast<bool>(sizes);
  }
  std::int64_t size(int n) const { return sizeOf(places.get(), n) + sizeOf(sizes.get(), n); }
  bool hasSize(int i) const { return sizes[i]->min > 0; }
  bool mayPrecede(int i, int j) const { return Time{places[i]->min} + sizes[i]->min <= places[j]->max; }
  bool maySeparate(int i, int j) const { return mayPrecede(i, j) || mayPrecede(j, i); }
  bool precede(int i, int j) const {
    const Time first = places[i]->min;
    const Time last = places[j]->max;
    return narrowMax64(places[i], last - sizes[i]->min) && narrowMin64(places[j], first + sizes[i]->min) &&
           narrowMax64(sizes[i], last - first);
  }
};

struct NoOverlap : Deferred {
  Axis x;
  Axis y;
  int n;
  SharedResource resource;

  bool hasArea(int i) const { return x.hasSize(i) && y.hasSize(i); }
  std::int64_t size() const { return x.size(n) + y.size(n); }
};

// ----- two rectangles

static bool keepApart(const NoOverlap &c, int i, int j) {
  const bool x = c.x.maySeparate(i, j);
  const bool y = c.y.maySeparate(i, j);
  if (x == y) return x;
  const Axis &axis = x ? c.x : c.y;
  if (axis.mayPrecede(i, j) && axis.mayPrecede(j, i)) return true;
  return axis.mayPrecede(i, j) ? axis.precede(i, j) : axis.precede(j, i);
}

// Beside j, which it meets in the other direction and cannot follow, i ends before j or has no size.
static bool limitSize(const NoOverlap &c, const Axis &along, const Axis &across, int i, int j) {
  if (!c.hasArea(j) || !across.hasSize(i) || across.maySeparate(i, j) || along.mayPrecede(j, i)) return true;
  return narrowMax64(along.sizes[i], std::max<Time>(0, Time{along.places[j]->max} - along.places[i]->min));
}

static bool keepAllApart(const NoOverlap &c) {
  for (int i = 0; i < c.n; ++i)
    for (int j = 0; j < c.n; ++j) {
      if (i == j) continue;
      if (i < j && c.hasArea(i) && c.hasArea(j) && !keepApart(c, i, j)) return false;
      if (!limitSize(c, c.x, c.y, i, j) || !limitSize(c, c.y, c.x, i, j)) return false;
    }
  return true;
}

// ----- along an axis, all of them

static bool shareAlong(NoOverlap &c, const Axis &along, const Axis &across) {
  Time first = INT64_MAX;
  Time last = INT64_MIN;
  for (int i = 0; i < c.n; ++i) {
    const Presence presence = across.hasSize(i) ? Presence::kIn : Presence::kOut;
    c.resource[i] = {taskOf(along.places[i], along.sizes[i], presence), across.sizes[i]->min};
    if (!c.hasArea(i)) continue;
    first = std::min<Time>(first, across.places[i]->min);
    last = std::max(last, Time{across.places[i]->max} + across.sizes[i]->min);
  }
  if (first == INT64_MAX) return true;
  if (!c.resource.filter(last - first)) return false;
  for (int i = 0; i < c.n; ++i)
    if (!keepStart(c.resource[i].task, along.places[i])) return false;
  return true;
}

static bool filter(NoOverlap &c) {
  for (int i = 0; i < c.n; ++i)
    if (!narrowMin(c.x.sizes[i], 0) || !narrowMin(c.y.sizes[i], 0)) return false;
  return keepAllApart(c) && shareAlong(c, c.x, c.y) && shareAlong(c, c.y, c.x);
}

constexpr auto kTable = deferred<toFixpoint<NoOverlap, filter>>(Rank::kQuadratic, kBoundsMove);

struct Rectangles {
  CSint **x;
  CSint **widths;
  CSint **y;
  CSint **heights;
};

static bool post(const Poster &poster, const Rectangles &given, int n) {
  NoOverlap record{{}, {}, {}, n, {}};
  if (!record.x.copy(given.x, given.widths, n) || !record.y.copy(given.y, given.heights, n)) return false;
  Posting posting{poster};
  if (!posting) return false;
  if (n == 0) return true;
  record.resource = SharedResource(n);
  if (!record.resource) return false;
  auto c = posting.add(kTable, std::move(record));
  for (CSint **array : {given.x, given.widths, given.y, given.heights})
    for (int i = 0; posting && i < n; ++i) c.attach(array[i], i, kBoundsMove);
  return posting && runSoon(*c);
}

}  // namespace koru::scheduling

bool cs_NoOverlap(CSint **x, CSint **widths, CSint **y, CSint **heights, int n) {
  return koru::leftOut("cs_NoOverlap") ||
         koru::door(koru::scheduling::post("cs_NoOverlap", {x, widths, y, heights}, n));
}
