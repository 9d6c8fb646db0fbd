// SPDX-License-Identifier: MIT
// The copying twin of the solver's state: what was observable when a context was opened must be there again when it is
// restored. Contexts that a search leaves open are known by number only.
//
// Left out: names and the number of attachments ever made, which a restore does not touch; and what follows a context
// that was accepted inside another one, whose changes the outer restore takes back in part, as documented.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/solver.h"

namespace koru::traces {

// Of one variable.
struct Digest {
  int min;
  int max;
  int count;
  std::uint64_t values;   // hash of the bits within the bounds
  std::uint64_t entries;  // hash of the constraints attached, in order
  int attached;
  bool operator==(const Digest &) const = default;
};

struct Copy {
  std::vector<Digest> variables;
  int trail;
};

class Twin {
 public:
  struct Mark {
    std::optional<Copy> copy;
    std::size_t pending;
    bool bySearch;
  };

  void clear() { *this = Twin{}; }

  // Before and after any call: contexts that appeared without a word were left open by a search.
  void follow();
  void saved(int before);
  void registered(CSint *v, int index) { pending_.push_back({v, index}); }
  // Why the call of an undone callback is wrong; empty when it is right.
  std::string undone(CSint *v, int index);

  // Contexts from `label` on have been restored; what is not as it was.
  std::string restored(int label, const std::vector<Mark> &before);
  void accepted(int label, const std::vector<Mark> &before);
  const std::vector<Mark> &marks() const { return marks_; }  // a callback of the undo may open contexts of its own
  bool uncertain() const { return mixed_; }
  bool compared() const { return compared_; }

 private:
  struct Pending {
    CSint *v;
    int index;
  };

  std::vector<Mark> marks_;  // one for each open context
  std::vector<Pending> pending_;
  bool accepted_ = false;  // an inner context was accepted, its outer one is open
  bool mixed_ = false;     // and that one was restored
  bool loose_ = false;     // callbacks are no longer followed
  bool compared_ = false;
};

}  // namespace koru::traces
