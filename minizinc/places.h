// SPDX-License-Identifier: MIT
// Places of constraints in the model that was compiled: "minizinc --keep-paths" hands them on.
#ifndef KORU_MINIZINC_PLACES_H
#define KORU_MINIZINC_PLACES_H

#include "minizinc/model.h"

namespace koru::fzn {

// While one lives, it is what tells the library who posts.
class Places {
 public:
  enum class Loops { kLeftOut, kTold };

  // Both outlive it.
  Places(const Syntax &syntax, const Model &model, Loops loops);
  Places(const Places &) = delete;
  Places &operator=(const Places &) = delete;
  ~Places() { cs_setProfilerLocator(nullptr, nullptr, nullptr); }

 private:
  static const char *locate(void *self);

  const Syntax &syntax_;
  const Model &model_;
  Loops loops_;
  std::string place_;
};

// "FILE<tab>LINE<tab>0<tab>CALLS" for the text of an mzn_path annotation: the innermost place outside of MiniZinc's own
// library, and what it stands in; with the values of loops also these, as " [i=2, j=3]".
std::string placeOf(std::string_view path, Places::Loops loops = Places::Loops::kLeftOut);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_PLACES_H
