// SPDX-License-Identifier: MIT
// The profiler's report, with places in the model that was compiled: "minizinc --keep-paths" hands them on.
#ifndef KORU_MINIZINC_PROFILING_H
#define KORU_MINIZINC_PROFILING_H

#include "minizinc/model.h"

namespace koru::fzn {

class Profiling {
 public:
  // Profiles from now on, unless `file` is empty. All three outlive it.
  Profiling(const Syntax &syntax, const Model &model, const std::string &file);

  // Writes the report.
  void write() const;

 private:
  static const char *locate(void *self);

  const Syntax &syntax_;
  const Model &model_;
  const std::string &file_;
  CSprofiler *profiler_ = nullptr;
  std::string place_;
};

// "FILE<tab>LINE<tab>0<tab>CALLS" for the text of an mzn_path annotation: the innermost place outside of MiniZinc's own
// library, and what it stands in. Without such a text the constraint's place in the FlatZinc file.
std::string placeOf(std::string_view path);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_PROFILING_H
