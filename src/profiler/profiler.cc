// SPDX-License-Identifier: MIT
// cs_createProfiler, cs_enableProfiler, cs_disableProfiler, cs_deleteProfiler, cs_setProfilerDetails: profilers as
// observers of propagation.
//
// Cost: nothing while no profiler is enabled; a hash look-up per handler run and enabled profiler else. Details come
// from the meter (core/meter), a few instructions a call and a look at a clock now and then.
// Deliberate: the first enabling sets the start time, every disabling the end time: a profile spans all its runs.
// Deliberate: cs_deleteProfiler releases nothing, for hosts read what they have deleted. A deleted profiler can still
// be read; its counts end with the sites that they are about, its record is never freed.
#include "profiler/profiler.h"

#include "core/solver.h"
#include "core/state.h"
#include "core/ticks.h"
#include "koru_extras.h"
#include "profiler/platform.h"

namespace koru {

namespace {

unsigned bucketOf(const Site *site) {
  return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(site) % SiteCounts::kBuckets);
}

// The deleted ones, so that they stay reachable.
KORU_STATE CSprofiler *deletedProfilers = nullptr;

void noteRun(void *argument, bool consistent, CSint *, int, Site *site) {
  const auto *profiler = static_cast<CSprofiler *>(argument);
  if (profiler->counts == nullptr) return;
  SiteCount *count = profiler->counts->record(site, consistent);
  if (profiler->observer.reads && count != nullptr) count->add(solver::ports.meter, consistent);
}

void dropCounts(CSprofiler *profiler) {
  SiteCounts::destroy(profiler->counts);
  profiler->counts = nullptr;
}

void releaseProfiler(void *argument) {
  auto *profiler = static_cast<CSprofiler *>(argument);
  dropCounts(profiler);
  if (profiler->listed) deallocate(profiler);
}

void setCounting(CSprofiler *profiler, bool counting) {
  profiler->observer.enabled = counting;
  solver::ports.refreshProfiling();
}

}  // namespace

SiteCounts *SiteCounts::create() {
  auto *counts = static_cast<SiteCounts *>(allocate(sizeof(SiteCounts)));
  if (counts != nullptr) *counts = {};
  return counts;
}

void SiteCounts::destroy(SiteCounts *counts) {
  if (counts == nullptr) return;
  for (SiteCount *count : counts->buckets) {
    while (count != nullptr) {
      SiteCount *next = count->next;
      Site::release(count->site);
      deallocate(count);
      count = next;
    }
  }
  deallocate(counts);
}

SiteCount *SiteCounts::record(Site *site, bool consistent) {
  SiteCount *&bucket = buckets[bucketOf(site)];
  SiteCount *count = bucket;
  while (count != nullptr && count->site != site) count = count->next;
  if (count == nullptr) {
    count = static_cast<SiteCount *>(allocate(sizeof(SiteCount)));
    if (count == nullptr) return nullptr;
    ++site->references;
    *count = {site, 0, 0, bucket};
    bucket = count;
    ++size;
  }
  count->calls = wrapAdd(count->calls, 1);
  if (!consistent) count->fails = wrapAdd(count->fails, 1);
  return count;
}

}  // namespace koru

using namespace koru;

CSprofiler *cs_createProfiler(int kind) {
  if (kind != 0 || !solver::initialised) return nullptr;
  auto *profiler = static_cast<CSprofiler *>(allocate(sizeof(CSprofiler)));
  if (profiler == nullptr) return nullptr;
  *profiler = {{noteRun, releaseProfiler, profiler, false, nullptr}, SiteCounts::create(), false, true, 0, 0, nullptr};
  solver::ports.add(&profiler->observer);
  return profiler;
}

void cs_enableProfiler(CSprofiler *profiler) {
  if (profiler == nullptr || profiler->enabled) return;
  profiler->enabled = true;
  if (profiler->startTime == 0) profiler->startTime = platform::now();
  setCounting(profiler, true);
}

void cs_disableProfiler(CSprofiler *profiler) {
  if (profiler == nullptr || !profiler->enabled) return;
  profiler->enabled = false;
  profiler->endTime = platform::now();
  setCounting(profiler, false);
}

void cs_deleteProfiler(CSprofiler *profiler) {
  if (profiler == nullptr || !profiler->listed) return;
  profiler->listed = false;
  profiler->nextDeleted = deletedProfilers;
  deletedProfilers = profiler;
  setCounting(profiler, false);
}

void cs_setProfilerDetails(CSprofiler *profiler, bool on) {
  if (profiler == nullptr || !profiler->listed) return;
  if (on && profiler->firstTicks == 0) {
    profiler->firstTicks = ticks();
    profiler->firstNanoseconds = nanoseconds();
  }
  profiler->observer.reads = on;
  solver::ports.refreshProfiling();
}
