// SPDX-License-Identifier: MIT
// CSsolver: what is the state of one solver, every piece of it, while another one runs or none.
//
// A solver has such a record from when it is first detached until cs_end. The record of a solver that runs holds
// nothing; no pointer leads into the pieces, so that they may be anywhere.
#pragma once

#include "core/solver.h"
#include "profiler/state.h"
#include "search/state.h"
#include "solve/search_object.h"

struct CSsolver {
  bool parked = false;
  koru::Observer atEnd{};

  // In the order of core/solver.h, but for one that would leave a gap.
  koru::Agenda agenda;
  koru::check::State checked;
  int ownersAlive = 0;
  koru::BlockStack<koru::ContextMark> contexts;
  std::uint64_t contextSerial = 0;
  std::uint64_t closings = 0;
  bool acceptedInside = false;
  bool named = false;
  koru::Errors errors;
  bool initialised = false;
  koru::Pool pool;
  koru::Ports ports;
  koru::Posters posters;
  koru::BranchStamp postingFailedAt{};
  koru::Queue queue;
  koru::EventQueue events;
  koru::Entry *graveyard = nullptr;
  int refusals = 0;
  koru::SiteTable sites;
  koru::Trail trail;
  koru::BlockStack<CSint> variables;

  koru::ProfilerState profiler;
  koru::SearchState search;
  CSsearch *newestSearch = nullptr;
  CSsolver *self = nullptr;  // the record itself, once there is one
};
