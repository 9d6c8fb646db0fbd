// SPDX-License-Identifier: MIT
// cs_NoOverlap: rectangles [x, x + width) by [y, y + height); no two share a point.
// Consistency: bounds. Of two rectangles one is left of, right of, below or above the other one: when one way is left,
// it is imposed. Along each axis rectangles share what lies between the least and the greatest place across, as tasks
// share a resource (SharedResource; Aggoun, Beldiceanu, Extending CHIP in order to solve complex scheduling and
// placement problems, 1993). Complete assignments are told exactly. Cost: a run of O(n^2), until it finds nothing.
// State: none that is restored; along an axis that is as its rules left it last they are not asked again.  Wakes: when
// a bound of any variable moves.  Deliberate: a rectangle that may have no area is in nobody's way.
#include <algorithm>

#include "constraints/scheduling/shared_resource.h"
#include "constraints/scheduling/tasks.h"
#include "koru_extras.h"

namespace koru::scheduling {

// Where a rectangle lies in one direction at the least and at the most, as pairs compare it.
struct SideBounds {
  Time earliestEnd;
  Time latestStart;
};

// Places and sizes in one direction.
struct Axis {
  Buffer<CSint *> places;
  Buffer<CSint *> sizes;
  Buffer<SideBounds> sides;  // as last looked at: too wide at worst
  SharedResource resource;
  Time extent = 0;        // across, and
  bool isShared = false;  // the loads that the resource holds are what its rules have left

  bool copy(CSint *const *givenPlaces, CSint *const *givenSizes, int n) {
    places = copyVariables(givenPlaces, n);
    if (!places) return false;
    sizes = copyVariables(givenSizes, n);
    return static_cast<bool>(sizes);
  }
  bool makeRoom(int n) {
    if (!make(sides, static_cast<unsigned>(n))) return false;
    resource = SharedResource(n);
    return static_cast<bool>(resource);
  }
  std::int64_t size(int n) const { return sizeOf(places.get(), n) + sizeOf(sizes.get(), n); }
  bool hasSize(int i) const { return sizes[i]->min > 0; }
  void look(int i) { sides[i] = {Time{places[i]->min} + sizes[i]->min, places[i]->max}; }
  bool mayPrecede(int i, int j) const { return sides[i].earliestEnd <= sides[j].latestStart; }
  bool maySeparate(int i, int j) const { return mayPrecede(i, j) || mayPrecede(j, i); }
  bool precede(int i, int j) {
    const Time first = places[i]->min;
    const Time last = places[j]->max;
    if (!narrowMax64(places[i], last - sizes[i]->min) || !narrowMin64(places[j], first + sizes[i]->min) ||
        !narrowMax64(sizes[i], last - first))
      return false;
    look(i);
    look(j);
    return true;
  }
};

struct NoOverlap : Deferred {
  Axis x;
  Axis y;
  int n;
  Buffer<int> solid;  // those that certainly have an area

  bool hasArea(int i) const { return x.hasSize(i) && y.hasSize(i); }
  std::int64_t size() const { return x.size(n) + y.size(n); }
};

// ----- two rectangles

static bool keepApart(NoOverlap &c, int i, int j) {
  const bool x = c.x.maySeparate(i, j);
  const bool y = c.y.maySeparate(i, j);
  if (x == y) return x;
  Axis &axis = x ? c.x : c.y;
  if (axis.mayPrecede(i, j) && axis.mayPrecede(j, i)) return true;
  return axis.mayPrecede(i, j) ? axis.precede(i, j) : axis.precede(j, i);
}

// Beside j, which it meets in the other direction and cannot follow, i ends before j or has no size.
static bool limitSize(const Axis &along, const Axis &across, int i, int j) {
  if (!across.hasSize(i) || across.maySeparate(i, j) || along.mayPrecede(j, i)) return true;
  return narrowMax64(along.sizes[i], std::max<Time>(0, Time{along.places[j]->max} - along.places[i]->min));
}

static bool keepAllApart(NoOverlap &c) {
  int count = 0;
  for (int i = 0; i < c.n; ++i)
    if (c.hasArea(i)) c.solid[count++] = i;
  for (int k = 1; k < count; ++k)
    for (int m = 0; m < k; ++m)
      if (!keepApart(c, c.solid[m], c.solid[k])) return false;
  for (int i = 0; i < c.n && count < c.n; ++i)
    for (int k = 0; k < count && !c.hasArea(i); ++k)
      if (!limitSize(c.x, c.y, i, c.solid[k]) || !limitSize(c.y, c.x, i, c.solid[k])) return false;
  return true;
}

// ----- along an axis, all of them

static Time extentOf(const NoOverlap &c, const Axis &axis) {
  Time first = INT64_MAX;
  Time last = INT64_MIN;
  for (int i = 0; i < c.n; ++i) {
    if (!c.hasArea(i)) continue;
    first = std::min<Time>(first, axis.places[i]->min);
    last = std::max(last, Time{axis.places[i]->max} + axis.sizes[i]->min);
  }
  return first == INT64_MAX ? 0 : last - first;
}

// False when the rules have seen the same before.
static bool load(NoOverlap &c, Axis &along, const Axis &across) {
  const Time extent = extentOf(c, across);
  bool isNew = !along.isShared || extent != along.extent;
  along.extent = extent;
  for (int i = 0; i < c.n; ++i) {
    const Presence presence = across.hasSize(i) ? Presence::kIn : Presence::kOut;
    const Load now{taskOf(along.places[i], along.sizes[i], presence), across.sizes[i]->min};
    isNew = isNew || now != along.resource[i];
    along.resource[i] = now;
  }
  return isNew;
}

static bool shareAlong(NoOverlap &c, Axis &along, const Axis &across) {
  if (!load(c, along, across)) return true;
  along.isShared = along.resource.filter(along.extent);
  if (!along.isShared) return false;
  for (int i = 0; i < c.n; ++i)
    if (!keepStart(along.resource[i].task, along.places[i])) return false;
  return true;
}

static bool filter(NoOverlap &c) {
  for (int i = 0; i < c.n; ++i) {
    if (!narrowMin(c.x.sizes[i], 0) || !narrowMin(c.y.sizes[i], 0)) return false;
    c.x.look(i);
    c.y.look(i);
  }
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
  if (!record.x.makeRoom(n) || !record.y.makeRoom(n) || !make(record.solid, static_cast<unsigned>(n))) return false;
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
