// SPDX-License-Identifier: MIT
// The reader of records behind libFuzzer: any bytes are read or refused, and what is read is shown in every way there
// is. The first byte says where the others are cut in two records that are compared.
#include <cstdlib>
#include <sstream>

#include "tree/tree.h"

using namespace koru::tree;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size == 0) return 0;
  const std::string bytes(reinterpret_cast<const char *>(data) + 1, size - 1);
  Tree trees[2];
  std::string error;
  if (!readTree(bytes, trees[0], error)) {
    if (error.empty()) std::abort();
    return 0;
  }
  std::ostringstream out;
  writeSummary(out, trees[0], 5);
  writePage(out, trees[0], "fuzz", 50);
  const int nodes = static_cast<int>(trees[0].nodes.size());
  if (nodes > 0) writePath(out, trees[0], data[0] % nodes);
  if (!readTree(bytes.substr(0, bytes.size() * data[0] / 255), trees[1], error)) return 0;
  if (writeDifference(out, trees[0], trees[1]) != writeDifference(out, trees[1], trees[0])) std::abort();
  return 0;
}
