// SPDX-License-Identifier: MIT
// The solutions of what has been posted at the top level, by enumeration: small domains, and relations evaluated by the
// meanings of the table. Choice points are followed by marks.
//
// The model steps back when it cannot know: after callbacks that acted, exhausted memory, no-goods, searches that left
// their decisions in place. It is sure again when the context in which that happened is restored.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "catalogue/form.h"
#include "koru.h"
#include "traces/table.h"

namespace koru::traces {

struct Posted {
  const Row *row;
  catalogue::Form form;
  std::vector<CSint *> x;  // the arguments that are variables
  CSint *z = nullptr;      // the result
};

using Tuple = std::vector<int>;

class Solutions {
 public:
  explicit Solutions(bool wrong) : wrong_(wrong) {}
  void clear();

  void created(CSint *v, std::vector<int> values) { domains_.emplace(v, std::move(values)); }
  void post(Posted posted);
  // The relation was refused with `depth` contexts open. Why that is wrong; empty when it is right or unknown.
  std::string refused(Posted posted, int depth);
  void refusedUnknown(int depth) { failed_ = std::min(failed_, depth); }
  void unknownFrom(int depth) { unknown_ = std::min(unknown_, depth); }
  void follow(int contexts);
  void restored(int label);
  void kept(int contexts);  // contexts were accepted or forgotten, so many are left

  // All variables of the relations, and their solutions in lexicographic order; nothing when unknown or too many.
  std::optional<std::vector<Tuple>> all(std::vector<CSint *> &variables);
  bool none();  // or not known to have one
  bool mayRefuse() const;
  bool mayAccept() const;
  bool sure() const { return unknown_ == kNever && failed_ == kNever; }
  bool checked() const { return checked_; }

 private:
  static constexpr int kNever = 1 << 30;
  struct Search;

  std::vector<CSint *> order() const;
  bool place(CSint *v, std::vector<CSint *> &result) const;

  std::map<CSint *, std::vector<int>> domains_;  // of variables that are no results
  std::vector<Posted> posted_;
  std::vector<std::size_t> marks_;
  int unknown_ = kNever;  // the number of contexts open when it came to be so; and for a failure
  int failed_ = kNever;
  bool checked_ = false;
  bool wrong_;
};

}  // namespace koru::traces
