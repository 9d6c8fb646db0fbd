// SPDX-License-Identifier: MIT
// cs_profilerWrite, cs_profilerWriteFile and those with details: a profile as text, a line for each site.
//
// The rows are gathered before the first is written, and without memory for that the report says "error" in their
// place. Deliberate: the format is called "windows_pdb", which readers of reports know, on every platform, unless the
// host's locator has a name for its own: file, line, address and function, separated by tabs.
#include <algorithm>
#include <cstdio>

#include "core/alloc.h"
#include "core/solver.h"
#include "core/ticks.h"
#include "koru_extras.h"
#include "profiler/locator.h"
#include "profiler/platform.h"
#include "profiler/profiler.h"

namespace koru {

namespace {

void writeTime(std::FILE *f, const char *name, std::int64_t seconds) {
  if (seconds != 0) std::fprintf(f, "%s: %lld\n", name, static_cast<long long>(seconds));
}

void writeHead(std::FILE *f, const char *kind, const CSprofiler &profiler) {
  std::fprintf(f, "Koru Profiler: %s 1.0\nKoru Version: %s\n", kind, cs_getVersion());
  writeTime(f, "start_time", profiler.startTime);
  writeTime(f, "end_time", profiler.enabled ? platform::now() : profiler.endTime);
  const char *format = locatorFormat();
  const bool builtIn = solver::ports.locator.text == nullptr;
  std::fprintf(f, "%sformat: %s\n__DATA__\n", builtIn ? platform::kReportHead : "platform: generic\n",
               format != nullptr ? format : "windows_pdb");
}

template <class WriteMore>
void writeRows(std::FILE *f, const SiteCounts &counts, WriteMore writeMore) {
  const Buffer<const SiteCount *> rows(counts.size);
  if (!rows) {
    std::fputs("error\n", f);
    return;
  }
  int n = 0;
  counts.forEach([&](const SiteCount &count) { rows[n++] = &count; });
  for (int i = 0; i < n; ++i) {
    std::fprintf(f, "%s\t%s\t%d\t%d", rows[i]->site->text(), rows[i]->site->name(), rows[i]->calls, rows[i]->fails);
    writeMore(*rows[i]);
    std::fputc('\n', f);
  }
}

// What a tick was from the first one until now; 0 when there was none.
double nanosecondsPerTick(const CSprofiler &profiler) {
  if (profiler.firstTicks == 0) return 0;
  const auto passed = static_cast<double>(ticks() - profiler.firstTicks);
  return static_cast<double>(nanoseconds() - profiler.firstNanoseconds) / std::max(1.0, passed);
}

template <class Write>
void writeFile(CSprofiler *profiler, const char *path, Write write) {
  std::FILE *f = profiler != nullptr && path != nullptr ? std::fopen(path, "w") : nullptr;
  if (f == nullptr) return;
  write(profiler, f);
  std::fclose(f);
}

}  // namespace
}  // namespace koru

void cs_profilerWrite(CSprofiler *profiler, FILE *f) {
  if (profiler == nullptr || f == nullptr) return;
  koru::writeHead(f, "Constraint", *profiler);
  if (profiler->counts != nullptr) koru::writeRows(f, *profiler->counts, [](const koru::SiteCount &) {});
}

void cs_profilerWriteFile(CSprofiler *profiler, const char *path) { koru::writeFile(profiler, path, cs_profilerWrite); }

void cs_profilerWriteDetails(CSprofiler *profiler, FILE *f) {
  if (profiler == nullptr || f == nullptr) return;
  koru::writeHead(f, "Details", *profiler);
  const double scale = koru::nanosecondsPerTick(*profiler);
  if (profiler->counts == nullptr) return;
  koru::writeRows(f, *profiler->counts, [f, scale](const koru::SiteCount &count) {
    const auto time = static_cast<long long>(static_cast<double>(count.ticks) * scale);
    std::fprintf(f, "\t%lld\t%lld\t%lld", count.idle, count.changes, time);
  });
}

void cs_profilerWriteDetailsFile(CSprofiler *profiler, const char *path) {
  koru::writeFile(profiler, path, cs_profilerWriteDetails);
}
