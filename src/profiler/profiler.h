// SPDX-License-Identifier: MIT
// A profiler: how often the constraints of each site ran, and how often they failed.
#pragma once

#include <cstdint>

#include "core/ports.h"
#include "core/site.h"

namespace koru {

// The runs counted at one site, to which it holds a reference.
struct SiteCount {
  Site *site;
  int calls;
  int fails;
  SiteCount *next;
};

// A hash table from sites, by identity, to their counts.
struct SiteCounts {
  static constexpr unsigned kBuckets = 100;

  int size;
  SiteCount *buckets[kBuckets];

  static SiteCounts *create();  // null when memory is exhausted (reported)
  static void destroy(SiteCounts *counts);

  void record(Site *site, bool consistent);

  // Visits all counts in bucket order.
  template <class Visit>
  void forEach(Visit visit) const {
    for (const SiteCount *count : buckets)
      for (; count != nullptr; count = count->next) visit(*count);
  }
};

}  // namespace koru

struct CSprofiler {
  koru::Observer observer;
  koru::SiteCounts *counts;  // null for a profiler that there was no memory for: it counts nothing
  bool enabled;
  bool listed;             // among those that cs_end releases
  std::int64_t startTime;  // seconds; 0 until first enabled
  std::int64_t endTime;    // 0 until first disabled
  CSprofiler *nextDeleted;
};
