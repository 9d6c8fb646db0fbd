// SPDX-License-Identifier: MIT
// The transport of a process that is alone.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "parallel/transport.h"

namespace koru::parallel {

class Alone : public Transport {
 public:
  int rank() const override { return 0; }
  int size() const override { return 1; }
  void send(int, std::string) override {}
  std::optional<Message> poll() override { return std::nullopt; }
  double seconds() const override {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
  }
  void rest() override {}
  void noteLost() override {}
  [[noreturn]] void stop(const std::string &why) override {
    std::fprintf(stderr, "koru_mpi: %s\n", why.c_str());
    std::exit(3);
  }
};

}  // namespace koru::parallel
