// SPDX-License-Identifier: MIT
#include "minizinc/profiling.h"

#include "koru_extras.h"

namespace koru::fzn {

Profiling::Profiling(const Syntax &syntax, const Model &model, const std::string &file) : file_(file) {
  if (file.empty()) return;
  places_.emplace(syntax, model, Places::Loops::kLeftOut);
  profiler_ = cs_createProfiler(0);
  cs_setProfilerDetails(profiler_, true);
  cs_enableProfiler(profiler_);
}

void Profiling::write() const {
  if (profiler_ == nullptr) return;
  cs_disableProfiler(profiler_);
  cs_profilerWriteDetailsFile(profiler_, file_.c_str());
}

}  // namespace koru::fzn
