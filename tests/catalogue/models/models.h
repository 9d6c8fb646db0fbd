// SPDX-License-Identifier: MIT
// Two constraints to copy, see docs/adding-a-constraint.md. Tested from their rows as those of the library are.
#pragma once

#include "koru.h"

bool model_Apart(CSint *x, CSint *y, int distance);
bool model_Increasing(CSint **vars, int n);
