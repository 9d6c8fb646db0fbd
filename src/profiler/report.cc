// SPDX-License-Identifier: MIT
// cs_profilerWrite, cs_profilerWriteFile: a profile as text, a line for each site.
//
// The rows are gathered before the first is written, and without memory for that the report says "error" in their
// place. Deliberate: the format is called "windows_pdb", which readers of reports know, on every platform, unless the
// host's locator has a name for its own: file, line, address and function, separated by tabs.
#include <cstdio>

#include "core/alloc.h"
#include "core/solver.h"
#include "profiler/locator.h"
#include "profiler/platform.h"
#include "profiler/profiler.h"

namespace koru {

namespace {

void writeTime(std::FILE *f, const char *name, std::int64_t seconds) {
  if (seconds != 0) std::fprintf(f, "%s: %lld\n", name, static_cast<long long>(seconds));
}

void writeHead(std::FILE *f, const CSprofiler &profiler) {
  std::fprintf(f, "Koru Profiler: Constraint 1.0\nKoru Version: %s\n", cs_getVersion());
  writeTime(f, "start_time", profiler.startTime);
  writeTime(f, "end_time", profiler.enabled ? platform::now() : profiler.endTime);
  const char *format = locatorFormat();
  const bool builtIn = solver::ports.locator.text == nullptr;
  std::fprintf(f, "%sformat: %s\n__DATA__\n", builtIn ? platform::kReportHead : "platform: generic\n",
               format != nullptr ? format : "windows_pdb");
}

void writeRows(std::FILE *f, const SiteCounts &counts) {
  const Buffer<const SiteCount *> rows(counts.size);
  if (!rows) {
    std::fputs("error\n", f);
    return;
  }
  int n = 0;
  counts.forEach([&](const SiteCount &count) { rows[n++] = &count; });
  for (int i = 0; i < n; ++i)
    std::fprintf(f, "%s\t%s\t%d\t%d\n", rows[i]->site->text(), rows[i]->site->name(), rows[i]->calls, rows[i]->fails);
}

}  // namespace
}  // namespace koru

void cs_profilerWrite(CSprofiler *profiler, FILE *f) {
  if (profiler == nullptr || f == nullptr) return;
  koru::writeHead(f, *profiler);
  if (profiler->counts != nullptr) koru::writeRows(f, *profiler->counts);
}

void cs_profilerWriteFile(CSprofiler *profiler, const char *path) {
  std::FILE *f = profiler != nullptr && path != nullptr ? std::fopen(path, "w") : nullptr;
  if (f == nullptr) return;
  cs_profilerWrite(profiler, f);
  std::fclose(f);
}
