// SPDX-License-Identifier: MIT
// cs_findConstraintWithMemory: what a walk cannot be sure to come back to.
//
// The state of a node has to follow from the path to it. For every constraint of the catalogue, alone and in random
// models, the tests look whether it does; those that fail are named here.
#include <algorithm>
#include <string_view>

#include "core/constraint.h"
#include "core/variable.h"
#include "koru_extras.h"

namespace koru::walk {

namespace {

// A set of no-goods concludes what was searched before. Values of the result that a restore brings back may stay
// without the support that cs_VarElement had found them.
constexpr std::string_view kAlways[] = {"cs_createNoGoodSet", "cs_VarElement"};

// These look at the old bound that an event tells. That of a variable's first event may lie outside its domain (see
// createFromBits); once the change is undone, the same event tells the bound that there is.
constexpr std::string_view kOfOldBounds[] = {"cs_Min",  "cs_VMin",        "cs_Max",
                                             "cs_VMax", "cs_eventNewMin", "cs_eventNewMax"};

bool isAmong(const auto &names, const char *name) { return std::ranges::find(names, name) != std::ranges::end(names); }

class Finder {
 public:
  const char *found = nullptr;

  void lookAt(const CSint &v) {
    const bool tellsOthers = v.reportedMin != v.min || v.reportedMax != v.max;
    for (const Entry *entry = v.constraints; entry != nullptr && found == nullptr; entry = entry->next) {
      const char *name = entry->constraint->site->name();
      if (name == harmless_) continue;
      if (isAmong(kAlways, name) || (tellsOthers && isAmong(kOfOldBounds, name))) {
        found = name;
      } else if (!isAmong(kOfOldBounds, name)) {
        harmless_ = name;
      }
    }
  }

 private:
  const char *harmless_ = nullptr;  // of the last constraint that was none: the next one often is of the same function
};

}  // namespace
}  // namespace koru::walk

using namespace koru;

const char *cs_findConstraintWithMemory(void) {
  walk::Finder finder;
  solver::variables.forEach([&](const CSint &v) { finder.lookAt(v); });
  return finder.found;
}
