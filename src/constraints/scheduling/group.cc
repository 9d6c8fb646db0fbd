// SPDX-License-Identifier: MIT
#include "constraints/scheduling/group.h"

namespace koru::scheduling {

bool postGroup(const Poster &poster, const TableOf<Group> &table, const GroupArrays &given) {
  Group record;
  if (!record.copy(given)) return false;
  Posting posting{poster};
  auto c = posting.add(table, std::move(record));
  c.attach(given.start, -1, kBoundsMove);
  c.attach(given.duration, -1, kBoundsMove);
  if (given.present != nullptr) c.attach(given.present, -1, kBoundsMove);
  for (int i = 0; posting && i < given.n; ++i) {
    c.attach(given.starts[i], i, kBoundsMove);
    c.attach(given.durations[i], i, kBoundsMove);
    if (given.presents != nullptr) c.attach(given.presents[i], i, kBoundsMove);
  }
  return posting && runSoon(*c);
}

}  // namespace koru::scheduling
