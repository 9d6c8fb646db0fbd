// SPDX-License-Identifier: MIT
// The solver as a whole, for the rooms above the core and for tests: all of its mutable state is in the namespace
// koru::solver, each piece declared by the module that it belongs to.
//
// Nothing below cs_init and cs_end includes this: a module of the core includes the pieces that it works on.
#pragma once

#include "core/agenda.h"
#include "core/check.h"
#include "core/constraint.h"
#include "core/context_stack.h"
#include "core/create.h"
#include "core/errors.h"
#include "core/lifetime.h"
#include "core/pool.h"
#include "core/ports.h"
#include "core/posters.h"
#include "core/posting_phase.h"
#include "core/queue.h"
#include "core/refusal.h"
#include "core/site.h"
#include "core/trail.h"
#include "core/variable.h"
