// SPDX-License-Identifier: MIT
// What the public headers declare.
#pragma once

#include <set>
#include <string>

namespace koru::catalogue {

// The functions of a header, "koru.h" or "koru_extras.h", that state something about variables: all but those of some
// sections. Empty when the header cannot be read.
std::set<std::string> statingFunctions(const std::string &header);
std::set<std::string> statingFunctions();  // of both

}  // namespace koru::catalogue
