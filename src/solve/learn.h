// SPDX-License-Identifier: MIT
// What a run that was given up has refuted, as no-goods (Lecoutre, Sais, Tabary, Vidal, "Nogood Recording from
// Restarts", IJCAI 2007): the decisions that stand above a refuted one, and that one.
#pragma once

#include "solve/search_object.h"

namespace koru::solve {

// To be called at the root, the path still as the run left it. False when the root itself is refuted. A no-good of one
// element is imposed on the root.
// Cost: for each refuted step the depth of the path.
[[nodiscard]] bool learnFromPath(CSsearch &s);

}  // namespace koru::solve
