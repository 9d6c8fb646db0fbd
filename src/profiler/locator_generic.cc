// SPDX-License-Identifier: MIT
// Platforms without services to look at a running program: every place is unknown.
#include <ctime>

#include "profiler/platform.h"

namespace koru::platform {

const char kReportHead[] = "platform: generic\n";

bool find(const void *, Place &) { return false; }

void close() {}

std::int64_t now() { return std::time(nullptr); }

std::uint64_t unloads() { return 0; }

const void *firstOutside(const void *returnAddress) { return returnAddress; }

}  // namespace koru::platform
