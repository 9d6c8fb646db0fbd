// SPDX-License-Identifier: MIT
// Values for transcripts: no addresses, no times.
#pragma once

#include <string>
#include <vector>

#include "koru.h"

namespace koru::traces {

std::vector<int> valuesOf(CSint *v);  // of a small domain
std::string show(CSint *v);

}  // namespace koru::traces
