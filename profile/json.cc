// SPDX-License-Identifier: MIT
// The profile for other programs.
#include <ostream>

#include "profile/profile.h"
#include "profile/quoting.h"

namespace koru::profile {

template <class Counts>
static void writeDetails(std::ostream &out, bool detailed, const Counts &counts) {
  if (!detailed) return;
  out << ", \"idle\": " << counts.idle << ", \"narrowings\": " << counts.narrowings
      << ", \"nanoseconds\": " << counts.nanoseconds;
}

void writeJson(std::ostream &out, const Profile &profile) {
  out << "{\"version\": " << quoted(profile.version) << ", \"startTime\": " << profile.startTime
      << ", \"endTime\": " << profile.endTime << ", \"calls\": " << profile.calls << ", \"fails\": " << profile.fails;
  writeDetails(out, profile.detailed, profile);
  out << ", \"places\": [";
  const char *between = "\n";
  for (const Entry &e : profile.entries) {
    out << between << "{\"calls\": " << e.calls << ", \"fails\": " << e.fails;
    writeDetails(out, profile.detailed, e);
    out << ", \"posted\": " << e.postings << ", \"function\": " << quoted(e.function)
        << ", \"file\": " << quoted(e.file) << ", \"line\": " << e.line << ", \"caller\": " << quoted(e.caller) << '}';
    between = ",\n";
  }
  out << "\n]}\n";
}

}  // namespace koru::profile
