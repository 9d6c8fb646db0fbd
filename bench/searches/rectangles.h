// SPDX-License-Identifier: MIT
// Strips to fill: rectangles that may not be turned lie side by side in a strip of a given width; the least height.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "instances.h"

namespace koru::bench::searches {

struct Rectangle {
  int width;
  int height;
};

// The largest ones come first.
struct Strip {
  std::string name;
  int width;
  std::vector<Rectangle> rectangles;

  int stacked() const {
    int sum = 0;
    for (const Rectangle &r : rectangles) sum += r.height;
    return sum;
  }
  // No strip is lower.
  int least() const {
    int area = 0;
    for (const Rectangle &r : rectangles) area += r.width * r.height;
    return (area + width - 1) / width;
  }
};

// Squares of 1 to n, in strips of the width of the smallest box that takes them (Korf, Optimal rectangle packing,
// 2003).
inline Strip squares(int n, int width) {
  Strip strip{"squares to " + std::to_string(n), width, {}};
  for (int size = n; size > 0; --size) strip.rectangles.push_back({size, size});
  return strip;
}

inline Strip drawStrip(Random &random, int count, int width) {
  Strip strip{"drawn " + std::to_string(count) + " in " + std::to_string(width), width, {}};
  while (static_cast<int>(strip.rectangles.size()) < count)
    strip.rectangles.push_back({1 + random.below(width / 2), 1 + random.below(9)});
  std::stable_sort(strip.rectangles.begin(), strip.rectangles.end(),
                   [](const Rectangle &a, const Rectangle &b) { return a.width * a.height > b.width * b.height; });
  return strip;
}

inline const std::vector<Strip> &strips() {
  static const std::vector<Strip> all = [] {
    std::vector<Strip> result{squares(8, 15),  squares(9, 20),  squares(10, 27), squares(11, 27),
                              squares(12, 29), squares(13, 38), squares(14, 45), squares(15, 55)};
    Random random(1);
    for (const int count : {8, 11, 14, 17})
      for (const int width : {10, 14, 18}) result.push_back(drawStrip(random, count, width));
    return result;
  }();
  return all;
}

}  // namespace koru::bench::searches
