// SPDX-License-Identifier: MIT
// The source of a program in the page of its profile.
#pragma once

#include <iosfwd>
#include <string>

#include "profile/profile.h"

namespace koru::profile {

// The lines around the one that posts, marked; empty when the file cannot be read.
std::string sourceAround(const Entry &e);

// Each file that can be read, as far as it posts, with the heat of its lines: time where it is known, else calls.
void writeSources(std::ostream &out, const Profile &profile);

}  // namespace koru::profile
