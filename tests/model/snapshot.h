// SPDX-License-Identifier: MIT
// The model of a solver with constraints. What propagation makes of the domains is taken from the solver after each
// call, once it is known to have shrunk them only; what a choice point brings back is predicted by copies.
#pragma once

#include <algorithm>
#include <string>

#include "core/solver.h"
#include "model/state.h"
#include "support/kit/solver_test.h"

namespace koru::test::model {

// All that a restore must bring back of one variable.
struct Snapshot {
  std::vector<int> values;
  int count;
  std::vector<const Constraint *> attached;
  std::vector<int> indexes;
  bool operator==(const Snapshot &) const = default;
};

inline Snapshot snapshot(CSint *v) {
  Snapshot result{values(v), cs_getNbElements(v), {}, {}};
  for (const Entry *entry = v->constraints; entry != nullptr; entry = entry->next) {
    result.attached.push_back(entry->constraint);
    result.indexes.push_back(entry->index);
  }
  return result;
}

class SnapshotModel : public CopyingModel<Snapshot> {
 public:
  static constexpr bool kPosts = true;

  void adopt(CSint *v) {
    create(snapshot(v), {values(v), cs_getNbElements(v), {}, {}});
    attachments_.push_back(cs_getNbConstraints(v));
  }
  View view(int i) const {
    const Snapshot &s = variable(i);
    return {s.values.front(), s.values.back(), s.count, s.values};
  }

  // Whatever a call answers, it may take values away but never bring any back.
  void take(const std::vector<CSint *> &solverVariables) {
    for (int i = 0; i < variables(); ++i) {
      CSint *v = solverVariables[static_cast<std::size_t>(i)];
      const Snapshot now = snapshot(v);
      Snapshot &before = variable(i);
      int &attachments = attachments_[static_cast<std::size_t>(i)];
      EXPECT_TRUE(std::includes(before.values.begin(), before.values.end(), now.values.begin(), now.values.end()))
          << "v" << i;
      EXPECT_EQ(now.count, static_cast<int>(now.values.size())) << "v" << i;
      EXPECT_GE(now.attached.size(), before.attached.size()) << "v" << i;
      EXPECT_GE(cs_getNbConstraints(v), attachments) << "v" << i;
      EXPECT_GE(cs_getNbConstraints(v), static_cast<int>(now.attached.size())) << "v" << i;
      before = now;
      attachments = cs_getNbConstraints(v);
    }
  }

  void compare(int i, CSint *v) const {
    EXPECT_TRUE(snapshot(v) == variable(i)) << "v" << i << " has its domain and its constraints back";
    EXPECT_EQ(cs_getNbConstraints(v), attachments_[static_cast<std::size_t>(i)]) << "v" << i << ": it never falls";
  }

 private:
  std::vector<int> attachments_;
};

}  // namespace koru::test::model
