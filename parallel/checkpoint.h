// SPDX-License-Identifier: MIT
// Files that keep the state of a search. docs/scale.md describes what stands in them.
//
// A file is written beside the old one and takes its place when it is complete. One that is cut off or changed is not
// read, and nobody writes over it.
#pragma once

#include <string>

namespace koru::parallel {

struct Checkpoint {
  unsigned long long search = 0;  // the manyth of the program; 0: there is no file
  std::string state;              // of its leader
};

// False when it cannot be read or written: `why` says so.
bool readCheckpoint(const std::string &path, Checkpoint &checkpoint, std::string &why);
bool writeCheckpoint(const std::string &path, const Checkpoint &checkpoint, std::string &why);

}  // namespace koru::parallel
