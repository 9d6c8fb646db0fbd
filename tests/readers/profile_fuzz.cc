// SPDX-License-Identifier: MIT
// The reader of profiler reports behind libFuzzer: any text is read or refused, and what is read is shown in every way
// there is. The files that a report names are not looked for: the page is made without them.
#include <cstdlib>
#include <sstream>

#include "profile/profile.h"

using namespace koru::profile;

static bool readText(const std::string &text, Profile &profile) {
  std::istringstream in(text);
  std::string error;
  const bool good = readProfile(in, profile, error);
  if (good == !error.empty()) std::abort();
  return good;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char *>(data) + 1, size - 1);
  Profile profiles[2];
  if (!readText(text, profiles[0])) return 0;
  std::ostringstream out;
  writeTable(out, profiles[0], data[0] % 4, data[0] >= 128);
  writeJson(out, profiles[0]);
  writeFolded(out, profiles[0], false);
  writeFolded(out, profiles[0], true);
  if (readText(text.substr(0, text.size() * data[0] / 255), profiles[1]))
    writeDifference(out, profiles[0], profiles[1], data[0] % 4);
  for (Entry &e : profiles[0].entries) e.file = '\n' + e.file;
  writePage(out, profiles[0], "fuzz");
  return 0;
}
