// SPDX-License-Identifier: MIT
#include "search/selection.h"

#include "core/post.h"
#include "search/select_variable.h"
#include "search/state.h"

namespace koru {

// Works on copies, which nothing that it calls can change, so that they stay in registers.
template <class Rule>
CSint *Selection::scan(Selection &s) {
  Rule rule;
  CSint *const *array = s.array_;
  BranchSetOn unsettled = s.unsettled_;
  unsettled.refresh();
  const BranchStamp now = BranchStamp::now();
  unsettled.forEach([&](int i) {
    CSint *v = array[i];
    if (v == nullptr) return true;
    if (Rule::isSettled(v)) {
      unsettled.takeOut(i, now);
      return true;
    }
    return rule.offer(v);
  });
  static_cast<BranchSetOn &>(s.unsettled_) = unsettled;
  return rule.best;
}

template <class Rule>
CSint *Selection::scanLong(Selection &s) {
  Rule rule;
  CSint *const *array = s.array_;
  const auto isSettled = [array](int i) { return array[i] == nullptr || Rule::isSettled(array[i]); };
  s.unsettled_.forEachUnsettled(isSettled, [&](int i) { return rule.offer(array[i]); });
  return rule.best;
}

Selection::Step Selection::stepFor(CSfindFreeVar select, int size) {
  const bool isLong = size > kShort;
  if (select == cs_findFreeVar) return isLong ? scanLong<FirstFree> : scan<FirstFree>;
  if (select == cs_findFreeVarNbElements) return isLong ? scanLong<FewestElements> : scan<FewestElements>;
  if (select == cs_findFreeVarNbElementsMin)
    return isLong ? scanLong<FewestElementsThenLowest> : scan<FewestElementsThenLowest>;
  if (select == cs_findFreeVarNbConstraints) return isLong ? scanLong<MostConstraints> : scan<MostConstraints>;
  return askHost;
}

bool Selection::canChoose(CSint **array, int size, CSfindFreeVar select) {
  if (select == nullptr) return false;
  return !isBuiltIn(select) || size < 1 || (array != nullptr && allPresent(array, size));
}

Selection::Selection(CSint **array, int size, CSfindFreeVar select)
    : array_(array), size_(size), select_(select), step_(size <= kFew ? askHost : stepFor(select, size)) {
  static_assert(kShort <= SelectionRoom::kSize);
  SelectionRoom &room = selectionRoom;
  if (room.taken || array == nullptr || size < 1) step_ = askHost;
  if (step_ == askHost) return;
  room.taken = usesRoom_ = true;
  unsettled_ = Unsettled(size, SelectionRoom::kSize, room.words, room.settled);
}

Selection::Selection(CSint **array, int size, CSfindFreeVar select, const BranchSetOn &positions)
    : array_(array), size_(size), select_(select), step_(stepFor(select, size)), unsettled_(size, positions) {}

Selection::~Selection() {
  if (usesRoom_) selectionRoom.taken = false;
}

}  // namespace koru
