// SPDX-License-Identifier: MIT
// The profiler's report, with places in the model that was compiled.
#ifndef KORU_MINIZINC_PROFILING_H
#define KORU_MINIZINC_PROFILING_H

#include <optional>

#include "minizinc/places.h"

namespace koru::fzn {

class Profiling {
 public:
  // Profiles from now on, unless `file` is empty. All three outlive it.
  Profiling(const Syntax &syntax, const Model &model, const std::string &file);

  // Writes the report.
  void write() const;

 private:
  const std::string &file_;
  std::optional<Places> places_;
  CSprofiler *profiler_ = nullptr;
};

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_PROFILING_H
