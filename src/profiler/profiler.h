// SPDX-License-Identifier: MIT
// A profiler: how often the constraints of each site ran, and how often they failed; in detail also how often they
// changed nothing, how many changes of domains they made, and how long that took.
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
  long long idle = 0;     // calls that changed no domain and did not fail
  long long changes = 0;  // of domains
  std::uint64_t ticks = 0;

  void add(const Meter &meter, bool consistent) {
    const bool read = meter.known() == Meter::Known::kAll;
    if (meter.known() == Meter::Known::kIdle || (read && meter.changes() == 0)) idle += consistent ? 1 : 0;
    if (!read) return;
    changes += meter.changes();
    ticks += meter.ticks();
  }
};

// A hash table from sites, by identity, to their counts.
struct SiteCounts {
  static constexpr unsigned kBuckets = 100;

  int size;
  SiteCount *buckets[kBuckets];

  static SiteCounts *create();  // null when memory is exhausted (reported)
  static void destroy(SiteCounts *counts);

  SiteCount *record(Site *site, bool consistent);  // null when memory is exhausted (reported)

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
  // Readings of two clocks when details were first asked for, to tell what a tick is; 0 before.
  std::uint64_t firstTicks = 0;
  std::int64_t firstNanoseconds = 0;
};
