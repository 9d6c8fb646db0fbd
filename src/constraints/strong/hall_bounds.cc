// SPDX-License-Identifier: MIT
#include "constraints/strong/hall_bounds.h"

#include <algorithm>

#include "core/narrow.h"

namespace koru {

// One after the other: the first request that fails is the last.
HallBounds::HallBounds(int count) : byMin_(count) {
  if (byMin_) byMax_ = decltype(byMax_)(count);
  if (byMax_) points_ = decltype(points_)(std::uint64_t{2} * static_cast<unsigned>(count) + 2);
  if (points_) room_ = Buffer<Interval>(count);
  for (int i = 0; room_ && i < count; ++i) {
    room_[i].position = i;
    byMin_[i] = byMax_[i] = &room_[i];
  }
}

// The order of the last run is nearly that of this one. Insertion takes a step for each pair that has changed places;
// after too many, it is sorted anew.
template <class T, class Before>
static void restoreOrder(T **items, int count, Before before) {
  int steps = 8 * count;
  for (int i = 1; i < count; ++i) {
    T *item = items[i];
    int k = i;
    for (; k > 0 && before(item, items[k - 1]) && steps > 0; --k, --steps) items[k] = items[k - 1];
    items[k] = item;
    if (steps == 0) return std::sort(items, items + count, before);
  }
}

// By bound, and by position where bounds are equal: events come in the same order everywhere.
void HallBounds::sort(int count) {
  for (int i = 0; i < count; ++i) {
    room_[i].min = room_[i].variable->min;
    room_[i].max = room_[i].variable->max;
  }
  restoreOrder(byMin_.get(), count, [](const Interval *a, const Interval *b) {
    return a->min != b->min ? a->min < b->min : a->position < b->position;
  });
  restoreOrder(byMax_.get(), count, [](const Interval *a, const Interval *b) {
    return a->max != b->max ? a->max < b->max : a->position < b->position;
  });
}

// The points are the distinct minima and maxima + 1, in order, between two guards.
void HallBounds::rank(int count) {
  int point = 0;
  int opened = 0;
  std::int64_t previous = std::int64_t{byMin_[0]->min} - 2;
  points_[0].bound = previous;
  const auto at = [&](std::int64_t bound) {
    if (bound != previous) points_[++point].bound = previous = bound;
    return point;
  };
  for (int closed = 0; closed < count;) {
    const std::int64_t end = std::int64_t{byMax_[closed]->max} + 1;
    if (opened < count && byMin_[opened]->min <= end) {
      Interval *interval = byMin_[opened++];
      interval->minRank = at(interval->min);
    } else {
      byMax_[closed++]->maxRank = at(end);
    }
  }
  last_ = point;
  points_[point + 1].bound = previous + 2;
}

int HallBounds::follow(int Point::*link, int from, bool up) const {
  for (int next = points_[from].*link; up ? next > from : next < from; next = points_[from].*link) from = next;
  return from;
}

void HallBounds::redirect(int Point::*link, int from, int to, int target) const {
  while (from != to) {
    const int next = points_[from].*link;
    points_[from].*link = target;
    from = next;
  }
}

bool HallBounds::raise(const Interval &interval, std::int64_t bound) {
  if (!narrowMin64(interval.variable, bound)) return false;
  fellInto_ = fellInto_ || interval.variable->min != bound;
  return true;
}

bool HallBounds::lower(const Interval &interval, std::int64_t bound) {
  if (!narrowMax64(interval.variable, bound)) return false;
  fellInto_ = fellInto_ || interval.variable->max != bound;
  return true;
}

void HallBounds::resetLower() {
  for (int i = 1; i <= last_ + 1; ++i) {
    points_[i].tree = points_[i].hall = i - 1;
    points_[i].left = points_[i].bound - points_[i - 1].bound;
  }
}

void HallBounds::resetUpper() {
  for (int i = 0; i <= last_; ++i) {
    points_[i].tree = points_[i].hall = i + 1;
    points_[i].left = points_[i + 1].bound - points_[i].bound;
  }
}

// Takes the intervals by rising maxima and raises the minima that lie in a Hall interval beyond its end.
bool HallBounds::filterLower(int count) {
  resetLower();
  Point *points = points_.get();
  for (int i = 0; i < count; ++i) {
    const Interval &interval = *byMax_[i];
    const int x = interval.minRank;
    const int y = interval.maxRank;
    int z = follow(&Point::tree, x + 1, true);
    const int before = points[z].tree;
    if (--points[z].left == 0) {
      points[z].tree = z + 1;
      z = follow(&Point::tree, z + 1, true);
      points[z].tree = before;
    }
    redirect(&Point::tree, x + 1, z, z);
    const std::int64_t needed = points[z].bound - points[y].bound;
    if (points[z].left < needed) return false;
    if (points[x].hall > x) {
      const int end = follow(&Point::hall, points[x].hall, true);
      if (!raise(interval, points[end].bound)) return false;
      redirect(&Point::hall, x, end, end);
    }
    if (points[z].left == needed) {
      redirect(&Point::hall, points[y].hall, before - 1, y);
      points[y].hall = before - 1;
    }
  }
  return true;
}

// The same from the other end.
bool HallBounds::filterUpper(int count) {
  resetUpper();
  Point *points = points_.get();
  for (int i = count - 1; i >= 0; --i) {
    const Interval &interval = *byMin_[i];
    const int x = interval.maxRank;
    const int y = interval.minRank;
    int z = follow(&Point::tree, x - 1, false);
    const int before = points[z].tree;
    if (--points[z].left == 0) {
      points[z].tree = z - 1;
      z = follow(&Point::tree, z - 1, false);
      points[z].tree = before;
    }
    redirect(&Point::tree, x - 1, z, z);
    const std::int64_t needed = points[y].bound - points[z].bound;
    if (points[z].left < needed) return false;
    if (points[x].hall < x) {
      const int end = follow(&Point::hall, points[x].hall, false);
      if (!lower(interval, points[end].bound - 1)) return false;
      redirect(&Point::hall, x, end, end);
    }
    if (points[z].left == needed) {
      redirect(&Point::hall, points[y].hall, before + 1, y);
      points[y].hall = before + 1;
    }
  }
  return true;
}

bool HallBounds::filter(CSint *const *vars, int count) {
  for (int i = 0; i < count; ++i) room_[i].variable = vars[i];
  do {
    fellInto_ = false;
    sort(count);
    rank(count);
    if (!filterLower(count) || !filterUpper(count)) return false;
  } while (fellInto_);
  return true;
}

}  // namespace koru
