// SPDX-License-Identifier: MIT
// The benchmark problems as programs for Gecode.
#pragma once

#include <span>

#include "models.h"

namespace koru::bench {

// How often the engine clones: every commitDistance choices, and half-way when recomputing more than adaptiveDistance.
struct Recomputation {
  const char *name;
  unsigned commitDistance;
  unsigned adaptiveDistance;
};

struct PeerModel {
  const char *name;  // as in kModels
  Outcome (*run)(const Recomputation &recomputation);
};

std::span<const PeerModel> relationPeers();
std::span<const PeerModel> arithmeticPeers();
std::span<const PeerModel> searchPeers();
std::span<const PeerModel> globalPeers();
std::span<const PeerModel> eventPeers();
std::span<const PeerModel> strongPeers();
std::span<const PeerModel> countingPeers();

}  // namespace koru::bench
