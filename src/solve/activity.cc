// SPDX-License-Identifier: MIT
#include "solve/activity.h"

#include <algorithm>
#include <bit>

#include "core/trail.h"

namespace koru::solve {

static constexpr std::uint64_t kLargest = std::uint64_t{1} << 31;  // times a number of elements it fits 64 bits
static constexpr std::uint64_t kShrinking = 1 << 14;

static bool changesDomain(TrailKind kind) {
  return kind == TrailKind::kMin || kind == TrailKind::kMax || kind == TrailKind::kRemoved;
}

// The table is half empty.
bool Activity::create(CSint *const *variables, int n) {
  count_ = n;
  const auto count = static_cast<std::uint64_t>(n);
  const std::uint64_t size = std::bit_ceil(2 * count + 1);
  if (!make(places_, size) || !make(same_, count) || !make(lastCounted_, count) || !make(activities_, count))
    return false;
  mask_ = static_cast<int>(size - 1);
  std::fill_n(places_.get(), size, Place{nullptr, -1});
  std::fill_n(lastCounted_.get(), n, 0U);
  std::fill_n(activities_.get(), n, addend_);
  for (int i = 0; i < n; ++i) {
    Place &place = places_[placeOf(variables[i])];
    same_[i] = place.position;
    place = {variables[i], i};
  }
  return true;
}

// Where the variable stands in the table, or the empty place where its search ends.
int Activity::placeOf(const CSint *v) const {
  const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(v)) / alignof(CSint);
  int place = static_cast<int>(bits * 0x9e3779b97f4a7c15 >> 32) & mask_;
  while (places_[place].variable != nullptr && places_[place].variable != v) place = (place + 1) & mask_;
  return place;
}

void Activity::notePropagation(int mark) {
  ++propagations_;
  solver::trail.forEachFrom(mark, [&](const TrailRecord &record) {
    if (!changesDomain(record.kind())) return;
    for (int i = places_[placeOf(record.variable())].position; i >= 0; i = same_[i]) add(i);
  });
  addend_ += addend_ / 1000 + 1;
  if (tooLarge_) fade();
}

void Activity::add(int position) {
  if (lastCounted_[position] == propagations_) return;
  lastCounted_[position] = propagations_;
  activities_[position] += addend_;
  tooLarge_ = tooLarge_ || activities_[position] >= kLargest;
}

void Activity::fade() {
  for (int i = 0; i < count_; ++i) activities_[i] = activities_[i] / kShrinking + 1;
  addend_ = addend_ / kShrinking + 1;
  tooLarge_ = false;
}

}  // namespace koru::solve
