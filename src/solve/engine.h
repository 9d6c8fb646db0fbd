// SPDX-License-Identifier: MIT
// The engine of a search object: decisions on an explicit path, each in a context of its own.
#pragma once

#include "solve/search_object.h"

namespace koru::solve {

// Goes on to the next solution, or to the end. The object's turn has been checked.
CSstatus goOn(CSsearch &s);

}  // namespace koru::solve
